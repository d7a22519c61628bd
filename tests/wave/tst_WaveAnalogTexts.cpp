// The measured values of analog channels, as the view's generator keeps them.

#include "analysis/AnalogParameters.h"
#include "wave/AnalogWaves.h"
#include "wave/WaveCapture.h"
#include "wave/WaveViewer.h"

#include <QtTest>

namespace {

/// A closed capture of two analog channels.
std::unique_ptr<SmpData> captureOf(const std::vector<std::int8_t> &first, const std::vector<std::int8_t> &second)
{
    auto data = capture().channels(1, 2).rate(analogRate).build();
    setAnalog(*data, 0, first);
    setAnalog(*data, 1, second);
    return data;
}

/// A view that notes the texts of both channels at each signal.
struct TextViewer : WaveViewer {
    explicit TextViewer(const SmpData *data) : WaveViewer(data)
    {
        QObject::connect(
            &gen, &WaveDataGen::sigParameterRefreshAch, &gen,
            [this] {
                onMainThread = onMainThread && QThread::currentThread() == QCoreApplication::instance()->thread();
                texts << QStringList{gen.aChnParamText(0), gen.aChnParamText(1)};
            },
            Qt::DirectConnection);
    }
    ~TextViewer() { gen.disconnect(); }

    QList<QStringList> texts;
};

QString textOf(int period, int probe = 1)
{
    return analogParameters(triangle(period), analogRate, probe);
}

} // namespace

class TstWaveAnalogTexts : public QObject {
    Q_OBJECT
private slots:
    void newDataAreMeasuredChannelByChannel();
    void theProbeFactorOfTheMomentCounts();
    void theTextsStayUntilTheNextOnesAreThere();
    void aChannelThatIsNoWaveHasNoText();
    void anotherSourceDropsWhatIsUnderWay();
    void valuesOfASourceThatHasGoneDoNotComeLater();
    void ofCapturesInQuickSuccessionTheNewestIsShown();
    void aCaptureInProgressGivesNoTexts();
    void aCaptureMayBeginWhileTheLastOneIsMeasured();
    void theViewMayEndWhileItMeasures();
};

void TstWaveAnalogTexts::newDataAreMeasuredChannelByChannel()
{
    const auto data = captureOf(triangle(60), triangle(100));
    TextViewer view(data.get());
    view.gen.dataReady();
    QCOMPARE(int(view.refreshes.size()), 1); // the view does not wait for the texts
    QTRY_COMPARE(view.texts, QList<QStringList>({{textOf(60), textOf(100)}}));
    QVERIFY(textOf(60).startsWith(QLatin1String("Period:60us,")));
    QVERIFY(view.onMainThread);
}

void TstWaveAnalogTexts::theProbeFactorOfTheMomentCounts()
{
    const auto data = captureOf(triangle(60), triangle(60));
    TextViewer view(data.get());
    view.gen.setAChnProbe(1, 10);
    view.gen.dataReady();
    view.gen.setAChnProbe(0, 100); // for the next one
    QTRY_COMPARE(view.texts, QList<QStringList>({{textOf(60), textOf(60, 10)}}));
    view.gen.dataReady();
    QTRY_COMPARE(view.texts.size(), 2);
    QCOMPARE(view.texts[1], QStringList({textOf(60, 100), textOf(60, 10)}));
}

void TstWaveAnalogTexts::theTextsStayUntilTheNextOnesAreThere()
{
    const auto data = captureOf(triangle(60), triangle(60));
    TextViewer view(data.get());
    view.gen.dataReady();
    QTRY_COMPARE(view.texts.size(), 1);
    setAnalog(*data, 0, triangle(80));
    view.gen.dataReady();
    QCOMPARE(view.gen.aChnParamText(0), textOf(60));
    QTRY_COMPARE(view.gen.aChnParamText(0), textOf(80));
}

void TstWaveAnalogTexts::aChannelThatIsNoWaveHasNoText()
{
    const auto data = captureOf(std::vector<std::int8_t>(1000, 5), triangle(60));
    TextViewer view(data.get());
    view.gen.dataReady();
    QTRY_COMPARE(view.texts, QList<QStringList>({{QString(), textOf(60)}}));
}

void TstWaveAnalogTexts::anotherSourceDropsWhatIsUnderWay()
{
    const auto first = captureOf(triangle(60), triangle(60));
    const auto second = captureOf(triangle(100), triangle(100));
    TextViewer view(first.get());
    view.gen.dataReady();
    view.gen.setDataSource(second.get());
    QCOMPARE(view.gen.aChnParamText(0), QString());
    view.gen.dataReady();
    QTRY_VERIFY(!view.texts.isEmpty());
    QCOMPARE(view.texts, QList<QStringList>({{textOf(100), textOf(100)}}));
    view.gen.setDataSource(nullptr);
    QCOMPARE(view.gen.aChnParamText(0), QString());
    view.gen.dataReady(); // nothing to measure: told at once
    QCOMPARE(view.texts.size(), 2);
}

void TstWaveAnalogTexts::valuesOfASourceThatHasGoneDoNotComeLater()
{
    const auto data = captureOf(triangle(60), triangle(60));
    TextViewer view(data.get());
    view.gen.dataReady();
    view.gen.setDataSource(nullptr);
    TextViewer later(data.get());
    later.gen.dataReady();
    QTRY_VERIFY_WITH_TIMEOUT(!later.texts.isEmpty(), 30000); // by then the first ones would be there
    QVERIFY(view.texts.isEmpty());
    QCOMPARE(view.gen.aChnParamText(0), QString());
}

void TstWaveAnalogTexts::ofCapturesInQuickSuccessionTheNewestIsShown()
{
    const auto data = captureOf(triangle(60), triangle(60));
    TextViewer view(data.get());
    for (int period = 41; period <= 90; ++period) {
        setAnalog(*data, 1, triangle(period));
        view.gen.dataReady();
    }
    QTRY_COMPARE(view.texts, QList<QStringList>({{textOf(60), textOf(90)}}));
}

void TstWaveAnalogTexts::aCaptureInProgressGivesNoTexts()
{
    const auto data = captureOf(triangle(60), triangle(60));
    TextViewer view(data.get());
    view.gen.dataReady();
    QTRY_COMPARE(view.texts.size(), 1);
    data->open();
    view.gen.dataReady();
    QTRY_COMPARE(view.texts.size(), 2);
    QCOMPARE(view.texts[1], QStringList({QString(), QString()}));
    data->readmit();
}

void TstWaveAnalogTexts::aCaptureMayBeginWhileTheLastOneIsMeasured()
{
    const auto data = captureOf(triangle(60), triangle(60));
    TextViewer view(data.get());
    for (int period = 61; period <= 80; ++period) {
        view.gen.dataReady();
        // The writer waits for no measurement, and leaves nothing of the samples that are measured.
        QVERIFY(data->open(std::chrono::milliseconds(0)));
        capture().channels(1, 2).rate(analogRate).fill(*data);
        setAnalog(*data, 0, triangle(period));
        setAnalog(*data, 1, triangle(period));
    }
    QTRY_COMPARE(view.texts.size(), 1);
    QCOMPARE(view.texts[0], QStringList({textOf(79), textOf(79)}));
}

void TstWaveAnalogTexts::theViewMayEndWhileItMeasures()
{
    const auto data = captureOf(triangle(60), triangle(100));
    for (int round = 0; round < 20; ++round) {
        TextViewer view(data.get());
        view.gen.dataReady();
    }
}

QTEST_MAIN(TstWaveAnalogTexts)
#include "tst_WaveAnalogTexts.moc"
