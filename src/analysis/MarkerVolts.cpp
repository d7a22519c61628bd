#include "analysis/MarkerVolts.h"

#include <cmath>

namespace {

constexpr double millivoltsPerVolt = 1000.0;

double shareOf(MarkerVolts::AreaLevel level)
{
    return level.height > 0 ? double(level.position) / level.height : 0.0;
}

} // namespace

double MarkerVolts::voltageOf(AreaLevel marker, AreaLevel zero, int fullScale)
{
    return (shareOf(zero) - shareOf(marker)) * fullScale;
}

double MarkerVolts::differenceOf(AreaLevel a, AreaLevel b, int fullScale)
{
    return std::abs((shareOf(a) - shareOf(b)) * fullScale);
}

QString MarkerVolts::formatMarkerVoltage(double millivolts)
{
    if (std::abs(millivolts) >= millivoltsPerVolt) {
        return QString::number(millivolts / millivoltsPerVolt, 'f', 2) + QLatin1Char('V');
    }
    return QString::number(millivolts, 'f', 2) + QStringLiteral("mV");
}
