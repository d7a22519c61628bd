#include "measure/TimingMarkerPair.h"

#include "controls/Look.h"
#include "controls/MyButton.h"
#include "device/DevBase.h"
#include "measure/SectionParts.h"
#include "measure/TimingMarkerTip.h"
#include "settings/Language.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

QString pairLetter(int group)
{
    return QChar(ushort('A' + group));
}

QString pairName(int group)
{
    const QString letter = pairLetter(group);
    return letter + QStringLiteral("1-") + letter + QLatin1Char('2');
}

TimingMarkerPair::TimingMarkerPair(const DevBase &device, int group, QWidget *parent)
    : QWidget(parent), groupId(group), m_device(&device)
{
    setAccessibleName(pairName(group));
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(dp(2));
    buildLine();
    buildDetail();
    column->addLayout(line);
    column->addWidget(detail);

    connect(btnLocation, &QPushButton::clicked, this, &TimingMarkerPair::slotBtnLocationClicked);
    connect(btnTiming1, &QPushButton::clicked, this, &TimingMarkerPair::slotTimingBtn1Clicked);
    connect(btnTiming2, &QPushButton::clicked, this, &TimingMarkerPair::slotTimingBtn2Clicked);
    connect(btnDeploy, &QPushButton::clicked, this, &TimingMarkerPair::slotBtnDeployClicked);
    connect(btnRemove, &QPushButton::clicked, this, &TimingMarkerPair::slotBtnRemoveSetClicked);
}

void TimingMarkerPair::buildLine()
{
    const QString letter = pairLetter(groupId);
    const QString first = letter + QLatin1Char('1');
    const QString second = letter + QLatin1Char('2');
    btnLocation = makeIconButton(QStringLiteral(":/res/icoTimingMarker"), ::tr("Zoom to the pair"), this);
    btnTiming1 = makeTextButton(first, QStringLiteral("D2"), this); // the widest of all, so that the rows line up
    btnTiming2 = makeTextButton(second, QStringLiteral("D2"), this);
    pairTotal = new TimingMarkerTip(this);
    pairTotal->setAccessibleDescription(pairName(groupId));
    btnDeploy = makeExpandButton(pairName(groupId), this);
    btnDeploy->setFixedWidth(dp(14));
    btnRemove = makeIconButton(QStringLiteral(":/res/btnRemove"), ::tr("Remove"), this);
    btnRemove->setAccessibleName(::tr("Remove %1").arg(pairName(groupId)));
    btnLocation->setAccessibleName(btnLocation->toolTip() + QLatin1Char(' ') + pairName(groupId));

    line = new QHBoxLayout;
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(dp(1)); // the value has little room
    line->addWidget(btnLocation);
    line->addWidget(makeSectionLabel(QStringLiteral("|"), this));
    line->addWidget(btnTiming1);
    line->addWidget(makeSectionLabel(QStringLiteral("-"), this));
    line->addWidget(btnTiming2);
    line->addWidget(makeSectionLabel(QStringLiteral("|"), this));
    line->addWidget(makeSectionLabel(QStringLiteral("="), this));
    line->addSpacing(dp(1));
    line->addWidget(pairTotal, 1);
    line->addWidget(btnDeploy);
    line->addWidget(btnRemove);
}

void TimingMarkerPair::buildDetail()
{
    detail = new QWidget(this);
    auto *grid = new QGridLayout(detail);
    grid->setContentsMargins(sectionButtonWidth() + dp(8), 0, 0, 0); // below the marker buttons
    grid->setHorizontalSpacing(dp(4));
    grid->setVerticalSpacing(dp(2));
    grid->setColumnStretch(2, 1);
    for (int marker = 0; marker < 2; ++marker) {
        const QString name = pairLetter(groupId) + QString::number(marker + 1);
        auto *time = new TimingMarkerTip(detail);
        time->setAccessibleDescription(name);
        grid->addWidget(makeSectionLabel(name, detail), marker, 0);
        grid->addWidget(makeSectionLabel(QStringLiteral("@"), detail), marker, 1);
        grid->addWidget(time, marker, 2);
        times.append(time);
    }
}

QWidget *TimingMarkerPair::followInTabOrder(QWidget *before)
{
    for (QWidget *next : {btnLocation, btnTiming1, btnTiming2, btnDeploy, btnRemove}) {
        setTabOrder(before, next);
        before = next;
    }
    return before;
}

void TimingMarkerPair::slotBtnLocationClicked()
{
    if (pairTotal->text() != unknownText()) {
        emit locationClicked(2 * groupId);
    }
}

void TimingMarkerPair::slotBtnDeployClicked()
{
    expanded = !expanded;
    detail->setVisible(expanded);
    showExpanded(*btnDeploy, expanded);
}

void TimingMarkerPair::slotBtnRemoveSetClicked()
{
    emit deleteClicked(groupId);
}

void TimingMarkerPair::slotTimingBtn1Clicked()
{
    clickMarker(2 * groupId);
}

void TimingMarkerPair::slotTimingBtn2Clicked()
{
    clickMarker(2 * groupId + 1);
}

void TimingMarkerPair::clickMarker(int marker)
{
    if (m_device && m_device->smpData->sampleCount() > 0) {
        emit markerClicked(marker);
    }
}
