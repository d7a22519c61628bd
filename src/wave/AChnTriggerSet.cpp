#include "wave/AChnTriggerSet.h"

#include "controls/Icons.h"
#include "controls/Look.h"
#include "controls/MyButton.h"
#include "controls/PopupPlace.h"
#include "controls/Style.h"
#include "controls/Truncate.h"
#include "device/DevBase.h"
#include "settings/Config.h"
#include "settings/Language.h"
#include "store/SmpTrigCode.h"
#include "wave/AnalogTriggerParts.h"
#include "wave/SensitivityMenu.h"
#include "wave/SidebarLook.h"
#include "wave/TriggerPosition.h"

#include <QApplication>
#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QSpinBox>

#include <algorithm>
#include <array>

using AnalogTriggerParts::filterField;
using AnalogTriggerParts::leastField;
using AnalogTriggerParts::makeZero;
using AnalogTriggerParts::spoken;

namespace {

constexpr int leastLevel = -32768; ///< millivolts, as the one below
constexpr int mostLevel = 32767;

const QString keyLevel = QStringLiteral("ATrigValue");
const QString keyChannel = QStringLiteral("ATrigChn");
const QString keyDisabled = QStringLiteral("ATrigDisab");
const QString keySensitivity = QStringLiteral("ATrigSenstivity");

struct AnalogEdge {
    int code;
    const char *icon;
};
constexpr std::array<AnalogEdge, 2> analogEdges{
    {{smpTrigCode::risingEdge, ":/res/btnPosEdge"}, {smpTrigCode::fallingEdge, ":/res/btnNegEdge"}}};

QString storedSensitivity(const DevBase &device)
{
    const QString stored = deviceGet(device.name, keySensitivity);
    return stored.isEmpty() ? QStringLiteral("0.5") : stored;
}

} // namespace

AChnTriggerSet::AChnTriggerSet(QWidget *parent)
    : QFrame(parent),
      chnTexts{QStringLiteral("CH1"), QStringLiteral("CH2")},
      enableBox(new QCheckBox(::tr("Trigger"), this)),
      chnBtn(new QPushButton(this)),
      settingBtn(new MyButton(this)),
      levelLabel(new QLabel(QStringLiteral("V:"), this)),
      levelSpin(new QSpinBox(this)),
      levelUnit(new QLabel(QStringLiteral("mV"), this)),
      m_position(new TriggerPosition(this))
{
    setObjectName(QStringLiteral("aChnTrigger"));
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(dp(3));
    grid->setColumnStretch(1, 1);
    buildHead(*grid);
    buildEdges(*grid);
    buildLevel(*grid);
    m_position->addTo(*grid, 3);
    connect(m_position, &TriggerPosition::mayBeDeleted, this, &AChnTriggerSet::mayBeDeleted);
    for (QPushButton *button : findChildren<QPushButton *>()) {
        button->setAutoDefault(true); // Enter presses it, as Space does
    }
}

AChnTriggerSet::~AChnTriggerSet()
{
    // A field that goes away gives up its focus: that is no end of an edit.
    levelSpin->disconnect(this);
    delete m_position;
}

void AChnTriggerSet::buildHead(QGridLayout &grid)
{
    enableBox->setObjectName(QStringLiteral("trigEnable"));
    enableBox->setAccessibleName(::tr("Analog trigger"));
    connect(enableBox, &QCheckBox::clicked, this, &AChnTriggerSet::slotChnCtlClicked);
    settingBtn->setObjectName(QStringLiteral("trigSetting"));
    settingBtn->setIcon(sharedIcon(QStringLiteral(":/res/btnSetting")));
    dressFlat(*settingBtn);
    settingBtn->setRadius(dp(3));
    settingBtn->setFixedSize(sidebarLine(), sidebarLine());
    settingBtn->setToolTip(::tr("Trigger sensitivity"));
    settingBtn->setAccessibleName(spoken(settingBtn->toolTip()));
    connect(settingBtn, &QPushButton::clicked, this, &AChnTriggerSet::openExtendSetMenu);
    grid.addWidget(enableBox, 0, 0, 1, 3);
    grid.addWidget(settingBtn, 0, 3);
}

void AChnTriggerSet::buildEdges(QGridLayout &grid)
{
    auto *frame = new QFrame(this);
    frame->setObjectName(QStringLiteral("edges"));
    frame->setFixedSize(2 * (uiScale() + dp(16)), sidebarLine());
    frame->setStyleSheet(triggerFrameStyle(frame->objectName()));
    for (int i = 0; i < int(analogEdges.size()); ++i) {
        const auto [code, icon] = analogEdges[std::size_t(i)];
        const QString path = QLatin1String(icon);
        const QString text =
            code == smpTrigCode::risingEdge ? ::tr("Rising edge trigger") : ::tr("Falling edge trigger");
        auto *button = new MyButton(sharedIcon(path), text, frame);
        dressFlat(*button);
        button->setRadius(dp(3));
        button->checkedIcon = sharedIcon(path + QStringLiteral("_s"));
        button->value = code;
        button->setObjectName(path.section(QLatin1Char('/'), -1));
        button->setAccessibleName(spoken(text));
        button->setCheckable(true); // a screen reader tells which one is set
        button->setGeometry(uiScale() + i * dp(16), uiScale(), dp(16), dp(16));
        connect(button, &QPushButton::clicked, this, &AChnTriggerSet::slotTrigMouseClicked);
        edgeBtns.append(button);
    }
    chnBtn->setObjectName(QStringLiteral("trigChannel"));
    showChannel(0);
    chnBtn->setFixedHeight(sidebarFieldHeight(QApplication::font()));
    chnBtn->setToolTip(::tr("Trigger channel"));
    connect(chnBtn, &QPushButton::clicked, this, &AChnTriggerSet::slotTrigChnClicked);
    auto *line = new QHBoxLayout;
    line->setSpacing(dp(3));
    line->addWidget(chnBtn, 1);
    line->addWidget(frame);
    grid.addLayout(line, 1, 0, 1, 4);
}

void AChnTriggerSet::buildLevel(QGridLayout &grid)
{
    levelSpin->setObjectName(QStringLiteral("trigLevel"));
    levelSpin->setRange(leastLevel, mostLevel);
    levelSpin->setKeyboardTracking(false); // a level is taken when it has been typed, not digit by digit
    levelSpin->setFocusPolicy(Qt::StrongFocus);
    levelSpin->setToolTip(::tr("Number between -32768 and 32767."));
    levelSpin->setAccessibleName(spoken(::tr("Trigger level") + QStringLiteral(" [mV]")));
    levelSpin->setFixedHeight(sidebarFieldHeight(QApplication::font()));
    levelSpin->setMinimumWidth(dp(leastField)); // the column decides; the style would ask for more
    levelSpin->installEventFilter(this);
    levelLabel->setBuddy(levelSpin);
    connect(levelSpin, &QSpinBox::editingFinished, this, &AChnTriggerSet::slotTrigVoltageClicked);
    connect(levelSpin, QOverload<int>::of(&QSpinBox::valueChanged), this, &AChnTriggerSet::storeLevel);
    levelZero = makeZero(QStringLiteral("trigLevelZero"), ::tr("Trigger level"), this);
    connect(levelZero, &QPushButton::clicked, this, &AChnTriggerSet::slotVoltageZreoClicked);
    grid.addWidget(levelLabel, 2, 0);
    grid.addWidget(levelSpin, 2, 1);
    grid.addWidget(levelUnit, 2, 2);
    grid.addWidget(levelZero, 2, 3);
}

QVector<QWidget *> AChnTriggerSet::tabStops() const
{
    QVector<QWidget *> stops{enableBox, settingBtn, chnBtn};
    for (MyButton *button : edgeBtns) {
        stops.append(button);
    }
    return stops + QVector<QWidget *>{levelSpin, levelZero} + m_position->tabStops();
}

bool AChnTriggerSet::eventFilter(QObject *watched, QEvent *event)
{
    return filterField(watched, event) || QFrame::eventFilter(watched, event);
}

// ---- what is shown

void AChnTriggerSet::refresh(DevBase &device)
{
    m_device = &device;
    if (extendMenu != nullptr) {
        extendMenu->abandon(); // what was being typed was meant for another device
    }
    showEdges();
    {
        const QSignalBlocker noEntry(levelSpin);
        levelSpin->setValue(deviceGet(m_device->name, keyLevel).toInt());
    }
    m_position->refresh(device);
    const int chn = deviceGet(m_device->name, keyChannel).toInt();
    showChannel(chn == 1 ? 1 : 0);
    emit aChnTrigSetChanged(aTrigChange::channel, QString::number(channel()));
    enableBox->setChecked(deviceGet(m_device->name, keyDisabled).toInt() == 0);
    slotChnCtlClicked();
}

void AChnTriggerSet::showEdges()
{
    if (!m_device) {
        return;
    }
    const auto first =
        std::find_if(m_device->aChnTrig.cbegin(), m_device->aChnTrig.cend(), [](int code) { return code != 0; });
    const int code = first == m_device->aChnTrig.cend() ? 0 : *first;
    for (MyButton *button : edgeBtns) {
        button->setSelected(button->value == code);
    }
}

void AChnTriggerSet::showChannel(int index)
{
    chnBtn->setText(chnTexts.at(index));
    chnBtn->setAccessibleName(spoken(::tr("Trigger channel") + QLatin1Char(' ') + chnBtn->text()));
}

int AChnTriggerSet::level() const
{
    return levelSpin->value();
}

int AChnTriggerSet::channel() const
{
    return chnBtn->text() == chnTexts.first() ? 0 : 1;
}

int AChnTriggerSet::chosenEdge() const
{
    const auto chosen = std::find_if(edgeBtns.cbegin(), edgeBtns.cend(), [](const MyButton *b) { return b->selected; });
    return chosen == edgeBtns.cend() ? 0 : (*chosen)->value;
}

// ---- what is chosen

void AChnTriggerSet::slotChnCtlClicked()
{
    if (!m_device) {
        return;
    }
    const bool on = enableBox->isChecked();
    deviceSet(m_device->name, keyDisabled, on ? QStringLiteral("0") : QStringLiteral("1"));
    for (QWidget *control : tabStops()) {
        if (control != enableBox && control != settingBtn) {
            control->setEnabled(on);
        }
    }
    emit aChnTrigSetChanged(aTrigChange::enabled, on ? QStringLiteral("true") : QStringLiteral("false"));
}

void AChnTriggerSet::slotTrigMouseClicked()
{
    if (!m_device) {
        return;
    }
    auto *button = qobject_cast<MyButton *>(sender());
    if (button == nullptr) {
        return;
    }
    const bool on = !button->selected;
    for (MyButton *edge : edgeBtns) {
        edge->setSelected(on && edge == button);
    }
    m_device->setAChnTrig(channel(), on ? button->value : 0);
    if (on) {
        emit aChnTrigSetChanged(aTrigChange::edge, QString::number(channel()));
    }
}

void AChnTriggerSet::slotTrigChnClicked()
{
    if (!m_device) {
        return;
    }
    const int chn = (channel() + 1) % int(chnTexts.size());
    showChannel(chn);
    deviceSet(m_device->name, keyChannel, QString::number(chn));
    if (const int code = chosenEdge(); code != 0) {
        m_device->setAChnTrig(chn, code);
    }
    emit aChnTrigSetChanged(aTrigChange::channel, QString::number(chn));
}

void AChnTriggerSet::setLevel(double millivolts)
{
    levelSpin->setValue(truncated32(std::clamp(millivolts, double(leastLevel), double(mostLevel))));
}

void AChnTriggerSet::storeLevel()
{
    if (!m_device) {
        return;
    }
    deviceSet(m_device->name, keyLevel, QString::number(levelSpin->value()));
    emit aChnTrigSetChanged(aTrigChange::value, QString());
}

void AChnTriggerSet::slotTrigVoltageClicked()
{
    if (levelSpin->hasFocus()) {
        levelSpin->clearFocus();
        return;
    }
    storeLevel();
}

void AChnTriggerSet::slotVoltageZreoClicked()
{
    const QSignalBlocker once(levelSpin);
    levelSpin->setValue(0);
    storeLevel();
}

bool AChnTriggerSet::mayGo()
{
    return m_position->mayGo();
}

// ---- the menu

void AChnTriggerSet::openExtendSetMenu()
{
    if (!m_device) {
        return;
    }
    if (extendMenu == nullptr) {
        extendMenu = new SensitivityMenu(this);
        connect(extendMenu, &SensitivityMenu::editingFinished, this, &AChnTriggerSet::slotSenstivityChanged);
    }
    extendMenu->setAccessibleName(settingBtn->accessibleName());
    extendMenu->ask(storedSensitivity(*m_device), popupPlace(*settingBtn));
}

void AChnTriggerSet::slotSenstivityChanged()
{
    if (extendMenu == nullptr || extendMenu->giveFocusAway()) {
        return;
    }
    extendMenu->close();
    emit aChnTrigSetChanged(aTrigChange::sensitivity, extendMenu->sensitivity());
}
