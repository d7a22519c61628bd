#pragma once

#include "files/TextPieces.h"

#include <QString>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Lines of columns. Private to this folder.

/// The lines of a file, one after the other.
class CsvLines {
public:
    explicit CsvLines(QIODevice &device) : m_pieces(device), m_at(m_pieces.begin()) {}

    /// Takes the next line, without its end; it is good until the next call. @return false at the file's end and when
    /// the line is longer than TextPieces::wordMax
    [[nodiscard]] bool next(std::string_view &line);
    [[nodiscard]] bool isTooLong() const { return m_isTooLong; }
    [[nodiscard]] bool hasFailed() const { return m_pieces.hasFailed(); }
    /// Of the line that was taken last, from 1.
    [[nodiscard]] std::int64_t number() const { return m_number; }
    [[nodiscard]] std::int64_t taken() const { return m_pieces.taken(); }

private:
    TextPieces m_pieces;
    const char *m_at;
    std::int64_t m_number = 0;
    bool m_isTooLong = false;
};

/// The fields of a line, without blanks and quotes around them (RFC 4180, section 2).
[[nodiscard]] std::vector<std::string> csvFields(std::string_view line, char separator);
/// What separates the fields of a line: a comma, a semicolon or a tab, the first of these that is in it.
[[nodiscard]] char csvSeparator(std::string_view line);
/// Without blanks at its ends.
[[nodiscard]] std::string_view csvTrimmed(std::string_view text);

/// Ticks of csvTime().
inline constexpr std::int64_t csvTicksPerSecond = 1'000'000'000'000;
/// A decimal number of seconds, with an exponent or without, as ticks; further digits are rounded.
/// @return false for what is none, and what has no room in 62 bits
[[nodiscard]] bool csvTime(std::string_view text, std::int64_t &ticks);
