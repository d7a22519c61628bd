#pragma once

#include "controls/MenuDialog.h"
#include "controls/MyButton.h"
#include "wave/AChnTAG.h"
#include "wave/AChnTiggerTAG.h"
#include "wave/AnalogArea.h"
#include "wave/ItemAChWaveBackground.h"
#include "wave/ItemAChnSidebar.h"
#include "wave/ItemAChnWaveLine.h"
#include "wave/MainViewDesk.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QScrollArea>
#include <QSpinBox>

#include <functional>

constexpr int analogModel = 97;

/// A shown main view of the mixed-signal model, and what a hand does with its analog controls.
class AnalogDesk : public MainViewDesk {
public:
    /// The digital rows take their least height, so that the analog area is dp(336) high.
    explicit AnalogDesk(QSize size = {1190, 800}) : MainViewDesk(analogModel, size)
    {
        // As the main window joins them.
        gen.setSampleRateHz(gDev->smpFrequ());
        gen.updateLines();
        QObject::connect(gDev, &DevBase::sigChnEnaChanged, &view, &MainView::slotChnEnaChanged);
    }

    template<typename Widget>
    [[nodiscard]] Widget *part(const char *name) const
    {
        return view.findChild<Widget *>(QLatin1String(name));
    }
    /// A control of one channel's settings.
    template<typename Widget>
    [[nodiscard]] Widget *part(int chn, const char *name) const
    {
        const QWidget *panel = view.findChild<QWidget *>(QStringLiteral("aChn%1").arg(chn));
        return panel == nullptr ? nullptr : panel->template findChild<Widget *>(QLatin1String(name));
    }
    [[nodiscard]] ItemAChnSidebar *column() const { return view.findChild<ItemAChnSidebar *>(); }
    [[nodiscard]] AChnTAG *tag(int chn) const { return view.findChild<AChnTAG *>(QStringLiteral("tag%1").arg(chn)); }
    [[nodiscard]] AChnTAG *trigTag() const { return part<AChnTAG>("trigTag"); }
    [[nodiscard]] const AnalogArea &area() const { return view.analog(); }
    [[nodiscard]] int height() const { return area().height(); }

    static void clickOn(QWidget *control) { QTest::mouseClick(control, Qt::LeftButton); }
    static void pressKey(QWidget *control, int key)
    {
        control->setFocus(Qt::TabFocusReason);
        QTest::keyClick(control, Qt::Key(key));
    }
    /// Takes a flag at its middle and lets go of it so many pixels further down.
    static void drag(AChnTAG *flag, int down)
    {
        const QPoint middle = flag->rect().center();
        QTest::mousePress(flag, Qt::LeftButton, {}, middle);
        moveHeld(flag, middle + QPoint(0, down));
        QTest::mouseRelease(flag, Qt::LeftButton, {}, middle);
    }
    /// A move with the left button held, which QTest::mouseMove() does not tell.
    static void moveHeld(QWidget *widget, QPoint where)
    {
        QMouseEvent event(QEvent::MouseMove, where, widget->mapToGlobal(where), Qt::NoButton, Qt::LeftButton, {});
        QCoreApplication::sendEvent(widget, &event);
    }
    /// A wholly new text of a field, and Enter.
    static void type(QWidget *field, const QString &text)
    {
        field->setFocus();
        QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(field, text);
        QTest::keyClick(field, Qt::Key_Return);
    }
    static void choose(QComboBox *box, const QString &text)
    {
        box->setFocus(Qt::TabFocusReason);
        QTest::keyClick(box, Qt::Key_Home);
        for (int i = 0; i < box->count() && box->currentText() != text; ++i) {
            QTest::keyClick(box, Qt::Key_Down);
        }
    }
    /// Analog samples by channel and index, in a capture of so many.
    void fill(int samples, const std::function<int(int chn, int sample)> &value, const WaveCapture &digital)
    {
        WaveCapture what = digital;
        what.samples(samples).fill(*gDev->smpData);
        for (int chn = 0; chn < 2; ++chn) {
            SmpAChnBuffer *buffer = SmpWriter(*gDev->smpData).aChnBuf(chn);
            for (int i = 0; i < buffer->count; ++i) {
                buffer->samples[i] = std::int8_t(value(chn, i));
            }
        }
        view.clearForNewData();
        gen.dataReady();
        gen.zoomFit();
    }
    /// The waves as they are on the screen.
    [[nodiscard]] QImage picture() const { return waves->grab().toImage().convertToFormat(QImage::Format_RGB32); }
};

inline QString storedOfDevice(const char *key)
{
    return deviceGet(gDev->name, QLatin1String(key));
}
