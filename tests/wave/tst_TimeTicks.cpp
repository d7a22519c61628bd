#include "wave/AllocationCount.h"
#include "wave/TimeTicks.h"

#include <QtTest>

#include <limits>
#include <vector>

using namespace TimeTicks;

namespace {

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

LabelMetrics metrics()
{
    LabelMetrics metrics;
    metrics.unitWidth = {12, 12, 12, 12, 6};
    return metrics;
}

std::vector<TimeTick> ticksOf(const Scale &scale)
{
    std::vector<TimeTick> ticks(std::size_t(capacity(scale.width)));
    ticks.resize(std::size_t(fill(scale, metrics(), ticks)));
    return ticks;
}

QByteArray labels(const std::vector<TimeTick> &ticks)
{
    QByteArrayList texts;
    for (const TimeTick &tick : ticks) {
        texts << QByteArray(tick.text);
    }
    return texts.join(' ');
}

QString timeText(double ps, bool negative = false)
{
    char text[32];
    writeTime(ps, negative, text);
    return QString::fromLatin1(text);
}

Pitch pitchOf(double span, int width)
{
    Pitch pitch;
    const bool chosen = choosePitch({0.0, span / width, width}, pitch);
    return chosen ? pitch : Pitch{-1, 0, 0, 0.0, 0};
}

} // namespace

class TstTimeTicks : public QObject {
    Q_OBJECT
private slots:
    void aViewBetweenDecadesNamesTheOneBefore();
    void theRulerFromTheTriggerOn();
    void aNegativeTimeCountsUpFromTheLowerDecadeTick();
    void ticksLeftOfTheFirstWholePitchStartWithinTheView();
    void farFromTheTriggerTheTicksStillRun();
    void thePitchIsBetween25And250Pixels_data();
    void thePitchIsBetween25And250Pixels();
    void theFinestPitchIsOnePicosecond();
    void thePitchNamesItsUnit_data();
    void thePitchNamesItsUnit();
    void aLabelsRoomFollowsDigitsUnitAndScale();
    void labelsThinOutWhereTheyDoNotFit();
    void skippedTicksAreNotStored();
    void aDecadeLabelIsWrittenInTheLargestUnit_data();
    void aDecadeLabelIsWrittenInTheLargestUnit();
    void aLabelNeverPassesItsArray();
    void theTicksNeverPassTheirBuffer();
    void aSpanWithoutMeaningHasNoTicks_data();
    void aSpanWithoutMeaningHasNoTicks();
    void fillingAllocatesNothing();
};

void TstTimeTicks::theRulerFromTheTriggerOn()
{
    // 1 us per pixel: a tick every 100 us, 100 pixels apart.
    const auto ticks = ticksOf({0.0, 1e6, 1050});
    QCOMPARE(labels(ticks), QByteArray("0 +100us +200us +300us +400us +500us +600us +700us +800us +900us 1ms"));
    for (std::size_t i = 0; i < ticks.size(); ++i) {
        QCOMPARE(ticks[i].x, int(i) * 100);
        QCOMPARE(ticks[i].kind, i % 10 == 0 ? 0 : 1);
    }
}

void TstTimeTicks::aNegativeTimeCountsUpFromTheLowerDecadeTick()
{
    const auto ticks = ticksOf({-1.25e9, 1e6, 1000});
    QCOMPARE(labels(ticks), QByteArray("+800us +900us -1ms +100us +200us +300us +400us +500us +600us +700us"));
    QCOMPARE(ticks[0].x, 50);
    QCOMPARE(ticks[2].x, 250);
    QCOMPARE(ticks[2].kind, 0);
}

void TstTimeTicks::ticksLeftOfTheFirstWholePitchStartWithinTheView()
{
    const auto ticks = ticksOf({50.5e6, 1e6, 1000});
    QCOMPARE(ticks[0].x, 49);
    QCOMPARE(QString::fromLatin1(ticks[0].text), QStringLiteral("+100us"));
}

void TstTimeTicks::farFromTheTriggerTheTicksStillRun()
{
    const auto ticks = ticksOf({3600e12, 1e6, 1000});
    QCOMPARE(ticks.size(), std::size_t(10));
    QCOMPARE(QString::fromLatin1(ticks[0].text), QStringLiteral("3600s"));
}

void TstTimeTicks::thePitchIsBetween25And250Pixels_data()
{
    QTest::addColumn<double>("span");
    QTest::addColumn<int>("width");
    for (const int width : {300, 640, 999, 1920, 3840, 65536}) {
        for (double span = 1e4; span < 1e25; span *= 7.3) {
            QTest::addRow("%g ps in %d columns", span, width) << span << width;
        }
    }
}

void TstTimeTicks::thePitchIsBetween25And250Pixels()
{
    QFETCH(double, span);
    QFETCH(int, width);
    const double pixels = pitchOf(span, width).ps / (span / width);
    if (width < 2500) {
        QVERIFY2(pixels >= 24.999 && pixels <= 250.001, qPrintable(QString::number(pixels)));
    } else {
        QVERIFY2(pixels >= 24.999, qPrintable(QString::number(pixels)));
    }
}

void TstTimeTicks::theFinestPitchIsOnePicosecond()
{
    QCOMPARE(pitchOf(5.0, 1000).decade, 0);
    QCOMPARE(pitchOf(0.001, 1000).decade, 0);
    QCOMPARE(ticksOf({0.0, 0.005, 1000}).size(), std::size_t(5));
    const auto deepest = ticksOf({0.0, 1e-300, 1000});
    QCOMPARE(labels(deepest), QByteArray("0"));
}

void TstTimeTicks::thePitchNamesItsUnit_data()
{
    QTest::addColumn<int>("decade");
    QTest::addColumn<int>("unit");
    QTest::addColumn<qint64>("labelStep");
    QTest::newRow("1 ps") << 0 << 0 << qint64(1);
    QTest::newRow("100 ps") << 2 << 0 << qint64(100);
    QTest::newRow("1 ns") << 3 << 1 << qint64(1);
    QTest::newRow("10 us") << 7 << 2 << qint64(10);
    QTest::newRow("100 ms") << 11 << 3 << qint64(100);
    QTest::newRow("1 s") << 12 << 4 << qint64(1);
    QTest::newRow("1000 s") << 15 << 4 << qint64(1000);
    QTest::newRow("beyond 64 bits of ps") << 22 << 4 << qint64(10000000000);
}

void TstTimeTicks::thePitchNamesItsUnit()
{
    QFETCH(int, decade);
    const Pitch pitch = pitchOf(5.0 * std::pow(10.0, decade), 500);
    QCOMPARE(pitch.decade, decade);
    QTEST(pitch.unit, "unit");
    QTEST(qint64(pitch.labelStep), "labelStep");
}

void TstTimeTicks::aLabelsRoomFollowsDigitsUnitAndScale()
{
    Pitch pitch;
    pitch.unit = 2;
    pitch.digits = 3;
    LabelMetrics wide = metrics();
    QCOMPARE(labelRoom(pitch, wide), 6 * 4 + 12 + 8 + 1);
    wide = {12, 16, {24, 24, 25, 24, 12}, 2};
    QCOMPARE(labelRoom(pitch, wide), (12 * 4 + 25 + 16 + 1) / 2);
}

void TstTimeTicks::labelsThinOutWhereTheyDoNotFit()
{
    Pitch pitch;
    pitch.ps = 100.0;
    QCOMPARE(labelEvery(pitch, 1.0, 99), 1);
    QCOMPARE(labelEvery(pitch, 1.0, 100), 2);
    QCOMPARE(labelEvery(pitch, 1.0, 199), 2);
    QCOMPARE(labelEvery(pitch, 1.0, 200), 5);
    QCOMPARE(labelEvery(pitch, 2.02, 49), 2); // 49.5 pixels are 49
}

void TstTimeTicks::skippedTicksAreNotStored()
{
    // 30 pixels a tick: labels of 45 pixels fit on every other one.
    const auto ticks = ticksOf({0.0, 1e8 / 30.0, 330});
    QCOMPARE(labels(ticks), QByteArray("0 +200us +400us +600us +800us 1ms"));
}

void TstTimeTicks::aDecadeLabelIsWrittenInTheLargestUnit_data()
{
    QTest::addColumn<double>("ps");
    QTest::addColumn<bool>("negative");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << 0.0 << false << "0";
    QTest::newRow("zero has no sign") << 0.0 << true << "0";
    QTest::newRow("ps") << 999.0 << false << "999ps";
    QTest::newRow("ns") << 1500.0 << false << "1.5ns";
    QTest::newRow("whole") << 12e6 << false << "12us";
    QTest::newRow("negative") << 12e6 << true << "-12us";
    QTest::newRow("ms") << 999.99e9 << false << "999.99ms";
    QTest::newRow("seconds are the last unit") << 12000e12 << false << "12000s";
    QTest::newRow("nine places") << 1.123456789e12 << false << "1.123456789s";
    QTest::newRow("rounded in the tenth") << 1.1234567896e12 << false << "1.12345679s";
    QTest::newRow("zeros within") << 1.05e12 << false << "1.05s";
    QTest::newRow("beyond nine places") << 2e25 << false << "20000000000000s";
}

void TstTimeTicks::aDecadeLabelIsWrittenInTheLargestUnit()
{
    QFETCH(double, ps);
    QFETCH(bool, negative);
    QTEST(timeText(ps, negative), "text");
}

void TstTimeTicks::aLabelNeverPassesItsArray()
{
    char text[8];
    writeTime(1.123456789e12, true, text);
    QCOMPARE(QString::fromLatin1(text), QStringLiteral("-1.1234"));
    QVERIFY(timeText(1e300, true).size() <= 31);
}

void TstTimeTicks::theTicksNeverPassTheirBuffer()
{
    for (int width = 1; width < 3000; width += 7) {
        for (double psPerPixel = 0.01; psPerPixel < 1e22; psPerPixel *= 3.7) {
            const auto ticks = ticksOf({-1234.5 * psPerPixel, psPerPixel, width});
            for (const TimeTick &tick : ticks) {
                QVERIFY(tick.x >= 0 && tick.x < width);
            }
        }
    }
    // Ten picoseconds at ten pixels each, with labels that fit everywhere, in a narrow view.
    std::vector<TimeTick> ticks(std::size_t(capacity(100)));
    QCOMPARE(ticks.size(), std::size_t(6));
    QCOMPARE(fill({0.0, 0.099, 100}, {0, 0, {}, 1}, ticks), 6);
    QCOMPARE(ticks.back().x, 50);
    QCOMPARE(fill({0.0, 0.099, 100}, {0, 0, {}, 1}, {}), 0);
}

void TstTimeTicks::aSpanWithoutMeaningHasNoTicks_data()
{
    QTest::addColumn<double>("left");
    QTest::addColumn<double>("psPerPixel");
    QTest::addColumn<int>("width");
    QTest::newRow("no columns") << 0.0 << 1.0 << 0;
    QTest::newRow("negative width") << 0.0 << 1.0 << -5;
    QTest::newRow("no time per pixel") << 0.0 << 0.0 << 100;
    QTest::newRow("negative time per pixel") << 0.0 << -1.0 << 100;
    QTest::newRow("infinite time per pixel") << 0.0 << inf << 100;
    QTest::newRow("time per pixel that is no number") << 0.0 << notANumber << 100;
    QTest::newRow("span that overflows") << 0.0 << 1e308 << 1000;
    QTest::newRow("span beyond any label") << 0.0 << 1e40 << 1000;
    QTest::newRow("infinite left edge") << inf << 1.0 << 100;
    QTest::newRow("left edge that is no number") << notANumber << 1.0 << 100;
    QTest::newRow("left edge too far for its pitch") << -1e30 << 1.0 << 100;
}

void TstTimeTicks::aSpanWithoutMeaningHasNoTicks()
{
    QFETCH(double, left);
    QFETCH(double, psPerPixel);
    QFETCH(int, width);
    QVERIFY(ticksOf({left, psPerPixel, width}).empty());
}

void TstTimeTicks::fillingAllocatesNothing()
{
    std::vector<TimeTick> ticks(std::size_t(capacity(1920)));
    const LabelMetrics labelMetrics = metrics();
    const std::size_t before = allocationCount;
    const int count = fill(Scale{-5e8, 1e6, 1920}, labelMetrics, ticks);
    const std::size_t taken = allocationCount - before;
    QCOMPARE(taken, std::size_t(0));
    QVERIFY(count > 0);
}

void TstTimeTicks::aViewBetweenDecadesNamesTheOneBefore()
{
    // 400 pixels of 10 ns, from 12 us on: ticks of 1 us, of which none is a decade.
    const std::vector<TimeTick> ticks = ticksOf({12e6, 1e4, 400});
    QVERIFY(!ticks.empty());
    QCOMPARE(ticks.back().kind, tickKind::base);
    QCOMPARE(ticks.back().x, 0);
    QCOMPARE(QByteArray(ticks.back().text), QByteArray("10us"));
    QCOMPARE(QByteArray(ticksOf({-18e6, 1e4, 400}).back().text), QByteArray("-20us"));
    QVERIFY(ticksOf({9e6, 1e4, 400}).back().kind != tickKind::base); // 10 us stands in the view
}

QTEST_APPLESS_MAIN(TstTimeTicks)
#include "tst_TimeTicks.moc"
