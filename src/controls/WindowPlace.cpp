#include "controls/WindowPlace.h"

#include "controls/Look.h"
#include "settings/Config.h"

#include <array>

namespace {

/// Whether enough of a stored window is in `available` to be seen and taken hold of. The sums are 64 bits wide, since
/// the stored numbers may be anything.
bool isReachable(const std::array<int, 4> &window, const QRect &available)
{
    const auto [x, y, width, height] = window;
    const qint64 left = available.x();
    const qint64 right = left + available.width();
    const qint64 top = available.y();
    const qint64 bottom = top + available.height();
    const qint64 visible = x < left ? qint64{x} + width - left : right - x;
    return visible >= dp(160) && y - top >= dp(20) && bottom - y >= dp(20) && width >= 1 &&
           width <= available.width() && height >= 1 && height <= available.height();
}

} // namespace

QRect windowPositionGet(const QRect &available)
{
    std::array<int, 4> window{};
    intListGet(globalGet(QStringLiteral("windowPosition")), window.data(), static_cast<int>(window.size()));
    if (isReachable(window, available)) {
        return {window[0], window[1], window[2], window[3]};
    }
    const auto percent = [](int size, int part) { return static_cast<int>(qint64{size} * part / 100); };
    return {percent(available.width(), 10), percent(available.height(), 10), percent(available.width(), 80),
            percent(available.height(), 80)};
}

void windowPositionSet(const QRect &rect)
{
    const std::array<int, 4> window{rect.x(), rect.y(), rect.width(), rect.height()};
    globalSet(QStringLiteral("windowPosition"), intListPut(window.data(), static_cast<int>(window.size())));
}
