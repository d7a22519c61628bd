#pragma once

#include "monkey/Chance.h"
#include "monkey/MonkeyProgram.h"
#include "monkey/Watchdog.h"

#include <QEventLoop>
#include <QObject>
#include <QPointer>
#include <QWidget>

#include <chrono>

class QFileDialog;

/// Uses the program at random: mouse, wheel, keys, menus, dialogs, captures, analyzers, files, and instruments that
/// come, go and fail. What it does follows from its seed; what the program makes of it depends on its threads as well.
///
/// An act may open a dialog, whose event loop then runs within that act: the monkey goes on in there, and outermost()
/// tells whether no such loop is open. Main thread.
class Monkey : public QObject {
public:
    Monkey(std::uint32_t seed, Watchdog &watchdog);

    /// Acts for so long, then closes what is open. Tells each act on standard output.
    /// @return false when a dialog could not be closed
    [[nodiscard]] bool run(std::chrono::seconds time);

    [[nodiscard]] int acts() const { return m_acts; }

private:
    /// Where the next event goes: a widget that takes it, and a place in it.
    struct Target {
        QPointer<QWidget> widget;
        QPoint pos;
    };

    void armNext();
    void turn();
    [[nodiscard]] bool outermost() const;
    /// Closes one of the open menus and dialogs. @return false when there is none
    bool closeOne();
    void tell(const QString &what);

    void act();
    void actOnProgram();
    void answerFileDialog(QFileDialog &dialog);
    void click();
    void drag();
    void wheel();
    void hover();
    void key();
    void touchWindow();

    [[nodiscard]] QWidget *topmost() const;
    [[nodiscard]] Target anyTarget();
    [[nodiscard]] Target analogTarget();
    void mouse(QEvent::Type type, const Target &target, Qt::MouseButton button, Qt::MouseButtons buttons);

    Chance m_chance;
    MonkeyProgram m_program;
    Watchdog &m_watchdog;
    QEventLoop m_loop;
    std::chrono::steady_clock::time_point m_end;
    std::chrono::steady_clock::time_point m_mustBeClosed;
    bool m_good = true;
    int m_acts = 0;
    int m_depth = 0; ///< acts under way, each but the last within a dialog of the one before
};
