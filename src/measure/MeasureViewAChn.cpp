#include "measure/MeasureViewAChn.h"

#include "controls/Look.h"
#include "controls/MyButton.h"
#include "measure/AChnMeasureDialog.h"
#include "measure/AChnMeasureSet.h"
#include "measure/AnalogTexts.h"
#include "measure/SectionParts.h"
#include "settings/Globals.h"
#include "settings/Language.h"
#include "wave/WaveDataGen.h"

#include <QGridLayout>
#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>
#include <numeric>

MeasureViewAChn::MeasureViewAChn(QWidget *parent)
    : QWidget(parent),
      shownIds(rowCount),
      shownCount(rowCount),
      paramText([](int chn) { return gWaveGen == nullptr ? QString() : gWaveGen->aChnParamText(chn); })
{
    std::iota(shownIds.begin(), shownIds.end(), 0);
    btnExpand = makeExpandButton(::tr("Measure"), this);
    auto *title = makeSectionTitle(::tr("Measure"), this);
    btnSetting = makeIconButton(QStringLiteral(":/res/btnSetting"), ::tr("Measure Select"), this);
    table = new QWidget(this);
    buildTable();

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(dp(2));
    column->addLayout(makeSectionHeader(btnExpand, title, btnSetting));
    column->addWidget(table);

    connect(btnExpand, &QPushButton::clicked, this, &MeasureViewAChn::slotDeployPbClicked);
    connect(btnSetting, &QPushButton::clicked, this, &MeasureViewAChn::slotMeasPbClicked);
    showRows();
}

MeasureViewAChn::~MeasureViewAChn()
{
    if (m_menu) {
        m_menu->dismiss();
    }
}

void MeasureViewAChn::buildTable()
{
    auto *grid = new QGridLayout(table);
    grid->setContentsMargins(dp(4), 0, dp(4), 0);
    grid->setHorizontalSpacing(dp(4));
    grid->setVerticalSpacing(dp(2));
    // The names stand whole. The values share the rest, whatever their length, so that no column moves with them.
    const QFontMetrics metrics(gFontMain);
    for (const QString &name : qAsConst(gMeasureNames)) {
        grid->setColumnMinimumWidth(0, std::max(grid->columnMinimumWidth(0), metrics.horizontalAdvance(name)));
    }
    for (int chn = 0; chn < channelCount; ++chn) {
        QLabel *label = makeElidedLabel(QStringLiteral("Chn%1").arg(chn + 1), table);
        grid->addWidget(label, 0, chn + 1);
        chnLabels.append(label);
    }
    for (int row = 0; row < rowCount; ++row) {
        QLabel *name = makeSectionLabel(QString(), table);
        grid->addWidget(name, row + 1, 0);
        nameLabels.append(name);
        for (int chn = 0; chn < channelCount; ++chn) {
            QLabel *value = makeElidedLabel(AnalogTexts::noValue(), table);
            grid->addWidget(value, row + 1, chn + 1);
            valuesOf(chn).append(value);
        }
    }
    for (int chn = 0; chn < channelCount; ++chn) {
        grid->setColumnStretch(chn + 1, 1);
    }
}

void MeasureViewAChn::reload()
{
    if (m_menu) {
        m_menu->dismiss();
    }
    slotMeasureChanged();
}

void MeasureViewAChn::showRows()
{
    for (int row = 0; row < rowCount; ++row) {
        const bool isUsed = row < shownCount;
        const QString name = isUsed ? gMeasureNames.value(shownIds.at(row)) : QString();
        const bool isOther = name != nameLabels.at(row)->text();
        nameLabels.at(row)->setText(name);
        nameLabels.at(row)->setVisible(isUsed);
        for (int chn = 0; chn < channelCount; ++chn) {
            QLabel *value = valuesOf(chn).at(row);
            value->setAccessibleDescription(name + QLatin1Char(' ') + chnLabels.at(chn)->text());
            value->setVisible(isUsed);
            if (isOther) {
                value->setText(AnalogTexts::noValue()); // not what the row showed before
            }
        }
    }
    for (QLabel *label : qAsConst(chnLabels)) {
        label->setVisible(shownCount > 0);
    }
}

void MeasureViewAChn::slotMeasureChanged()
{
    for (int chn = 0; chn < channelCount; ++chn) {
        QStringList parts = AnalogTexts::partsOf(paramText(chn));
        const bool isMeasured = !parts.isEmpty();
        for (int row = 0; row < shownCount; ++row) {
            QString value = isMeasured ? valuesOf(chn).at(row)->text() : AnalogTexts::noValue();
            // A row that finds nothing keeps its text.
            (void)AnalogTexts::takeValue(parts, nameLabels.at(row)->text(), value);
            valuesOf(chn).at(row)->setText(value);
        }
    }
}

void MeasureViewAChn::slotDeployPbClicked()
{
    deployed = !deployed;
    btnSetting->setVisible(deployed);
    table->setVisible(deployed);
    showExpanded(*btnExpand, deployed);
}

void MeasureViewAChn::slotMeasPbClicked()
{
    constexpr int partsBelowTop = 3; // of the button's height: a third of it
    AChnMeasureSet menu(shownIds, this);
    connect(&menu, &AChnMeasureSet::showAllMeasureClicked, this, &MeasureViewAChn::slotShowAllMeasures);
    connect(&menu, &AChnMeasureSet::showMeasureChanged, this, &MeasureViewAChn::slotUpdateMeasuresShow);
    connect(&menu, &AChnMeasureSet::removeAllClicked, this, &MeasureViewAChn::slotRemoveAllMeasuresShow);
    m_menu = &menu;
    menu.setAccessibleName(btnSetting->accessibleName());
    menu.exec(btnSetting->mapToGlobal(QPoint(btnSetting->width(), btnSetting->height() / partsBelowTop)));
}

void MeasureViewAChn::slotShowAllMeasures(int chnId)
{
    AChnMeasureDialog dialog(chnId, paramText(chnId), window());
    dialog.exec();
}

void MeasureViewAChn::slotUpdateMeasuresShow(const qint32 *Index, int count)
{
    if (count > rowCount) {
        return;
    }
    shownIds.fill(-1);
    shownCount = 0;
    for (int i = 0; i < count; ++i) {
        if (Index[i] >= 0) {
            shownIds[shownCount] = Index[i];
            ++shownCount;
        }
    }
    showRows();
    slotMeasureChanged();
}

void MeasureViewAChn::slotRemoveAllMeasuresShow()
{
    shownIds.fill(-1);
    shownCount = 0;
    showRows();
}
