#include "panels/SmpSetting.h"

#include "controls/LazyComboBox.h"
#include "controls/Look.h"
#include "controls/Style.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "settings/Language.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>

#include <algorithm>

QString sampleTimeText(std::int64_t depth, std::int64_t rate)
{
    if (rate <= 0) {
        return {};
    }
    const double t = double(depth) / double(rate);
    const QString colon = QStringLiteral(": ");
    if (t >= 1.0) {
        return colon + QString::number(t) + QStringLiteral("s");
    }
    if (t >= 0.001) {
        return colon + QString::number(t * 1000) + QStringLiteral("ms");
    }
    return colon + QString::number(t * 1e6) + QStringLiteral("us");
}

QString withPartInParenthesis(const QString &label, const QString &part)
{
    // A translation may close with the full-width parenthesis of its script.
    const bool closed = label.endsWith(QLatin1Char(')')) || label.endsWith(QChar(0xff09));
    return closed ? label.left(label.size() - 1) + part + label.right(1) : label + part;
}

QString depthToolTip(const QStringList &depths)
{
    const QString text = ::tr("Samples of each channel in the next capture");
    const bool hasStar = depths.join(QString()).contains(QLatin1Char('*'));
    return hasStar ? text + QLatin1Char('\n') +
                         ::tr("* The instrument keeps edges: reached as long as they fit into its memory.")
                   : text;
}

SmpSetting::SmpSetting(QWidget *parent) : QWidget(parent)
{
    setStyleSheet(labelStyle() + comboBoxStyle());
    depthLabel = new QLabel(this);
    depthLabel->setObjectName(QStringLiteral("depthLabel"));
    auto *frequLabel = new QLabel(::tr("Speed(Sample rate)"), this);
    depthBox = addBox(QStringLiteral("depthBox"), gDev->smpDepthTexts());
    frequBox = addBox(QStringLiteral("frequBox"), gDev->smpFrequTexts());
    frequBox->setAccessibleName(frequLabel->text());
    depthLabel->setBuddy(depthBox);
    frequLabel->setBuddy(frequBox);

    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(dp(2), 0, 0, 0);
    grid->setHorizontalSpacing(dp(8));
    grid->setVerticalSpacing(0);
    grid->addWidget(depthLabel, 0, 0);
    grid->addWidget(depthBox, 1, 0);
    grid->addWidget(frequLabel, 0, 1);
    grid->addWidget(frequBox, 1, 1);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);

    frequBox->setToolTip(::tr("Samples per second of the next capture"));
    frequBox->setCurrentIndex(gDev->smpFrequIndex);
    connect(frequBox, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &SmpSetting::sampleFrequClickedSlot);
    depthBox->setToolTip(depthToolTip(gDev->smpDepthTexts()));
    depthBox->setCurrentIndex(gDev->smpDepthIndex);
    connect(depthBox, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &SmpSetting::sampleDepthClickedSlot);
    connect(gDev, &DevBase::sigSmpFrequToLower, this, &SmpSetting::updateFreqIndex);
    updateDepthLabel();
}

QComboBox *SmpSetting::addBox(const QString &name, const QStringList &entries)
{
    auto *box = new LazyComboBox(this); // with each model the bar is built anew
    box->setObjectName(name);
    box->addItems(entries);
    box->setFixedWidth(std::max(dp(120), box->widthOfEntries()));
    return box;
}

void SmpSetting::updateDepthLabel()
{
    const QString part = sampleTimeText(gDev->smpDepth(), gDev->smpFrequ());
    depthLabel->setText(withPartInParenthesis(::tr("Depth(Sample time)"), part));
    depthBox->setAccessibleName(depthLabel->text());
}

void SmpSetting::updateFreqIndex()
{
    frequBox->setCurrentIndex(gDev->smpFrequIndex);
}

void SmpSetting::sampleDepthClickedSlot(int index)
{
    gDev->setSmpDepthIndex(index);
    updateDepthLabel();
}

void SmpSetting::sampleFrequClickedSlot(int index)
{
    if (!gDev->setSmpFrequIndex(index)) {
        return;
    }
    updateDepthLabel();
    emit frequViewChanged();
}
