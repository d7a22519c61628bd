#include "wave/AChnParameterSet.h"

#include "controls/Contrast.h"
#include "controls/Icons.h"
#include "controls/LazyComboBox.h"
#include "controls/Look.h"
#include "controls/MenuDialog.h"
#include "controls/MyButton.h"
#include "controls/PopupPlace.h"
#include "controls/Style.h"
#include "device/DevBase.h"
#include "settings/Language.h"
#include "wave/AnalogColor.h"
#include "wave/AnalogScale.h"
#include "wave/SidebarLook.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>

#include <algorithm>

namespace {

constexpr int coupleWidth = 66;

/// The place of the text of a probe factor.
int probeIndex(int factor)
{
    return factor % 10 != 0 ? 0 : factor % 100 != 0 ? 1 : 2;
}

int probeFactor(int index)
{
    return index == 0 ? 1 : index == 1 ? 10 : 100;
}

} // namespace

AChnParameterSet::AChnParameterSet(int channel, QWidget *parent)
    : QFrame(parent),
      chnIndex(channel),
      coupleTexts{QStringLiteral("AC"), QStringLiteral("DC"), QStringLiteral("GND")},
      voltTexts{voltDivText(50),   voltDivText(100),  voltDivText(200),   voltDivText(500),   voltDivText(1000),
                voltDivText(2000), voltDivText(5000), voltDivText(10000), voltDivText(20000), voltDivText(50000)},
      probeTexts{QStringLiteral("X1"), QStringLiteral("X10"), QStringLiteral("X100")},
      enableBox(new QCheckBox(this)),
      nameLabel(new QLabel(this)),
      voltCombo(new LazyComboBox(this)),
      probeBtn(new QPushButton(this)),
      settingBtn(new MyButton(this))
{
    setObjectName(QStringLiteral("aChn%1").arg(channel));
    buildName();
    buildButtons();
    buildVolts();
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(dp(3));
    grid->addWidget(enableBox, 0, 0);
    grid->addWidget(nameLabel, 0, 1);
    grid->addWidget(probeBtn, 0, 2);
    grid->addWidget(settingBtn, 0, 3);
    grid->addWidget(voltCombo, 1, 0, 1, 4);
    grid->setColumnStretch(2, 1);
    nameLabel->setText(QStringLiteral("<%1>").arg(chnIndex + 1));
}

QString AChnParameterSet::spoken(const QString &control) const
{
    return QStringLiteral("CH%1, ").arg(chnIndex + 1) + control;
}

void AChnParameterSet::buildName()
{
    enableBox->setObjectName(QStringLiteral("enable"));
    enableBox->setAccessibleName(spoken(::tr("Channel Enable")));
    enableBox->setToolTip(::tr("Channel Enable"));
    connect(enableBox, &QCheckBox::clicked, this, &AChnParameterSet::slotOpenClicked);

    const QColor color = aChnColor(chnIndex);
    nameLabel->setObjectName(QStringLiteral("name"));
    nameLabel->setTextFormat(Qt::PlainText);
    nameLabel->setStyleSheet(QStringLiteral("QLabel{background-color:%1;color:%2;border-radius:%3px;padding:0 %4px;}")
                                 .arg(color.name(), textOn(color).name())
                                 .arg(dp(3))
                                 .arg(dp(2)));
}

void AChnParameterSet::buildButtons()
{
    probeBtn->setObjectName(QStringLiteral("probe"));
    showProbe(0);
    probeBtn->setFixedHeight(sidebarFieldHeight(QApplication::font()));
    probeBtn->setAutoDefault(true); // Enter presses it, as Space does
    probeBtn->setToolTip(::tr("Probe"));
    connect(probeBtn, &QPushButton::clicked, this, &AChnParameterSet::slotProbeClicked);

    settingBtn->setObjectName(QStringLiteral("setting"));
    settingBtn->setIcon(sharedIcon(QStringLiteral(":/res/btnSetting")));
    dressFlat(*settingBtn);
    settingBtn->setAutoDefault(true);
    settingBtn->setRadius(dp(3));
    settingBtn->setFixedSize(sidebarLine(), sidebarLine());
    settingBtn->setToolTip(::tr("Reverse and coupling"));
    settingBtn->setAccessibleName(spoken(settingBtn->toolTip()));
    connect(settingBtn, &QPushButton::clicked, this, &AChnParameterSet::openExtendSetMenu);
}

void AChnParameterSet::buildVolts()
{
    voltCombo->setObjectName(QStringLiteral("volt"));
    voltCombo->addItems(voltTexts);
    voltCombo->setAccessibleName(spoken(::tr("Volts per division")));
    voltCombo->setAccessibleDescription(voltCombo->accessibleName()); // on Linux a list's name is what it shows
    voltCombo->setToolTip(::tr("Volts per division"));
    connect(voltCombo, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            [this](int index) { slotVoltageChanged(voltTexts.value(index)); });
}

QVector<QWidget *> AChnParameterSet::tabStops() const
{
    return {enableBox, probeBtn, settingBtn, voltCombo};
}

void AChnParameterSet::showProbe(int index)
{
    probeBtn->setText(probeTexts.at(index));
    probeBtn->setAccessibleName(spoken(::tr("Probe") + QLatin1Char(' ') + probeBtn->text()));
}

int AChnParameterSet::fullScaleMv() const
{
    return aChnDivisions * voltDivOfText(voltCombo->currentText());
}

void AChnParameterSet::refresh(DevBase &device)
{
    m_device = &device;
    const int entry = voltTexts.indexOf(voltDivText(m_device->aChnVoltDiv.value(chnIndex)));
    if (entry >= 0) {
        const QSignalBlocker noChoice(voltCombo);
        voltCombo->setCurrentIndex(entry);
    }
    showProbe(probeIndex(m_device->aChnProbe.value(chnIndex, 1)));
    if (chnIndex < m_device->aChnEnable.size()) {
        enableBox->setChecked(m_device->aChnEnable.at(chnIndex));
    }
    if (extendMenu != nullptr) {
        extendMenu->close();
    }
    slotOpenClicked();
    slotVoltageChanged(voltCombo->currentText());
}

// ---- what is chosen

void AChnParameterSet::slotOpenClicked()
{
    emit chnSetChanged(aChnChange::enabled, chnIndex, enableBox->isChecked() ? 1 : 0);
}

void AChnParameterSet::slotVoltageChanged(const QString &voltage)
{
    if (!m_device) {
        return;
    }
    const int value = voltDivOfText(voltage);
    if (m_device->aChnVoltDiv.value(chnIndex) != value) {
        m_device->setAChnVoltDiv(chnIndex, value);
    }
    emit chnSetChanged(aChnChange::fullScale, chnIndex, value * aChnDivisions);
}

void AChnParameterSet::slotProbeClicked()
{
    if (!m_device) {
        return;
    }
    const int index = (probeTexts.indexOf(probeBtn->text()) + 1) % int(probeTexts.size());
    showProbe(index);
    m_device->setAChnProbe(chnIndex, probeFactor(index));
    emit chnSetChanged(aChnChange::probe, chnIndex, probeFactor(index));
}

void AChnParameterSet::slotReverseClicked()
{
    if (!m_device) {
        return;
    }
    m_device->setAChnReverse(chnIndex, reverseBox->isChecked());
    emit chnSetChanged(aChnChange::look, chnIndex, reverseBox->isChecked() ? 1 : 0);
}

void AChnParameterSet::slotCoupleClicked(int index)
{
    if (!m_device) {
        return;
    }
    m_device->setAChnCouple(chnIndex, index); // only stored: no request carries it
}

// ---- the menu

void AChnParameterSet::createMenu()
{
    const QString blanks = QStringLiteral("  ");
    extendMenu = new MenuDialog(this);
    extendMenu->setObjectName(QStringLiteral("extend"));
    auto *form = new QWidget;
    auto *box = new QGroupBox(blanks + ::tr("Chn Set") + blanks, form);
    auto *grid = new QGridLayout(box);
    grid->setContentsMargins(dp(10), dp(4), dp(10), dp(6));
    grid->setSpacing(dp(6));
    auto *reverseLabel = new QLabel(::tr("Reverse:"), box);
    auto *coupleLabel = new QLabel(::tr("Coupling:"), box);
    reverseBox = new QCheckBox(box);
    reverseBox->setObjectName(QStringLiteral("reverse"));
    reverseBox->setAccessibleName(spoken(reverseLabel->text()));
    reverseLabel->setBuddy(reverseBox);
    coupleCombo = new QComboBox(box);
    coupleCombo->setObjectName(QStringLiteral("couple"));
    coupleCombo->addItems(coupleTexts);
    dressComboBox(*coupleCombo);
    coupleCombo->setFixedWidth(dp(coupleWidth));
    coupleCombo->setAccessibleName(spoken(coupleLabel->text()));
    coupleCombo->setAccessibleDescription(coupleCombo->accessibleName());
    grid->addWidget(reverseLabel, 0, 0);
    grid->addWidget(reverseBox, 0, 1, Qt::AlignLeft);
    grid->addWidget(coupleLabel, 1, 0);
    grid->addWidget(coupleCombo, 1, 1);
    auto *around = new QVBoxLayout(form);
    around->setContentsMargins(dp(10), dp(6), dp(10), dp(10));
    around->addWidget(box);
    extendMenu->addForm(form);
    connect(reverseBox, &QCheckBox::clicked, this, &AChnParameterSet::slotReverseClicked);
    connect(coupleCombo, QOverload<int>::of(&QComboBox::activated), this, &AChnParameterSet::slotCoupleClicked);
}

void AChnParameterSet::showExtended()
{
    reverseBox->setChecked(m_device->aChnReverse.value(chnIndex));
    coupleCombo->setCurrentIndex(std::clamp(m_device->aChnCouple.value(chnIndex), 0, int(coupleTexts.size()) - 1));
}

void AChnParameterSet::openExtendSetMenu()
{
    if (!m_device) {
        return;
    }
    if (extendMenu == nullptr) {
        createMenu();
    }
    showExtended();
    extendMenu->setAccessibleName(settingBtn->accessibleName());
    extendMenu->popup(popupPlace(*settingBtn));
    reverseBox->setFocus(Qt::PopupFocusReason);
}
