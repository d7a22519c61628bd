#include "panels/PwmFields.h"

#include "controls/NumberField.h"

#include <array>
#include <limits>

namespace {

constexpr int significantDigits = 6;
constexpr double showBelow = 1000.0;
constexpr double leastFrequ = 0.1; // Hz
constexpr double mostFrequ = 2e7;
constexpr double leastDuty = 0.0; // percent
constexpr double mostDuty = 100.0;
constexpr std::array<double, 3> unitFactors{1e6, 1e3, 1.0}; // Hz, one for each unit

/// No number for a text that is not a number from end to end.
double numberOf(const QString &text)
{
    return typedNumber(text).value_or(std::numeric_limits<double>::quiet_NaN());
}

/// False for what is no number.
bool lies(double number, double least, double most)
{
    return number >= least && number <= most;
}

} // namespace

QStringList pwmUnits()
{
    return {QStringLiteral("MHz"), QStringLiteral("KHz"), QStringLiteral("Hz")};
}

PwmFrequText pwmFrequText(double frequ)
{
    PwmFrequText shown;
    for (int unit = int(unitFactors.size()) - 1; unit >= 0; --unit) {
        shown.unit = unit;
        shown.number = QString::number(frequ / unitFactors[std::size_t(unit)], 'g', significantDigits);
        if (numberOf(shown.number) < showBelow) {
            break;
        }
    }
    return shown;
}

QString pwmDutyText(double duty)
{
    return QString::number(duty, 'g', significantDigits);
}

std::optional<PwmSetting> readPwmFields(const QString &frequ, int unit, const QString &duty)
{
    if (unit < 0 || unit >= int(unitFactors.size())) {
        return std::nullopt;
    }
    const PwmSetting setting{numberOf(frequ) * unitFactors[std::size_t(unit)], numberOf(duty)};
    const bool isGood = lies(setting.frequ, leastFrequ, mostFrequ) && lies(setting.duty, leastDuty, mostDuty);
    return isGood ? std::optional(setting) : std::nullopt;
}
