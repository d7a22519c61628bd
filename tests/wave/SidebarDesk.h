#pragma once

#include "controls/Look.h"
#include "controls/MyButton.h"
#include "device/DevBase.h"
#include "device/DevModels.h"
#include "device/DeviceGlobals.h"
#include "settings/Config.h"
#include "wave/ItemChnSidebar.h"
#include "wave/LabelMove.h"

#include <QClipboard>
#include <QCursor>
#include <QFile>
#include <QGuiApplication>
#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>

#include <memory>

template<typename Widget>
Widget *part(const ItemChnSidebar &sidebar, const QString &name)
{
    return sidebar.findChild<Widget *>(name);
}

inline QLineEdit *nameOf(const ItemChnSidebar &sidebar)
{
    return part<QLineEdit>(sidebar, QStringLiteral("name"));
}

inline MyButton *buttonOf(const ItemChnSidebar &sidebar, const QString &name)
{
    return part<MyButton>(sidebar, name);
}

inline QString storedName(int chn)
{
    return globalGet(QStringLiteral("chnShowName%1").arg(chn));
}

/// A window with a sidebar, and a field for the focus to go to.
struct SidebarWindow : QWidget {
    explicit SidebarWindow(int chn = 3) : sidebar(new ItemChnSidebar(chn, chn, 1, this)), other(new QLineEdit(this))
    {
        auto *column = new QVBoxLayout(this);
        column->addWidget(sidebar);
        column->addWidget(other);
        sidebar->setFixedHeight(dp(60));
        connect(sidebar, &ItemChnSidebar::trigChosen, this,
                [](int channel, int code) { gDev->setChnTrig(channel, code); });
        show();
        activateWindow();
        shown = QTest::qWaitForWindowActive(this);
    }
    /// What a user does to rename: a click into the field, all of it replaced.
    void type(const QString &text) const
    {
        QTest::mouseClick(name(), Qt::LeftButton);
        name()->selectAll();
        QTest::keyClicks(name(), text);
    }
    void paste(const QString &text) const
    {
        QGuiApplication::clipboard()->setText(text);
        QTest::mouseClick(name(), Qt::LeftButton);
        name()->selectAll();
        name()->paste();
    }
    [[nodiscard]] QLineEdit *name() const { return nameOf(*sidebar); }

    ItemChnSidebar *sidebar;
    QLineEdit *other;
    bool shown = false;
};

/// The empty configuration, the colours and sizes of a plain screen, and a device. Base of test classes of a sidebar.
class SidebarDesk {
protected:
    void setUp()
    {
        globalsSetDpi(96);
        globalsFillTables();
        QFile::remove(configPath());
        configLoad();
        m_device = createDevice(0);
        gDev = m_device.get();
        QCursor::setPos(5000, 5000);
    }
    static void tearDown() { gDev = nullptr; }

private:
    std::unique_ptr<DevBase> m_device;
};
