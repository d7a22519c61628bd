#pragma once

#include "controls/MyButton.h"
#include "device/DeviceGlobals.h"
#include "measure/PulseMeasure.h"
#include "support/GuiTestMain.h"
#include "wave/MainViewDesk.h"

#include <initializer_list>

/// What tests of the rows of the pulse measurements do with them.
namespace PulseRows {

inline void add(PulseMeasure &panel, int count)
{
    for (int i = 0; i < count; ++i) {
        QTest::mouseClick(panel.btnAdd, Qt::LeftButton);
    }
}

/// Type and channel of each row, such as "0CH3".
inline QStringList texts(const PulseMeasure &panel)
{
    QStringList all;
    for (int row = 0; row < panel.valueLabels.size(); ++row) {
        all.append(panel.typeButtons.at(row)->objectName() + panel.chnButtons.at(row)->text());
    }
    return all;
}

inline void show(PulseMeasure &panel)
{
    panel.resize(234, 300);
    panel.move(100, 50);
    panel.show();
    panel.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&panel));
}

inline void enableOnly(std::initializer_list<int> channels)
{
    gDev->chnEnable.fill(false);
    for (const int chn : channels) {
        gDev->chnEnable[chn] = true;
    }
}

} // namespace PulseRows
