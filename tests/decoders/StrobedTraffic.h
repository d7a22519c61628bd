#pragma once

#include "DecoderChecks.h"
#include "WireBundle.h"

#include <QTemporaryDir>
#include <QtTest>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// What the tests of both busses with strobes ask alike.

namespace strobedTraffic {

/// The first frames of the simulation: command n, n modulo 8 words of data, a read of the state and one of data.
/// @param hasClash  an access with both strobes follows each sixteenth
inline std::vector<std::string> ofSimulation(std::size_t count, bool hasClash)
{
    std::vector<std::string> expected;
    const auto add = [&expected](const char *kind, int isData, unsigned word) {
        expected.push_back(std::string(kind) + " rs=" + std::to_string(isData) + " v=" + std::to_string(word & 0xffU));
    };
    for (unsigned n = 0; expected.size() < count; ++n) {
        add("write", 0, n);
        for (unsigned i = 0; i < n % 8; ++i) {
            add("write", 1, n * 8 + i);
        }
        add("read", 0, ~n);
        add("read", 1, n);
        if (hasClash && n % 16 == 15) {
            add("clash", 1, n);
        }
    }
    expected.resize(count);
    return expected;
}

/// Decodes random edges on the channels 0 to 11. @return what is wrong with the frames, empty for nothing
template<class AnalyzerType>
std::string faultOfRandomEdges(const std::string &settings)
{
    constexpr std::int64_t length = 20000;
    for (const std::int64_t mean : {1, 2, 10, 100, 2000}) {
        TestCapture capture(1000000, length);
        for (std::uint32_t i = 0; i < 12; ++i) {
            capture.channel(i, i % 2 == 0, decoderChecks::randomEdges(i, mean, length));
        }
        DecodeDesk desk(std::make_unique<AnalyzerType>(), settings);
        if (std::string fault = decoderChecks::faultOf(desk.run(capture), length); !fault.empty()) {
            return fault;
        }
    }
    return {};
}

/// The exports of accesses of which write 0x2a, data 0x01, read data 0xef and state 0x55, write 0x2c, data 0x41 are
/// all. @return what is missing, empty for nothing
inline std::string faultOfExports(const DecodeDesk &desk, const std::string &path)
{
    using Results = lux::StrobedBusResults;
    const std::string text = decoderChecks::exported(desk, path + ".txt", Results::Commands);
    const std::string csv = decoderChecks::exported(desk, path + ".csv", 0);
    if (decoderChecks::exported(desk, path + ".bin", Results::WrittenData) != "\x01\x41") {
        return "written data";
    }
    if (decoderChecks::exported(desk, path + ".bin", Results::ReadData) != "\xef") {
        return "read data";
    }
    if (text.find(" 0x2A 0x01 <0xEF <0x55\n") == std::string::npos || text.find(" 0x2C 0x41\n") == std::string::npos) {
        return text;
    }
    const std::string lines = decoderChecks::exported(desk, path + ".csv", Results::Commands);
    if (!lines.starts_with("time_s,first_sample,last_sample,text\n") ||
        lines.find(",0x2A 0x01 <0xEF <0x55\n") == std::string::npos) {
        return lines;
    }
    return csv.find(",write,0,42,Write command 0x2A") == std::string::npos ? csv : std::string();
}

/// Of the accesses of Tests::someAccesses().
inline const std::vector<std::string> someTexts = {"write rs=0 v=42", "write rs=1 v=1", "read rs=1 v=239",
                                                   "read rs=0 v=85"};

/// The tests of both busses, under their own names there.
/// @tparam Host  drives channels 0 to 11: select(), write() and read(), an access of 12 samples whose strobe lasts for
/// 5
template<class AnalyzerType, class Host>
class Tests {
public:
    using Desk = BundleDesk<AnalyzerType>;
    using Texts = std::vector<std::string>;

    /// @param lines  the settings that choose all lines of the host, the data on channels 4 to 11
    explicit Tests(const char *lines) : m_lines(lines) {}

    [[nodiscard]] static Host someAccesses()
    {
        Host host;
        host.wait(10);
        host.select(true).write(false, 0x2a).write(true, 0x01).read(true, 0xef).read(false, 0x55).select(false);
        return host;
    }
    void aCutBeginShowsTheAccess() const
    {
        const Host host = someAccesses();
        const Desk desk(host, m_lines, 1000000, -1, host.starts[0] + 2);
        QCOMPARE(desk.summaries(), someTexts);
        QCOMPARE(desk.frame(0).first, std::int64_t(0));
    }
    void cutEndsShowNothingFalse() const
    {
        const Host host = someAccesses();
        const auto whole = Desk(host, m_lines).frames();
        for (std::int64_t length = 1; length <= host.now(); ++length) {
            const auto cut = Desk(host, m_lines, 1000000, length).frames();
            QCOMPARE(decoderChecks::faultOfCut(cut, whole), std::string());
            QVERIFY(cut.size() == 4 || length <= host.ends[cut.size()]);
        }
    }
    void positionsAreWiderThan32Bits() const
    {
        constexpr std::int64_t far = std::int64_t(1) << 37;
        Host host;
        host.wait(far);
        host.select(true).write(false, 0x77);
        const Desk desk(host, m_lines);
        QCOMPARE(desk.summaries(), Texts{"write rs=0 v=119"});
        QCOMPARE(desk.frame(0).first, far + 8);
        QCOMPARE(desk.frame(0).last, far + 13);
    }
    void textsGoFromShortToLong() const
    {
        const Desk desk(someAccesses(), m_lines);
        const Channel highest(0, 11);
        QCOMPARE(desk.bubble(0, highest, DisplayBase::Hexadecimal), (Texts{"0x2A", "W 0x2A", "Write command 0x2A"}));
        QCOMPARE(desk.bubble(1, highest, DisplayBase::Decimal), (Texts{"1", "W 1", "Write data 1"}));
        QCOMPARE(desk.bubble(2, highest, DisplayBase::Hexadecimal), (Texts{"0xEF", "R 0xEF", "Read data 0xEF"}));
        QCOMPARE(desk.frame(3).text, std::string("Read status 0x55"));
    }
    void exportsHaveDataAndCommands() const
    {
        Host host = someAccesses();
        host.select(true).write(false, 0x2c).write(true, 0x41).select(false);
        const Desk desk(host, m_lines);
        QTemporaryDir folder;
        QCOMPARE(faultOfExports(desk, folder.filePath(QStringLiteral("out")).toStdString()), std::string());
    }
    /// @param hasClash  as of ofSimulation()
    void theSimulationIsDecodedAsItWasSent(const QString &settings, int rate, int block, bool hasClash) const
    {
        DecodeDesk desk(std::make_unique<AnalyzerType>(), std::string(m_lines) + "," + settings.toStdString());
        const auto capture = desk.simulate(rate, 300000, block);
        desk.run(*capture);
        const Texts got = desk.summaries();
        QVERIFY2(got.size() > 500, std::to_string(got.size()).c_str());
        QCOMPARE(got, ofSimulation(got.size(), hasClash));
    }

private:
    const char *m_lines;
};

} // namespace strobedTraffic
