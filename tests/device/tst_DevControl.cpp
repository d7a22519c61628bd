#include "device/DevControl.h"

#include <QtTest>

#include <cmath>

class TstDevControl : public QObject {
    Q_OBJECT
private slots:
    void aThresholdTakesTheRangeOfItsVoltage_data();
    void aThresholdTakesTheRangeOfItsVoltage();
    void pwmCountsAreRoundedHalfUp_data();
    void pwmCountsAreRoundedHalfUp();
    void threeHertzOf200MegahertzTellWhatIsReallyProduced();
    void aPwmOutputWithoutAClockIsStill();
    void theStatusWordTellsHowTheInstrumentIs_data();
    void theStatusWordTellsHowTheInstrumentIs();
    void withoutAnInstrumentNothingIsOpen();
    void settingNoControlBringsBackTheOneWithoutAnInstrument();
};

void TstDevControl::aThresholdTakesTheRangeOfItsVoltage_data()
{
    QTest::addColumn<double>("volts");
    QTest::addColumn<int>("threshold");
    QTest::addColumn<int>("range");
    QTest::newRow("5 V is as 4 V") << 5.0 << 848 << 0;
    QTest::newRow("4 V") << 4.0 << 848 << 0;
    QTest::newRow("above 2.8 V") << 2.9 << 515 << 0;
    QTest::newRow("2.8 V belongs to the middle range") << 2.8 << 969 << 242;
    QTest::newRow("the default") << 1.65 << 621 << 242;
    QTest::newRow("0 V") << 0.0 << 121 << 242;
    QTest::newRow("-0.4 V belongs to the low range") << -0.4 << 969 << 727;
    QTest::newRow("-3.6 V is code 0") << -3.6 << 0 << 727;
    QTest::newRow("a negative code") << -3.8 << 0xFFC4 << 727;
    QTest::newRow("below -4 V") << -5.0 << 0xFF87 << 727;
    QTest::newRow("far below") << -1e300 << 0xFF87 << 727;
    QTest::newRow("far above") << 1e300 << 848 << 0;
    QTest::newRow("no number") << std::nan("") << 0xFF87 << 727;
}

void TstDevControl::aThresholdTakesTheRangeOfItsVoltage()
{
    QFETCH(double, volts);
    const VthCodes codes = vthCodes(volts);
    QTEST(int(codes.threshold), "threshold");
    QTEST(int(codes.range), "range");
}

void TstDevControl::pwmCountsAreRoundedHalfUp_data()
{
    QTest::addColumn<qint64>("clock");
    QTest::addColumn<double>("frequ");
    QTest::addColumn<double>("duty");
    QTest::addColumn<quint32>("period");
    QTest::addColumn<quint32>("high");
    QTest::newRow("exact") << qint64(200000000) << 1000.0 << 50.0 << 200000U << 100000U;
    QTest::newRow("a half goes up") << qint64(5) << 2.0 << 50.0 << 3U << 1U;
    QTest::newRow("less than a half goes down") << qint64(7) << 3.0 << 10.0 << 2U << 0U;
    QTest::newRow("3 Hz of 200 MHz") << qint64(200000000) << 3.0 << 50.0 << 66666667U << 33333333U;
    QTest::newRow("no duty") << qint64(250000000) << 1000.0 << 0.0 << 250000U << 0U;
    QTest::newRow("full duty") << qint64(250000000) << 1000.0 << 100.0 << 250000U << 250000U;
    QTest::newRow("a period beyond the register") << qint64(65535000000) << 0.1 << 100.0 << 0xFFFFFFFFU << 0xFFFFFFFFU;
    QTest::newRow("faster than the clock") << qint64(1000000) << 2e7 << 50.0 << 1U << 0U;
}

void TstDevControl::pwmCountsAreRoundedHalfUp()
{
    QFETCH(qint64, clock);
    QFETCH(double, frequ);
    QFETCH(double, duty);
    const PwmCounts counts = pwmCounts(clock, frequ, duty);
    QTEST(quint32(counts.period), "period");
    QTEST(quint32(counts.high), "high");
}

void TstDevControl::threeHertzOf200MegahertzTellWhatIsReallyProduced()
{
    const PwmCounts counts = pwmCounts(200000000, 3.0, 50.0);
    QVERIFY(std::abs(counts.frequ - 2.999999985) < 1e-12);
    QVERIFY(std::abs(counts.duty - 100.0 * 33333333 / 66666667) < 1e-12);
}

void TstDevControl::aPwmOutputWithoutAClockIsStill()
{
    const PwmCounts counts = pwmCounts(0, 1000.0, 50.0);
    QCOMPARE(counts.period, 1U);
    QCOMPARE(counts.high, 0U);
    QCOMPARE(counts.frequ, 0.0);
    QCOMPARE(counts.duty, 0.0);
}

void TstDevControl::theStatusWordTellsHowTheInstrumentIs_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("error");
    QTest::newRow("all ones") << 0xFFFF << 7;
    QTest::newRow("all zero") << 0 << 8;
    QTest::newRow("low bits 0") << 0x85C0 << 9;
    QTest::newRow("low bits 3") << 0x85C3 << 9;
    QTest::newRow("neither bit 6 nor 7") << 0x8501 << 10;
    QTest::newRow("no bit 6") << 0x8581 << 10;
    QTest::newRow("no bit 7") << 0x8542 << 10;
    QTest::newRow("a fault hides behind missing bits") << 0x8511 << 10;
    QTest::newRow("a fault") << 0x85D1 << 13;
    QTest::newRow("well, low bits 1") << 0x85C1 << 0;
    QTest::newRow("well, low bits 2") << 0x85C2 << 0;
    QTest::newRow("well and triggered") << 0x85CE << 0;
}

void TstDevControl::theStatusWordTellsHowTheInstrumentIs()
{
    QFETCH(int, status);
    QTEST(statusError(std::uint16_t(status)), "error");
}

void TstDevControl::withoutAnInstrumentNothingIsOpen()
{
    DevControl &none = devControl();
    std::uint16_t status = 77;
    QByteArray uid("kept");
    QCOMPARE(none.readStatus(status), 1);
    QCOMPARE(int(status), 0);
    QCOMPARE(none.readUid(uid), 1);
    QCOMPARE(uid, QByteArray("kept"));
    QCOMPARE(none.sendSmpConfig({}), 1);
    QCOMPARE(none.stopDevice(), 1);
    QCOMPARE(none.startDevice(), 1);
    QCOMPARE(none.bulkStart(), 1);
    QCOMPARE(none.bulkStop(), 1);
    SmpCaptureInfo info{1, 2, 3};
    QCOMPARE(none.readCaptureInfo(info), 1);
    QCOMPARE(info.endAddress, 3U);
    QCOMPARE(none.setReadWindow(0, 16), 1);
    QVERIFY(none.transport() == nullptr);
    QCOMPARE(none.sendPwm(0, 1, 1), 1);
    QCOMPARE(none.sendPwmEnable(3), 1);
    QCOMPARE(none.sendVth(1, {}), 1);
    QCOMPARE(none.powerOff(), 1);
}

void TstDevControl::settingNoControlBringsBackTheOneWithoutAnInstrument()
{
    DevControl *const none = &devControl();
    DevControlNone other;
    setDevControl(&other);
    QCOMPARE(&devControl(), static_cast<DevControl *>(&other));
    setDevControl(nullptr);
    QCOMPARE(&devControl(), none);
}

QTEST_APPLESS_MAIN(TstDevControl)
#include "tst_DevControl.moc"
