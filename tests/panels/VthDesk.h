#pragma once

#include "device/DeviceGlobals.h"
#include "panels/PanelDevice.h"
#include "panels/VthSetting.h"
#include "support/BoxCloser.h"
#include "support/FakeDevControl.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

#include <memory>

constexpr int oneRowModel = 8;
constexpr int twoRowModel = 9;
constexpr int customLevel = 9; ///< of the presets

inline QString text(const char *latin1)
{
    return QString::fromLatin1(latin1);
}

/// What a threshold looks like to the instrument.
inline QString sentVth(double volts, int index)
{
    const VthCodes codes = vthCodes(volts);
    return QStringLiteral("sendVth %1 %2 %3").arg(index).arg(codes.threshold).arg(codes.range);
}

/// The panel in a window, for a device that an instrument is connected to, behind the settings that `saved` lists as
/// key and value. Boxes are closed as they appear. Another control stands on either side of the panel.
class VthDesk {
public:
    using Settings = QVector<QPair<QString, QString>>;

    explicit VthDesk(int model, const Settings &saved = {}) : device(model)
    {
        for (const auto &[key, value] : saved) {
            deviceSet(gDev->name, key, value);
        }
        gDev->connected = true;
        before = new QPushButton(&window);
        panel = new VthSetting(&window);
        after = new QPushButton(&window);
        before->setGeometry(0, 0, 40, 20);
        panel->setGeometry(50, 0, 300, 44);
        after->setGeometry(360, 0, 40, 20);
        window.resize(420, 60);
        atStart = instrument.calls;
        instrument.calls.clear();
    }

    /// Shows the window, and gives the focus to the field, which must be enabled.
    void type(int row, const QString &entry) const
    {
        QLineEdit *edit = panel->vthEdits.at(row);
        edit->setFocus();
        edit->selectAll();
        QTest::keyClick(edit, Qt::Key_Delete);
        QTest::keyClicks(edit, entry);
        QCOMPARE(edit->text(), entry);
    }
    void show()
    {
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
    }
    /// Waits for the focus in a field behind a box. Not every platform of a test activates the window by itself.
    void comeBackTo(int row)
    {
        QCOMPARE(window.focusWidget(), panel->vthEdits.at(row));
        show();
        QTRY_VERIFY(panel->vthEdits.at(row)->hasFocus());
    }
    static QString saved(const char *key) { return deviceGet(gDev->name, QString::fromLatin1(key)); }
    [[nodiscard]] QString shown(int row = 0) const { return panel->vthEdits.at(row)->text(); }

    PanelDevice device;
    FakeDevControl instrument;
    BoxCloser boxes;
    QWidget window;
    QPushButton *before = nullptr;
    VthSetting *panel = nullptr;
    QPushButton *after = nullptr;
    QStringList atStart; ///< what building the panel has asked of the instrument
};

inline VthDesk::Settings customSettings(const char *volts)
{
    return {{text("chnLevel"), text("Custom I/O")}, {text("chnVth"), text(volts)}};
}
