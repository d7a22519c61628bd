#include "panels/DevSetting.h"

#include "controls/Icons.h"
#include "controls/Look.h"
#include "controls/MyButton.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "panels/MenuChnSettings.h"
#include "panels/MenuDevSettings.h"
#include "settings/Language.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLinearGradient>
#include <QPainter>

DevSetting::DevSetting(QWidget *parent)
    : QWidget(parent),
      m_picture(new QLabel(this)),
      m_name(new QLabel(this)),
      m_modelButton(makeButton(QStringLiteral(":/res/icoDropDown"), ::tr("Model Select"))),
      m_settingButton(makeButton(QStringLiteral(":/res/btnSetting"), ::tr("Channel and device settings")))
{
    setFixedSize(dp(190), dp(36));
    m_picture->setFixedSize(dp(24), dp(24));
    m_picture->setStyleSheet(QStringLiteral("QLabel{border:0;border-image:url(:/res/icoDeviceLA);}"));
    m_name->setObjectName(QStringLiteral("modelName"));
    m_name->setStyleSheet(QStringLiteral("QLabel{border:0;color:#dfdfdf;}"));

    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(dp(10), dp(2), dp(8), dp(2));
    row->setSpacing(dp(8));
    row->addWidget(m_picture);
    row->addWidget(m_name, 1);
    row->addWidget(m_modelButton);
    row->addWidget(m_settingButton);
    connect(m_modelButton, &QPushButton::clicked, this, &DevSetting::choiceDeviceClickedSlot);
    connect(m_settingButton, &QPushButton::clicked, this, &DevSetting::choideChannelClickedSlot);
    reload();
}

MyButton *DevSetting::makeButton(const QString &icon, const QString &name)
{
    auto *button = new MyButton(sharedIcon(icon), name, this);
    button->setIconSize({dp(16), dp(16)});
    button->setFixedSize(dp(24), dp(24));
    button->setRadius(dp(3));
    button->penWidth = dp(1);
    button->borderColor = gGreys[3];
    return button;
}

void DevSetting::reload()
{
    m_name->setText(gDev->name);
}

void DevSetting::closeMenu()
{
    if (m_menu) {
        m_menu->dismiss();
    }
}

void DevSetting::choiceDeviceClickedSlot()
{
    MenuDevSettings menu(this);
    connect(&menu, &MenuDevSettings::simDevModelChanged, this, &DevSetting::simDevModelChanged);
    run(menu, *m_modelButton);
}

void DevSetting::choideChannelClickedSlot()
{
    MenuChnSettings menu(this);
    run(menu, *m_settingButton);
}

void DevSetting::run(MenuDialog &menu, const QWidget &button)
{
    constexpr double belowTop = 0.33; // of the button's height
    m_menu = &menu;
    menu.setAccessibleName(button.accessibleName());
    menu.exec(button.mapToGlobal(QPoint(button.width(), int(button.height() * belowTop))));
}

void DevSetting::paintEvent(QPaintEvent *)
{
    const double line = dp(1);
    const QRectF panel =
        QRectF(rect()).adjusted(dp(2), dp(2), -dp(2), -dp(2)).adjusted(line / 2, line / 2, -line / 2, -line / 2);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient shade(panel.topLeft(), panel.bottomLeft());
    shade.setColorAt(0.0, gGreys.value(6));
    shade.setColorAt(1.0, gGreys.value(7));
    painter.setPen(QPen(gGreys.value(4), line));
    painter.setBrush(shade);
    painter.drawRoundedRect(panel, dp(4), dp(4));
}
