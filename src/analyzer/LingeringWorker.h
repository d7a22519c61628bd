#pragma once

#include "analyzer/AnalyzerItem.h"
#include "analyzer/WatchedTime.h"

#include <QString>

/// A worker that did not leave when it was asked to, with all that it can reach. Main thread.
///
/// It has two seconds to leave, as looks count them; if it is not gone by then it is left behind: thread, analyzer and
/// results are then never freed. Nothing is ended by force, which no code of a plug-in is made for: who catches
/// everything, or is in what must not throw, would end the program with it. Whoever writes the next capture does not
/// wait for it: the trees of this one are then its own.
struct LingeringWorker {
    enum class State { Waiting, Ended, LeftBehind };

    LingeringWorker(QString decoder, AnalyzerItem taken);
    ~LingeringWorker();
    LingeringWorker(const LingeringWorker &) = delete;
    LingeringWorker &operator=(const LingeringWorker &) = delete;

    /// Once in a while, until it answers other than Waiting.
    [[nodiscard]] State look();
    /// It has had its two seconds.
    [[nodiscard]] bool isOverdue() const;

    QString name;
    AnalyzerItem item;

private:
    [[nodiscard]] bool hasLeft();
    void leaveBehind();

    WatchedTime m_time;
    bool m_gone = false; ///< ended or left behind
};

/// The item stays until the process ends, and is never used again. Main thread.
void keepForEver(AnalyzerItem item);
