#include "monkey/Monkey.h"

#include "app/MainWindow.h"
#include "measure/MeasureViewAChn.h"
#include "measure/VoltageMeasureView.h"
#include "support/DialogDriver.h"
#include "wave/ItemAChnSidebar.h"
#include "wave/WaveView.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QThread>
#include <QTimer>
#include <QWheelEvent>
#include <QtTest>

#include <cstdio>
#include <vector>

using Clock = std::chrono::steady_clock;

namespace {

/// One of that class, or somewhere in one.
bool isWithin(const QWidget &widget, const QMetaObject &kind)
{
    const QWidget *part = &widget;
    while (part != nullptr && !part->metaObject()->inherits(&kind)) {
        part = part->parentWidget();
    }
    return part != nullptr;
}

} // namespace

Monkey::Monkey(std::uint32_t seed, Watchdog &watchdog) : m_chance(seed), m_program(m_chance), m_watchdog(watchdog) {}

bool Monkey::run(std::chrono::seconds time)
{
    constexpr std::chrono::seconds toClose(60);
    m_end = Clock::now() + time;
    m_mustBeClosed = m_end + toClose;
    m_watchdog.alive();
    armNext();
    m_loop.exec();
    return m_good;
}

/// Armed before each act, so that the monkey goes on within a dialog that the act opens.
void Monkey::armNext()
{
    constexpr int shortPause = 3;  // ms
    constexpr int longPause = 150; // ms, for what takes its time
    const int pause = m_chance.oneIn(40) ? m_chance.below(longPause) : m_chance.below(shortPause);
    QTimer::singleShot(pause, this, [this] {
        m_watchdog.alive();
        ++m_depth;
        turn();
        --m_depth;
    });
}

void Monkey::turn()
{
    if (Clock::now() < m_end) {
        armNext();
        ++m_acts;
        act();
        return;
    }
    if (m_depth > 1 || closeOne()) {
        if (Clock::now() > m_mustBeClosed) {
            std::fprintf(stderr, "monkey: a dialog stays open: %s\n", topmost()->metaObject()->className());
            m_good = false;
            m_loop.quit();
            return;
        }
        armNext();
        (void)closeOne();
        return;
    }
    m_loop.quit();
}

bool Monkey::outermost() const
{
    // A report of the program opens a box too, whose loop no act of the monkey's has started.
    return m_depth == 1 && QThread::currentThread()->loopLevel() <= 1;
}

bool Monkey::closeOne()
{
    QWidget *top = topmost();
    if (top == &m_program.window()) {
        return false;
    }
    if (auto *dialog = qobject_cast<QDialog *>(top)) {
        dialog->reject();
    }
    top->close();
    return true;
}

void Monkey::tell(const QString &what)
{
    std::printf("%6d %s\n", m_acts, qPrintable(what));
}

// ---- what to do ----------------------------------------------------------------------------------------------------

void Monkey::act()
{
    if (!m_program.window().isVisible()) {
        if (outermost() && !closeOne()) {
            tell(QStringLiteral("restart"));
            m_program.restart();
        } else {
            (void)closeOne();
        }
        return;
    }
    for (QWidget *top = topmost(); top != nullptr; top = top->parentWidget()) {
        if (auto *dialog = qobject_cast<QFileDialog *>(top)) {
            answerFileDialog(*dialog); // and nothing else, for there it could reach any file of this machine
            return;
        }
    }
    switch (m_chance.below(16)) {
    case 0:
    case 1:
        actOnProgram();
        return;
    case 2:
    case 3:
        drag();
        return;
    case 4:
        wheel();
        return;
    case 5:
    case 6:
        key();
        return;
    case 7:
    case 8:
        hover();
        return;
    case 9:
        if (topmost() != &m_program.window() && m_chance.oneIn(3)) {
            tell(QStringLiteral("close"));
            (void)closeOne();
        }
        return;
    default:
        click();
    }
}

void Monkey::actOnProgram()
{
    switch (m_chance.below(26)) {
    case 0:
    case 1:
        tell(m_program.dropFile());
        return;
    case 2:
        touchWindow();
        return;
    case 3:
    case 4:
    case 5:
    case 6:
    case 7:
        tell(m_program.touchAnalyzer());
        return;
    case 8:
    case 9:
    case 10:
    case 11:
    case 12:
    case 13:
        tell(m_program.touchInstrument());
        return;
    case 14:
        tell(m_program.chooseModel());
        return;
    case 15:
    case 16:
        tell(m_program.openRecent());
        return;
    default:
        tell(m_program.runOrStop());
    }
}

void Monkey::answerFileDialog(QFileDialog &dialog)
{
    if (m_chance.oneIn(4)) {
        tell(QStringLiteral("no file"));
        dialog.reject();
        return;
    }
    const bool saves = dialog.acceptMode() == QFileDialog::AcceptSave;
    const QString path = saves ? m_program.fileToSave() : m_program.fileToOpen();
    tell(QStringLiteral("file ") + path.section(QLatin1Char('/'), -1));
    chooseFile(dialog, path);
}

void Monkey::touchWindow()
{
    if (m_chance.oneIn(6)) {
        tell(QStringLiteral("close the window"));
        m_program.window().close();
        return;
    }
    const QSize size(300 + m_chance.below(1500), 200 + m_chance.below(900));
    tell(QStringLiteral("size %1 x %2").arg(size.width()).arg(size.height()));
    m_program.window().resize(size);
}

// ---- mouse and keys ------------------------------------------------------------------------------------------------

/// What the system would send events to: an open menu, the dialog in front, or the window.
QWidget *Monkey::topmost() const
{
    if (QWidget *popup = QApplication::activePopupWidget()) {
        return popup;
    }
    if (QWidget *dialog = QApplication::activeModalWidget()) {
        return dialog;
    }
    return &m_program.window();
}

Monkey::Target Monkey::anyTarget()
{
    QWidget *top = topmost();
    if (top == &m_program.window() && m_chance.oneIn(4)) {
        const Target analog = analogTarget();
        if (analog.widget != nullptr) {
            return analog;
        }
    }
    const QPoint pos(m_chance.below(top->width()), m_chance.below(top->height()));
    QWidget *child = top->childAt(pos);
    if (child == nullptr || child->window() != top->window()) {
        return {top, pos};
    }
    return {child, child->mapFrom(top, pos)};
}

/// A place on what only a model with analog channels has: the sidebar with its flags, the area of the traces, and the
/// two sections of the panel. They are a small part of the window, and would be met too seldom. Null without them.
Monkey::Target Monkey::analogTarget()
{
    const MainWindow &window = m_program.window();
    const auto *sidebar = window.findChild<ItemAChnSidebar *>();
    if (sidebar == nullptr || !sidebar->isVisible()) {
        return {};
    }
    if (m_chance.oneIn(4)) {
        auto *waves = window.findChild<WaveView *>();
        return {waves->viewport(), QPoint(m_chance.below(waves->width()), m_chance.below(sidebar->height()))};
    }
    static const std::vector<const QMetaObject *> kinds{&ItemAChnSidebar::staticMetaObject,
                                                        &ItemAChnSidebar::staticMetaObject, // has most of the controls
                                                        &MeasureViewAChn::staticMetaObject,
                                                        &VoltageMeasureView::staticMetaObject};
    const QMetaObject *kind = m_chance.of(kinds);
    QVector<QWidget *> there;
    for (QWidget *widget : window.findChildren<QWidget *>()) {
        if (widget->isVisible() && isWithin(*widget, *kind)) {
            there.append(widget);
        }
    }
    if (there.isEmpty()) {
        return {};
    }
    QWidget *widget = m_chance.of(there);
    return {widget, QPoint(m_chance.below(widget->width()), m_chance.below(widget->height()))};
}

void Monkey::mouse(QEvent::Type type, const Target &target, Qt::MouseButton button, Qt::MouseButtons buttons)
{
    if (target.widget == nullptr || !target.widget->isEnabled() || !target.widget->isVisible()) {
        return; // the system sends nothing to what is hidden, as a row that waits to be deleted
    }
    static const std::vector<Qt::KeyboardModifiers> all{Qt::NoModifier, Qt::NoModifier, Qt::NoModifier,
                                                        Qt::ShiftModifier, Qt::ControlModifier};
    QMouseEvent event(type, target.pos, target.widget->mapToGlobal(target.pos), button, buttons, m_chance.of(all));
    QApplication::sendEvent(target.widget, &event);
}

void Monkey::click()
{
    const Target target = anyTarget();
    const bool isRight = m_chance.oneIn(5);
    const Qt::MouseButton button = isRight ? Qt::RightButton : Qt::LeftButton;
    tell(QStringLiteral("click %1 on %2 %3")
             .arg(isRight ? 2 : 1)
             .arg(QLatin1String(target.widget->metaObject()->className()), target.widget->objectName()));
    mouse(QEvent::MouseButtonPress, target, button, button);
    mouse(QEvent::MouseButtonRelease, target, button, Qt::NoButton);
    if (m_chance.oneIn(6)) {
        mouse(QEvent::MouseButtonDblClick, target, button, button);
        mouse(QEvent::MouseButtonRelease, target, button, Qt::NoButton);
    }
    if (isRight && target.widget != nullptr) {
        QContextMenuEvent menu(QContextMenuEvent::Mouse, target.pos, target.widget->mapToGlobal(target.pos));
        QApplication::sendEvent(target.widget, &menu);
    }
}

void Monkey::drag()
{
    Target target = anyTarget();
    tell(QStringLiteral("drag on ") + QLatin1String(target.widget->metaObject()->className()));
    mouse(QEvent::MouseButtonPress, target, Qt::LeftButton, Qt::LeftButton);
    for (int step = m_chance.below(8); step >= 0; --step) {
        target.pos += QPoint(m_chance.below(121) - 60, m_chance.below(61) - 30);
        mouse(QEvent::MouseMove, target, Qt::NoButton, Qt::LeftButton);
    }
    mouse(QEvent::MouseButtonRelease, target, Qt::LeftButton, Qt::NoButton);
}

void Monkey::hover()
{
    Target target = anyTarget();
    for (int step = m_chance.below(5); step >= 0; --step) {
        target.pos += QPoint(m_chance.below(41) - 20, m_chance.below(21) - 10);
        mouse(QEvent::MouseMove, target, Qt::NoButton, Qt::NoButton);
    }
}

void Monkey::wheel()
{
    const Target target = anyTarget();
    tell(QStringLiteral("wheel on ") + QLatin1String(target.widget->metaObject()->className()));
    const QPoint turned(0, m_chance.oneIn(2) ? 120 : -120);
    for (int step = m_chance.below(4); step >= 0 && target.widget != nullptr; --step) {
        QWheelEvent event(target.pos, target.widget->mapToGlobal(target.pos), {}, turned, Qt::NoButton,
                          m_chance.oneIn(6) ? Qt::ShiftModifier : Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(target.widget, &event);
    }
}

void Monkey::key()
{
    static const std::vector<Qt::Key> keys{
        Qt::Key_Left,   Qt::Key_Right,  Qt::Key_Up,        Qt::Key_Down,   Qt::Key_Home,   Qt::Key_End,     Qt::Key_Tab,
        Qt::Key_Return, Qt::Key_Escape, Qt::Key_Space,     Qt::Key_0,      Qt::Key_7,      Qt::Key_Comma,   Qt::Key_A,
        Qt::Key_Minus,  Qt::Key_Plus,   Qt::Key_F1,        Qt::Key_F5,     Qt::Key_R,      Qt::Key_S,       Qt::Key_O,
        Qt::Key_E,      Qt::Key_Z,      Qt::Key_Backspace, Qt::Key_Delete, Qt::Key_PageUp, Qt::Key_PageDown};
    static const std::vector<Qt::KeyboardModifiers> modifiers{Qt::NoModifier, Qt::NoModifier, Qt::ControlModifier,
                                                              Qt::ShiftModifier, Qt::AltModifier};
    QWidget *top = topmost();
    QWidget *focus = QApplication::focusWidget();
    QWidget *target = focus != nullptr && focus->window() == top->window() ? focus : top;
    const Qt::Key pressed = m_chance.of(keys);
    tell(QStringLiteral("key %1 on %2").arg(int(pressed), 0, 16).arg(QLatin1String(target->metaObject()->className())));
    QTest::keyClick(target, pressed, m_chance.of(modifiers));
}
