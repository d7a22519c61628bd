#include "measure/Annotations.h"

#include "controls/Look.h"
#include "controls/MyButton.h"
#include "controls/NoticeBox.h"
#include "device/DevBase.h"
#include "measure/SectionParts.h"
#include "measure/TimingMarkerPair.h"
#include "measure/TimingMarkerTip.h"
#include "settings/Language.h"
#include "wave/MarkerChange.h"

#include <QVBoxLayout>

#include <algorithm>

Annotations::Annotations(const DevBase &device, QWidget *parent) : QWidget(parent), m_device(&device)
{
    btnExpand = makeExpandButton(::tr("Timing Marker Pairs"), this);
    auto *title = makeSectionTitle(::tr("Timing Marker Pairs"), this);
    btnAdd = makeIconButton(QStringLiteral(":/res/btnAddItem"), ::tr("Add a timing marker pair"), this);
    pairsWidget = new QWidget(this);
    pairsLayout = new QVBoxLayout(pairsWidget);
    pairsLayout->setContentsMargins(0, 0, 0, 0);
    pairsLayout->setSpacing(dp(3));

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(dp(2));
    column->addLayout(makeSectionHeader(btnExpand, title, btnAdd));
    column->addWidget(pairsWidget);

    connect(btnExpand, &QPushButton::clicked, this, &Annotations::slotBtnDeployClicked);
    connect(btnAdd, &QPushButton::clicked, this, &Annotations::slotBtnAddClicked);
}

void Annotations::reload(const DevBase &device)
{
    m_device = &device;
    for (TimingMarkerPair *pair : pairs) {
        pair->hide();
        pair->deleteLater();
    }
    pairs.clear();
    setExpanded(true);
}

void Annotations::setExpanded(bool on)
{
    expanded = on;
    btnAdd->setVisible(on);
    pairsWidget->setVisible(on);
    showExpanded(*btnExpand, on);
}

void Annotations::slotBtnDeployClicked()
{
    setExpanded(!expanded);
}

int Annotations::placeOf(int group) const
{
    const auto found = std::lower_bound(pairs.begin(), pairs.end(), group,
                                        [](const TimingMarkerPair *pair, int id) { return pair->groupId < id; });
    return int(found - pairs.begin());
}

void Annotations::insertPair(int group)
{
    auto *pair = new TimingMarkerPair(*m_device, group, pairsWidget);
    connect(pair, &TimingMarkerPair::deleteClicked, this, &Annotations::slotDeleteClicked);
    connect(pair, &TimingMarkerPair::markerClicked, this, &Annotations::markerPairClicked);
    connect(pair, &TimingMarkerPair::locationClicked, this, &Annotations::locationPairClicked);
    pairs.insert(placeOf(group), pair);
    showInOrder();
}

void Annotations::showInOrder()
{
    QWidget *before = btnAdd;
    for (TimingMarkerPair *pair : pairs) {
        pairsLayout->removeWidget(pair);
        pairsLayout->addWidget(pair);
        before = pair->followInTabOrder(before);
    }
}

void Annotations::slotBtnAddClicked()
{
    if (pairs.size() >= mostPairs) {
        showNotice(this, QMessageBox::Information, QString(),
                   ::tr("Sorry, timing marker pairs has reached the maximum number."), QStringLiteral("color:black;"));
        return;
    }
    int group = 0;
    while (group < pairs.size() && pairs.at(group)->groupId == group) {
        ++group;
    }
    insertPair(group);
    emit addPairClicked(2 * group);
}

void Annotations::slotDeleteClicked(int id)
{
    const int place = placeOf(id);
    if (place == pairs.size() || pairs.at(place)->groupId != id) {
        return;
    }
    TimingMarkerPair *pair = pairs.takeAt(place);
    pairsLayout->removeWidget(pair);
    pair->hide();
    pair->deleteLater();
    emit delPairClicked(2 * id);
}

void Annotations::slotTimingMarkerPairChanged(int type, int phyId, QString timeData, QString timeToal)
{
    if (phyId < 0 || phyId >= 2 * mostPairs) {
        return;
    }
    const int group = phyId / 2;
    const int place = placeOf(group);
    const bool listed = place < pairs.size() && pairs.at(place)->groupId == group;
    if (type == markerChange::pairMade && !listed) {
        insertPair(group);
    } else if (type == markerChange::time && listed) {
        pairs.at(place)->times.at(phyId % 2)->setText(timeData);
        pairs.at(place)->pairTotal->setText(timeToal);
    }
}
