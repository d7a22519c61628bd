#include "panels/SmpCtrl.h"

#include "controls/Icons.h"
#include "controls/Look.h"
#include "controls/MyButton.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "settings/Language.h"

#include <QHBoxLayout>
#include <QProgressBar>
#include <QVBoxLayout>

#include <algorithm>

namespace {
constexpr int singleHeight = 36; // units, of the one button
constexpr int analogHeight = 32; // units, of the three that leave room for the bar
constexpr int barHeight = 4;     // units
} // namespace

SmpCtrl::SmpCtrl(QWidget *parent) : QWidget(parent), m_analog(gDev->isAnalogModel())
{
    // The bar's own sheet gives its ground; what is done must stand out from that.
    setStyleSheet(QStringLiteral("QProgressBar::chunk{background-color:%1;}").arg(gChnColors.value(1).name()));
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(m_analog ? dp(2) : 0);
    auto *buttons = new QHBoxLayout;
    buttons->setSpacing(dp(2));
    column->addStretch(1);
    column->addLayout(buttons);

    btnSingle = addButton(QStringLiteral("btnSmpSingle"), ::tr("Single"), &SmpCtrl::singleClickedSlot);
    btnSingle->setToolTip(::tr("Start a capture") + QStringLiteral(" (F5)"));
    buttons->addWidget(btnSingle);
    if (m_analog) {
        btnAuto = addButton(QStringLiteral("btnSmpAuto"), ::tr("Auto"), &SmpCtrl::autoClickedSlot);
        btnStop = addButton(QStringLiteral("btnSmpStop"), ::tr("Stop"), &SmpCtrl::stopClickedSlot);
        buttons->addWidget(btnAuto);
        buttons->addWidget(btnStop);
    }
    smpBar = new QProgressBar(this);
    smpBar->setRange(0, 100);
    smpBar->setTextVisible(false);
    smpBar->setStyleSheet(QStringLiteral("background-color:#afafaf;border:0px;"));
    smpBar->setFixedHeight(m_analog ? dp(barHeight) : 0);
    smpBar->setAccessibleName(::tr("Sampling"));
    QSizePolicy keepsPlace(QSizePolicy::Ignored, QSizePolicy::Fixed); // as wide as the buttons, no wider
    keepsPlace.setRetainSizeWhenHidden(true);
    smpBar->setSizePolicy(keepsPlace);
    smpBar->hide();
    column->addWidget(smpBar);
    column->addStretch(1);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    showConnected(gDev->connected);
}

MyButton *SmpCtrl::addButton(const QString &icon, const QString &name, void (SmpCtrl::*slot)())
{
    const QString path = QStringLiteral(":/res/") + icon;
    auto *button = new MyButton(sharedIcon(path), name, this);
    button->setObjectName(icon);
    if (slot != &SmpCtrl::stopClickedSlot) {
        button->checkedIcon = sharedIcon(path + QLatin1Char('2'));
    }
    const int height = dp(m_analog ? analogHeight : singleHeight);
    button->setFixedSize(m_analog ? height * 12 / 10 : height * 2, height);
    button->setIconSize(QSize(height - dp(8), height - dp(8)));
    button->setRadius(dp(4));
    button->penWidth = dp(1);
    button->faceColor = gGreys.value(8);
    button->hoverColor = gGreys.value(6);
    connect(button, &QPushButton::clicked, this, slot);
    return button;
}

void SmpCtrl::showConnected(bool connected)
{
    btnSingle->setUseCheckedIcon(!connected);
    if (btnAuto) {
        btnAuto->setUseCheckedIcon(!connected);
    }
}

void SmpCtrl::beginProgress()
{
    smpBar->setValue(0);
    smpBar->setVisible(m_analog);
}

void SmpCtrl::setProgress(int percent)
{
    smpBar->setValue(std::clamp(percent, 0, 100));
}

void SmpCtrl::hideProgress()
{
    smpBar->hide();
}

void SmpCtrl::autoClickedSlot() {}

void SmpCtrl::normalClickedSlot() {}

void SmpCtrl::singleClickedSlot()
{
    emit startAsked();
}

void SmpCtrl::stopClickedSlot()
{
    emit stopAsked();
}
