#include "AnalyzerDesk.h"

#include <vector>

namespace {

constexpr std::int64_t rate = 1000000; // Hz

} // namespace

class TstAnalyzerSimulation : public QObject {
    Q_OBJECT

private slots:
    void anAnalyzerDrivesItsChannel();
    void blocksGoOnWhereTheLastOneEnded();
    void withoutAnalyzersNobodyDrivesAnything();
    void aCloneThatThrowsDrivesNothingAndIsTold();
    void aCloneThatNeverReturnsIsLeftBehindAndTold();
    void anAnalyzerWithoutAChannelDrivesNothing();
    void aRunThatHasBegunKeepsItsClones();
};

void TstAnalyzerSimulation::anAnalyzerDrivesItsChannel()
{
    AnalyzerDesk desk({QStringLiteral("sound")});
    QVERIFY(desk.add(4));
    SimulationSource &source = desk.manager->simulation();
    source.begin(rate);
    std::vector<SimulationChannel> channels;
    source.build(1000, rate, channels);
    QCOMPARE(channels.size(), std::size_t(1));
    QCOMPARE(channels[0].chn, 4);
    QCOMPARE(channels[0].initialLevel, 1);
    std::int64_t sum = 0;
    for (const std::int32_t width : channels[0].widths) {
        QVERIFY(width > 0);
        sum += width;
    }
    QCOMPARE(sum, std::int64_t(1000));
    source.release();
}

void TstAnalyzerSimulation::blocksGoOnWhereTheLastOneEnded()
{
    AnalyzerDesk desk({QStringLiteral("sound")});
    QVERIFY(desk.add(0));
    SimulationSource &source = desk.manager->simulation();
    source.begin(rate);
    std::vector<SimulationChannel> channels;
    std::int64_t sum = 0;
    for (std::int64_t newest = 777; newest < 10000; newest += 777) {
        source.build(newest, rate, channels);
        for (const std::int32_t width : channels[0].widths) {
            sum += width;
        }
        QCOMPARE(sum, newest);
        channels[0].widths.clear();
    }
    source.release();
}

void TstAnalyzerSimulation::withoutAnalyzersNobodyDrivesAnything()
{
    AnalyzerDesk desk({QStringLiteral("sound")});
    SimulationSource &source = desk.manager->simulation();
    source.begin(rate);
    std::vector<SimulationChannel> channels;
    source.build(1000, rate, channels);
    QVERIFY(channels.empty());
    source.release();
}

void TstAnalyzerSimulation::aCloneThatThrowsDrivesNothingAndIsTold()
{
    AnalyzerDesk desk({QStringLiteral("simulation-throws"), QStringLiteral("sound")});
    QVERIFY(desk.add(0, 0));
    QVERIFY(desk.add(1, 1));
    SimulationSource &source = desk.manager->simulation();
    source.begin(rate);
    std::vector<SimulationChannel> channels;
    source.build(1000, rate, channels);
    source.build(2000, rate, channels);
    int driven = 0;
    for (const SimulationChannel &channel : channels) {
        driven += channel.widths.empty() ? 0 : 1;
    }
    QCOMPARE(driven, 1);
    source.release();
    QTRY_COMPARE(desk.told, QStringList{QStringLiteral("Lie: the plug-in threw")});
}

void TstAnalyzerSimulation::aCloneThatNeverReturnsIsLeftBehindAndTold()
{
    AnalyzerDesk desk({QStringLiteral("simulation-spins"), QStringLiteral("sound")});
    QVERIFY(desk.add(0, 0));
    QVERIFY(desk.add(1, 1));
    SimulationSource &source = desk.manager->simulation();
    source.begin(rate);
    std::vector<SimulationChannel> channels;
    source.build(1000, rate, channels); // does not return in the first one
    source.build(2000, rate, channels); // and does not ask it again
    QCOMPARE(channels.size(), std::size_t(1));
    QCOMPARE(channels[0].chn, 1);
    source.release();
    QTRY_COMPARE(desk.told.size(), 1);
    QVERIFY2(desk.told[0].contains(QStringLiteral("could not be ended")), qPrintable(desk.told[0]));
}

void TstAnalyzerSimulation::anAnalyzerWithoutAChannelDrivesNothing()
{
    AnalyzerDesk desk({QStringLiteral("sound")});
    QVERIFY(desk.add(-1));
    SimulationSource &source = desk.manager->simulation();
    source.begin(rate);
    std::vector<SimulationChannel> channels;
    source.build(1000, rate, channels);
    QVERIFY(channels.empty());
    source.release();
}

void TstAnalyzerSimulation::aRunThatHasBegunKeepsItsClones()
{
    AnalyzerDesk desk({QStringLiteral("sound")});
    QVERIFY(desk.add(2));
    SimulationSource &source = desk.manager->simulation();
    source.begin(rate);
    desk.manager->removeAnalyzer(0);
    std::vector<SimulationChannel> channels;
    source.build(1000, rate, channels);
    QCOMPARE(channels.size(), std::size_t(1));
    source.release();
    source.begin(rate);
    channels.clear();
    source.build(1000, rate, channels);
    QVERIFY(channels.empty());
    source.release();
}

QTEST_GUILESS_MAIN(TstAnalyzerSimulation)
#include "tst_AnalyzerSimulation.moc"
