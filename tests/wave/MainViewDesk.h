#pragma once

#include "controls/Look.h"
#include "device/DevBase.h"
#include "device/DevModels.h"
#include "device/DeviceGlobals.h"
#include "settings/Config.h"
#include "settings/Globals.h"
#include "wave/ItemChnSidebar.h"
#include "wave/ItemWaveArrow.h"
#include "wave/ItemWaveBackground.h"
#include "wave/ItemWaveLine.h"
#include "wave/MainView.h"
#include "wave/WaveCapture.h"
#include "wave/WaveDataGen.h"
#include "wave/WaveView.h"

#include <QCursor>
#include <QGraphicsScene>
#include <QSignalSpy>
#include <QTest>
#include <QWindow>

/// A shown main view with a device and a generator of its own, joined as the main window joins them.
class MainViewDesk {
public:
    /// @param size  of the main view, device pixels
    explicit MainViewDesk(int model = 0, QSize size = {1190, 800}) : m_device(createDevice(model))
    {
        gDev = m_device.get();
        connectAll();
        rebind();
        view.resize(size);
        view.show();
        view.activateWindow();
        shown = QTest::qWaitForWindowActive(&view);
    }
    ~MainViewDesk()
    {
        gen.setDataSource(nullptr);
        gDev = nullptr;
    }
    MainViewDesk(const MainViewDesk &) = delete;
    MainViewDesk &operator=(const MainViewDesk &) = delete;

    void replaceDevice(int model)
    {
        gen.setDataSource(nullptr);
        m_device = createDevice(model);
        gDev = m_device.get();
        rebind();
    }
    /// A new capture is delivered; all of it is in view.
    void load(const WaveCapture &what)
    {
        what.fill(*gDev->smpData);
        view.clearForNewData();
        gen.dataReady();
        gen.zoomFit();
    }

    // Places are device pixels of the wave view; input takes the way of the window system's.
    void move(int x, int y)
    {
        QCursor::setPos(view.mapToGlobal(inWindow(x, y)));
        QCoreApplication::processEvents();
    }
    void press(int x, int y, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mousePress(view.windowHandle(), button, {}, inWindow(x, y));
    }
    void release(int x, int y, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mouseRelease(view.windowHandle(), button, {}, inWindow(x, y));
    }
    void click(int x, int y, Qt::MouseButton button = Qt::LeftButton)
    {
        move(x, y);
        press(x, y, button);
        release(x, y, button);
    }
    void key(Qt::Key code, Qt::KeyboardModifiers modifiers = {}) { QTest::keyClick(&view, code, modifiers); }

    [[nodiscard]] ItemChnSidebar &sidebar(int chn) const
    {
        const auto all = view.findChildren<ItemChnSidebar *>();
        const auto found =
            std::find_if(all.begin(), all.end(), [chn](const ItemChnSidebar *item) { return item->channel() == chn; });
        return **found;
    }
    template<typename Item>
    [[nodiscard]] QVector<Item *> items() const
    {
        QVector<Item *> found;
        for (QGraphicsItem *item : waves->scene()->items(Qt::AscendingOrder)) {
            if (auto *wanted = dynamic_cast<Item *>(item)) {
                found.append(wanted);
            }
        }
        return found;
    }
    /// The place of a channel's item in the scene.
    template<typename Item>
    [[nodiscard]] QRect place(int chn) const
    {
        for (const Item *item : items<Item>()) {
            if (item->data(0).toInt() == chn) {
                return item->sceneBoundingRect().toRect();
            }
        }
        return {};
    }
    [[nodiscard]] const ItemWaveArrow &arrow() const { return *items<ItemWaveArrow>().first(); }

private:
    void connectAll()
    {
        QObject::connect(&view, &MainView::zoomChangedByMouse, &view, [this](int flag, QPoint point) {
            zooms.append({flag, point});
            if (flag == 1) {
                gen.zoomInAt(point.x() / uiScale());
            } else {
                gen.zoomOutAt(point.x() / uiScale());
            }
        });
        QObject::connect(&view, &MainView::mouseDraged, &view, [this](int width) {
            drags.append(width);
            gen.setViewStart(gen.viewStart() - width * gen.ratioSasPix());
        });
        QObject::connect(&view, &MainView::logMeasureChanged, &view, [this](const QStringList &res) { texts = res; });
        QObject::connect(&gen, &WaveDataGen::sigViewRefresh, &view, [this] {
            view.refreshWave();
            gen.setFrameAck();
        });
    }
    void rebind()
    {
        gen.setDataSource(gDev->smpData.get());
        gen.setClampToData(!gDev->isAnalogModel());
        view.rebuildChannels(*gDev);
    }
    [[nodiscard]] QPoint inWindow(int x, int y) const { return waves->mapTo(&view, QPoint(x, y)); }

    std::unique_ptr<DevBase> m_device;

public:
    WaveDataGen gen;
    MainView view{&gen};
    WaveView *waves = view.findChild<WaveView *>();
    bool shown = false;
    QVector<QPair<int, QPoint>> zooms; ///< flag and place of each zoom that was asked for
    QVector<int> drags;                ///< logical pixels of each pan
    QStringList texts;                 ///< the hover's last
};

/// A fresh configuration, zooms without animation, colours and sizes of a screen of `dpi`. For a test's init().
inline void resetProgram(int dpi = 96)
{
    configLoad();
    globalsSetDpi(dpi);
    globalsFillTables();
    viewState = 0;
    disAnimateZoom = true;
    colorWaveform = false;
}
