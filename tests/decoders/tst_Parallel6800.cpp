#include "DecoderChecks.h"
#include "Parallel6800Analyzer.h"
#include "StrobedTraffic.h"
#include "WireBundle.h"

#include <QtTest>

#include <cstdint>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;
using Desk = BundleDesk<Parallel6800Analyzer>;

namespace {

constexpr std::uint32_t cs = 0;
constexpr std::uint32_t rs = 1;
constexpr std::uint32_t rw = 2;
constexpr std::uint32_t e = 3;
constexpr std::uint32_t data = 4;
constexpr const char *lines = "cs=0,rs=1,rw=2,e=3,d0=4,d1=5,d2=6,d3=7,d4=8,d5=9,d6=10,d7=11";

std::string with(const std::string &settings)
{
    return std::string(lines) + "," + settings;
}

/// A host by the figures of MIPI DBI-2 for type A; an access is 12 samples, E is active for 5.
class Host : public WireBundle {
public:
    explicit Host(bool activeHigh = true)
        : WireBundle(data + 16, activeHigh ? 1U << cs : (1U << cs | 1U << e)), m_active(activeHigh)
    {}
    Host &select(bool active)
    {
        set(cs, !active).wait(4);
        return *this;
    }
    Host &access(bool isRead, bool isData, unsigned word, unsigned width = 8)
    {
        set(rs, isData).set(rw, isRead).wait(4);
        starts.push_back(now());
        set(e, m_active).bus(data, width, word).wait(5);
        ends.push_back(now());
        set(e, !m_active).wait(1).bus(data, width, ~word).wait(2);
        return *this;
    }
    Host &write(bool isData, unsigned word) { return access(false, isData, word); }
    Host &read(bool isData, unsigned word) { return access(true, isData, word); }

    std::vector<std::int64_t> starts;
    std::vector<std::int64_t> ends;

private:
    bool m_active;
};

const strobedTraffic::Tests<Parallel6800Analyzer, Host> tests(lines);
const auto &someTexts = strobedTraffic::someTexts;

} // namespace

class TstParallel6800 : public QObject {
    Q_OBJECT
private slots:
    void theDirectionTellsWritesFromReads();
    void accessesOfOtherDevicesAreNone();
    void allLinesMayGoWithTheEnable();
    void theEnableMayBeActiveLow();
    void sixteenLinesMakeAWord();
    void linesMayBeMissing();
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

void TstParallel6800::theDirectionTellsWritesFromReads()
{
    const Host host = tests.someAccesses();
    const Desk desk(host, lines);
    QCOMPARE(desk.summaries(), someTexts);
    for (std::uint64_t i = 0; i < someTexts.size(); ++i) {
        QCOMPARE(desk.frame(i).first, host.starts[i]);
        QCOMPARE(desk.frame(i).last, host.ends[i]);
    }
    QCOMPARE(desk.markers(e).size(), std::size_t(4));
    QCOMPARE(desk.markers(e).at(2).sample, std::uint64_t(host.ends[2]));
}

void TstParallel6800::accessesOfOtherDevicesAreNone()
{
    Host host;
    host.wait(10);
    host.write(false, 1).select(true).write(false, 2).select(false).write(false, 3).read(true, 4);
    const Desk desk(host, lines);
    QCOMPARE(desk.summaries(), Texts{"write rs=0 v=2"});
    QCOMPARE(desk.markers(e).size(), std::size_t(1));
    QCOMPARE(desk.markers(e)[0].sample, std::uint64_t(host.ends[1]));
    QCOMPARE(Desk(host, with("cs_polarity=high")).summaries(),
             (Texts{"write rs=0 v=1", "write rs=0 v=3", "read rs=1 v=4"}));
}

void TstParallel6800::allLinesMayGoWithTheEnable()
{
    Host host;
    host.wait(10).set(cs, false).set(e, true).bus(data, 8, 7).wait(5).set(e, false).set(cs, true).set(rw, true);
    host.wait(5);
    QCOMPARE(Desk(host, lines).summaries(), Texts{"write rs=0 v=7"});
}

void TstParallel6800::theEnableMayBeActiveLow()
{
    Host host(false);
    host.wait(10);
    host.select(true).write(true, 0x12).read(false, 0x34).select(false);
    QCOMPARE(Desk(host, with("e_polarity=low")).summaries(), (Texts{"write rs=1 v=18", "read rs=0 v=52"}));
}

void TstParallel6800::sixteenLinesMakeAWord()
{
    Host host;
    host.wait(10);
    host.select(true).access(false, true, 0xbeef, 16).select(false);
    const std::string wide = with("d8=12,d9=13,d10=14,d11=15,d12=16,d13=17,d14=18,d15=19");
    const Desk desk(host, wide);
    QCOMPARE(desk.summaries(), Texts{"write rs=1 v=48879"});
    QCOMPARE(desk.frame(0).text, std::string("Write data 0xBEEF"));
    QCOMPARE(Desk(host, wide + ",width=8").summaries(), Texts{"write rs=1 v=239"});
    QCOMPARE(Desk(host, with("width=16")).frame(0).text, std::string("Write data 0x00EF"));
}

void TstParallel6800::linesMayBeMissing()
{
    const Host host = tests.someAccesses();
    // Without R/W all are writes.
    QCOMPARE(Desk(host, "e=3,d0=4,d1=5,d2=6,d3=7").summaries(),
             (Texts{"write rs=null v=10", "write rs=null v=1", "write rs=null v=15", "write rs=null v=5"}));
    const Desk desk(host, "e=3,rw=2,rs=1,d0=4,d7=11");
    QCOMPARE(desk.summaries(), (Texts{"write rs=0 v=0", "write rs=1 v=1", "read rs=1 v=129", "read rs=0 v=1"}));
    QCOMPARE(Desk(host, "e=3,d0=4").frame(0).text, std::string("Write 0x00"));
}

void TstParallel6800::aCutBeginShowsTheAccess()
{
    tests.aCutBeginShowsTheAccess();
}

void TstParallel6800::cutEndsShowNothingFalse()
{
    tests.cutEndsShowNothingFalse();
}

void TstParallel6800::positionsAreWiderThan32Bits()
{
    tests.positionsAreWiderThan32Bits();
}

void TstParallel6800::settingsThatDoNotGoTogetherAreRefused()
{
    DecodeDesk desk(std::make_unique<Parallel6800Analyzer>());
    QVERIFY(!desk.edit({{"d0", "0"}}).empty()); // without E
    QCOMPARE(desk.edit({{"d0", "none"}, {"e", "1"}}), std::string("Choose a channel for one data line at least"));
    QVERIFY(!desk.edit({{"d0", "1"}}).empty());
    QCOMPARE(desk.edit({{"d0", "2"}}), std::string());
}

void TstParallel6800::textsGoFromShortToLong()
{
    tests.textsGoFromShortToLong();
}

void TstParallel6800::exportsHaveDataAndCommands()
{
    tests.exportsHaveDataAndCommands();
}

void TstParallel6800::theSimulationIsDecodedAsItWasSent_data()
{
    QTest::addColumn<QString>("settings");
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("block");
    QTest::newRow("usual") << "cs_polarity=low" << 50000000 << 50000;
    QTest::newRow("all active high, slow") << "cs_polarity=high,e_polarity=low" << 40000 << 777;
    QTest::newRow("small blocks") << "width=16" << 1000000 << 61;
}

void TstParallel6800::theSimulationIsDecodedAsItWasSent()
{
    QFETCH(QString, settings);
    QFETCH(int, rate);
    QFETCH(int, block);
    tests.theSimulationIsDecodedAsItWasSent(settings, rate, block, false);
}

void TstParallel6800::randomEdgesGiveFramesInOrder()
{
    for (const char *settings : {"width=8", "e_polarity=low,cs_polarity=high"}) {
        QCOMPARE(strobedTraffic::faultOfRandomEdges<Parallel6800Analyzer>(with(settings)), std::string());
    }
}

QTEST_GUILESS_MAIN(TstParallel6800)
#include "tst_Parallel6800.moc"
