#include "wave/TriggerPosition.h"

#include "controls/Look.h"
#include "controls/MyButton.h"
#include "controls/NoticeBox.h"
#include "device/DevBase.h"
#include "settings/Config.h"
#include "settings/Language.h"
#include "wave/AnalogTriggerParts.h"
#include "wave/SidebarLook.h"

#include <QApplication>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>

TriggerPosition::TriggerPosition(QWidget *parent)
    : QObject(parent),
      m_owner(parent),
      horLabel(new QLabel(QStringLiteral("H:"), parent)),
      horEdit(new QLineEdit(parent)),
      horZero(AnalogTriggerParts::makeZero(QStringLiteral("trigPositionZero"), ::tr("Trigger Position"), parent))
{
    horEdit->setObjectName(QStringLiteral("trigPosition"));
    horEdit->setToolTip(::tr("Number between 0 and 100."));
    horEdit->setAccessibleName(AnalogTriggerParts::spoken(::tr("Trigger Position") + QStringLiteral(" [%]")));
    horEdit->setFixedHeight(sidebarFieldHeight(QApplication::font()));
    horEdit->setMinimumWidth(dp(AnalogTriggerParts::leastField));
    horEdit->installEventFilter(this);
    horLabel->setBuddy(horEdit);
    connect(horEdit, &QLineEdit::editingFinished, this, &TriggerPosition::slotHorEditClicked);
    connect(horZero, &QPushButton::clicked, this, &TriggerPosition::slotHorZreoClicked);
}

void TriggerPosition::addTo(QGridLayout &grid, int row)
{
    grid.addWidget(horLabel, row, 0);
    grid.addWidget(horEdit, row, 1);
    grid.addWidget(new QLabel(QStringLiteral("%"), m_owner), row, 2);
    grid.addWidget(horZero, row, 3);
}

QVector<QWidget *> TriggerPosition::tabStops() const
{
    return {horEdit, horZero};
}

void TriggerPosition::refresh(DevBase &device)
{
    m_device = &device;
    show(device.trgPosition);
}

void TriggerPosition::show(int percent)
{
    horEdit->setText(QString::number(percent));
}

bool TriggerPosition::eventFilter(QObject *watched, QEvent *event)
{
    if (AnalogTriggerParts::filterField(watched, event)) {
        return true;
    }
    if (m_device && event->type() == QEvent::KeyPress && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
        show(m_device->trgPosition);
        horEdit->clearFocus();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

bool TriggerPosition::mayGo()
{
    m_leaving = m_telling;
    return !m_telling;
}

void TriggerPosition::slotHorEditClicked()
{
    if (m_telling || m_leaving || !m_device) {
        return; // the box takes the focus away, which finishes the field once more
    }
    if (horEdit->hasFocus()) {
        horEdit->clearFocus();
        return;
    }
    bool isNumber = false;
    const int percent = horEdit->text().trimmed().toInt(&isNumber);
    if (isNumber && percent == m_device->trgPosition) {
        show(percent); // "05" is 5
        return;        // who only passes through the field changes nothing
    }
    if (m_device->setTrgPosition(isNumber ? percent : -1) || tellRefusal()) {
        show(m_device->trgPosition);
    }
}

bool TriggerPosition::tellRefusal()
{
    m_telling = true;
    showNotice(m_owner->window(), QMessageBox::Warning, ::tr("An error occurred"),
               ::tr("Trigger position setting failed."), QStringLiteral("color:black;"));
    m_telling = false;
    if (m_leaving) {
        emit mayBeDeleted();
        return false;
    }
    return m_device;
}

void TriggerPosition::slotHorZreoClicked()
{
    if (!m_device) {
        return;
    }
    m_device->trgPosition = 0;
    deviceSet(m_device->name, QStringLiteral("trgPosition"), QStringLiteral("0"));
    show(0);
}
