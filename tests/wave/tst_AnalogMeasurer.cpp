#include "analysis/AnalogParameters.h"
#include "wave/AnalogMeasurer.h"
#include "wave/AnalogWaves.h"

#include <QtTest>

namespace {

AnalogMeasurer::Job jobOf(int period, int probe = 1)
{
    return {{{triangle(period), probe}}, analogRate};
}

/// A measurer, and what it delivers to the main thread.
struct Desk {
    Desk()
    {
        QObject::connect(
            &measurer, &AnalogMeasurer::measured, &measurer,
            [this] {
                if (const auto taken = measurer.takeTexts()) {
                    texts << *taken;
                }
            },
            Qt::QueuedConnection);
    }

    QList<QStringList> texts;
    AnalogMeasurer measurer; // last: its thread ends before what it reports to
};

} // namespace

class TstAnalogMeasurer : public QObject {
    Q_OBJECT
private slots:
    void eachChannelOfAJobHasAText();
    void theThreadBeginsWithTheFirstJob();
    void jobsFollowOneAnother();
    void onlyTheNewestJobIsDelivered();
    void aCancelledJobIsNotDelivered();
    void textsAreTakenOnce();
    void itEndsWithJobsUnderWay();
};

void TstAnalogMeasurer::eachChannelOfAJobHasAText()
{
    Desk desk;
    desk.measurer.measure({{{triangle(100), 1}, {}, {triangle(50), 10}}, analogRate});
    QTRY_COMPARE(desk.texts.size(), 1);
    QCOMPARE(desk.texts[0], QStringList({analogParameters(triangle(100), analogRate, 1), QString(),
                                         analogParameters(triangle(50), analogRate, 10)}));
    QVERIFY(desk.texts[0][0].startsWith(QLatin1String("Period:100us,")));
    QVERIFY(desk.texts[0][2].startsWith(QLatin1String("Period:50us,")));
}

void TstAnalogMeasurer::theThreadBeginsWithTheFirstJob()
{
    Desk desk;
    QVERIFY(!desk.measurer.isRunning());
    desk.measurer.cancel();
    QVERIFY(!desk.measurer.isRunning());
    desk.measurer.measure({});
    QVERIFY(desk.measurer.isRunning());
    QTRY_COMPARE(desk.texts, QList<QStringList>{QStringList()});
}

void TstAnalogMeasurer::jobsFollowOneAnother()
{
    Desk desk;
    for (const int period : {60, 80, 100}) {
        desk.texts.clear();
        desk.measurer.measure(jobOf(period));
        QTRY_COMPARE(desk.texts.size(), 1);
        QVERIFY(desk.texts[0][0].startsWith(QStringLiteral("Period:%1us,").arg(period)));
    }
}

void TstAnalogMeasurer::onlyTheNewestJobIsDelivered()
{
    Desk desk;
    // The main thread does not come to take what is ready meanwhile.
    for (int period = 41; period <= 90; ++period) {
        desk.measurer.measure(jobOf(period));
    }
    QTRY_COMPARE(desk.texts.size(), 1);
    QVERIFY(desk.texts[0][0].startsWith(QLatin1String("Period:90us,")));
}

void TstAnalogMeasurer::aCancelledJobIsNotDelivered()
{
    Desk desk;
    desk.measurer.measure(jobOf(60));
    desk.measurer.cancel();
    desk.measurer.measure(jobOf(80));
    desk.measurer.cancel();
    desk.measurer.measure(jobOf(100)); // behind the others: when it is there, they are dealt with
    QTRY_COMPARE(desk.texts.size(), 1);
    QVERIFY(desk.texts[0][0].startsWith(QLatin1String("Period:100us,")));
    QVERIFY(!desk.measurer.takeTexts());
}

void TstAnalogMeasurer::textsAreTakenOnce()
{
    Desk desk;
    desk.measurer.measure(jobOf(60));
    QTRY_COMPARE(desk.texts.size(), 1);
    QVERIFY(!desk.measurer.takeTexts());
}

void TstAnalogMeasurer::itEndsWithJobsUnderWay()
{
    for (int round = 0; round < 50; ++round) {
        AnalogMeasurer measurer;
        for (int job = 0; job <= round % 3; ++job) {
            measurer.measure(jobOf(60));
        }
    }
}

QTEST_GUILESS_MAIN(TstAnalogMeasurer)
#include "tst_AnalogMeasurer.moc"
