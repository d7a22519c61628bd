#pragma once

#include <QStringList>
#include <QThread>

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

/// Measures analog channels on a thread of its own, which begins with the first job and sleeps between two.
///
/// Lives on the main thread, and is owned there. A job carries its own copy of the samples: the thread knows no
/// capture, so that none waits for it. The newest job counts: one that has not begun gives way to it, and what comes of
/// one that has begun is dropped. The destructor waits for the job under way, a few milliseconds at most.
class AnalogMeasurer : public QThread {
    Q_OBJECT
public:
    struct Channel {
        std::vector<std::int8_t> samples; ///< the converter's bytes
        int probe = 1;                    ///< the probe's factor
    };
    struct Job {
        std::vector<Channel> channels;
        std::int64_t rate = 0; ///< Hz
    };

    explicit AnalogMeasurer(QObject *parent = nullptr);
    ~AnalogMeasurer() override;

    // ---- main thread ---------------------------------------------------------------------------------------------
    /// Asks for the texts of the job's channels; measured() follows, unless another call comes before.
    void measure(Job job);
    /// Nothing comes any more of what was asked for.
    void cancel();
    /// The texts of the newest job, one a channel; once. Nothing if they are not there, or no longer wanted.
    [[nodiscard]] std::optional<QStringList> takeTexts();

signals:
    /// There may be texts to take. Emitted on the measurer's thread: to be connected queued.
    void measured(QPrivateSignal);

protected:
    void run() override;

private:
    using Lock = std::unique_lock<std::mutex>;

    std::mutex m_mutex; ///< guards all below; never held while computing or emitting
    std::condition_variable m_wake;
    bool m_quitting = false;
    std::uint64_t m_newest = 0;         ///< raised by every call that makes older results void
    std::optional<Job> m_job;           ///< not begun
    std::optional<QStringList> m_texts; ///< of the newest job, not taken
};
