#include "panels/Toolbar.h"

#include "controls/Look.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "panels/SmpCtrl.h"
#include "panels/SmpSetting.h"
#include "panels/VthSetting.h"
#include "wave/SmpZoom.h"

#include <QHBoxLayout>

Toolbar::Toolbar(QWidget *parent) : QWidget(parent)
{
    setFixedHeight(dp(48));
    setContentsMargins(dp(2), dp(2), dp(2), dp(2));
    QPalette colors = palette();
    colors.setColor(QPalette::Window, gGreys.value(5));
    setPalette(colors);
    setAutoFillBackground(true);
    reload();
}

void Toolbar::clear()
{
    delete smpSetting;
    smpSetting = nullptr;
    if (vthSetting != nullptr && vthSetting->mayGo()) {
        delete vthSetting;
    }
    vthSetting = nullptr;
    delete smpZoom;
    smpZoom = nullptr;
    delete smpCtrl;
    smpCtrl = nullptr;
    delete layout;
    layout = nullptr;
}

void Toolbar::reload()
{
    clear();
    layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4 * dp(2));

    smpSetting = new SmpSetting(this);
    connect(smpSetting, &SmpSetting::frequViewChanged, this, &Toolbar::frequViewChanged);
    if (gDev->hasFeature(devFeature::thresholds)) {
        vthSetting = new VthSetting(this);
    }
    smpCtrl = new SmpCtrl(this);
    connect(smpCtrl, &SmpCtrl::startAsked, this, &Toolbar::startAsked);
    connect(smpCtrl, &SmpCtrl::stopAsked, this, &Toolbar::stopAsked);
    smpZoom = new SmpZoom(this);
    connect(smpZoom, &SmpZoom::zoomValueChanged, this, &Toolbar::zoomValued);
    smpZoom->showRatio(m_ratio);
    layout->addWidget(smpSetting);
    if (vthSetting != nullptr) {
        layout->addWidget(vthSetting);
    }
    layout->addWidget(smpCtrl);
    layout->addWidget(smpZoom);
    layout->addStretch(1);
    emit frequViewChanged();
}

void Toolbar::showRatio(double ratio)
{
    m_ratio = ratio;
    smpZoom->showRatio(ratio);
}

void Toolbar::showConnected(bool connected)
{
    smpCtrl->showConnected(connected);
}

void Toolbar::slotShortcutF5()
{
    // Unlike a click on the button, the key leaves the focus in the field, and what is typed there not yet taken.
    if (vthSetting == nullptr || vthSetting->finishEntries()) {
        smpCtrl->singleClickedSlot();
    }
}
