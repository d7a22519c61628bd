// The rows of the pulse measurements: how they come, go and are changed.

#include "controls/Icons.h"
#include "controls/Look.h"
#include "controls/MyButton.h"
#include "device/DevBase.h"
#include "measure/PickMenu.h"
#include "measure/PulseChoices.h"
#include "measure/PulseMeasure.h"
#include "measure/SectionParts.h"
#include "measure/TimingMarkerTip.h"
#include "settings/Language.h"

#include <QAction>
#include <QGridLayout>
#include <QLabel>

#include <algorithm>

namespace {

int rowsWith(const QList<MyButton *> &buttons, int choice)
{
    return int(std::count_if(buttons.begin(), buttons.end(),
                             [choice](const MyButton *button) { return PulseMeasure::choiceOf(*button) == choice; }));
}

} // namespace

void PulseMeasure::buildMenus()
{
    typeMenu = new PickMenu(this);
    for (int type = 0; type < pulseTypeCount; ++type) {
        typeMenu->addEntry(pulseTypeName(type), pulseTypeIcon(type));
    }
    chnMenu = new PickMenu(this);
    fillChnMenu();
    timeMenu = new PickMenu(this);
    for (int time = 0; time < pulseTimeCount; ++time) {
        timeMenu->addEntry(pulseTimeText(time));
    }
    connect(typeMenu, &QMenu::triggered, this, &PulseMeasure::slotMenuTypeClicked);
    connect(chnMenu, &QMenu::triggered, this, &PulseMeasure::slotMenuChnClicked);
    connect(timeMenu, &QMenu::triggered, this, &PulseMeasure::slotMenuTimeClicked);
}

void PulseMeasure::fillChnMenu()
{
    const int count = m_device ? m_device->chnEnable.size() : 0;
    for (int chn = chnMenu->actions().size(); chn < count; ++chn) {
        chnMenu->addEntry(pulseChnText(chn));
    }
}

int PulseMeasure::choiceOf(const MyButton &button)
{
    return button.objectName().toInt();
}

void PulseMeasure::setType(MyButton &button, int type)
{
    button.setObjectName(QString::number(type));
    button.setIcon(sharedIcon(pulseTypeIcon(type)));
    button.setToolTip(pulseTypeName(type));
}

void PulseMeasure::setChannel(MyButton &button, int chn)
{
    button.setObjectName(QString::number(chn));
    button.setText(pulseChnText(chn));
}

void PulseMeasure::setTime(MyButton &button, int time)
{
    button.setObjectName(QString::number(time));
    button.setText(pulseTimeText(time));
}

int PulseMeasure::leastUsedType() const
{
    int least = 0;
    for (int type = 1; type < pulseTypeCount; ++type) {
        if (rowsWith(typeButtons, type) < rowsWith(typeButtons, least)) {
            least = type;
        }
    }
    return least;
}

int PulseMeasure::leastUsedChannel() const
{
    int least = -1;
    for (int chn = 0; m_device && chn < m_device->chnEnable.size(); ++chn) {
        if (isChannelInUse(m_device, chn) && (least < 0 || rowsWith(chnButtons, chn) < rowsWith(chnButtons, least))) {
            least = chn;
        }
    }
    return std::max(least, 0); // with no channel in use the row stays without a value
}

void PulseMeasure::slotBtnAddClicked()
{
    appendRow(leastUsedType(), leastUsedChannel());
    emit setChanged();
}

void PulseMeasure::appendRow(int type, int chn)
{
    const int row = valueLabels.size();
    MyButton *typeButton = makeIconButton(pulseTypeIcon(type), pulseTypeName(type), rowsWidget);
    MyButton *chnButton = makeTextButton(pulseChnText(chn), pulseChnText(15), rowsWidget);
    MyButton *timeButton = makeTextButton(pulseTimeText(0), pulseTimeText(1), rowsWidget);
    MyButton *removeButton = makeIconButton(QStringLiteral(":/res/btnRemove"), ::tr("Remove"), rowsWidget);
    setType(*typeButton, type);
    setChannel(*chnButton, chn);
    setTime(*timeButton, 0);
    removeButton->setObjectName(QString::number(row));
    connect(typeButton, &QPushButton::clicked, this, &PulseMeasure::slotBtTypeClicked);
    connect(chnButton, &QPushButton::clicked, this, &PulseMeasure::slotBtChnClicked);
    connect(timeButton, &QPushButton::clicked, this, &PulseMeasure::slotBtTimeClicked);
    connect(removeButton, &QPushButton::clicked, this, &PulseMeasure::slotBtnRemoveClicked);

    QWidget *before = row == 0 ? btnAdd : removeButtons.constLast();
    typeButtons.append(typeButton);
    chnButtons.append(chnButton);
    timeButtons.append(timeButton);
    colonLabels.append(makeSectionLabel(QStringLiteral(": "), rowsWidget));
    valueLabels.append(new TimingMarkerTip(rowsWidget));
    removeButtons.append(removeButton);
    for (QWidget *next : {typeButton, chnButton, timeButton, removeButton}) {
        setTabOrder(before, next);
        before = next;
    }
    grid->setContentsMargins(0, 0, 0, dp(2));
    placeRow(row);
    nameRow(row);
}

QList<QWidget *> PulseMeasure::widgetsOf(int row) const
{
    return {typeButtons.at(row), chnButtons.at(row),  timeButtons.at(row),
            colonLabels.at(row), valueLabels.at(row), removeButtons.at(row)};
}

void PulseMeasure::placeRow(int row)
{
    int column = 0;
    for (QWidget *widget : widgetsOf(row)) {
        grid->removeWidget(widget);
        grid->addWidget(widget, row, column++);
    }
}

void PulseMeasure::nameRow(int row)
{
    const QString before = ::tr("Pulse row %1").arg(row + 1) + QStringLiteral(", ");
    typeButtons.at(row)->setAccessibleName(before + typeButtons.at(row)->toolTip());
    chnButtons.at(row)->setAccessibleName(before + chnButtons.at(row)->text());
    timeButtons.at(row)->setAccessibleName(before + timeButtons.at(row)->text());
    valueLabels.at(row)->setAccessibleDescription(::tr("Pulse row %1").arg(row + 1)); // its name is its text
    removeButtons.at(row)->setAccessibleName(::tr("Remove pulse row %1").arg(row + 1));
}

void PulseMeasure::slotBtnRemoveClicked()
{
    const int row = removeButtons.indexOf(qobject_cast<MyButton *>(sender()));
    if (row < 0) {
        return;
    }
    menuRow = -1;
    for (QWidget *widget : widgetsOf(row)) {
        grid->removeWidget(widget);
        widget->hide();
        widget->deleteLater();
    }
    typeButtons.removeAt(row);
    chnButtons.removeAt(row);
    timeButtons.removeAt(row);
    colonLabels.removeAt(row);
    valueLabels.removeAt(row);
    removeButtons.removeAt(row);
    for (int later = row; later < removeButtons.size(); ++later) {
        placeRow(later);
        removeButtons.at(later)->setObjectName(QString::number(later));
        nameRow(later);
    }
    if (removeButtons.isEmpty()) {
        grid->setContentsMargins(0, 0, 0, 0);
    }
}

void PulseMeasure::slotBtTypeClicked()
{
    dropMenu(*typeMenu, typeButtons);
}

void PulseMeasure::slotBtChnClicked()
{
    fillChnMenu();
    for (QAction *entry : chnMenu->actions()) {
        entry->setEnabled(isChannelInUse(m_device, entry->data().toInt()));
    }
    dropMenu(*chnMenu, chnButtons);
}

void PulseMeasure::slotBtTimeClicked()
{
    for (QAction *entry : timeMenu->actions()) {
        entry->setEnabled(isPulseTimeShown(entry->data().toInt()));
    }
    dropMenu(*timeMenu, timeButtons);
}

void PulseMeasure::dropMenu(PickMenu &menu, const QList<MyButton *> &buttons)
{
    const int row = buttons.indexOf(qobject_cast<MyButton *>(sender()));
    if (row < 0) {
        return;
    }
    menuRow = row;
    menu.dropUnder(*buttons.at(row), choiceOf(*buttons.at(row)));
}

void PulseMeasure::slotMenuTypeClicked(QAction *act)
{
    takeChoice(typeButtons, act->data().toInt(), &PulseMeasure::setType);
}

void PulseMeasure::slotMenuChnClicked(QAction *act)
{
    takeChoice(chnButtons, act->data().toInt(), &PulseMeasure::setChannel);
}

void PulseMeasure::slotMenuTimeClicked(QAction *act)
{
    takeChoice(timeButtons, act->data().toInt(), &PulseMeasure::setTime);
}

void PulseMeasure::takeChoice(const QList<MyButton *> &buttons, int choice, void (*set)(MyButton &, int))
{
    if (menuRow < 0 || menuRow >= buttons.size() || choiceOf(*buttons.at(menuRow)) == choice) {
        return;
    }
    set(*buttons.at(menuRow), choice);
    nameRow(menuRow);
    const bool counted = isChannelInUse(m_device, choiceOf(*chnButtons.at(menuRow))) &&
                         isPulseTimeShown(choiceOf(*timeButtons.at(menuRow)));
    if (!counted) {
        // No count follows, and what stands there was counted for the former choice.
        valueLabels.at(menuRow)->setText(unknownText());
    } else if (m_device && m_device->smpData->sampleCount() > 0) {
        emit setChanged();
    }
}
