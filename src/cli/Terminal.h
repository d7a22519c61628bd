#pragma once

#include <QString>

/// The process's own lines: messages, progress and Ctrl+C. Messages go to the standard error.
namespace Terminal {

inline constexpr int good = 0;
inline constexpr int badInput = 1;
inline constexpr int wrongUsage = 2;
inline constexpr int notAsExpected = 3;
inline constexpr int interrupted = 130; ///< as shells tell a program that SIGINT ended

/// "luxcli: text" and a line end. Any thread.
void say(const QString &text);

/// From here on Ctrl+C, a request to end and the end of the terminal only set wasInterrupted(); a pipe that nobody
/// reads any more, and a file that grows beyond what the user may write, are errors like any other. Main thread, once.
void catchSignals();
[[nodiscard]] bool wasInterrupted();
/// The same, and forgets it: for who makes something of the first one, so that the next ends the program. Main thread.
[[nodiscard]] bool takeInterrupt();

/// One line on a terminal that is written over again and again; nothing where the standard error is none.
class Progress {
public:
    explicit Progress(QString what);
    /// Takes the line away.
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;
    /// @param share  0 to 1; below 0 for none
    void show(double share);
    /// The same with other words.
    void show(const QString &what, double share);

private:
    QString m_what;
    QString m_shown; ///< what stands on the terminal
    bool m_isTerminal;
};

} // namespace Terminal
