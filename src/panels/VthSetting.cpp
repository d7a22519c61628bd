#include "panels/VthSetting.h"

#include "controls/FieldKeys.h"
#include "controls/LazyComboBox.h"
#include "controls/Look.h"
#include "controls/NoticeBox.h"
#include "controls/NumberField.h"
#include "controls/Style.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "settings/Config.h"
#include "settings/Language.h"

#include <QApplication>
#include <QComboBox>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>

#include <cstddef>

namespace {

constexpr double lowest = -4.0;      // volts
constexpr double highest = 4.0;      // volts
constexpr double customStart = 1.65; // volts
constexpr int usualLevel = 2;        // of the presets: 3.3 V CMOS
constexpr int oneGroup = 16;         // channels that share a threshold

QString levelKey(int row)
{
    return row == 0 ? QStringLiteral("chnLevel") : QStringLiteral("chnLevel2");
}

QString vthKey(int row)
{
    return row == 0 ? QStringLiteral("chnVth") : QStringLiteral("chnVth2");
}

QString voltsText(double volts)
{
    return QString::number(volts, 'f', 2);
}

QString rangeText()
{
    return ::tr("The effective range of threshold voltage is ") + QStringLiteral("-4.0 ~ 4.0V");
}

} // namespace

std::optional<double> thresholdOf(const QString &text)
{
    const std::optional<double> volts = typedNumber(text);
    return volts && *volts >= lowest && *volts <= highest ? volts : std::nullopt;
}

VthSetting::VthSetting(QWidget *parent) : QWidget(parent)
{
    const auto name = [](const char *text) { return QString::fromLatin1(text); };
    presets = {{name("5.0V TTL"), 1.58},         {name("5.0V CMOS"), 2.5},  {name("3.3V CMOS"), 1.65},
               {name("3.0V CMOS"), 1.5},         {name("2.5V CMOS"), 1.25}, {name("1.8V CMOS"), 0.9},
               {name("1.5V CMOS"), 0.75},        {name("1.2V CMOS"), 0.6},  {name("0.9V CMOS"), 0.45},
               {::tr("Custom I/O"), customStart}};
    setStyleSheet(labelStyle() + comboBoxStyle() + lineEditStyle());
    if (gDev->chnEnable.size() <= oneGroup) {
        addRow(::tr("Vth:"));
    } else {
        addRow(QStringLiteral("CH0~15 ") + ::tr("Vth:"));
        addRow(QStringLiteral("CH16~31 ") + ::tr("Vth:"));
    }
    layOut();
    for (int row = 0; row < labels.size(); ++row) {
        levelBoxes.at(row)->setCurrentIndex(savedLevel(row));
        takeLevel(row, levelBoxes.at(row)->currentIndex());
        connect(levelBoxes.at(row), QOverload<int>::of(&QComboBox::currentIndexChanged), this,
                row == 0 ? &VthSetting::slotVioClicked : &VthSetting::slotVioClicked2);
        connect(vthEdits.at(row), &QLineEdit::editingFinished, this,
                row == 0 ? &VthSetting::slotVthEditFinish : &VthSetting::slotVthEditFinish2);
    }
    connect(qApp, &QApplication::focusChanged, this, &VthSetting::takeLeftFields);
}

VthSetting::~VthSetting()
{
    // A field that goes with the focus is finished by that, when this is no panel any more.
    disconnect(qApp, nullptr, this, nullptr);
    for (QLineEdit *edit : qAsConst(vthEdits)) {
        edit->disconnect(this);
    }
}

void VthSetting::addRow(const QString &label)
{
    const QString number = QString::number(labels.size() + 1);
    auto *text = new QLabel(label, this);
    auto *box = new LazyComboBox(this); // with each model the bar is built anew
    box->setObjectName(QStringLiteral("levelBox") + number);
    for (const QPair<QString, double> &preset : qAsConst(presets)) {
        box->addItem(preset.first);
    }
    box->setFixedWidth(box->widthOfEntries());
    box->setAccessibleName(label);
    text->setBuddy(box);
    auto *edit = new QLineEdit(this);
    edit->setObjectName(QStringLiteral("vthEdit") + number);
    edit->ensurePolished();
    edit->setFixedSize(edit->fontMetrics().horizontalAdvance(QStringLiteral("-4.000")) + dp(14), box->height());
    edit->setAccessibleName(label + QStringLiteral(" [V]"));
    edit->setToolTip(rangeText());
    new FieldKeys(edit);
    labels.append(text);
    levelBoxes.append(box);
    vthEdits.append(edit);
    units.append(new QLabel(QStringLiteral("V"), this));
    m_taken.emplace_back();
}

void VthSetting::layOut()
{
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(dp(4));
    grid->setVerticalSpacing(0);
    // One row has its label above it, as the boxes at its left have; two fill the bar.
    const bool labelAbove = labels.size() == 1;
    const int fields = labelAbove ? 0 : 1; // their first column
    for (int row = 0; row < labels.size(); ++row) {
        const int line = labelAbove ? 1 : row;
        grid->addWidget(labels.at(row), row, 0, 1, labelAbove ? 3 : 1);
        grid->addWidget(levelBoxes.at(row), line, fields);
        grid->addWidget(vthEdits.at(row), line, fields + 1);
        grid->addWidget(units.at(row), line, fields + 2);
    }
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
}

double VthSetting::savedVolts(int row) const
{
    return thresholdOf(deviceGet(gDev->name, vthKey(row))).value_or(presets.constLast().second);
}

int VthSetting::savedLevel(int row) const
{
    const QString saved = deviceGet(gDev->name, levelKey(row));
    for (int i = 0; i < presets.size(); ++i) {
        if (presets.at(i).first == saved) {
            return i;
        }
    }
    // Saved in English, shown in another language.
    return saved == QLatin1String("Custom I/O") ? presets.size() - 1 : usualLevel;
}

void VthSetting::takeLevel(int row, int index)
{
    if (m_leaving || row >= levelBoxes.size() || index < 0 || index >= presets.size()) {
        return;
    }
    const bool custom = index == presets.size() - 1;
    const double volts = custom ? savedVolts(row) : presets.at(index).second;
    QLineEdit *edit = vthEdits.at(row);
    {
        const QSignalBlocker noEntry(edit); // which loses the focus when it is disabled
        edit->setEnabled(custom);
        edit->setText(voltsText(volts));
    }
    m_taken[std::size_t(row)] = edit->text();
    gDev->setVth(volts, row + 1);
    deviceSet(gDev->name, levelKey(row), levelBoxes.at(row)->currentText());
    deviceSet(gDev->name, vthKey(row), voltsText(volts));
}

bool VthSetting::takeVoltage(int row)
{
    // The box takes the focus away, which finishes the field once more.
    if (m_telling || m_leaving || row >= vthEdits.size()) {
        return true;
    }
    // Who only passes through the field, or starts a capture from it, changes nothing.
    const QString text = vthEdits.at(row)->text();
    if (text == m_taken[std::size_t(row)]) {
        return true;
    }
    const std::optional<double> volts = thresholdOf(text);
    if (!volts) {
        refuse(row);
        return false;
    }
    m_taken[std::size_t(row)] = text;
    gDev->setVth(*volts, row + 1);
    deviceSet(gDev->name, vthKey(row), voltsText(*volts));
    return true;
}

void VthSetting::refuse(int row)
{
    m_telling = true;
    showNotice(window(), QMessageBox::Warning, ::tr("A Setting is Invalid"), rangeText());
    m_telling = false;
    if (m_leaving) {
        deleteLater();
        return;
    }
    QLineEdit *edit = vthEdits.at(row);
    // Before the focus moves, which may finish the other row's field with a box of its own.
    edit->setText(QStringLiteral("0"));
    m_taken[std::size_t(row)].reset();
    edit->setFocus();
    edit->selectAll();
}

void VthSetting::takeLeftFields()
{
    for (int row = 0; row < vthEdits.size(); ++row) {
        // A field that a family disables loses the focus before it shows the family's threshold.
        const QLineEdit *edit = vthEdits.at(row);
        if (edit->isEnabled() && window()->focusWidget() != edit) {
            takeVoltage(row);
        }
    }
}

void VthSetting::keyPressEvent(QKeyEvent *event)
{
    for (int row = 0; row < vthEdits.size(); ++row) {
        QLineEdit *edit = vthEdits.at(row);
        if (event->key() == Qt::Key_Escape && edit->hasFocus()) {
            edit->setText(m_taken[std::size_t(row)].value_or(voltsText(savedVolts(row))));
            edit->clearFocus();
            return;
        }
    }
    QWidget::keyPressEvent(event);
}

bool VthSetting::finishEntries()
{
    for (int row = 0; row < vthEdits.size(); ++row) {
        if (!takeVoltage(row)) {
            return false;
        }
    }
    return true;
}

bool VthSetting::mayGo()
{
    if (!m_telling) {
        return true;
    }
    m_leaving = true;
    hide();
    return false;
}

void VthSetting::slotVioClicked(int index)
{
    takeLevel(0, index);
}

void VthSetting::slotVioClicked2(int index)
{
    takeLevel(1, index);
}

void VthSetting::slotVthEditFinish()
{
    takeVoltage(0);
}

void VthSetting::slotVthEditFinish2()
{
    takeVoltage(1);
}
