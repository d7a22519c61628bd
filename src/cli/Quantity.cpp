#include "cli/Quantity.h"

#include <QStringList>

#include <array>
#include <cmath>
#include <limits>

namespace Quantity {

namespace {

__extension__ using Wide = unsigned __int128;

constexpr std::int64_t largest = std::int64_t(1) << 62;
constexpr int mostDigits = 18;

struct Suffix {
    const char *text;
    int exponent;
};

constexpr std::array<Suffix, 4> multiples{{{"k", 3}, {"K", 3}, {"M", 6}, {"G", 9}}};
constexpr std::array<Suffix, 5> timeUnits{{{"ps", -12}, {"ns", -9}, {"us", -6}, {"ms", -3}, {"s", 0}}};

/// The number before one of these suffixes, or before none.
template<std::size_t n>
std::optional<Decimal> scaled(const QString &text, const std::array<Suffix, n> &suffixes)
{
    for (const Suffix &suffix : suffixes) {
        const QLatin1String end(suffix.text);
        if (text.endsWith(end)) {
            std::optional<Decimal> value = decimal(text.left(text.size() - end.size()).trimmed());
            if (value) {
                value->exponent += suffix.exponent;
            }
            return value;
        }
    }
    return decimal(text);
}

/// floor(value * factor), if it is not above `largest`. @param exact  nothing also where a part is cut off
std::optional<std::int64_t> wholeOf(const Decimal &value, std::int64_t factor, bool exact)
{
    Wide whole = Wide(value.mantissa) * Wide(factor);
    int exponent = value.exponent;
    for (; exponent > 0 && whole <= Wide(largest); --exponent) {
        whole *= 10;
    }
    for (; exponent < 0 && whole > 0; ++exponent) {
        if (exact && whole % 10 != 0) {
            return std::nullopt;
        }
        whole /= 10;
    }
    return whole <= Wide(largest) ? std::optional(std::int64_t(whole)) : std::nullopt;
}

} // namespace

double Decimal::toDouble() const
{
    // A division by a power of ten rounds once, a multiplication by its inverse twice.
    const auto number = double(mantissa);
    return exponent < 0 ? number / std::pow(10.0, -exponent) : number * std::pow(10.0, exponent);
}

std::optional<Decimal> decimal(const QString &text)
{
    Decimal value;
    int digits = 0;
    bool behindPoint = false;
    for (const QChar c : text) {
        if (c == QLatin1Char('.') && !behindPoint) {
            behindPoint = true;
            continue;
        }
        if (c < QLatin1Char('0') || c > QLatin1Char('9') || ++digits > mostDigits) {
            return std::nullopt;
        }
        value.mantissa = value.mantissa * 10 + (c.unicode() - '0');
        value.exponent -= behindPoint ? 1 : 0;
    }
    return digits > 0 ? std::optional(value) : std::nullopt;
}

std::optional<std::int64_t> count(const QString &text)
{
    const std::optional<Decimal> value = scaled(text.trimmed(), multiples);
    return value ? wholeOf(*value, 1, true) : std::nullopt;
}

std::optional<std::int64_t> frequency(const QString &text)
{
    const QString unit = QStringLiteral("Hz");
    const QString number = text.trimmed();
    return count(number.endsWith(unit) ? number.left(number.size() - unit.size()) : number);
}

std::optional<Decimal> time(const QString &text)
{
    return scaled(text.trimmed(), timeUnits);
}

std::optional<std::int64_t> samples(const Decimal &time, std::int64_t rate)
{
    return wholeOf(time, rate, false);
}

double samplesWithParts(double seconds, double rate)
{
    constexpr double slack = 1e-4;
    const double samples = seconds * rate;
    const double whole = std::round(samples);
    return std::abs(samples - whole) < slack ? whole : samples;
}

std::optional<QVector<int>> channels(const QString &text)
{
    constexpr int mostChannels = 64;
    std::array<bool, mostChannels> chosen{};
    for (const QString &part : text.split(QLatin1Char(','))) {
        const QStringList ends = part.split(QLatin1Char('-'));
        bool isFirst = false;
        bool isLast = false;
        const uint first = ends.first().trimmed().toUInt(&isFirst);
        const uint last = ends.last().trimmed().toUInt(&isLast);
        if (ends.size() > 2 || !isFirst || !isLast || first > last || last >= mostChannels) {
            return std::nullopt;
        }
        for (uint chn = first; chn <= last; ++chn) {
            chosen[chn] = true;
        }
    }
    QVector<int> list;
    for (int chn = 0; chn < mostChannels; ++chn) {
        if (chosen[std::size_t(chn)]) {
            list.append(chn);
        }
    }
    return list;
}

QString countText(std::int64_t count)
{
    struct Multiple {
        std::int64_t size;
        char letter;
    };
    static constexpr std::array<Multiple, 3> sizes{{{1'000'000'000, 'G'}, {1'000'000, 'M'}, {1'000, 'k'}}};
    constexpr int thousand = 1000;
    for (const Multiple &multiple : sizes) {
        if (count < multiple.size || count % (multiple.size / thousand) != 0) {
            continue;
        }
        QString part =
            QString::number(count % multiple.size / (multiple.size / thousand)).rightJustified(3, QLatin1Char('0'));
        while (part.endsWith(QLatin1Char('0'))) {
            part.chop(1);
        }
        return QString::number(count / multiple.size) + (part.isEmpty() ? QString() : QLatin1Char('.') + part) +
               QLatin1Char(multiple.letter);
    }
    return QString::number(count);
}

QString text(double value, const QString &unit)
{
    static constexpr std::array<Suffix, 8> prefixes{
        {{"G", 9}, {"M", 6}, {"k", 3}, {"", 0}, {"m", -3}, {"u", -6}, {"n", -9}, {"p", -12}}};
    constexpr int digits = 6;
    constexpr double almostOne = 1 - 1e-9; // 999.9999999 ns are told as 1 us
    const auto sizeOf = [](const Suffix &prefix) { return std::pow(10.0, prefix.exponent); };
    for (const Suffix &prefix : prefixes) {
        if (std::abs(value) >= sizeOf(prefix) * almostOne) {
            return QString::number(value / sizeOf(prefix), 'g', digits) + QLatin1Char(' ') +
                   QLatin1String(prefix.text) + unit;
        }
    }
    return QString::number(value, 'g', digits) + QLatin1Char(' ') + unit;
}

} // namespace Quantity
