#pragma once

#include "AnalyzerTypes.h"
#include "FrameText.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace lux {

class Results;

/// The file of an export while it is written: buffered, and removed unless it gets whole. Made by the runtime for
/// Results::exportFile(), on the thread that exports.
///
/// A cancel and a file that cannot be written leave exportFile() by unwinding from the next operation here: there is no
/// code for it in the decoder. Cost: some nanoseconds a piece.
class LUX_ANALYZER_API ExportWriter {
public:
    ExportWriter(const ExportWriter &) = delete;
    ExportWriter &operator=(const ExportWriter &) = delete;

    [[nodiscard]] DisplayBase base() const;
    /// Whether the path ends in ".csv".
    [[nodiscard]] bool isCsv() const;

    void write(std::string_view text);
    void write(std::span<const std::uint8_t> bytes);
    void byte(std::uint8_t value);
    /// A number of `bytes` bytes, the lowest first, or the highest.
    void little(std::uint64_t value, unsigned bytes);
    void big(std::uint64_t value, unsigned bytes);
    /// Overwrites bytes that were written before: a length in a head. `at` is an offset from the file's start.
    void patch(std::uint64_t at, std::span<const std::uint8_t> bytes);
    [[nodiscard]] std::uint64_t size() const; ///< bytes written so far
    template<class... Pieces>
    void line(const Pieces &...pieces)
    {
        (write(std::string_view(pieces)), ...);
        write(std::string_view("\n"));
    }
    /// One field of a CSV line (RFC 4180: quoted where needed), with the comma before all but the line's first.
    void field(std::string_view text);
    void field(std::int64_t number) { field(formatCount(number)); }
    void endLine();
    /// A sample as seconds from the capture's start with all digits that tell samples apart: "0.000012500".
    [[nodiscard]] ShortText seconds(std::int64_t sample) const;
    /// How far it is. Also asks whether it was cancelled, so call it for each frame.
    void progress(std::uint64_t done, std::uint64_t total);

    struct Private;
    explicit ExportWriter(Private &internals); ///< for the runtime
    ~ExportWriter();

private:
    Private &m_private;
};

} // namespace lux
