#include "measure/PickMenu.h"

#include "controls/Look.h"

#include <QIcon>
#include <QLabel>
#include <QPainter>
#include <QScreen>
#include <QWidgetAction>

#include <algorithm>

namespace {

constexpr int pictureSide = 16; // units, as the two below
constexpr int leastHeight = 20;
constexpr int textMargin = 1;

/// One entry: the menu handles its mouse and keys, and it paints itself by the menu's state.
class PickEntry : public QLabel {
public:
    PickEntry(const QString &text, const QString &icon, QAction *action, QMenu *menu)
        : QLabel(text, menu), m_icon(icon), m_action(action), m_menu(menu)
    {
        setTextFormat(Qt::PlainText);
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setStyleSheet(QStringLiteral("QLabel{background-color:%1;border:%2px solid %3;color:%4;}")
                          .arg(gGreys[8].name(), QString::number(dp(1)), gGreys[2].name(), gGreys[0].name()));
    }

    /// Never wider than the menu, which has the width of its button.
    [[nodiscard]] QSize sizeHint() const override { return {dp(pictureSide), m_height}; }
    /// Takes at most so many pixels, as far as capitals and digits are still whole.
    void limitHeight(int most)
    {
        const int wanted = std::max(dp(leastHeight), fontMetrics().height() + dp(2));
        m_height = std::max(std::min(wanted, most), fontMetrics().capHeight() + dp(4));
        setFixedHeight(m_height);
    }
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *) override
    {
        const bool active = m_menu->activeAction() == m_action && m_action->isEnabled();
        QPainter painter(this);
        painter.fillRect(rect(), gGreys[active ? 5 : 8]);
        painter.setPen(QPen(gGreys[active ? 0 : 2], dp(1)));
        const double half = dp(1) * 0.5;
        painter.drawRect(QRectF(rect()).adjusted(half, half, -half, -half));
        if (!m_icon.isNull()) {
            QRect place({0, 0}, QSize(dp(pictureSide), dp(pictureSide)));
            place.moveCenter(rect().center());
            m_icon.paint(&painter, place);
            return;
        }
        painter.setPen(gGreys[m_action->isEnabled() ? 0 : 3]);
        const QRect room = rect().adjusted(dp(textMargin), 0, -dp(textMargin), 0);
        painter.drawText(room, Qt::AlignCenter, fontMetrics().elidedText(text(), Qt::ElideRight, room.width()));
    }

private:
    const QIcon m_icon;
    int m_height = 0;
    QAction *const m_action;
    QMenu *const m_menu;
};

} // namespace

PickMenu::PickMenu(QWidget *parent) : QMenu(parent)
{
    setStyleSheet(
        QStringLiteral("QMenu{background-color:%1;border:0;padding:0;menu-scrollable:1;}").arg(gGreys[8].name()));
}

QAction *PickMenu::addEntry(const QString &text, const QString &icon)
{
    auto *action = new QWidgetAction(this);
    action->setText(text);
    action->setData(actions().size());
    action->setDefaultWidget(new PickEntry(text, icon, action, this));
    addAction(action);
    return action;
}

void PickMenu::shorten(int count)
{
    hide();
    while (actions().size() > count) {
        delete actions().constLast();
    }
}

void PickMenu::dropUnder(QWidget &button, int current)
{
    const int screenHeight = button.screen()->availableGeometry().height();
    for (QAction *action : actions()) {
        static_cast<PickEntry *>(static_cast<QWidgetAction *>(action)->defaultWidget())
            ->limitHeight(screenHeight / actions().size());
    }
    setFixedWidth(button.width());
    setAccessibleName(button.accessibleName());
    popup(button.mapToGlobal(QPoint(0, button.height())));
    if (current >= 0 && current < actions().size()) {
        setActiveAction(actions().at(current));
    }
}
