#include "PulseAnalyzer.h"
#include "support/DecodeDesk.h"

#include <QtTest>

#include <memory>

extern "C" {
Analyzer *CreateAnalyzer();
void DestroyAnalyzer(Analyzer *analyzer);
const char *GetAnalyzerName();
const char *GetParaInfoList();
}

class TstExample : public QObject {
    Q_OBJECT
private slots:
    void theEntryPointsMakeAndDestroyIt();
    void pulsesAreFoundWithTheirEnds();
    void aPulseThatTheCaptureCutsIsNotShown();
    void shortOnesAreLeftOutAndLongOnesMarked();
    void itsOwnSimulationDecodesToPulses();
};

void TstExample::theEntryPointsMakeAndDestroyIt()
{
    Analyzer *analyzer = CreateAnalyzer();
    QCOMPARE(std::string(analyzer->AnalyzerName()), std::string(GetAnalyzerName()));
    QCOMPARE(std::string(analyzer->GetAnalyzerVersion()), std::string("1.0"));
    QVERIFY(!analyzer->NeedsRestart());
    QCOMPARE(std::string(GetParaInfoList()), std::string());
    AnalyzerResults *results = nullptr;
    QVERIFY(!analyzer->GetAnalyzerResults(&results));
    analyzer->SetupResults();
    QVERIFY(analyzer->GetAnalyzerResults(&results));
    DestroyAnalyzer(analyzer);
}

void TstExample::pulsesAreFoundWithTheirEnds()
{
    TestCapture capture(1000000, 1000);
    capture.channel(1, false, {10, 20, 50, 55});
    DecodeDesk desk(std::make_unique<PulseAnalyzer>(), "line=1");
    desk.run(capture);
    const auto frames = desk.frames();
    QCOMPARE(frames.size(), std::size_t(2));
    QCOMPARE(frames[0].first, 10);
    QCOMPARE(frames[0].last, 19);
    QCOMPARE(frames[1].summary(), std::string("pulse width=5 err=0"));
    QCOMPARE(frames[1].text, std::string("High pulse of 5.00 us"));
    QVERIFY(desk.results().DoBubblesAppearOnChannel(Channel(0, 1)));
}

void TstExample::aPulseThatTheCaptureCutsIsNotShown()
{
    TestCapture capture(1000000, 1000);
    capture.channel(0, true, {10, 20, 30, 40});
    DecodeDesk desk(std::make_unique<PulseAnalyzer>(), "line=0");
    QCOMPARE(desk.run(capture).summaries(), (std::vector<std::string>{"pulse width=10 err=0"}));
    DecodeDesk low(std::make_unique<PulseAnalyzer>(), "line=0,level=low");
    QCOMPARE(low.run(capture).frames().at(0).first, 10);
}

void TstExample::shortOnesAreLeftOutAndLongOnesMarked()
{
    TestCapture capture(1000000, 1000);
    capture.channel(0, false, {10, 11, 50, 55, 60, 80});
    DecodeDesk desk(std::make_unique<PulseAnalyzer>());
    QCOMPARE(desk.edit({{"line", "0"}, {"shortest_ns", "5000"}, {"longest_ns", "4000"}}),
             std::string("The longest pulse must not be shorter than the shortest."));
    QCOMPARE(desk.edit({{"longest_ns", "6000"}}), std::string());
    desk.run(capture);
    QCOMPARE(desk.summaries(), (std::vector<std::string>{"pulse width=5 err=0", "pulse width=20 err=1"}));
    QCOMPARE(desk.markers(0).at(0).sample, std::uint64_t(60));
    QCOMPARE(desk.markers(0).at(0).type, MarkerType::ErrorX);
}

void TstExample::itsOwnSimulationDecodesToPulses()
{
    for (const std::int64_t rate : {1000000, 10000000, 999999937}) {
        DecodeDesk desk(std::make_unique<PulseAnalyzer>(), "line=4");
        const auto capture = desk.simulate(rate, rate / 100, rate / 997);
        desk.run(*capture);
        const auto frames = desk.frames();
        QVERIFY(frames.size() > 900);
        for (const DecodedFrame &frame : frames) {
            const double microseconds = double(frame.last + 1 - frame.first) * 1e6 / double(rate);
            QVERIFY(microseconds > 0.9 && microseconds < 8.1);
        }
    }
}

QTEST_APPLESS_MAIN(TstExample)
#include "tst_Example.moc"
