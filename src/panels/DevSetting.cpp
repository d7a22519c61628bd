#include "panels/DevSetting.h"

#include "app/Globals.h"
#include "device/DevBase.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLinearGradient>
#include <QPainter>

DevSetting::DevSetting(QWidget *parent) : QWidget(parent), m_picture(new QLabel(this)), m_name(new QLabel(this))
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
    reload();
}

void DevSetting::reload()
{
    m_name->setText(gDev->name);
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
