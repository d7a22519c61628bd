#include "analysis/AnalogFormat.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <span>

namespace {

QString wholeText(std::int64_t value, std::span<const char *const> units)
{
    constexpr std::int64_t step = 1000;
    std::size_t unit = 0;
    while (unit + 1 < units.size() && value % step == 0) {
        value /= step;
        ++unit;
    }
    return QString::number(value) + QLatin1String(units[unit]);
}

QString decimals(double value)
{
    return QString::number(value, 'f', 2);
}

} // namespace

QString formatTimePs(std::int64_t ps)
{
    static constexpr std::array<const char *, 5> units{"ps", "ns", "us", "ms", "s"};
    return wholeText(ps, units);
}

QString formatFrequency(std::int64_t hz)
{
    static constexpr std::array<const char *, 4> units{"Hz", "KHz", "MHz", "GHz"};
    return wholeText(hz, units);
}

QString formatVoltage(double millivolts)
{
    constexpr double leastInVolts = 100.0; // millivolts
    constexpr double millivoltsPerVolt = 1000.0;
    return std::trunc(millivolts) >= leastInVolts ? decimals(millivolts / millivoltsPerVolt) + QLatin1Char('V')
                                                  : decimals(millivolts) + QLatin1String("mV");
}

QString formatPercent(double percent)
{
    return decimals(percent) + QLatin1Char('%');
}
