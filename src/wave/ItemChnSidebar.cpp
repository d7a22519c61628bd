#include "wave/ItemChnSidebar.h"

#include "app/Globals.h"

#include <QGridLayout>
#include <QLabel>
#include <QLinearGradient>
#include <QPainter>

namespace {

QString labelStyle(const QColor &text)
{
    return QStringLiteral("QLabel{border:0;background-color:transparent;color:%1;}").arg(text.name());
}

} // namespace

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
    numberLabel->setFixedWidth(dp(18));
    numberLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    numberLabel->setStyleSheet(QStringLiteral("QLabel{border:0;color:black;}"));
    nameLabel->setObjectName(QStringLiteral("name"));
    nameLabel->setStyleSheet(labelStyle(gGreys[0]));
    nameLabel->setTextFormat(Qt::PlainText);
    analyzerLabel->setObjectName(QStringLiteral("analyzer"));
    analyzerLabel->setFont(gFontSmall);
    analyzerLabel->setStyleSheet(labelStyle(gGreys[2]));
    analyzerLabel->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    analyzerLabel->setTextFormat(Qt::PlainText);
    analyzerLabel->hide();
    buildGrid();
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
    layout->setRowStretch(1, label.isEmpty() ? 0 : 1);
    showElided(*analyzerLabel, label);
}

void ItemChnSidebar::showElided(QLabel &label, const QString &text)
{
    const int room = dp(190) - dp(18) - 2 * dp(3);
    const QString shown = label.fontMetrics().elidedText(text, Qt::ElideRight, room);
    label.setText(shown);
    label.setToolTip(shown == text ? QString() : text);
}

void ItemChnSidebar::paintEvent(QPaintEvent * /*event*/)
{
    const int s = uiScale();
    QPainter painter(this);
    painter.fillRect(rect(), gGreys[6]);
    painter.fillRect(0, 0, width(), s, gGreys[4]);
    painter.fillRect(0, height() - s, width(), s, gGreys[8]);
    painter.fillRect(width() - s, 0, s, height(), gGreys[9]);

    const QColor color = gChnColors[chnIndex % gChnColors.size()];
    const QRect column(0, 0, numberLabel->width(), height() - s);
    QLinearGradient gradient(0, 0, 0, column.height());
    gradient.setColorAt(0, color.lighter(180));
    gradient.setColorAt(0.5, color);
    gradient.setColorAt(1, color.darker(200));
    painter.fillRect(column, gradient);
}
