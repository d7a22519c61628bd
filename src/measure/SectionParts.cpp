#include "measure/SectionParts.h"

#include "app/Globals.h"
#include "app/Language.h"
#include "measure/TimingMarkerTip.h"
#include "wave/MyButton.h"

#include <QHBoxLayout>
#include <QLabel>

#include <algorithm>

namespace {

constexpr int buttonSide = 20; // units, as the two below
constexpr int iconSide = 16;
constexpr int textPadding = 4; // on each side of a button's text

void dress(MyButton &button)
{
    button.setRadius(dp(3));
    button.setFixedHeight(sectionButtonSize());
}

} // namespace

QString unknownText()
{
    return QStringLiteral("###");
}

QString sectionLabelStyle()
{
    return QStringLiteral("background-color:transparent;color:#dfdfdf;");
}

QLabel *makeSectionLabel(const QString &text, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setTextFormat(Qt::PlainText);
    label->setStyleSheet(sectionLabelStyle());
    return label;
}

QLabel *makeElidedLabel(const QString &text, QWidget *parent)
{
    auto *label = new TimingMarkerTip(parent);
    label->setText(text);
    return label;
}

QLabel *makeSectionTitle(const QString &text, QWidget *parent)
{
    QLabel *label = makeElidedLabel(text, parent);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    return label;
}

int sectionButtonSize()
{
    const QFontMetrics metrics(gFontMain);
    return std::max(dp(buttonSide), metrics.height() + dp(2));
}

MyButton *makeIconButton(const QString &icon, const QString &name, QWidget *parent)
{
    auto *button = new MyButton(QIcon(icon), name, parent);
    dress(*button);
    button->setFixedWidth(sectionButtonSize());
    button->setIconSize({dp(iconSide), dp(iconSide)});
    return button;
}

MyButton *makeTextButton(const QString &text, const QString &widest, QWidget *parent)
{
    auto *button = new MyButton(text, parent);
    dress(*button);
    button->setFixedWidth(button->fontMetrics().horizontalAdvance(widest) + 2 * dp(textPadding));
    return button;
}

MyButton *makeExpandButton(QWidget *parent)
{
    MyButton *button = makeIconButton(QString(), QString(), parent);
    button->gradient = false;
    button->faceColor = Qt::transparent;
    showExpanded(*button, true);
    return button;
}

void showExpanded(MyButton &button, bool expanded)
{
    button.setIcon(QIcon(expanded ? QStringLiteral(":/res/btnExpand") : QStringLiteral(":/res/btnCollapse")));
    const QString name = expanded ? ::tr("Collapse") : ::tr("Expand");
    button.setToolTip(name);
    button.setAccessibleName(name);
}

QHBoxLayout *makeSectionHeader(MyButton *expand, QLabel *title, MyButton *action)
{
    auto *line = new QHBoxLayout;
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(dp(2));
    line->addWidget(expand);
    line->addWidget(title, 1);
    line->addWidget(action);
    return line;
}
