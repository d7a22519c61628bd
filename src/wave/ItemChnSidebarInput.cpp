// What the user does with a channel: its name, its trigger, the menu of its height.

#include "controls/MyButton.h"
#include "controls/Style.h"
#include "settings/Config.h"
#include "settings/Language.h"
#include "store/SmpTrigCode.h"
#include "wave/ItemChnSidebar.h"
#include "wave/LabelMove.h"

#include <QActionGroup>
#include <QCursor>
#include <QFocusEvent>
#include <QFrame>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QTextDocument>

#include <algorithm>
#include <bit>

namespace {

constexpr int toolTipLimit = 400; ///< letters: a tool tip has no scroll bar

/// A pasted name may hold line ends, which one line cannot show and some readers of a file take for its own.
QString oneLine(QString text)
{
    const auto breaks = [](QChar c) {
        return c.category() == QChar::Other_Control || c.category() == QChar::Separator_Line ||
               c.category() == QChar::Separator_Paragraph;
    };
    std::replace_if(text.begin(), text.end(), breaks, QLatin1Char(' '));
    return text;
}

/// A tool tip guesses whether its text is rich: this one shows what it is given, and not more than a screen holds.
QString toolTipOf(const QString &text)
{
    const QString shown = text.size() > toolTipLimit ? text.left(toolTipLimit) + QChar(0x2026) : text;
    return Qt::mightBeRichText(shown) ? Qt::convertFromPlainText(shown) : shown;
}

} // namespace

// ---- name

void ItemChnSidebar::setChnName(const QString &name)
{
    nameEdit->setText(oneLine(name));
    m_name = nameEdit->text();
    nameEdit->setCursorPosition(0);
    const bool fits = nameEdit->fontMetrics().horizontalAdvance(m_name) <= nameRoom();
    nameEdit->setToolTip(fits ? QString() : toolTipOf(m_name));
    nameControls();
}

void ItemChnSidebar::leChnNameChangedSlot()
{
    if (nameEdit->hasFocus()) {
        nameEdit->clearFocus();
        return;
    }
    storeName();
    setChnName(m_name); // from its beginning
}

void ItemChnSidebar::storeName()
{
    const QString text = oneLine(nameEdit->text());
    const bool isDefault = text == defaultName() || text.trimmed().isEmpty();
    if (text == m_name && !isDefault) {
        return; // who only passes through the field changes nothing
    }
    globalSet(QStringLiteral("chnShowName%1").arg(chnIndex), isDefault ? QString() : text);
    m_name = isDefault ? defaultName() : text;
}

bool ItemChnSidebar::nameEvent(QEvent *event)
{
    const auto key = [event] { return static_cast<QKeyEvent *>(event)->key(); };
    switch (event->type()) {
    case QEvent::ShortcutOverride:
        if (key() == Qt::Key_Up || key() == Qt::Key_Down || key() == Qt::Key_Escape) {
            event->accept(); // the field takes all other keys that it needs by itself
            return true;
        }
        return false;
    case QEvent::KeyPress:
        if (key() == Qt::Key_Escape) {
            nameEdit->setText(m_name);
            nameEdit->clearFocus();
            return true;
        }
        return false;
    case QEvent::FocusOut:
        // The edit goes on when the window comes back; but it may also be closed or saved from another one.
        if (static_cast<QFocusEvent *>(event)->reason() == Qt::ActiveWindowFocusReason) {
            storeName();
        }
        return false;
    default:
        return false;
    }
}

bool ItemChnSidebar::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusIn) {
        const Qt::FocusReason reason = static_cast<QFocusEvent *>(event)->reason();
        if (reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason) {
            emit reachedByKey(static_cast<QWidget *>(watched));
        }
    }
    return (watched == nameEdit && nameEvent(event)) || QWidget::eventFilter(watched, event);
}

void ItemChnSidebar::setAnalyzerLabel(const QString &label)
{
    analyzerEdit->setText(oneLine(label));
    analyzerEdit->setCursorPosition(0);
    analyzerEdit->setToolTip(toolTipOf(label));
}

// ---- trigger

void ItemChnSidebar::slotTrigMouseClicked()
{
    auto *button = qobject_cast<MyButton *>(sender());
    if (button == nullptr) {
        return;
    }
    const int code = button->selected ? 0 : button->value;
    setTrigCode(code);
    emit trigChosen(chnIndex, code);
    if (smpTrigCode::isEdge(code)) {
        emit trigEdgeChanged();
    }
}

void ItemChnSidebar::setTrigCode(int code)
{
    for (MyButton *button : trigBtns) {
        button->setSelected(button->value == code);
    }
}

QString ItemChnSidebar::storedName() const
{
    return globalGet(QStringLiteral("chnShowName%1").arg(chnIndex));
}

void ItemChnSidebar::reset()
{
    globalSet(QStringLiteral("chnShowName%1").arg(chnIndex), QString());
    setChnName(defaultName());
    showIndex = chnIndex;
    showMultip = 1;
    setTrigCode(0);
    emit trigChosen(chnIndex, 0);
}

// ---- height menu

void ItemChnSidebar::closeMenu()
{
    if (menu != nullptr) {
        menu->close();
    }
}

void ItemChnSidebar::createMenu()
{
    menu = new QMenu(this);
    menu->setStyleSheet(menuStyle());
    auto *heights = new QActionGroup(menu);
    heights->setExclusive(true);
    for (const int factor : {1, 2, 4, 8}) {
        QAction *action = menu->addAction(::tr("Channel Height") + QStringLiteral(" x%1").arg(factor));
        action->setCheckable(true);
        action->setData(factor);
        heights->addAction(action);
    }
    menu->addSeparator();
    menu->addAction(::tr("Reset All Channels"))->setData(resetAll);
    m_undo = menu->addAction(::tr("Undo Reset"));
    m_undo->setData(undoReset);
    m_undo->setVisible(m_undoable);
    connect(menu, &QMenu::triggered, this, &ItemChnSidebar::trigerMenu);
}

void ItemChnSidebar::openMenuDig()
{
    if (menu == nullptr) {
        createMenu();
    }
    const int logarithm = showMultip > 0 ? int(std::bit_width(unsigned(showMultip))) - 1 : 0;
    menu->setAccessibleName(settingBtn->accessibleName());
    QAction *current = menu->actions().at(std::min(logarithm, 3));
    current->setChecked(true);
    m_undo->setVisible(m_undoable);
    const bool byMouse = settingBtn->rect().contains(settingBtn->mapFromGlobal(QCursor::pos()));
    menu->popup(byMouse ? QCursor::pos() : settingBtn->mapToGlobal(settingBtn->rect().bottomLeft()));
    if (!byMouse) {
        menu->setActiveAction(current);
    }
}
