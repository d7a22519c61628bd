#include "DecoderChecks.h"
#include "Parallel8080Analyzer.h"
#include "StrobedTraffic.h"
#include "WireBundle.h"

#include <QtTest>

#include <cstdint>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;
using Desk = BundleDesk<Parallel8080Analyzer>;

namespace {

constexpr std::uint32_t cs = 0;
constexpr std::uint32_t rs = 1;
constexpr std::uint32_t wr = 2;
constexpr std::uint32_t rd = 3;
constexpr std::uint32_t data = 4;
constexpr const char *lines = "cs=0,rs=1,wr=2,rd=3,d0=4,d1=5,d2=6,d3=7,d4=8,d5=9,d6=10,d7=11";

std::string with(const std::string &settings)
{
    return std::string(lines) + "," + settings;
}

/// A host by the figures of MIPI DBI-2 for type B; an access is 12 samples, its strobe 5.
class Host : public WireBundle {
public:
    explicit Host(bool activeHigh = false)
        : WireBundle(data + 16, activeHigh ? 1U << cs : (1U << cs | 1U << wr | 1U << rd)), m_active(activeHigh)
    {}
    Host &select(bool active)
    {
        set(cs, !active).wait(4);
        return *this;
    }
    Host &access(std::uint32_t strobe, bool isData, unsigned word, unsigned width = 8)
    {
        set(rs, isData).wait(4);
        starts.push_back(now());
        set(strobe, m_active).bus(data, width, word).wait(5);
        ends.push_back(now());
        set(strobe, !m_active).wait(1).bus(data, width, ~word).wait(2);
        return *this;
    }
    Host &write(bool isData, unsigned word) { return access(wr, isData, word); }
    Host &read(bool isData, unsigned word) { return access(rd, isData, word); }

    std::vector<std::int64_t> starts;
    std::vector<std::int64_t> ends;

private:
    bool m_active;
};

const strobedTraffic::Tests<Parallel8080Analyzer, Host> tests(lines);
const auto &someTexts = strobedTraffic::someTexts;

} // namespace

class TstParallel8080 : public QObject {
    Q_OBJECT
private slots:
    void strobesTellWritesFromReads();
    void accessesOfOtherDevicesAreNone();
    void theSelectMayGoWithTheStrobe();
    void strobesMayBeActiveHigh();
    void sixteenLinesMakeAWord();
    void linesMayBeMissing();
    void bothStrobesAtOnceAreAClash();
    void aCutBeginShowsTheAccess();
    void cutEndsShowNothingFalse();
    void positionsAreWiderThan32Bits();
    void settingsThatDoNotGoTogetherAreRefused();
    void textsGoFromShortToLong();
    void exportsHaveDataAndCommands();
    void theSimulationIsDecodedAsItWasSent_data();
    void theSimulationIsDecodedAsItWasSent();
    void randomEdgesGiveFramesInOrder();
};

void TstParallel8080::strobesTellWritesFromReads()
{
    const Host host = tests.someAccesses();
    const Desk desk(host, lines);
    QCOMPARE(desk.summaries(), someTexts);
    for (std::uint64_t i = 0; i < someTexts.size(); ++i) {
        QCOMPARE(desk.frame(i).first, host.starts[i]);
        QCOMPARE(desk.frame(i).last, host.ends[i]);
    }
    QCOMPARE(desk.markers(wr).size(), std::size_t(2));
    QCOMPARE(desk.markers(rd).at(0).sample, std::uint64_t(host.ends[2]));
}

void TstParallel8080::accessesOfOtherDevicesAreNone()
{
    Host host;
    host.wait(10);
    host.write(false, 1).select(true).write(false, 2).select(false).write(false, 3).read(true, 4);
    const Desk desk(host, lines);
    QCOMPARE(desk.summaries(), Texts{"write rs=0 v=2"});
    QCOMPARE(desk.markers(wr).size(), std::size_t(1));
    QCOMPARE(desk.markers(wr)[0].sample, std::uint64_t(desk.frame(0).last));
    QVERIFY(desk.markers(rd).empty());
    QCOMPARE(Desk(host, with("cs_polarity=high")).summaries(),
             (Texts{"write rs=0 v=1", "write rs=0 v=3", "read rs=1 v=4"}));
}

void TstParallel8080::theSelectMayGoWithTheStrobe()
{
    Host host;
    host.wait(10).set(cs, false).set(wr, false).bus(data, 8, 7).wait(5).set(wr, true).set(cs, true).bus(data, 8, 8);
    host.wait(5);
    QCOMPARE(Desk(host, lines).summaries(), Texts{"write rs=0 v=7"});
}

void TstParallel8080::strobesMayBeActiveHigh()
{
    Host host(true);
    host.wait(10);
    host.select(true).write(true, 0x12).read(false, 0x34).select(false);
    QCOMPARE(Desk(host, with("strobe_polarity=high")).summaries(), (Texts{"write rs=1 v=18", "read rs=0 v=52"}));
}

void TstParallel8080::sixteenLinesMakeAWord()
{
    Host host;
    host.wait(10);
    host.select(true).access(wr, true, 0xbeef, 16).select(false);
    const std::string wide = with("d8=12,d9=13,d10=14,d11=15,d12=16,d13=17,d14=18,d15=19");
    const Desk desk(host, wide);
    QCOMPARE(desk.summaries(), Texts{"write rs=1 v=48879"});
    QCOMPARE(desk.frame(0).text, std::string("Write data 0xBEEF"));
    QCOMPARE(Desk(host, wide + ",width=8").summaries(), Texts{"write rs=1 v=239"});
    QCOMPARE(Desk(host, with("width=16")).frame(0).text, std::string("Write data 0x00EF"));
}

void TstParallel8080::linesMayBeMissing()
{
    const Host host = tests.someAccesses();
    QCOMPARE(Desk(host, "wr=2,d0=4,d1=5,d2=6,d3=7").summaries(), (Texts{"write rs=null v=10", "write rs=null v=1"}));
    const Desk desk(host, "rd=3,rs=1,d0=4,d7=11");
    QCOMPARE(desk.summaries(), (Texts{"read rs=1 v=129", "read rs=0 v=1"}));
    QCOMPARE(Desk(host, "wr=2,d0=4").frame(0).text, std::string("Write 0x00"));
}

void TstParallel8080::bothStrobesAtOnceAreAClash()
{
    Host host;
    host.wait(10);
    host.select(true).write(false, 1).wait(3);
    const std::int64_t first = host.now();
    host.set(wr, false).wait(3).set(rd, false).wait(3).set(wr, true).wait(3);
    const std::int64_t last = host.now();
    host.set(rd, true).wait(3);
    host.read(true, 2);
    const Desk desk(host, lines);
    QCOMPARE(desk.summaries().size(), std::size_t(3));
    QCOMPARE(desk.frame(1).kind, std::string("clash"));
    QCOMPARE(desk.frame(1).first, first);
    QCOMPARE(desk.frame(1).last, last);
    QCOMPARE(desk.frame(2).summary(), std::string("read rs=1 v=2"));
    QCOMPARE(desk.markers(rd).at(0).type, MarkerType::ErrorX);
    QVERIFY(Desk(host, with("cs_polarity=high")).markers(rd).empty()); // one of other devices
}

void TstParallel8080::aCutBeginShowsTheAccess()
{
    tests.aCutBeginShowsTheAccess();
}

void TstParallel8080::cutEndsShowNothingFalse()
{
    tests.cutEndsShowNothingFalse();
}

void TstParallel8080::positionsAreWiderThan32Bits()
{
    tests.positionsAreWiderThan32Bits();
}

void TstParallel8080::settingsThatDoNotGoTogetherAreRefused()
{
    DecodeDesk desk(std::make_unique<Parallel8080Analyzer>());
    QCOMPARE(desk.edit({{"d0", "0"}}), std::string("Choose a channel for write or read"));
    QCOMPARE(desk.edit({{"d0", "none"}, {"wr", "1"}}), std::string("Choose a channel for one data line at least"));
    QVERIFY(!desk.edit({{"d0", "1"}}).empty());
    QCOMPARE(desk.edit({{"d0", "2"}}), std::string());
}

void TstParallel8080::textsGoFromShortToLong()
{
    tests.textsGoFromShortToLong();
}

void TstParallel8080::exportsHaveDataAndCommands()
{
    tests.exportsHaveDataAndCommands();
}

void TstParallel8080::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<QString>("settings");
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("usual") << "cs_polarity=low" << 50000000 << 50000;
    QTest::newRow("all active high, slow") << "cs_polarity=high,strobe_polarity=high" << 40000 << 777;
    QTest::newRow("small blocks") << "width=16" << 1000000 << 61;
}

void TstParallel8080::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(QString, settings);
    QFETCH(int, rate);
    QFETCH(int, block);
    tests.theSimulationIsDecodedAsItWasSent(settings, rate, block, true);
}

void TstParallel8080::randomEdgesGiveFramesInOrder()
{
    for (const char *settings : {"width=8", "strobe_polarity=high,cs_polarity=high"}) {
        QCOMPARE(strobedTraffic::faultOfRandomEdges<Parallel8080Analyzer>(with(settings)), std::string());
    }
}

QTEST_GUILESS_MAIN(TstParallel8080)
#include "tst_Parallel8080.moc"
