#pragma once

#include "corvanlux/analyzer/AnalyzerTypes.h"
#include "corvanlux/analyzer/ProgressManager.h"
#include "corvanlux/analyzer/RunControl.h"

#include <atomic>
#include <cstdint>
#include <string>

namespace lux::detail {

/// Why a decode is to be left; the values of RunControl::leave.
enum class Leave : std::uint32_t { Not = 0, Stop = 1, OutOfMemory = 2, Failed = 3 };

/// What leaves a decode loop. It is no std::exception, so that decoders that expect those do not take it for one.
class WorkerEnd {};

/// One run of a decoder. The analyzer owns it; the worker writes it, but for `leave` and `status`.
struct Run : RunControl {
    ProgressManager *progress = nullptr;
    std::int64_t sampleCount = 0;
    std::int64_t sampleRate = 0;
    std::int64_t triggerSample = 0;
    std::int64_t nextReport = 0; ///< the position at which the next progress is due
    std::atomic<DecodeStatus> status{DecodeStatus::Idle};
    std::string message; ///< any thread once `status` is past Running

    /// Only the first reason counts.
    void askToLeave(Leave reason)
    {
        std::uint32_t expected = 0;
        leave.compare_exchange_strong(expected, std::uint32_t(reason), std::memory_order_relaxed);
    }
    void addMessage(const std::string &text)
    {
        if (!message.empty())
            message += '\n';
        message += text;
    }
};

} // namespace lux::detail
