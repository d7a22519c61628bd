#pragma once

#include "store/SmpLease.h"

#include <QIODevice>

#include <atomic>
#include <functional>
#include <memory>

class QFile;
class SmpData;

/// A lease on a capture that a slow disk does not prolong: whoever holds it reads the capture only between enter() and
/// leave(), and a writer that comes at any other time takes the lease away at once, without waiting for anybody.
///
/// Made on any thread; enter(), leave() and release() are for one thread, the rest for any.
class GivingWay {
public:
    /// @param data  may be null: then refused
    [[nodiscard]] static std::shared_ptr<GivingWay> on(const SmpData *data);

    [[nodiscard]] const SmpData *data() const { return m_data; }
    /// @return false when the lease has gone: nothing may be read any more
    [[nodiscard]] bool enter();
    /// Nothing is read until the next enter(). @return false when a writer has come meanwhile: the lease has gone
    bool leave();
    /// Gives the lease up for good, outside of enter() and leave().
    void release();
    /// The capture's owner goes: nobody else will write to it, so that no writer is given way to from here on.
    void stay() { m_stays.store(true, std::memory_order_relaxed); }

private:
    enum class State { Away, Reading, Called, Gone };

    explicit GivingWay(const SmpData *data) : m_data(data) {}
    void writerCame();

    const SmpData *const m_data;
    std::atomic<State> m_state{State::Reading}; ///< who brings it to Gone releases the lease, and nobody else does
    std::atomic<bool> m_stays{false};
    std::unique_ptr<SmpLease> m_lease;
};

/// Writes to a file what is read of a capture meanwhile: while the disk takes it, the capture is not read.
///
/// The first write comes behind an enter() of `way`, which the owner leaves. A write fails when the lease has gone or
/// `mayGoOn` says so, and then no enter() is under way. One thread.
class GivingWayFile final : public QIODevice {
public:
    /// All are not owned, outlive this. `file` is open for writing, without a buffer.
    GivingWayFile(QFile &file, GivingWay &way, std::function<bool()> mayGoOn);
    [[nodiscard]] bool isSequential() const override { return true; }
    /// False when the file did not take what it was given.
    [[nodiscard]] bool isGood() const { return m_good; }

protected:
    qint64 readData(char *bytes, qint64 size) override;
    qint64 writeData(const char *bytes, qint64 size) override;

private:
    QFile &m_file;
    GivingWay &m_way;
    std::function<bool()> m_mayGoOn;
    bool m_good = true;
};
