#include "wave/TimeTicks.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace TimeTicks {

namespace {

constexpr double minPitchPixels = 25.0;
constexpr int basePart = 3; // without a decade in the left three quarters the base is named
constexpr int baseWhole = 4;
constexpr int maxDecade = 30;          // a label's number stays below 2^63
constexpr double maxTickNumber = 9e15; // below 2^53: consecutive ticks are different doubles
constexpr int secondsUnit = int(unitNames.size()) - 1;

/// Appends to a character array and always leaves room for the NUL, which the caller's zeroing has put there.
class LabelWriter {
public:
    explicit LabelWriter(std::span<char> text) : m_next(text.data()), m_end(text.data() + text.size() - 1)
    {
        std::fill(text.begin(), text.end(), '\0');
    }

    void put(char c)
    {
        if (m_next < m_end) {
            *m_next++ = c;
        }
    }
    void put(const char *text)
    {
        while (*text != '\0') {
            put(*text++);
        }
    }
    void put(std::int64_t number)
    {
        const auto result = std::to_chars(m_next, m_end, number);
        if (result.ec == std::errc()) {
            m_next = result.ptr;
        }
    }

private:
    char *m_next;
    char *m_end;
};

/// The whole part, then a point and decimals only as far as they are not zero.
void putNumber(LabelWriter &writer, double value)
{
    constexpr std::int64_t billion = 1'000'000'000;
    constexpr double scalable = 9.0e9; // times a billion stays below 2^63
    if (value >= scalable) {
        writer.put(std::int64_t(std::min(value, 9.2e18)));
        return;
    }
    const std::int64_t scaled = std::int64_t(value * 1e9 + 0.5);
    writer.put(scaled / billion);
    std::int64_t rest = scaled % billion;
    if (rest == 0) {
        return;
    }
    writer.put('.');
    for (std::int64_t place = billion / 10; rest != 0; place /= 10) {
        writer.put(char('0' + rest / place));
        rest %= place;
    }
}

std::int64_t powerOfTen(int exponent)
{
    std::int64_t power = 1;
    for (int i = 0; i < exponent; ++i) {
        power *= 10;
    }
    return power;
}

/// Labels count up from the lower decade tick on both sides of zero.
int stepAboveDecade(std::int64_t n)
{
    const int rest = int(std::abs(n) % 10);
    return n < 0 && rest != 0 ? 10 - rest : rest;
}

} // namespace

int capacity(int width)
{
    return width > 0 ? width / 20 + 1 : 0;
}

bool choosePitch(const Scale &scale, Pitch &pitch)
{
    double span = double(scale.width) * scale.psPerPixel;
    if (scale.width <= 0 || !(scale.psPerPixel > 0.0) || !std::isfinite(span)) {
        return false;
    }
    int decade = 0;
    while (span >= 10.0 && decade <= maxDecade) {
        span /= 10.0;
        ++decade;
    }
    if (decade > maxDecade) {
        return false;
    }
    if (scale.width / (span * 10.0) >= minPitchPixels && decade >= 1) {
        --decade;
    }
    pitch.decade = decade;
    pitch.unit = std::min(decade / 3, secondsUnit);
    pitch.digits = decade - 3 * pitch.unit + 1;
    pitch.labelStep = powerOfTen(pitch.digits - 1);
    pitch.ps = std::pow(10.0, decade);
    return true;
}

int labelRoom(const Pitch &pitch, const LabelMetrics &metrics)
{
    const int devicePixels =
        metrics.digitWidth * (pitch.digits + 1) + metrics.unitWidth[std::size_t(pitch.unit)] + metrics.margin + 1;
    return devicePixels / std::max(metrics.scale, 1);
}

int labelEvery(const Pitch &pitch, double psPerPixel, int room)
{
    const double tickPixels = std::trunc(pitch.ps / psPerPixel);
    if (tickPixels > room) {
        return 1;
    }
    return 2.0 * tickPixels > room ? 2 : 5;
}

void writeTime(double ps, bool negative, std::span<char> text)
{
    LabelWriter writer(text);
    int unit = 0;
    double value = ps;
    while (value >= 1000.0 && unit < secondsUnit) {
        value /= 1000.0;
        ++unit;
    }
    if (value == 0.0) {
        writer.put('0');
        return;
    }
    if (negative) {
        writer.put('-');
    }
    putNumber(writer, value);
    writer.put(unitNames[std::size_t(unit)]);
}

int fill(const Scale &scale, const LabelMetrics &metrics, std::span<TimeTick> ticks)
{
    Pitch pitch;
    if (!choosePitch(scale, pitch)) {
        return 0;
    }
    const double leftTick = scale.leftEdge / pitch.ps;
    if (!(std::abs(leftTick) < maxTickNumber)) {
        return 0;
    }
    const int every = labelEvery(pitch, scale.psPerPixel, labelRoom(pitch, metrics));
    const char *unitName = unitNames[std::size_t(pitch.unit)];

    std::size_t count = 0;
    for (std::int64_t n = std::int64_t(std::ceil(leftTick)); count < ticks.size(); ++n) {
        const double x = (double(n) - leftTick) * pitch.ps / scale.psPerPixel;
        if (!(x < scale.width)) {
            break;
        }
        const int step = stepAboveDecade(n);
        if (step % every != 0) {
            continue;
        }
        TimeTick &tick = ticks[count++];
        tick.x = std::int32_t(x);
        if (step == 0) {
            tick.kind = tickKind::decade;
            writeTime(pitch.ps * double(std::abs(n)), n < 0, tick.text);
        } else {
            tick.kind = tickKind::relative;
            LabelWriter writer(tick.text);
            writer.put('+');
            writer.put(step * pitch.labelStep);
            writer.put(unitName);
        }
    }
    const bool isNamed = std::any_of(ticks.begin(), ticks.begin() + std::ptrdiff_t(count), [&](const TimeTick &tick) {
        return tick.kind == tickKind::decade && tick.x < scale.width * basePart / baseWhole;
    });
    if (!isNamed && count > 0 && count < ticks.size()) {
        TimeTick &base = ticks[count++];
        const double n = std::floor(leftTick / 10.0) * 10.0;
        base.x = 0;
        base.kind = tickKind::base;
        writeTime(pitch.ps * std::abs(n), n < 0, base.text);
    }
    return int(count);
}

} // namespace TimeTicks
