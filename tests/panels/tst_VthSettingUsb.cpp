// What is chosen in the panel arrives in an instrument, over the transport and the wire.

#include "device/BringUpDesk.h"
#include "device/DeviceGlobals.h"
#include "panels/Toolbar.h"
#include "panels/VthSetting.h"

#include <QComboBox>
#include <QLineEdit>

namespace {

struct Thresholds {
    double first = 0;  ///< volts
    double second = 0; ///< volts
    bool firstSet = false;
    bool secondSet = false;
};

constexpr double step = 0.0033; ///< volts of the instrument's converter

} // namespace

class TstVthSettingUsb : public QObject {
    Q_OBJECT
private slots:
    void cleanup();

    void aFamilyArrivesInItsHalfOfTheChannels_data();
    void aFamilyArrivesInItsHalfOfTheChannels();
    void aTypedVoltageArrives_data();
    void aTypedVoltageArrives();
    void theOneRowOfASmallerModelSetsTheFirstThreshold();
    void bothSavedThresholdsReachAnInstrumentThatArrives();
    void anInstrumentThatIsGoneIsNotAsked();

private:
    /// A bar for an instrument of that model that has been brought up.
    void connectInstrument(int model)
    {
        m_desk = std::make_unique<BringUpDesk>(model);
        m_bar = std::make_unique<Toolbar>();
        m_desk->add(runningInstrument(model));
        m_desk->bus->plug();
        QTRY_VERIFY(m_desk->hasEnded());
        QCOMPARE(m_desk->firstError(), (Report{0, 0}));
        QVERIFY(gDev->connected);
    }
    /// What has arrived, when all has.
    [[nodiscard]] Thresholds inInstrument()
    {
        m_desk->settle();
        return m_desk->bus->with(0, [](emulator::Instrument &instrument) {
            const emulator::Outputs::Threshold &first = instrument.outputs().threshold(0);
            const emulator::Outputs::Threshold &second = instrument.outputs().threshold(1);
            return Thresholds{first.volts(), second.volts(), first.set, second.set};
        });
    }
    static bool isAbout(double volts, double wanted) { return std::abs(volts - wanted) <= step; }

    std::unique_ptr<BringUpDesk> m_desk;
    std::unique_ptr<Toolbar> m_bar;
};

void TstVthSettingUsb::cleanup()
{
    m_bar.reset();
    m_desk.reset();
}

void TstVthSettingUsb::aFamilyArrivesInItsHalfOfTheChannels_data()
{
    QTest::addColumn<QString>("level");
    QTest::addColumn<double>("volts");
    QTest::newRow("5.0V TTL") << QStringLiteral("5.0V TTL") << 1.58;
    QTest::newRow("5.0V CMOS") << QStringLiteral("5.0V CMOS") << 2.5;
    QTest::newRow("0.9V CMOS") << QStringLiteral("0.9V CMOS") << 0.45;
}

void TstVthSettingUsb::aFamilyArrivesInItsHalfOfTheChannels()
{
    QFETCH(QString, level);
    QFETCH(double, volts);
    connectInstrument(9);
    m_bar->vthSetting->levelBoxes.at(1)->setCurrentText(level);
    Thresholds now = inInstrument();
    QVERIFY(isAbout(now.first, 1.65));
    QVERIFY(isAbout(now.second, volts));
    m_bar->vthSetting->levelBoxes.at(1)->setCurrentText(QStringLiteral("3.0V CMOS"));
    m_bar->vthSetting->levelBoxes.at(0)->setCurrentText(level);
    now = inInstrument();
    QVERIFY(isAbout(now.first, volts));
    QVERIFY(isAbout(now.second, 1.5));
}

void TstVthSettingUsb::aTypedVoltageArrives_data()
{
    QTest::addColumn<double>("volts");
    for (const double volts : {-4.0, -3.99, -0.41, -0.4, 0.0, 2.8, 2.81, 4.0}) {
        QTest::addRow("%.2f V", volts) << volts;
    }
}

void TstVthSettingUsb::aTypedVoltageArrives()
{
    QFETCH(double, volts);
    connectInstrument(9);
    VthSetting &panel = *m_bar->vthSetting;
    for (int row = 0; row < 2; ++row) {
        panel.levelBoxes.at(row)->setCurrentIndex(panel.presets.size() - 1);
        QLineEdit *edit = panel.vthEdits.at(row);
        edit->clear();
        QTest::keyClicks(edit, QString::number(volts, 'f', 2));
        QTest::keyClick(edit, Qt::Key_Return);
    }
    QVERIFY(isAbout(inInstrument().first, volts));
    QVERIFY(isAbout(inInstrument().second, volts));
}

void TstVthSettingUsb::theOneRowOfASmallerModelSetsTheFirstThreshold()
{
    connectInstrument(8);
    m_bar->vthSetting->levelBoxes.at(0)->setCurrentText(QStringLiteral("1.8V CMOS"));
    const Thresholds now = inInstrument();
    QVERIFY(isAbout(now.first, 0.9));
    QVERIFY(now.firstSet && !now.secondSet);
}

void TstVthSettingUsb::bothSavedThresholdsReachAnInstrumentThatArrives()
{
    connectInstrument(9);
    m_bar->vthSetting->levelBoxes.at(0)->setCurrentText(QStringLiteral("1.2V CMOS"));
    m_bar->vthSetting->levelBoxes.at(1)->setCurrentText(QStringLiteral("5.0V CMOS"));
    m_desk->bus->unplug();
    QTRY_VERIFY(!gDev->connected);
    QVERIFY(!inInstrument().firstSet && !inInstrument().secondSet);
    m_desk->reports.clear();
    m_desk->bus->plug();
    QTRY_VERIFY(m_desk->hasEnded());
    const Thresholds now = inInstrument();
    QVERIFY(now.firstSet && isAbout(now.first, 0.6));
    QVERIFY(now.secondSet && isAbout(now.second, 2.5));
}

void TstVthSettingUsb::anInstrumentThatIsGoneIsNotAsked()
{
    connectInstrument(9);
    m_desk->bus->unplug();
    QTRY_VERIFY(!gDev->connected);
    m_bar->vthSetting->levelBoxes.at(1)->setCurrentText(QStringLiteral("5.0V CMOS"));
    QCOMPARE(deviceGet(gDev->name, QStringLiteral("chnVth2")), QStringLiteral("2.50"));
    QVERIFY(!inInstrument().secondSet);
}

QTEST_MAIN(TstVthSettingUsb)
#include "tst_VthSettingUsb.moc"
