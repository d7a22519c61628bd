#pragma once

#include "Hidden.h"
#include "corvanlux/analyzer/ExportWriter.h"

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

/// The file of one export.
struct LUX_HIDDEN lux::ExportWriter::Private {
    Private(const char *filePath, DisplayBase displayBase, std::int64_t rate, std::atomic<double> &progressTold,
            const std::atomic<bool> &cancelFlag);
    /// Removes the file unless close() has made it whole.
    ~Private();
    Private(const Private &) = delete;
    Private &operator=(const Private &) = delete;

    /// Writes what is buffered. Leaves the export when that fails or it is cancelled.
    void flush();
    void close();
    void put(const char *bytes, std::size_t size)
    {
        if (buffer.size() + size > bufferSize)
            flush();
        buffer.append(bytes, size);
        written += size;
    }
    [[noreturn]] void fail() const;
    void leaveWhenCancelled() const;

    static constexpr std::size_t bufferSize = std::size_t(64) << 10;
    std::string path;
    DisplayBase base;
    std::int64_t sampleRate;
    std::atomic<double> &progress;
    const std::atomic<bool> &cancelled;
    std::FILE *file = nullptr;
    std::string buffer;
    std::uint64_t written = 0;
    bool lineBegun = false; ///< a field was written since the last end of line
};

namespace lux::detail {

/// What leaves exportFile() when the export is cancelled; it is no std::exception.
class ExportEnd {};

} // namespace lux::detail
