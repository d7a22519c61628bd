#include "files/CsvLines.h"

#include <charconv>
#include <cstring>

namespace {

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

/// The digits of a number, and by which power of ten they are to be multiplied.
struct Decimal {
    std::int64_t digits = 0;
    int exponent = 0;
    bool isNegative = false;
};

/// Takes digits with at most one point. Digits that have no room any more are passed over. @return how many there were
int takeDigits(std::string_view text, std::size_t &at, Decimal &number)
{
    constexpr std::int64_t most = 100'000'000'000'000'000;
    int count = 0;
    bool hasPoint = false;
    for (; at < text.size(); ++at) {
        const char c = text[at];
        if (c == '.' && !hasPoint) {
            hasPoint = true;
            continue;
        }
        if (c < '0' || c > '9') {
            break;
        }
        ++count;
        if (number.digits < most) {
            number.digits = number.digits * 10 + (c - '0');
            number.exponent -= hasPoint ? 1 : 0;
        } else {
            number.exponent += hasPoint ? 0 : 1;
        }
    }
    return count;
}

/// @return false for what is no number
bool takeDecimal(std::string_view text, Decimal &number)
{
    std::size_t at = 0;
    if (!text.empty() && (text[0] == '-' || text[0] == '+')) {
        number.isNegative = text[0] == '-';
        at = 1;
    }
    if (takeDigits(text, at, number) == 0) {
        return false;
    }
    if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
        at += at + 1 < text.size() && text[at + 1] == '+' ? 2 : 1;
        int exponent = 0;
        const auto [end, error] = std::from_chars(text.data() + at, text.data() + text.size(), exponent);
        if (error != std::errc() || exponent < -400 || exponent > 400) {
            return false;
        }
        number.exponent += exponent;
        at = std::size_t(end - text.data());
    }
    return at == text.size();
}

} // namespace

bool CsvLines::next(std::string_view &line)
{
    const auto *end = static_cast<const char *>(std::memchr(m_at, '\n', std::size_t(m_pieces.end() - m_at)));
    while (end == nullptr && !m_pieces.atEnd()) {
        if (m_pieces.end() - m_at >= TextPieces::wordMax) {
            m_isTooLong = true;
            ++m_number;
            return false;
        }
        m_at = m_pieces.fill(m_at);
        end = static_cast<const char *>(std::memchr(m_at, '\n', std::size_t(m_pieces.end() - m_at)));
    }
    if (end == nullptr && m_at == m_pieces.end()) {
        return false;
    }
    const char *const stop = end != nullptr ? end : m_pieces.end();
    line = {m_at, std::size_t(stop - m_at)};
    m_isTooLong = line.size() > std::size_t(TextPieces::wordMax);
    m_at = end != nullptr ? end + 1 : stop;
    ++m_number;
    return !m_isTooLong;
}

std::string_view csvTrimmed(std::string_view text)
{
    while (!text.empty() && isBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

char csvSeparator(std::string_view line)
{
    for (const char separator : {',', ';', '\t'}) {
        if (line.find(separator) != std::string_view::npos) {
            return separator;
        }
    }
    return ',';
}

std::vector<std::string> csvFields(std::string_view line, char separator)
{
    std::vector<std::string> fields(1);
    bool isQuoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (c == '"' && isQuoted && i + 1 < line.size() && line[i + 1] == '"') {
            fields.back() += c;
            ++i;
        } else if (c == '"') {
            isQuoted = !isQuoted;
        } else if (c == separator && !isQuoted) {
            fields.emplace_back();
        } else {
            fields.back() += c;
        }
    }
    for (std::string &field : fields) {
        field = std::string(csvTrimmed(field));
    }
    return fields;
}

bool csvTime(std::string_view text, std::int64_t &ticks)
{
    constexpr std::int64_t most = std::int64_t(1) << 62;
    Decimal number;
    if (!takeDecimal(text, number)) {
        return false;
    }
    std::int64_t value = number.digits;
    int exponent = number.exponent + 12;
    for (; exponent > 0 && value != 0; --exponent) {
        if (value > most / 10) {
            return false;
        }
        value *= 10;
    }
    for (; exponent < -1 && value != 0; ++exponent) {
        value /= 10;
    }
    value = exponent < 0 ? (value + 5) / 10 : value;
    ticks = number.isNegative ? -value : value;
    return true;
}
