#include "controls/Contrast.h"

#include <algorithm>
#include <cmath>

namespace {

/// A channel of sRGB, 0 to 1, as the light that it gives.
double linear(double channel)
{
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

} // namespace

double relativeLuminance(const QColor &color)
{
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrastRatio(const QColor &one, const QColor &other)
{
    constexpr double flare = 0.05; // what a screen reflects of its surroundings
    const auto [dark, light] = std::minmax({relativeLuminance(one), relativeLuminance(other)});
    return (light + flare) / (dark + flare);
}

QColor textOn(const QColor &ground)
{
    return contrastRatio(ground, Qt::black) >= contrastRatio(ground, Qt::white) ? Qt::black : Qt::white;
}
