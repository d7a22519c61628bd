#include "measure/SectionParts.h"

#include "controls/Icons.h"
#include "controls/Look.h"
#include "controls/MyButton.h"
#include "measure/TimingMarkerTip.h"
#include "settings/Language.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVariant>

#include <algorithm>

namespace {

constexpr int buttonHeight = 20; // units, as the three below
constexpr int buttonWidth = 18;
constexpr int iconSide = 16;
constexpr const char *sectionProperty = "section"; // of a fold button: what it folds
constexpr int textPadding = 3;                     // on each side of a button's text

void dress(MyButton &button)
{
    button.setRadius(dp(3));
    button.penWidth = dp(1);
    button.borderColor = gGreys[4];
    button.setFixedHeight(std::max(dp(buttonHeight), QFontMetrics(gFontMain).height() + dp(2)));
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

int sectionButtonWidth()
{
    return dp(buttonWidth);
}

MyButton *makeIconButton(const QString &icon, const QString &name, QWidget *parent)
{
    auto *button = new MyButton(sharedIcon(icon), name, parent);
    dress(*button);
    button->setFixedWidth(sectionButtonWidth());
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

MyButton *makeExpandButton(const QString &section, QWidget *parent)
{
    MyButton *button = makeIconButton(QString(), QString(), parent);
    button->gradient = false;
    button->penWidth = 0;
    button->faceColor = Qt::transparent;
    button->setProperty(sectionProperty, section);
    showExpanded(*button, true);
    return button;
}

void showExpanded(MyButton &button, bool expanded)
{
    button.setIcon(sharedIcon(expanded ? QStringLiteral(":/res/btnExpand") : QStringLiteral(":/res/btnCollapse")));
    button.setToolTip(expanded ? ::tr("Collapse") : ::tr("Expand"));
    // Of several buttons alike a screen reader tells which is which.
    const QString name = expanded ? ::tr("Collapse %1") : ::tr("Expand %1");
    button.setAccessibleName(name.arg(button.property(sectionProperty).toString()));
}

QHBoxLayout *makeSectionHeader(MyButton *expand, QLabel *title, MyButton *action)
{
    auto *line = new QHBoxLayout;
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(dp(2));
    line->addWidget(expand);
    line->addWidget(title, 1);
    if (action != nullptr) {
        line->addWidget(action);
    }
    return line;
}
