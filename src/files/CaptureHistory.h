#pragma once

#include "files/CaptureFile.h"
#include "files/HistoryFolder.h"

#include <QByteArray>
#include <QDateTime>
#include <QObject>
#include <QString>
#include <QVector>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

class ConfigDocument;
class GivingWay;
class SmpData;

/// How the last capture fared.
enum class KeptState {
    Kept,
    GaveWay,  ///< the next capture began before it was written
    TooLarge, ///< for the history's limit
    Failed    ///< at the disk or the settings, see CaptureHistory::Told
};

/// Keeps captures in a folder, in the background: each is written as a data file while it is shown, and appears there
/// only when it is whole and on the disk. The oldest go when there are more than the limits allow.
///
/// A capture that is being written is read under a lease, which the next capture takes away at once: it waits neither
/// for the disk nor for this, and the part that was written is dropped. A disk that is full, or a folder that cannot be
/// made, is told by last() and by nothing else.
///
/// Lives on the main thread; one thread of its own writes, removes and lists. No operation waits for it but finish()
/// and the destructor, which waits for at most one write of a piece to the disk.
class CaptureHistory final : public QObject {
    Q_OBJECT
public:
    /// @param folder  may not exist yet; is made with the first capture
    explicit CaptureHistory(const HistoryFolder &folder, QObject *parent = nullptr);
    /// Gives up what is not written yet.
    ~CaptureHistory() override;

    /// What is kept.
    struct Capture {
        const SmpData *data = nullptr; ///< closed; not owned
        QString model;                 ///< its name
        QDateTime time;
        HistoryLimits limits{};
    };
    /// Has a capture written, behind those that wait. One without samples is passed over. Cost: that of writing the
    /// settings into memory.
    void keep(const Capture &capture, const ConfigDocument &settings);
    /// The owner of `data` lets go of it: it is written to the end all the same, since no capture follows in it.
    void stayWith(const SmpData *data);
    /// Looks into the folder anew; sigChanged tells the end.
    void refresh();
    /// Waits, without events, until all that was asked is done, for `most`. @return whether it is
    bool finish(std::chrono::milliseconds most);

    [[nodiscard]] const HistoryFolder &folder() const { return m_folder; }
    /// The captures as of the last look, the newest first.
    [[nodiscard]] QVector<HistoryEntry> entries() const;

    struct Told {
        KeptState state = KeptState::Kept;
        FileResult result = FileResult::Done; ///< why, for Failed
    };
    /// How the last capture fared.
    [[nodiscard]] Told last() const;

    /// The bytes that the disk of a folder has left; asked on the thread, before a capture is written.
    std::function<std::int64_t(const QString &folder)> roomLeft;

signals:
    /// entries() or last() may have changed. Main thread.
    void sigChanged();

private:
    struct Job;
    void post(std::unique_ptr<Job> job);
    void run();
    [[nodiscard]] Told write(Job &job);
    /// Writes into `path`, the temporary file. Ends outside of GivingWay::enter().
    [[nodiscard]] Told writeTo(const QString &path, Job &job);

    const HistoryFolder m_folder;
    unsigned m_number = 0; ///< of the last capture that was to be kept, counted from 1; main thread
    std::atomic<bool> m_ending{false};
    mutable std::mutex m_mutex; ///< guards all below but the thread; never held while writing, listing or emitting
    std::condition_variable m_changed;
    std::deque<std::unique_ptr<Job>> m_jobs; ///< the first one is under way
    QVector<HistoryEntry> m_entries;
    Told m_last;
    unsigned m_lastNumber = 0; ///< of the capture that `m_last` tells of
    std::thread m_thread;      ///< started with the first job
};

/// Why the last capture is not in the history, as a translated sentence; empty if it is. Main thread.
[[nodiscard]] QString historyReason(const CaptureHistory::Told &told);
