#include "wave/ItemChnSidebar.h"

#include "app/Globals.h"

#include <QGridLayout>
#include <QLabel>
#include <QLinearGradient>
#include <QPainter>

#include <cmath>

namespace {

QString labelStyle(const QColor &text)
{
    return QStringLiteral("QLabel{border:0;background-color:transparent;color:%1;}").arg(text.name());
}

/// Small enough for two digits in the number's column, whatever the application's font.
QFont numberFont(QFont font)
{
    font.setPixelSize(dp(11));
    font.setBold(true);
    return font;
}

/// A colour channel's share of light, linear, by the sRGB transfer function (IEC 61966-2-1).
double linear(double value)
{
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

/// Relative luminance, 0 to 1 (WCAG 2.1).
double luminance(const QColor &color)
{
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

} // namespace

QColor readableOn(const QColor &ground)
{
    // The contrast of two luminances is (lighter + 0.05) / (darker + 0.05).
    const double light = luminance(ground) + 0.05;
    return light / 0.05 >= 1.05 / light ? QColor(Qt::black) : QColor(Qt::white);
}

ItemChnSidebar::ItemChnSidebar(int channel, int row, int multiplier, QWidget *parent)
    : QWidget(parent),
      chnIndex(channel),
      showIndex(row),
      showMultip(multiplier),
      numberLabel(new QLabel(QString::number(channel), this)),
      nameLabel(new QLabel(this)),
      analyzerLabel(new QLabel(this)),
      layout(new QGridLayout(this))
{
    setFixedWidth(dp(190));
    numberLabel->setObjectName(QStringLiteral("number"));
    numberLabel->setFixedWidth(dp(18));
    numberLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    numberLabel->setContentsMargins(0, 0, uiScale(), 0);
    numberLabel->setFont(numberFont(font()));
    numberLabel->setStyleSheet(labelStyle(readableOn(chnColor())));
    nameLabel->setObjectName(QStringLiteral("name"));
    nameLabel->setStyleSheet(labelStyle(gGreys[0]));
    nameLabel->setTextFormat(Qt::PlainText);
    analyzerLabel->setObjectName(QStringLiteral("analyzer"));
    analyzerLabel->setFont(gFontSmall);
    analyzerLabel->setStyleSheet(labelStyle(gGreys[2]));
    analyzerLabel->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    analyzerLabel->setTextFormat(Qt::PlainText);
    buildGrid();
    setAnalyzerLabel(QString());
}

QColor ItemChnSidebar::chnColor() const
{
    return gChnColors[chnIndex % gChnColors.size()];
}

void ItemChnSidebar::buildGrid()
{
    layout->setSpacing(dp(3));
    layout->setContentsMargins(0, dp(3) + uiScale(), dp(3), dp(3));
    layout->addWidget(numberLabel, 0, 0, 2, 1);
    layout->addWidget(nameLabel, 0, 1);
    layout->addWidget(analyzerLabel, 1, 1);
    layout->setColumnStretch(1, 1);
}

void ItemChnSidebar::setChnName(const QString &name)
{
    showElided(*nameLabel, name);
}

void ItemChnSidebar::setAnalyzerLabel(const QString &label)
{
    analyzerLabel->setVisible(!label.isEmpty());
    // Alone, the name stands in the middle of the row; a label below it takes what the name leaves.
    layout->setRowStretch(0, label.isEmpty() ? 1 : 0);
    layout->setRowStretch(1, label.isEmpty() ? 0 : 1);
    showElided(*analyzerLabel, label);
    analyzerLabel->setToolTip(label.toHtmlEscaped());
}

void ItemChnSidebar::showElided(QLabel &label, const QString &text)
{
    const int room = dp(190) - dp(18) - 2 * dp(3);
    const QString shown = label.fontMetrics().elidedText(text, Qt::ElideRight, room);
    label.setText(shown);
    // Escaped, since a tool tip guesses whether its text is rich.
    label.setToolTip(shown == text ? QString() : text.toHtmlEscaped());
}

void ItemChnSidebar::paintEvent(QPaintEvent * /*event*/)
{
    const int s = uiScale();
    QPainter painter(this);
    painter.fillRect(rect(), gGreys[6]);
    painter.fillRect(0, 0, width(), s, gGreys[4]);
    painter.fillRect(0, height() - s, width(), s, gGreys[8]);
    painter.fillRect(width() - s, 0, s, height(), gGreys[9]);

    const QColor color = chnColor();
    const QRect column(0, 0, numberLabel->width(), height() - s);
    QLinearGradient gradient(0, 0, 0, column.height());
    gradient.setColorAt(0, color.lighter(180));
    gradient.setColorAt(0.5, color);
    gradient.setColorAt(1, color.darker(200));
    painter.fillRect(column, gradient);
}
