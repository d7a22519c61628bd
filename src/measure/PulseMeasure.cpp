#include "measure/PulseMeasure.h"

#include "controls/Look.h"
#include "controls/MyButton.h"
#include "device/DevBase.h"
#include "measure/PickMenu.h"
#include "measure/PulseChoices.h"
#include "measure/SectionParts.h"
#include "measure/TimingMarkerTip.h"
#include "settings/Language.h"

#include <QGridLayout>
#include <QVBoxLayout>

namespace {

constexpr int allTimes = -1; ///< for operations that may be about one time index only

} // namespace

PulseMeasure::PulseMeasure(const DevBase &device, QWidget *parent) : QWidget(parent), m_device(&device)
{
    gPulseRequests = this;
    btnExpand = makeExpandButton(::tr("Pulse Measurements"), this);
    auto *title = makeSectionTitle(::tr("Pulse Measurements"), this);
    btnAdd = makeIconButton(QStringLiteral(":/res/btnAddItem"), ::tr("Add a pulse measurement"), this);
    rowsWidget = new QWidget(this);
    grid = new QGridLayout(rowsWidget);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(dp(2));
    grid->setVerticalSpacing(dp(3));
    grid->setColumnStretch(4, 1);
    buildMenus();

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(dp(2));
    column->addLayout(makeSectionHeader(btnExpand, title, btnAdd));
    column->addWidget(rowsWidget);

    connect(btnExpand, &QPushButton::clicked, this, &PulseMeasure::slotDeployClicked);
    connect(btnAdd, &QPushButton::clicked, this, &PulseMeasure::slotBtnAddClicked);
}

PulseMeasure::~PulseMeasure()
{
    if (gPulseRequests == this) {
        gPulseRequests = nullptr;
    }
}

void PulseMeasure::reload(const DevBase &device)
{
    m_device = &device;
    typeMenu->hide();
    timeMenu->hide();
    menuRow = -1;
    chnMenu->shorten(m_device->chnEnable.size());
    for (TimingMarkerTip *label : valueLabels) {
        label->setText(unknownText());
    }
}

void PulseMeasure::slotDeployClicked()
{
    expanded = !expanded;
    btnAdd->setVisible(expanded);
    rowsWidget->setVisible(expanded);
    showExpanded(*btnExpand, expanded);
}

QStringList PulseMeasure::requestsOf(int onlyTime) const
{
    QStringList requests;
    for (int row = 0; row < timeButtons.size(); ++row) {
        const int chn = choiceOf(*chnButtons.at(row));
        const int time = choiceOf(*timeButtons.at(row));
        if ((onlyTime == allTimes || time == onlyTime) && isChannelInUse(m_device, chn) && isPulseTimeShown(time)) {
            requests.append(QStringLiteral("%1,%2").arg(chn).arg(time));
        }
    }
    requests.removeDuplicates();
    return requests;
}

QStringList PulseMeasure::allRequests() const
{
    return requestsOf(allTimes);
}

QStringList PulseMeasure::requestsOfPair(int pairIndex) const
{
    return pairIndex < 0 ? QStringList() : requestsOf(pairIndex + 1);
}

void PulseMeasure::slotValueChanged(QStringList pulseList)
{
    showResults(pulseList, allTimes);
}

void PulseMeasure::slotValueChangedbyTimeMarker(int index, QStringList pulseList)
{
    if (index >= 0) {
        showResults(pulseList, index + 1);
    }
}

void PulseMeasure::showResults(const QStringList &results, int onlyTime)
{
    constexpr int requestFields = 2;
    for (int row = 0; row < valueLabels.size(); ++row) {
        const QString chn = chnButtons.at(row)->objectName();
        const QString time = timeButtons.at(row)->objectName();
        if (onlyTime != allTimes && time.toInt() != onlyTime) {
            continue;
        }
        QString shown = unknownText();
        for (const QString &result : results) {
            const QStringList fields = result.split(QLatin1Char(','));
            if (fields.value(0) == chn && fields.value(1) == time) {
                shown = fields.value(requestFields + choiceOf(*typeButtons.at(row)), unknownText());
                break;
            }
        }
        valueLabels.at(row)->setText(shown);
    }
}
