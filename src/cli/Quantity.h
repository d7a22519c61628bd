#pragma once

#include <QString>
#include <QVector>

#include <cstdint>
#include <optional>

/// Numbers with units as a command line has them, without rounding: "100M", "62.5MHz", "10ms", "0-7,9". Pure.
namespace Quantity {

/// mantissa * 10^exponent, not negative.
struct Decimal {
    std::int64_t mantissa = 0;
    int exponent = 0;

    [[nodiscard]] double toDouble() const;
};

/// Digits with at most one point, at most 18 of them. @return nothing for anything else, such as a sign or a blank
[[nodiscard]] std::optional<Decimal> decimal(const QString &text);

/// A whole number with k, M or G, such as "20000" or "1.5M". @return nothing for what is none, or above 2^62
[[nodiscard]] std::optional<std::int64_t> count(const QString &text);
/// A rate in whole Hz: as count(), "Hz" may follow.
[[nodiscard]] std::optional<std::int64_t> frequency(const QString &text);
/// A time in seconds: "1.5", "2s", "20ms", "3us", "7ns", "9ps".
[[nodiscard]] std::optional<Decimal> time(const QString &text);
/// The samples that have begun after that time. @param rate  Hz. @return nothing for more than 2^62
[[nodiscard]] std::optional<std::int64_t> samples(const Decimal &time, std::int64_t rate);
/// A time in samples with their parts: a whole number where nothing but the arithmetic keeps it from being one, so that
/// what begins or ends at that very time is in. @param rate  Hz
[[nodiscard]] double samplesWithParts(double seconds, double rate);
/// The channels of a list such as "0-7,9": ascending, each once, at most 63. @return nothing for what is no list
[[nodiscard]] std::optional<QVector<int>> channels(const QString &text);

/// `count` as count() takes it, as short as can be: "62.5M".
[[nodiscard]] QString countText(std::int64_t count);
/// `value` with six digits in the unit that leaves 1 to 999 of it, of those with a prefix from pico to giga: "1.25 ms".
[[nodiscard]] QString text(double value, const QString &unit);

} // namespace Quantity
