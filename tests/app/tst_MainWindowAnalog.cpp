#include "app/WindowDesk.h"
#include "controls/MyButton.h"
#include "device/DevModels.h"
#include "emulator/MixedSignalDesk.h"
#include "files/CaptureFile.h"
#include "measure/AnalyzerView.h"
#include "measure/MeasureViewAChn.h"
#include "measure/VoltageMarkerPair.h"
#include "measure/VoltageMeasureView.h"
#include "panels/Toolbar.h"
#include "settings/ConfigDocument.h"
#include "support/BoxCloser.h"
#include "wave/AChnTAG.h"
#include "wave/AChnTiggerTAG.h"
#include "wave/AnalogWaves.h"
#include "wave/CursorMarker.h"
#include "wave/MainView.h"
#include "wave/WaveCapture.h"
#include "wave/WaveView.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QWindow>

#include <array>

namespace {

/// Counts how often a widget is painted.
class PaintCounter : public QObject {
public:
    explicit PaintCounter(QWidget &widget) { widget.installEventFilter(this); }
    bool eventFilter(QObject *, QEvent *event) override
    {
        painted += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
    int painted = 0;
};

} // namespace

/// The analog sections of the panel in the window: their way to the generator and to the wave view, and back.
class TstMainWindowAnalog : public QObject, private WindowDesk {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void aCaptureShowsItsParametersInThePanel();
    void theSinesAtAnInstrumentAreReadInThePanel_data();
    void theSinesAtAnInstrumentAreReadInThePanel();
    void theProbesFactorCountsInThePanel();
    void anotherModelForgetsTheParameters();
    void aMarkerOfThePanelIsLaidDownInTheWavesAndReadInThePanel();
    void anotherChannelIsReadAtOnce();
    void markersAreLaidDownByKeysAlone();
    void escapeTakesOffTheMarkerThatFollowsThePointer();
    void withShiftHeldBothMarkersMove();
    void anotherModelForgetsTheVoltages();
    void anotherModelIsPaintedInATurnOfItsOwn();
    void aDataFileOpensAtAnotherModelWithItsAnalogSettings();

private:
    static constexpr int analogModel = 97;

    /// The window of the session in use, and its parts.
    void findParts()
    {
        m_panel = m_window->findChild<AnalyzerView *>();
        m_view = m_window->findChild<MainView *>();
        m_waves = m_view->findChild<WaveView *>();
        m_pair = m_panel->voltageMeasureView->pairs.first();
    }
    /// Two triangles of periods in samples of a microsecond.
    void captureTriangles(int first, int second)
    {
        SmpData &data = *gDev->smpData;
        ::capture().samples(4000).rate(analogRate).fill(data);
        setAnalog(data, 0, triangle(first));
        setAnalog(data, 1, triangle(second));
        emit gDev->sigSmpDataReady();
    }
    /// The value that the table shows of a parameter.
    [[nodiscard]] QString shown(const char *name, int chn) const
    {
        const MeasureViewAChn &table = *m_panel->measureViewAChn;
        for (int row = 0; row < table.nameLabels.size(); ++row) {
            if (table.nameLabels.at(row)->text() == QLatin1String(name)) {
                return (chn == 0 ? table.value1Labels : table.value2Labels).at(row)->text();
            }
        }
        return {};
    }
    /// The same of a voltage, in millivolts; out of all bounds if it is none.
    [[nodiscard]] double shownMillivolts(const char *name, int chn) const
    {
        QString text = shown(name, chn);
        const bool isMilli = text.endsWith(QLatin1String("mV"));
        text.remove(QLatin1String(isMilli ? "mV" : "V"));
        bool good = false;
        const double number = text.toDouble(&good);
        return good ? number * (isMilli ? 1 : 1000) : 1e9;
    }
    [[nodiscard]] QStringList voltages() const
    {
        return {m_pair->valueLabels.first()->text(), m_pair->valueLabels.last()->text(), m_pair->diffLabel->text()};
    }
    [[nodiscard]] const CursorMarker &line(int id) const
    {
        const CursorMarker *found = nullptr;
        for (const QGraphicsItem *item : m_waves->scene()->items()) {
            const auto *one = dynamic_cast<const CursorMarker *>(item);
            found = one != nullptr && one->id() == id ? one : found;
        }
        return *found;
    }
    /// The row of a channel's zero level.
    [[nodiscard]] int zeroOf(int chn) const
    {
        for (const AChnTAG *flag : m_window->findChildren<AChnTAG *>()) {
            if (flag->channel() == chn && qobject_cast<const AChnTiggerTAG *>(flag) == nullptr) {
                return flag->centre();
            }
        }
        return -1;
    }
    void move(int y)
    {
        QCursor::setPos(m_waves->mapToGlobal(QPoint(300, y)));
        QCoreApplication::processEvents();
    }
    void lay(int id, int y)
    {
        QTest::mouseClick(m_pair->markerBtns.at(id), Qt::LeftButton);
        move(y);
        QTest::mouseClick(m_window->windowHandle(), Qt::LeftButton, {}, m_waves->mapTo(m_window.get(), QPoint(300, y)));
    }

    std::unique_ptr<InstrumentDesk> m_instrument; ///< emulated, in the place of m_session
    /// A control in the sidebar, of one channel's settings.
    template<typename Widget>
    [[nodiscard]] const Widget *control(int chn, const char *name) const
    {
        const QWidget *panel = m_view->findChild<QWidget *>(QStringLiteral("aChn%1").arg(chn));
        return panel->findChild<Widget *>(QLatin1String(name));
    }
    /// A window of model 7 in which a file is dropped that was saved with other settings of the analog channels than
    /// the configuration has by then.
    void openFileOf(const QTemporaryDir &dir)
    {
        captureTriangles(60, 100);
        QVERIFY(!m_gen->aChnLine(0).empty());
        gDev->setAChnVoltDiv(0, 5000);
        gDev->setAChnVoltDiv(1, 200);
        gDev->setAChnProbe(0, 10);
        gDev->setAChnReverse(1, true);
        const QString path = dir.filePath(QStringLiteral("mixed.cxdat"));
        const CapturePart whole{std::vector<std::uint8_t>(std::size_t(gDev->smpData->chnCount), 1), 0, 4000};
        QVERIFY(CaptureFile(digitalChannelsOf).save(path, *gDev->smpData, whole, configCopy()).isDone());
        for (const int chn : {0, 1}) {
            gDev->setAChnVoltDiv(chn, 1000);
            gDev->setAChnProbe(chn, 1);
            gDev->setAChnReverse(chn, false);
        }
        m_window->slotDevPreConnect(7);
        QCOMPARE(gDev->model, 7);
        drop(path);
        QCOMPARE(m_window->windowTitle(), path + QStringLiteral(" - CorvanLUX"));
    }

    AnalyzerView *m_panel = nullptr;
    VoltageMarkerPair *m_pair = nullptr;
    MainView *m_view = nullptr;
    WaveView *m_waves = nullptr;
};

void TstMainWindowAnalog::init()
{
    QCursor::setPos(790, 590); // outside of the waves, so that a move to them enters them
    setUp(analogModel);
    findParts();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
}

void TstMainWindowAnalog::cleanup()
{
    tearDown();
    m_instrument.reset();
}

void TstMainWindowAnalog::aCaptureShowsItsParametersInThePanel()
{
    captureTriangles(60, 100);
    QTRY_COMPARE(shown("Period", 0), QStringLiteral("60us"));
    QCOMPARE(shown("Period", 1), QStringLiteral("100us"));
    QCOMPARE(shown("Frequency", 1), QStringLiteral("10KHz"));
    captureTriangles(60, 2); // too fast to be measured
    QTRY_COMPARE(shown("Period", 1), QStringLiteral("--"));
    QCOMPARE(shown("Period", 0), QStringLiteral("60us"));
}

void TstMainWindowAnalog::theSinesAtAnInstrumentAreReadInThePanel_data()
{
    QTest::addColumn<qint64>("rate");
    for (const qint64 rate : {200'000, 1'000'000}) {
        QTest::addRow("%lld Hz", static_cast<long long>(rate)) << rate;
    }
}

void TstMainWindowAnalog::theSinesAtAnInstrumentAreReadInThePanel()
{
    QFETCH(const qint64, rate);
    using emulator::AnalogWave;
    tearDown();
    m_instrument =
        mixedSignalDesk(generator({.kind = AnalogWave::Kind::Sine, .frequency = 1000, .peakToPeak = 3}),
                        generator({.kind = AnalogWave::Kind::Sine, .frequency = 2000, .peakToPeak = 6, .offset = -1}));
    makeWindow(*m_instrument->session);
    QVERIFY(m_instrument->isGood && m_instrument->plug());
    QCOMPARE(gDev->model, analogModel);
    QVERIFY(setRate(rate));
    findParts();
    constexpr std::array<qint32, 4> parameters{0, 1, 7, 9}; // places in gMeasureNames
    m_panel->measureViewAChn->slotUpdateMeasuresShow(parameters.data(), int(parameters.size()));
    QCOMPARE(shown("Vpp", 0), QStringLiteral("--"));

    m_window->findChild<Toolbar *>()->slotShortcutF5();
    QTRY_COMPARE(shown("Period", 0), QStringLiteral("1ms"));
    QCOMPARE(shown("Frequency", 0), QStringLiteral("1KHz"));
    QVERIFY(isAbout(shownMillivolts("Vpp", 0), 3000));
    QVERIFY(isAbout(shownMillivolts("Vmax", 0), 1500));
    QCOMPARE(shown("Frequency", 1), QStringLiteral("2KHz"));
    QVERIFY(isAbout(shownMillivolts("Vpp", 1), 6000, 2)); // one at either end
    QVERIFY(isAbout(shownMillivolts("Vmax", 1), 2000));
    QVERIFY(m_gen->aChnLine(0).size() > 100 && m_gen->aChnLine(1).size() > 100);
}

void TstMainWindowAnalog::theProbesFactorCountsInThePanel()
{
    const qint32 vpp = 9;
    m_panel->measureViewAChn->slotUpdateMeasuresShow(&vpp, 1);
    captureTriangles(60, 60);
    QTRY_VERIFY(shown("Vpp", 0).endsWith(QStringLiteral("V")));
    const double before = shown("Vpp", 0).chopped(1).toDouble();
    gDev->aChnProbe[0] = 10;
    captureTriangles(60, 60);
    QTRY_VERIFY(std::abs(shown("Vpp", 0).chopped(1).toDouble() - 10.0 * before) < 0.1);
    QVERIFY(std::abs(shown("Vpp", 1).chopped(1).toDouble() - before) < 0.01);
}

void TstMainWindowAnalog::anotherModelForgetsTheParameters()
{
    captureTriangles(60, 100);
    QTRY_COMPARE(shown("Period", 0), QStringLiteral("60us"));
    m_window->slotDevPreConnect(7);
    QVERIFY(m_panel->measureViewAChn->isHidden());
    m_window->slotDevPreConnect(analogModel);
    QVERIFY(!m_panel->measureViewAChn->isHidden());
    QCOMPARE(shown("Period", 0), QStringLiteral("--"));
}

void TstMainWindowAnalog::aMarkerOfThePanelIsLaidDownInTheWavesAndReadInThePanel()
{
    const QString unknown = QStringLiteral("###");
    QCOMPARE(voltages(), (QStringList{unknown, unknown, unknown}));
    lay(0, zeroOf(0));
    QCOMPARE(line(0).markerState(), MarkerState::placed);
    QCOMPARE(voltages(), (QStringList{QStringLiteral("0.00mV"), unknown, unknown}));
    lay(1, zeroOf(0) - line(0).refHeight / 4);
    QCOMPARE(voltages(), (QStringList{QStringLiteral("0.00mV"), QStringLiteral("2.50V"), QStringLiteral("2.50V")}));
}

void TstMainWindowAnalog::anotherChannelIsReadAtOnce()
{
    lay(0, zeroOf(1));
    QVERIFY(voltages().first() != QStringLiteral("0.00mV"));
    QTest::mouseClick(m_pair->btnChn, Qt::LeftButton);
    QCOMPARE(m_pair->btnChn->text(), QStringLiteral("CH2"));
    QCOMPARE(voltages().first(), QStringLiteral("0.00mV"));
}

void TstMainWindowAnalog::markersAreLaidDownByKeysAlone()
{
    MyButton *button = m_pair->markerBtns.first();
    button->setFocus(Qt::TabFocusReason);
    QTest::keyClick(button, Qt::Key_Space);
    QCOMPARE(line(0).markerState(), MarkerState::following);
    const int start = line(0).position;
    QTest::keyClick(button, Qt::Key_Return);
    QCOMPARE(line(0).markerState(), MarkerState::placed);
    QTest::keyClick(button, Qt::Key_Up, Qt::ShiftModifier);
    QCOMPARE(line(0).position, start - 1);
    QTest::keyClick(button, Qt::Key_Space); // taken up, and taken away
    QTest::keyClick(button, Qt::Key_Space);
    QCOMPARE(line(0).markerState(), MarkerState::off);
    QCOMPARE(voltages().first(), QStringLiteral("###"));
}

void TstMainWindowAnalog::escapeTakesOffTheMarkerThatFollowsThePointer()
{
    lay(1, 150);
    QTest::mouseClick(m_pair->markerBtns.first(), Qt::LeftButton);
    move(120);
    QCOMPARE(line(0).markerState(), MarkerState::following);
    QTest::keyClick(m_window->windowHandle(), Qt::Key_Escape);
    QCOMPARE(line(0).markerState(), MarkerState::off);
    QCOMPARE(voltages().first(), QStringLiteral("###"));
    QVERIFY(line(1).isShown());
}

void TstMainWindowAnalog::withShiftHeldBothMarkersMove()
{
    lay(0, 100);
    lay(1, 150);
    QTest::mouseClick(m_pair->markerBtns.last(), Qt::LeftButton);
    const QString difference = voltages().last();
    QTest::keyPress(m_window.get(), Qt::Key_Shift);
    move(170);
    QTest::keyRelease(m_window.get(), Qt::Key_Shift);
    QCOMPARE(line(0).position, 120);
    QCOMPARE(line(1).position, 170);
    QCOMPARE(voltages().last(), difference);
    move(180);
    QCOMPARE(line(0).position, 120);
}

void TstMainWindowAnalog::anotherModelForgetsTheVoltages()
{
    lay(0, 100);
    m_window->slotDevPreConnect(7);
    QVERIFY(m_panel->voltageMeasureView->isHidden());
    m_window->slotDevPreConnect(analogModel);
    QCOMPARE(voltages().count(QStringLiteral("###")), 3);
    QCOMPARE(line(0).markerState(), MarkerState::off);
}

void TstMainWindowAnalog::anotherModelIsPaintedInATurnOfItsOwn()
{
    constexpr int thirtyTwoChannels = 9;
    m_window->slotDevPreConnect(thirtyTwoChannels);
    PaintCounter toolbar(*m_window->findChild<Toolbar *>());
    PaintCounter waves(*m_waves->viewport());
    QCoreApplication::sendPostedEvents(); // all that belongs to this turn
    QCOMPARE(toolbar.painted + waves.painted, 0);
    QTRY_VERIFY(toolbar.painted > 0);
    QTRY_VERIFY(waves.painted > 0);
    for (const QWidget *widget : m_window->findChildren<QWidget *>()) { // lists and menus of controls among them
        QVERIFY2(widget->updatesEnabled(), widget->metaObject()->className());
    }
}

void TstMainWindowAnalog::aDataFileOpensAtAnotherModelWithItsAnalogSettings()
{
    const QTemporaryDir dir;
    BoxCloser closer;
    openFileOf(dir);
    QCOMPARE(closer.seen.count, 0);
    QCOMPARE(gDev->model, analogModel);
    QCOMPARE(deviceGet(gDev->name, QStringLiteral("AChnVoltDiv")), QStringLiteral("5000,200"));
    QCOMPARE(deviceGet(gDev->name, QStringLiteral("AChnProbe")), QStringLiteral("10,1"));
    QCOMPARE(gDev->aChnVoltDiv, (QVector<int>{5000, 200}));
    QCOMPARE(gDev->aChnProbe, (QVector<int>{10, 1}));
    QCOMPARE(gDev->aChnReverse, (QVector<bool>{false, true}));

    QCOMPARE(control<QComboBox>(0, "volt")->currentText(), QStringLiteral("5V/div"));
    QCOMPARE(control<QComboBox>(1, "volt")->currentText(), QStringLiteral("200mV/div"));
    QCOMPARE(control<QPushButton>(0, "probe")->text(), QStringLiteral("X10"));
    QCOMPARE(control<QPushButton>(1, "probe")->text(), QStringLiteral("X1"));

    // A file holds digital channels alone.
    QCOMPARE(gDev->smpData->sampleCount(), 4000);
    QVERIFY(!m_gen->digLine(0).empty());
    QVERIFY(m_gen->aChnLine(0).empty() && m_gen->aChnLine(1).empty());
    QCOMPARE(shown("Period", 0), QStringLiteral("--"));
}

LUX_GUI_TEST(TstMainWindowAnalog)
#include "tst_MainWindowAnalog.moc"
