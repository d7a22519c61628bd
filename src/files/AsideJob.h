#pragma once

#include "files/JobDialog.h"

#include <QObject>

#include <functional>

/// Runs a long job on a file on a thread of its own, while the calling thread sits behind the modal dialog of file
/// jobs: for readers and writers that know neither dialogs nor threads.
///
/// Main thread. A short job shows no dialog: only events that the user does not make are processed for `dialogDelay`.
class AsideJob : public QObject {
    Q_OBJECT
public:
    enum class Kind { Load, Save };
    /// Asked by the job after each piece, with the part that is done, 0 to 1; false: the user has cancelled it.
    using GoesOn = std::function<bool(double share)>;

    /// Without `dialogs` the job is simply waited for.
    explicit AsideJob(JobDialogFactory dialogs, Kind kind);

    /// Returns when `work`, which runs on the thread, has ended. Whatever events start meanwhile must leave alone what
    /// the job works on.
    void run(const std::function<void(const GoesOn &goesOn)> &work);

    int dialogDelay = 500; ///< ms

signals:
    /// 0 to 99, and 100 at the end. Emitted on the thread.
    void sigProgress(int percent);
    void sigEnded();

private:
    JobDialogFactory m_dialogs;
    Kind m_kind;
};
