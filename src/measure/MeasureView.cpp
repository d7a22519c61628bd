#include "measure/MeasureView.h"

#include "controls/Look.h"
#include "controls/MyButton.h"
#include "controls/PopupPlace.h"
#include "measure/SectionParts.h"
#include "measure/TimingMarkerTip.h"
#include "settings/Config.h"
#include "settings/Language.h"

#include <QAction>
#include <QGridLayout>
#include <QLabel>
#include <QMenu>
#include <QVBoxLayout>

namespace {

/// True when the key's number says that the row is hidden rather than that it is shown.
bool isInverse(const QString &key)
{
    return key.startsWith(QLatin1String("Dis"));
}

} // namespace

MeasureView::MeasureView(QWidget *parent) : QWidget(parent)
{
    btnExpand = makeExpandButton(::tr("Measurements"), this);
    auto *title = makeSectionTitle(::tr("Measurements"), this);
    btnSetting = makeIconButton(QStringLiteral(":/res/btnSetting"), ::tr("Measurements shown"), this);
    measureMenu = new QMenu(this);
    measureMenu->setAccessibleName(btnSetting->accessibleName());
    valuesWidget = new QWidget(this);

    auto *grid = new QGridLayout(valuesWidget);
    grid->setContentsMargins(dp(4), 0, dp(4), 0);
    grid->setHorizontalSpacing(dp(4));
    grid->setVerticalSpacing(dp(2));
    grid->setColumnStretch(0, 2);
    grid->setColumnStretch(1, 3);
    addRow(::tr("Width"), QStringLiteral("DisWidth"));
    addRow(::tr("Period"), QStringLiteral("DisPeriod"));
    addRow(::tr("DutyCycle"), QStringLiteral("DisDutyCycle"));
    addRow(::tr("Frequency"), QStringLiteral("DisFrequency"));

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(dp(2));
    column->addLayout(makeSectionHeader(btnExpand, title, btnSetting));
    column->addWidget(valuesWidget);

    connect(btnExpand, &QPushButton::clicked, this, &MeasureView::slotDeployClicked);
    connect(btnSetting, &QPushButton::clicked, this, &MeasureView::openMenuDig);
    connect(measureMenu, &QMenu::triggered, this, &MeasureView::slotMenuClicked);
}

void MeasureView::addRow(const QString &name, const QString &key)
{
    const int row = keys.size();
    auto *grid = static_cast<QGridLayout *>(valuesWidget->layout());
    QLabel *nameLabel = makeElidedLabel(name, valuesWidget);
    QLabel *valueLabel = new TimingMarkerTip(valuesWidget);
    valueLabel->setAccessibleDescription(name);
    grid->addWidget(nameLabel, row, 0);
    grid->addWidget(valueLabel, row, 1);
    keys.append(key);
    nameLabels.append(nameLabel);
    valueLabels.append(valueLabel);

    QAction *entry = measureMenu->addAction(name);
    entry->setCheckable(true);
    entry->setChecked(true);
    entry->setData(row);
}

void MeasureView::reload()
{
    for (QAction *entry : measureMenu->actions()) {
        const QString key = keys.at(entry->data().toInt());
        const bool isSet = globalGet(key).toInt() != 0;
        entry->setChecked(isSet != isInverse(key));
        emit entry->triggered(entry->isChecked());
    }
}

void MeasureView::slotDeployClicked()
{
    expanded = !expanded;
    btnSetting->setVisible(expanded);
    valuesWidget->setVisible(expanded);
    showExpanded(*btnExpand, expanded);
}

void MeasureView::openMenuDig()
{
    measureMenu->popup(popupPlace(*btnSetting));
}

void MeasureView::slotMenuClicked(QAction *action)
{
    const int row = action->data().toInt();
    if (row < 0 || row >= keys.size()) {
        return;
    }
    const bool shown = action->isChecked();
    nameLabels.at(row)->setVisible(shown);
    valueLabels.at(row)->setVisible(shown);
    const QString &key = keys.at(row);
    globalSet(key, shown != isInverse(key) ? QStringLiteral("1") : QStringLiteral("0"));
}

void MeasureView::slotValueChanged(QStringList values)
{
    if (values.isEmpty() || values.size() > valueLabels.size()) {
        return;
    }
    for (int row = 0; row < values.size(); ++row) {
        valueLabels.at(row)->setText(::tr(values.at(row)));
    }
}
