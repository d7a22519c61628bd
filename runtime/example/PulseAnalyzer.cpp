#include "PulseAnalyzer.h"

#include <limits>

LUX_PLUGIN(PulseAnalyzer)

namespace {

constexpr std::int64_t nanosecondsPerSecond = 1000000000;

lux::Sample samplesIn(std::int64_t nanoseconds, std::int64_t rate)
{
    // Whole seconds apart, so that the product stays within 64 bits at any rate.
    const std::int64_t seconds = nanoseconds / nanosecondsPerSecond;
    return seconds * rate + nanoseconds % nanosecondsPerSecond * rate / nanosecondsPerSecond;
}

} // namespace

void PulseAnalyzer::decode()
{
    results().showBubblesOn(m_settings.line);
    const bool high = m_settings.level == PulseLevel::High;
    const lux::Sample shortest = samplesIn(m_settings.shortest, sampleRate());
    const lux::Sample longest =
        m_settings.longest == 0 ? std::numeric_limits<lux::Sample>::max() : samplesIn(m_settings.longest, sampleRate());

    lux::ChannelReader &line = reader(m_settings.line);
    line.waitForLevel(!high); // a pulse that the capture's begin cuts has no width
    for (;;) {
        const lux::Sample begin = line.nextEdge();
        const lux::Sample end = line.nextEdge(); // the runtime leaves the loop at the data's end
        const lux::Sample width = end - begin;
        if (width < shortest)
            continue;
        const PulseKind kind = width > longest ? PulseKind::TooLong : PulseKind::Pulse;
        results().add(
            {.firstSample = begin, .lastSample = end - 1, .data = std::uint64_t(width), .kind = std::uint8_t(kind)});
        if (kind == PulseKind::TooLong)
            results().mark(m_settings.line, begin, MarkerType::ErrorX);
    }
}

/// Pulses of 1 to 8 microseconds in a period of 10.
void PulseAnalyzer::simulate(lux::Simulation &simulation)
{
    constexpr std::int64_t microsecondsPerSecond = 1000000;
    constexpr std::int64_t period = 10;
    const bool high = m_settings.level == PulseLevel::High;
    lux::SimulationLine &line = simulation.line(m_settings.line, !high);
    const std::int64_t width = 1 + simulation.random(8);
    simulation.holdTime(period - width, microsecondsPerSecond);
    line.set(high);
    simulation.holdTime(width, microsecondsPerSecond);
    line.set(!high);
}
