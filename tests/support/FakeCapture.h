#pragma once

#include "acquisition/InterfaceDevCallback.h"
#include "acquisition/SmpDevice.h"
#include "acquisition/SmpTransport.h"
#include "store/MemBudget.h"

#include <QStringList>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <deque>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

/// The requests of an instrument, answered as a test wants and written down. Used by the threads of a capture; the
/// members without a lock are set before a run and read after it.
class FakeDevice final : public SmpDevice {
public:
    SmpCaptureInfo info;
    QString failing;     ///< the operation that fails, empty for none
    int failingCall = 0; ///< the first call of it that fails
    int answer = transferFailed;
    std::function<void(const QString &)> onCall; ///< told of each, before it is answered
    std::atomic<bool> running{false};
    std::atomic<bool> stopped{false}; ///< by stopDevice(), since the last start
    std::uint32_t address = 0;        ///< of the last read window
    std::uint32_t size = 0;

    /// Answers of one poll after the other, the last one again and again; also while a thread polls.
    void answerStatuses(std::vector<std::uint16_t> statuses)
    {
        const std::lock_guard lock(m_mutex);
        m_statuses = std::move(statuses);
    }

    int startDevice() override
    {
        stopped = false;
        running = true;
        return told(QStringLiteral("startDevice"));
    }
    int stopDevice() override
    {
        const int result = told(QStringLiteral("stopDevice"));
        running = false;
        stopped = true;
        stopped.notify_all();
        return result;
    }
    int bulkStart() override { return told(QStringLiteral("bulkStart")); }
    int bulkStop() override { return told(QStringLiteral("bulkStop")); }
    int readStatus(std::uint16_t &status) override
    {
        const int result = told(QStringLiteral("readStatus"));
        const std::lock_guard lock(m_mutex);
        status = result == 0 ? m_statuses[std::min(m_polls++, m_statuses.size() - 1)] : std::uint16_t(0);
        return result;
    }
    int readCaptureInfo(SmpCaptureInfo &out) override
    {
        const int result = told(QStringLiteral("readCaptureInfo"));
        if (result == 0) {
            out = info;
        }
        return result;
    }
    int setReadWindow(std::uint32_t from, std::uint32_t bytes) override
    {
        address = from;
        size = bytes;
        return told(QStringLiteral("setReadWindow"));
    }

    [[nodiscard]] QStringList calls() const
    {
        const std::lock_guard lock(m_mutex);
        return m_calls;
    }

private:
    int told(const QString &call)
    {
        int before = 0;
        {
            const std::lock_guard lock(m_mutex);
            before = int(m_calls.count(call));
            m_calls.append(call);
        }
        if (onCall) {
            onCall(call);
        }
        return call == failing && before >= failingCall ? answer : done;
    }

    mutable std::mutex m_mutex;
    QStringList m_calls;
    std::vector<std::uint16_t> m_statuses{0x00C5};
    std::size_t m_polls = 0;
};

/// A bulk pipe that brings what a test wants, in buffers of the sizes that it wants, with two of them in the hands of
/// the transport all the time.
class FakeBulk final : public SmpTransport {
public:
    std::vector<std::uint8_t> stream;
    std::vector<std::int32_t> sizes{4096};     ///< of one buffer after the other, from the first again
    std::int32_t chunkSize = 1 << 16;          ///< bytes taken for a buffer
    int answer = runEnded;                     ///< when the stream is at its end, or the device was stopped
    int maxBuffers = -1;                       ///< buffers after which the run ends, -1 for no limit
    int earlyAnswer = runFailed;               ///< then
    std::atomic<FakeDevice *> device{nullptr}; ///< that ends the stream by its stop; null for none; at any time
    std::function<void(int)> beforeBuffer;     ///< told of each, from 0
    std::atomic<bool> open{true};
    std::int64_t lowestBudget = 0; ///< that was left at any buffer
    std::int32_t limit = -1;       ///< of the last run
    std::size_t delivered = 0;     ///< bytes that the last run handed over

    [[nodiscard]] bool isOpen() const override { return open; }
    void setCallback(InterfaceDevCallback *receiver) override { m_receiver = receiver; }
    [[nodiscard]] InterfaceDevCallback *receiver() const { return m_receiver; }
    void breakOffStream() override { m_brokenOff = true; }

    [[nodiscard]] int readStream(std::int32_t wanted, InterfaceDevCallback &receiver) override
    {
        limit = wanted;
        delivered = 0;
        lowestBudget = memBudget;
        m_brokenOff = false; // what was broken off before is another run
        if (!open || m_receiver != &receiver) {
            return runNotOpen;
        }
        std::deque<SmpChunk> queued;
        for (int i = 0; i < 2; ++i) {
            queued.push_back(SmpChunk::take(chunkSize));
            if (!queued.back()) {
                return runNoMemory;
            }
        }
        receiver.onStart();
        std::size_t at = 0;
        for (int buffer = 0;; ++buffer) {
            if (beforeBuffer) {
                beforeBuffer(buffer);
            }
            if (buffer == maxBuffers || !open) {
                return earlyAnswer;
            }
            if (m_brokenOff) {
                return runFailed;
            }
            const FakeDevice *stopper = device;
            if (at == stream.size() || (stopper != nullptr && stopper->stopped)) {
                return answer;
            }
            const std::int32_t size = std::min(sizes[std::size_t(buffer) % sizes.size()], chunkSize);
            const std::size_t length = std::min(std::size_t(size), stream.size() - at);
            SmpChunk chunk = std::move(queued.front());
            queued.pop_front();
            std::memcpy(chunk.bytes(), stream.data() + at, length);
            at += length;
            delivered = at;
            lowestBudget = std::min(lowestBudget, memBudget.load());
            receiver.onData(std::move(chunk), std::int32_t(length));
            queued.push_back(SmpChunk::take(chunkSize));
            if (!queued.back()) {
                return runNoMemory;
            }
            lowestBudget = std::min(lowestBudget, memBudget.load());
        }
    }

private:
    std::atomic<InterfaceDevCallback *> m_receiver{nullptr}; ///< may be set for the next run while one still ends
    std::atomic<bool> m_brokenOff{false};
};
