#include "measure/VoltageMarkerPair.h"

#include "controls/Contrast.h"
#include "controls/Look.h"
#include "controls/MyButton.h"
#include "measure/SectionParts.h"
#include "measure/TimingMarkerTip.h"
#include "settings/Language.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>

namespace {

constexpr int markersOfPair = 2;
constexpr int hoverLighter = 115; // percent

QString firstChannel()
{
    return QStringLiteral("CH1");
}

QString secondChannel()
{
    return QStringLiteral("CH2");
}

QString markerName(int marker)
{
    return QStringLiteral("Y%1").arg(marker + 1);
}

QString pairName()
{
    return markerName(0) + QLatin1Char('-') + markerName(1);
}

} // namespace

VoltageMarkerPair::VoltageMarkerPair(int pairIndex, QWidget *parent) : QWidget(parent), index(pairIndex)
{
    setAccessibleName(pairName());
    buildLine();
    buildDetail();

    connect(markerBtns.first(), &QPushButton::clicked, this, &VoltageMarkerPair::slotBtn1Clicked);
    connect(markerBtns.last(), &QPushButton::clicked, this, &VoltageMarkerPair::slotBtn2Clicked);
    connect(btnChn, &QPushButton::clicked, this, &VoltageMarkerPair::slotBtnChnClicked);
    connect(btnDeploy, &QPushButton::clicked, this, &VoltageMarkerPair::slotBtnDeployClicked);
}

void VoltageMarkerPair::buildLine()
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(dp(2));
    auto *line = new QHBoxLayout;
    line->setContentsMargins(dp(4), 0, 0, 0);
    line->setSpacing(dp(3));
    for (int marker = 0; marker < markersOfPair; ++marker) {
        MyButton *button = makeTextButton(markerName(marker), markerName(marker), this);
        button->setToolTip(::tr("Voltage marker") + QLatin1Char(' ') + markerName(marker));
        button->setAccessibleName(button->toolTip());
        button->gradient = false; // the text is to be read on the whole face
        button->faceColor = gChnColors.value(index * markersOfPair + marker);
        button->hoverColor = button->faceColor.lighter(hoverLighter);
        button->textColor = textOn(button->faceColor);
        button->setFixedWidth(markerBtns.isEmpty() ? button->sizeHint().width() : markerBtns.first()->width());
        markerBtns.append(button);
        line->addWidget(button);
        if (marker + 1 < markersOfPair) {
            line->addWidget(makeSectionLabel(QStringLiteral("-"), this));
        }
    }
    line->addWidget(makeSectionLabel(QStringLiteral("="), this));
    diffLabel = new TimingMarkerTip(this);
    diffLabel->setAccessibleDescription(pairName());
    line->addWidget(diffLabel, 1);
    btnChn = makeTextButton(firstChannel(), firstChannel(), this);
    btnChn->setFixedWidth(btnChn->sizeHint().width());
    nameChannelButton();
    line->addWidget(btnChn);
    btnDeploy = makeExpandButton(pairName(), this);
    line->addWidget(btnDeploy);
    column->addLayout(line);
}

void VoltageMarkerPair::buildDetail()
{
    detail = new QWidget(this);
    auto *grid = new QGridLayout(detail);
    grid->setContentsMargins(dp(8), 0, 0, 0);
    grid->setHorizontalSpacing(dp(4));
    grid->setVerticalSpacing(dp(2));
    grid->setColumnStretch(2, 1);
    for (int marker = 0; marker < markersOfPair; ++marker) {
        auto *value = new TimingMarkerTip(detail);
        value->setAccessibleDescription(markerName(marker));
        grid->addWidget(makeSectionLabel(markerName(marker), detail), marker, 0);
        grid->addWidget(makeSectionLabel(QStringLiteral("@"), detail), marker, 1);
        grid->addWidget(value, marker, 2);
        valueLabels.append(value);
    }
    layout()->addWidget(detail);
}

void VoltageMarkerPair::nameChannelButton()
{
    btnChn->setToolTip(::tr("Channel of the voltage markers"));
    btnChn->setAccessibleName(btnChn->toolTip() + QLatin1Char(' ') + btnChn->text());
}

void VoltageMarkerPair::setValues(const QStringList &values)
{
    if (values.size() != valueLabels.size() + 1) {
        return;
    }
    for (int marker = 0; marker < valueLabels.size(); ++marker) {
        valueLabels.at(marker)->setText(values.at(marker));
    }
    diffLabel->setText(values.last());
}

void VoltageMarkerPair::clearValues()
{
    setValues({unknownText(), unknownText(), unknownText()});
}

void VoltageMarkerPair::slotBtnDeployClicked()
{
    expanded = !expanded;
    detail->setVisible(expanded);
    showExpanded(*btnDeploy, expanded);
}

void VoltageMarkerPair::slotBtn1Clicked()
{
    emit markerClicked(index * markersOfPair);
}

void VoltageMarkerPair::slotBtn2Clicked()
{
    emit markerClicked(index * markersOfPair + 1);
}

void VoltageMarkerPair::slotBtnChnClicked()
{
    const bool wasFirst = btnChn->text() == firstChannel();
    btnChn->setText(wasFirst ? secondChannel() : firstChannel());
    nameChannelButton();
    emit chnBtnClicked(wasFirst ? 1 : 0);
}
