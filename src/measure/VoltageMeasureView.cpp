#include "measure/VoltageMeasureView.h"

#include "controls/Look.h"
#include "controls/MyButton.h"
#include "measure/SectionParts.h"
#include "measure/VoltageMarkerPair.h"
#include "settings/Language.h"

#include <QLabel>
#include <QVBoxLayout>

VoltageMeasureView::VoltageMeasureView(QWidget *parent) : QWidget(parent)
{
    btnExpand = makeExpandButton(::tr("Voltage Marker Pairs"), this);
    pairsWidget = new QWidget(this);
    auto *pairsLayout = new QVBoxLayout(pairsWidget);
    pairsLayout->setContentsMargins(0, 0, 0, 0);
    auto *pair = new VoltageMarkerPair(0, pairsWidget);
    pairsLayout->addWidget(pair);
    pairs.append(pair);

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(dp(2));
    column->addLayout(makeSectionHeader(btnExpand, makeSectionTitle(::tr("Voltage Marker Pairs"), this)));
    column->addWidget(pairsWidget);

    connect(btnExpand, &QPushButton::clicked, this, &VoltageMeasureView::slotBtnDeployClicked);
    connect(pair, &VoltageMarkerPair::markerClicked, this, &VoltageMeasureView::markerPairClicked);
    connect(pair, &VoltageMarkerPair::chnBtnClicked, this, &VoltageMeasureView::chnBtnClicked);
}

void VoltageMeasureView::reload()
{
    pairs.first()->clearValues();
}

void VoltageMeasureView::slotBtnDeployClicked()
{
    expanded = !expanded;
    pairsWidget->setVisible(expanded);
    showExpanded(*btnExpand, expanded);
}

void VoltageMeasureView::slotValueChanged(const QStringList &values)
{
    pairs.first()->setValues(values);
}
