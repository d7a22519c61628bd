#include "wave/ItemAChnSidebar.h"

#include "controls/Look.h"
#include "controls/Style.h"
#include "device/DevBase.h"
#include "settings/Config.h"
#include "settings/Language.h"
#include "wave/AChnParameterSet.h"
#include "wave/AChnTAG.h"
#include "wave/AChnTiggerTAG.h"
#include "wave/AChnTriggerSet.h"
#include "wave/AnalogScale.h"
#include "wave/ItemChnSidebar.h"
#include "wave/LabelMove.h"
#include "wave/SidebarLook.h"

#include <QApplication>
#include <QFocusEvent>
#include <QGridLayout>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int stepsOfFullScale = 500; ///< of an arrow key on the trigger's flag: a fiftieth of a division

} // namespace

ItemAChnSidebar::ItemAChnSidebar(int channels, QWidget *parent) : QWidget(parent)
{
    setFixedWidth(dp(ItemChnSidebar::columnWidth));
    setStyleSheet(labelStyle() + comboBoxStyle() + lineEditStyle() + spinBoxStyle() + checkBoxStyle() +
                  pushButtonStyle() + sidebarFontStyle(QApplication::font()));
    numberLabel = new LabelMove(0, this);
    m_trigger = new AChnTriggerSet(this);
    m_trigTag = new AChnTiggerTAG(this);
    m_rest = new QLabel(this);
    buildNumber();
    for (int channel = 0; channel < channels; ++channel) {
        m_parameters.append(new AChnParameterSet(channel, this));
        connect(m_parameters.last(), &AChnParameterSet::chnSetChanged, this, &ItemAChnSidebar::slotChnSetChanged);
    }
    buildTags(channels);
    buildGrid();
    connect(m_trigger, &AChnTriggerSet::aChnTrigSetChanged, this, &ItemAChnSidebar::slotTrigSetChanged);
    for (QWidget *stop : tabStops()) {
        stop->installEventFilter(this);
    }
}

void ItemAChnSidebar::buildNumber()
{
    numberLabel->setObjectName(QStringLiteral("number"));
    numberLabel->setText(QStringLiteral("A"));
    numberLabel->setFixedWidth(dp(18));
    numberLabel->setAlignment(Qt::AlignCenter);
    numberLabel->setFocusPolicy(Qt::NoFocus); // the analog area keeps its place
    numberLabel->setAttribute(Qt::WA_TransparentForMouseEvents);
    numberLabel->setAccessibleName(::tr("Analog channels"));
    numberLabel->setStyleSheet(
        QStringLiteral("QLabel{border:0;color:black;font-weight:bold;font-size:%1px;}").arg(dp(11)));
}

void ItemAChnSidebar::buildTags(int channels)
{
    // Side by side: a trigger at zero volts must not hide the flag of the zero level.
    const int edge = width() - uiScale() - dp(AChnTAG::tagSize);
    for (int channel = 0; channel < channels; ++channel) {
        auto *tag = new AChnTAG(channel, this);
        tag->setObjectName(QStringLiteral("tag%1").arg(channel));
        tag->move(edge, 0);
        connect(tag, &AChnTAG::labelMoved, this, &ItemAChnSidebar::slotLabelChnChanged);
        connect(tag, &AChnTAG::movedByKey, this,
                [this, tag](int steps) { moveTag(*tag, tag->centre() + steps * uiScale()); });
        m_tags.append(tag);
    }
    m_trigTag->setObjectName(QStringLiteral("trigTag"));
    m_trigTag->move(edge - dp(AChnTAG::tagSize), 0);
    connect(m_trigTag, &AChnTAG::labelMoved, this, &ItemAChnSidebar::slotLabelTrigChanged);
    connect(m_trigTag, &AChnTAG::movedByKey, this, [this](int steps) {
        const int step = std::max(trigFullScale() / stepsOfFullScale, 1);
        m_trigger->setLevel(double(m_trigger->level()) - double(steps) * step);
    });
}

void ItemAChnSidebar::buildGrid()
{
    auto *column = new QVBoxLayout;
    column->setSpacing(dp(8));
    for (AChnParameterSet *parameters : m_parameters) {
        column->addWidget(parameters);
    }
    column->addWidget(m_trigger);
    column->addWidget(m_rest, 1);
    auto *grid = new QGridLayout(this);
    grid->setSpacing(dp(3));
    grid->setContentsMargins(0, dp(4) + uiScale(), 2 * dp(AChnTAG::tagSize) + dp(4), dp(3));
    grid->addWidget(numberLabel, 0, 0);
    grid->addLayout(column, 0, 1);
    grid->setColumnStretch(1, 1);
}

QVector<QWidget *> ItemAChnSidebar::tabStops() const
{
    QVector<QWidget *> stops;
    for (const AChnParameterSet *parameters : m_parameters) {
        stops += parameters->tabStops();
    }
    stops += m_trigger->tabStops();
    for (AChnTAG *tag : m_tags) {
        stops.append(tag);
    }
    stops.append(m_trigTag);
    return stops;
}

bool ItemAChnSidebar::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusIn) {
        const Qt::FocusReason reason = static_cast<QFocusEvent *>(event)->reason();
        if (reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason) {
            emit reachedByKey(static_cast<QWidget *>(watched));
        }
    }
    return QWidget::eventFilter(watched, event);
}

void ItemAChnSidebar::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    paintSidebar(painter, size(), numberLabel->width(), gChnColors.last());
}

// ---- what is shown

void ItemAChnSidebar::refresh(DevBase &device)
{
    m_device = &device;
    loadPlaces();
    for (AChnParameterSet *parameters : m_parameters) {
        parameters->refresh(device);
    }
    m_trigger->refresh(device);
    placeTags();
}

bool ItemAChnSidebar::mayGo()
{
    if (m_trigger->mayGo()) {
        return true;
    }
    hide();
    disconnect(); // nobody is told of it any more
    connect(m_trigger, &AChnTriggerSet::mayBeDeleted, this, &QObject::deleteLater);
    return false;
}

void ItemAChnSidebar::showTriggers()
{
    m_trigger->showEdges();
}

void ItemAChnSidebar::setChnEnabled(int channel, bool on)
{
    if (channel >= 0 && channel < m_tags.size()) {
        m_tags[channel]->setVisible(on);
    }
}

int ItemAChnSidebar::zeroY(int channel) const
{
    return channel >= 0 && channel < m_tags.size() ? m_tags[channel]->centre() : 0;
}

int ItemAChnSidebar::fullScaleMv(int channel) const
{
    return channel >= 0 && channel < m_parameters.size() ? m_parameters[channel]->fullScaleMv() : 0;
}

int ItemAChnSidebar::trigFullScale() const
{
    return fullScaleMv(m_trigTag->channel());
}

// ---- flags

void ItemAChnSidebar::loadPlaces()
{
    const QVector<int> stored = AChnHorLabelPosGet(2 * m_tags.size());
    for (int i = 0; i < m_tags.size(); ++i) {
        const TagPlace place{stored.value(2 * i), stored.value(2 * i + 1)};
        const bool isValid = isPlace(place);
        m_tags[i]->tagY = isValid ? place.y : 0;
        m_tags[i]->tagRefH = isValid ? place.refHeight : 0;
    }
}

void ItemAChnSidebar::storePlaces()
{
    QVector<int> places;
    for (const AChnTAG *tag : m_tags) {
        places << tag->tagY << tag->tagRefH;
    }
    AChnHorLabelPosPut(places);
}

void ItemAChnSidebar::lay(int height)
{
    setGeometry(0, 0, width(), height);
    m_isLaid = height >= uiScale();
    placeTags();
}

void ItemAChnSidebar::placeTags()
{
    if (!m_isLaid) {
        return;
    }
    const int s = uiScale();
    bool isNew = false;
    for (int i = 0; i < m_tags.size(); ++i) {
        AChnTAG *tag = m_tags[i];
        if (tag->tagRefH == 0) {
            const TagPlace start = startPlace(i, height(), s);
            tag->tagY = start.y;
            tag->tagRefH = start.refHeight;
            isNew = true;
        }
        tag->setCentre(centreOf({tag->tagY, tag->tagRefH}, height(), s));
        emit chnSetChangedACH(aChnChange::zeroLevel, i, tag->centre());
    }
    if (isNew) {
        storePlaces();
    }
    placeTrigger();
}

void ItemAChnSidebar::moveTag(AChnTAG &tag, int centre)
{
    const int s = uiScale();
    if (centre < 0 || centre > height() || !m_isLaid) {
        return;
    }
    const TagPlace place = placeAt(centre, height(), s);
    tag.tagY = place.y;
    tag.tagRefH = place.refHeight;
    tag.setCentre(place.y * s);
    storePlaces();
    if (tag.channel() == m_trigTag->channel()) {
        placeTrigger();
    }
    emit chnSetChangedACH(aChnChange::zeroLevel, tag.channel(), tag.centre());
}

void ItemAChnSidebar::slotLabelChnChanged(int posY)
{
    if (auto *tag = qobject_cast<AChnTAG *>(sender())) {
        moveTag(*tag, tag->centre() + posY);
    }
}

void ItemAChnSidebar::slotLabelTrigChanged(int posY)
{
    const int centre = m_trigTag->centre() + posY;
    const int scale = trigFullScale();
    if (centre >= 0 && centre <= height() && scale != 0) {
        m_trigger->setLevel(voltageAt(centre, zeroY(m_trigTag->channel()), scale, height(), uiScale()));
    }
}

void ItemAChnSidebar::placeTrigger()
{
    const int scale = trigFullScale();
    if (scale != 0 && m_isLaid) {
        const int zero = zeroY(m_trigTag->channel());
        m_trigTag->setCentre(rowOfVoltage(m_trigger->level(), zero, scale, height(), uiScale()));
        m_trigTag->setAccessibleDescription(QString::number(m_trigger->level()) + QStringLiteral(" mV"));
    }
}

// ---- what the panels tell

void ItemAChnSidebar::slotTrigSetChanged(int type, const QString &value)
{
    switch (type) {
    case aTrigChange::enabled:
        m_trigTag->setVisible(value == QLatin1String("true"));
        placeTrigger();
        break;
    case aTrigChange::edge:
        emit chnSetChangedACH(aChnChange::trigger, 0, 0);
        break;
    case aTrigChange::channel:
        m_trigTag->setVisible(true);
        m_trigTag->setChannel(value.toInt());
        placeTrigger();
        break;
    case aTrigChange::value:
        placeTrigger();
        break;
    case aTrigChange::sensitivity:
        if (m_device) {
            deviceSet(m_device->name, QStringLiteral("ATrigSenstivity"), value);
        }
        break;
    default:
        break;
    }
}

void ItemAChnSidebar::slotChnSetChanged(int type, int id, int value)
{
    if (type == aChnChange::fullScale && id == m_trigTag->channel()) {
        placeTrigger();
    }
    emit chnSetChangedACH(type, id, value);
}
