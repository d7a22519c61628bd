#include "measure/AChnMeasureSet.h"

#include "controls/Look.h"
#include "settings/Globals.h"
#include "settings/Language.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QKeyEvent>
#include <QPointer>
#include <QRadioButton>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace {

constexpr int boxesInARow = 4;

} // namespace

AChnMeasureSet::AChnMeasureSet(QVector<int> ids, QWidget *parent) : MenuDialog(parent), shownIds(std::move(ids))
{
    auto *form = new QWidget;
    auto *column = new QVBoxLayout(form);
    column->setContentsMargins(dp(10), dp(6), dp(10), dp(10));
    column->setSpacing(dp(8));
    addBoxes(*column);
    auto *line = new QHBoxLayout;
    line->setSpacing(dp(8));
    addShowAll(*line);
    line->addStretch(1);
    removeAllBox = new QCheckBox(::tr("Remove All"));
    connect(removeAllBox, &QCheckBox::clicked, this, &AChnMeasureSet::slotRemoveAllClcked);
    line->addWidget(removeAllBox, 0, Qt::AlignBottom);
    column->addLayout(line);
    addForm(form);
}

void AChnMeasureSet::addBoxes(QBoxLayout &column)
{
    auto *group = new QGroupBox(::tr("Measure Select"));
    auto *grid = new QGridLayout(group);
    grid->setContentsMargins(dp(10), dp(4), dp(10), dp(6));
    grid->setHorizontalSpacing(dp(8));
    grid->setVerticalSpacing(0);
    for (int id = 0; id < gMeasureNames.size(); ++id) {
        auto *box = new QCheckBox(gMeasureNames.at(id));
        box->setObjectName(QString::number(id));
        box->setChecked(shownIds.contains(id));
        connect(box, &QCheckBox::clicked, this, &AChnMeasureSet::slotOptionsClicked);
        boxes.append(box);
        grid->addWidget(box, id / boxesInARow, id % boxesInARow);
    }
    column.addWidget(group);
}

void AChnMeasureSet::addShowAll(QBoxLayout &line)
{
    auto *group = new QGroupBox(::tr("Show All"));
    auto *row = new QHBoxLayout(group);
    row->setContentsMargins(dp(10), dp(4), dp(10), dp(6));
    row->setSpacing(dp(8));
    showAllGroup = new QButtonGroup(this);
    for (const QString &text : {::tr("OFF"), QStringLiteral("CH1"), QStringLiteral("CH2")}) {
        auto *button = new QRadioButton(text);
        connect(button, &QRadioButton::clicked, this, &AChnMeasureSet::slotShowAllClicked);
        button->installEventFilter(this);
        showAllGroup->addButton(button);
        row->addWidget(button);
    }
    showAllGroup->buttons().constFirst()->setChecked(true);
    line.addWidget(group);
}

void AChnMeasureSet::showEvent(QShowEvent *event)
{
    MenuDialog::showEvent(event);
    if (focusWidget() == nullptr || focusWidget() == this) {
        boxes.constFirst()->setFocus(Qt::PopupFocusReason);
    }
}

/// In a group of radio buttons an arrow key clicks the next one, which would show a channel on the way to another.
bool AChnMeasureSet::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        const bool isBack = key == Qt::Key_Up || key == Qt::Key_Left;
        if (isBack || key == Qt::Key_Down || key == Qt::Key_Right) {
            const auto choices = showAllGroup->buttons();
            const int index = int(choices.indexOf(static_cast<QAbstractButton *>(watched))) + (isBack ? -1 : 1);
            choices.at(std::clamp(index, 0, int(choices.size()) - 1))->setFocus(Qt::OtherFocusReason);
            return true;
        }
    }
    return MenuDialog::eventFilter(watched, event);
}

void AChnMeasureSet::slotShowAllClicked()
{
    const auto *button = qobject_cast<const QAbstractButton *>(sender());
    const int channel = button == nullptr ? 0 : button->text().right(1).toInt();
    if (channel > 0) {
        const QPointer<AChnMeasureSet> self = this;
        stepAside([this, channel] { emit showAllMeasureClicked(channel - 1); });
        if (self) {
            showAllGroup->buttons().constFirst()->setChecked(true);
        }
    }
}

void AChnMeasureSet::slotRemoveAllClcked()
{
    removeAllBox->setChecked(true); // a second click takes nothing back
    for (QCheckBox *box : qAsConst(boxes)) {
        box->setChecked(false);
    }
    shownIds.fill(-1);
    emit removeAllClicked();
}

void AChnMeasureSet::slotOptionsClicked()
{
    removeAllBox->setChecked(false);
    const auto *box = qobject_cast<const QCheckBox *>(sender());
    if (box == nullptr) {
        return;
    }
    const int id = box->objectName().toInt();
    if (box->isChecked()) {
        const int oldest = shownIds.takeLast();
        if (oldest >= 0) {
            boxes.at(oldest)->setChecked(false);
        }
        shownIds.prepend(id);
    } else if (shownIds.removeOne(id)) {
        shownIds.append(-1);
    }
    emit showMeasureChanged(shownIds.constData(), shownIds.size());
}
