#include "panels/MenuChnSettings.h"

#include "controls/Look.h"
#include "controls/NoticeBox.h"
#include "controls/Style.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "panels/PwmFields.h"
#include "settings/Language.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpressionValidator>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSlider>
#include <QStyleOptionSlider>
#include <QVBoxLayout>

#include <algorithm>
#include <optional>

namespace {

constexpr int boxesInARow = 4;
constexpr int mostPosition = 99; // percent
constexpr int tickEvery = 20;
constexpr int fieldWidth = 70; // pixels at 96 dpi, as the four below
constexpr int unitWidth = 64;
constexpr int sliderHeight = 26;
constexpr int tickHeight = 4;
constexpr int belowGroups = 90; // what the menu needs for its buttons and borders

/// As large as the groups in it, unless the screen is lower.
class GroupArea : public QScrollArea {
public:
    explicit GroupArea(QWidget *groups)
    {
        setFrameShape(QFrame::NoFrame);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        setFocusPolicy(Qt::NoFocus);
        setWidgetResizable(true);
        setWidget(groups);
        groups->setAutoFillBackground(false); // the menu is the ground
        viewport()->setAutoFillBackground(false);
    }
    [[nodiscard]] QSize sizeHint() const override
    {
        const QSize whole = widget()->sizeHint();
        const int most = screen()->availableGeometry().height() - dp(belowGroups);
        if (whole.height() <= most) {
            return whole;
        }
        return {whole.width() + verticalScrollBar()->sizeHint().width(), most};
    }
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }
};

/// A slider with its tick marks, which a style sheet leaves out.
class TickSlider : public QSlider {
public:
    TickSlider() : QSlider(Qt::Horizontal)
    {
        setRange(0, mostPosition);
        setTickInterval(tickEvery);
        setTickPosition(QSlider::TicksBelow);
        setFixedHeight(dp(sliderHeight));
    }

protected:
    void paintEvent(QPaintEvent *event) override
    {
        QSlider::paintEvent(event);
        QStyleOptionSlider option;
        initStyleOption(&option);
        const int handle = style()->pixelMetric(QStyle::PM_SliderLength, &option, this);
        QVector<QRect> ticks;
        for (int value = minimum(); value <= maximum(); value += tickInterval()) {
            const int x = QStyle::sliderPositionFromValue(minimum(), maximum(), value, width() - handle) + handle / 2;
            ticks.append(QRect(x, height() - dp(tickHeight), dp(1), dp(tickHeight)));
        }
        QPainter painter(this);
        painter.setPen(Qt::NoPen);
        painter.setBrush(gGreys[4]);
        painter.drawRects(ticks);
    }
};

QString percentText(int value)
{
    return QString::number(value) + QLatin1Char('%');
}

QString rangeText(const ChnRateLimit &limit)
{
    return ::tr("Select") + QStringLiteral(" CH0~%1 (").arg(limit.chnCount - 1) + ::tr("Maximum sample rate is") +
           QStringLiteral(" %1MHz)").arg(limit.maxFrequ / 1000000);
}

/// A field for a number. What is typed only has to begin like one.
QLineEdit *makeNumberField(const QString &text, const QString &name)
{
    static const QRegularExpression pattern(QStringLiteral("[0-9].+$"), QRegularExpression::DotMatchesEverythingOption);
    auto *field = new QLineEdit(text);
    field->setValidator(new QRegularExpressionValidator(pattern, field));
    field->setAccessibleName(name);
    field->ensurePolished();
    field->setFixedSize(dp(fieldWidth), controlHeight(field->fontMetrics()));
    return field;
}

} // namespace

MenuChnSettings::MenuChnSettings(QWidget *parent) : MenuDialog(parent), m_device(gDev), m_ranges(new QButtonGroup(this))
{
    connect(gDev, &QObject::destroyed, this, &MenuDialog::dismiss);
    auto *form = new QWidget;
    auto *column = new QVBoxLayout(form);
    column->setContentsMargins(dp(10), dp(6), dp(10), dp(10));
    column->setSpacing(dp(8));
    column->addWidget(new GroupArea(makeGroups()));
    addButtons(*column);
    addForm(form);
}

QWidget *MenuChnSettings::makeGroups()
{
    auto *groups = new QWidget;
    auto *column = new QVBoxLayout(groups);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(dp(6));
    addRanges(*column);
    addChannels(*column);
    addPwm(*column);
    if (!m_device->isAnalogModel()) {
        addPosition(*column);
    }
    return groups;
}

void MenuChnSettings::addRanges(QVBoxLayout &column)
{
    auto *rows = new QVBoxLayout;
    rows->setSpacing(0);
    for (const ChnRateLimit &limit : m_device->chnRateLimits) {
        auto *button = new QRadioButton(rangeText(limit));
        button->setObjectName(QString::number(limit.chnCount - 1));
        m_ranges->addButton(button);
        rows->addWidget(button);
        connect(button, &QRadioButton::clicked, this, [this, button] { checkRange(button->objectName().toInt()); });
    }
    column.addLayout(rows);
    m_noRange = new QRadioButton(column.parentWidget());
    m_noRange->setAccessibleName(::tr("Channel Enable")); // what stands for it on the screen
    m_noRange->hide();
    m_ranges->addButton(m_noRange);
    m_noRange->setChecked(true);
}

void MenuChnSettings::addChannels(QVBoxLayout &column)
{
    auto *box = new QGroupBox(::tr("Channel Enable"));
    auto *grid = new QGridLayout(box);
    grid->setContentsMargins(dp(10), dp(4), dp(10), dp(6));
    grid->setHorizontalSpacing(dp(8));
    grid->setVerticalSpacing(0);
    for (int chn = 0; chn < m_device->chnEnable.size(); ++chn) {
        auto *channel = new QCheckBox(QStringLiteral("CH%1").arg(chn));
        channel->setChecked(m_device->chnEnable.at(chn));
        m_channels.append(channel);
        grid->addWidget(channel, chn / boxesInARow, chn % boxesInARow);
        // A choice by hand is no range any more.
        connect(channel, &QCheckBox::clicked, m_noRange, [this] { m_noRange->setChecked(true); });
    }
    column.addWidget(box);
}

void MenuChnSettings::addPwm(QVBoxLayout &column)
{
    auto *box = new QGroupBox(::tr("PWM Setting"));
    auto *grid = new QGridLayout(box);
    grid->setContentsMargins(dp(10), dp(4), dp(10), dp(6));
    grid->setHorizontalSpacing(dp(6));
    grid->setVerticalSpacing(dp(4));
    for (int output = 0; output < int(m_pwm.size()); ++output) {
        addPwmRow(*grid, output);
    }
    grid->setColumnStretch(0, 1);
    column.addWidget(box);
    box->setVisible(m_device->hasFeature(devFeature::pwm));
}

void MenuChnSettings::addPwmRow(QGridLayout &grid, int output)
{
    PwmRow &row = m_pwm[std::size_t(output)];
    const auto index = std::size_t(output);
    const QString name = QStringLiteral("PWM%1").arg(output);
    const PwmFrequText frequ = pwmFrequText(m_device->pwmFrequ[index]);
    row.enable = new QCheckBox(name);
    row.enable->setChecked(m_device->pwmEnable[index]);
    auto *frequLabel = new QLabel(::tr("Frequency"));
    row.frequ = makeNumberField(frequ.number, name + QLatin1Char(' ') + frequLabel->text());
    row.unit = new QComboBox;
    dressComboBox(*row.unit);
    row.unit->setMinimumWidth(dp(unitWidth));
    row.unit->addItems(pwmUnits());
    row.unit->setCurrentIndex(frequ.unit);
    row.unit->setAccessibleName(name + QLatin1Char(' ') + ::tr("Unit"));
    row.unit->setAccessibleDescription(row.unit->accessibleName()); // on Linux a list's name is what it shows
    auto *dutyLabel = new QLabel(::tr("DutyCycle"));
    row.duty = makeNumberField(pwmDutyText(m_device->pwmDuty[index]), name + QLatin1Char(' ') + dutyLabel->text());
    auto *percent = new QLabel(QStringLiteral("%"));

    int place = 0;
    grid.addWidget(row.enable, output, place++);
    for (QWidget *part :
         {static_cast<QWidget *>(frequLabel), static_cast<QWidget *>(row.frequ), static_cast<QWidget *>(row.unit),
          static_cast<QWidget *>(dutyLabel), static_cast<QWidget *>(row.duty), static_cast<QWidget *>(percent)}) {
        grid.addWidget(part, output, place++);
        part->setEnabled(row.enable->isChecked());
        connect(row.enable, &QCheckBox::toggled, part, &QWidget::setEnabled);
    }
}

void MenuChnSettings::addPosition(QVBoxLayout &column)
{
    auto *box = new QGroupBox(::tr("Trigger Position"));
    auto *line = new QHBoxLayout(box);
    line->setContentsMargins(dp(10), dp(4), dp(10), dp(6));
    line->setSpacing(dp(8));
    m_position = new TickSlider;
    m_position->setValue(m_device->trgPosition);
    m_position->setAccessibleName(box->title());
    auto *text = new QLabel(percentText(m_position->value()));
    text->setMinimumWidth(text->fontMetrics().horizontalAdvance(percentText(mostPosition)));
    text->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    connect(m_position, &QSlider::valueChanged, text, [text](int value) { text->setText(percentText(value)); });
    line->addWidget(m_position, 1);
    line->addWidget(text);
    column.addWidget(box);
}

void MenuChnSettings::addButtons(QVBoxLayout &column)
{
    auto *accepts = new QPushButton(::tr("OK"));
    auto *rejects = new QPushButton(::tr("Cancel"));
    accepts->setDefault(true);
    connect(accepts, &QPushButton::clicked, this, &MenuChnSettings::apply);
    connect(rejects, &QPushButton::clicked, this, &MenuDialog::dismiss);
    auto *line = new QHBoxLayout;
    line->setSpacing(dp(8));
    line->addStretch(1);
    line->addWidget(accepts);
    line->addWidget(rejects);
    column.addLayout(line);
}

void MenuChnSettings::showEvent(QShowEvent *event)
{
    MenuDialog::showEvent(event);
    if (focusWidget() == nullptr || focusWidget() == this) {
        m_channels.constFirst()->setFocus(Qt::PopupFocusReason);
    }
}

void MenuChnSettings::checkRange(int last)
{
    for (int chn = 0; chn < m_channels.size(); ++chn) {
        m_channels.at(chn)->setChecked(chn <= last);
    }
}

void MenuChnSettings::apply()
{
    if (m_device.isNull() || m_device != gDev) {
        dismiss();
        return;
    }
    const QString errors = applyPosition() + applyChannels() + applyPwm();
    if (errors.isEmpty()) {
        dismiss();
        return;
    }
    stepAside([this, errors] {
        QWidget *owner = parentWidget() != nullptr ? parentWidget()->window() : nullptr;
        showNotice(owner, QMessageBox::Warning, ::tr("A Setting is Invalid"), errors);
    });
}

QString MenuChnSettings::applyPosition()
{
    const bool isGood = m_position == nullptr || m_device->setTrgPosition(m_position->value());
    return isGood ? QString() : ::tr("Trigger position setting failed.") + QLatin1Char('\n');
}

QString MenuChnSettings::applyChannels()
{
    QVector<bool> enable;
    for (const QCheckBox *channel : m_channels) {
        enable.append(channel->isChecked());
    }
    if (!enable.contains(true)) {
        return ::tr("Please select at least one channel.") + QLatin1Char('\n');
    }
    m_device->setChnEnable(enable);
    return {};
}

QString MenuChnSettings::applyPwm()
{
    std::array<std::optional<PwmSetting>, 2> settings; // nothing for an output that is off
    for (std::size_t output = 0; output < m_pwm.size(); ++output) {
        const PwmRow &row = m_pwm[output];
        if (!row.enable->isChecked()) {
            continue;
        }
        settings[output] = readPwmFields(row.frequ->text(), row.unit->currentIndex(), row.duty->text());
        if (!settings[output]) {
            return ::tr("The effective range of PWM:[0.1Hz,20MHz], duty cycle:[0%,100%].");
        }
    }
    m_device->setPwmEnable(false, false); // no output runs with one setting old and one new
    for (std::size_t output = 0; output < m_pwm.size(); ++output) {
        if (settings[output]) {
            m_device->setPwm(int(output), settings[output]->frequ, settings[output]->duty);
        }
    }
    m_device->setPwmEnable(settings[0].has_value(), settings[1].has_value());
    return {};
}
