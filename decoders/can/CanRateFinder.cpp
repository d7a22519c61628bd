#include "CanRateFinder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

using lux::ChannelReader;
using lux::Sample;

namespace {

constexpr int mostFrames = 60;
constexpr std::int64_t mostEdges = 4000;
constexpr std::size_t mostPulses = 4000;
constexpr std::int64_t leastSamplesPerBit = 2;
constexpr double usualWithin = 0.015;
constexpr std::int64_t idleBits = 10;

constexpr std::array<std::int64_t, 15> usualRates = {1000000, 800000, 500000, 250000, 125000, 100000, 95238, 83333,
                                                     62500,   50000,  33333,  20000,  10000,  5000,   400000};
constexpr std::array<std::int64_t, 12> usualDataRates = {2000000, 5000000, 4000000, 8000000, 1000000,  500000,
                                                         2500000, 3000000, 6000000, 6666667, 10000000, 250000};

} // namespace

/// Frames behind ten recessive bits, until there are enough.
CanRateFinder::Score CanRateFinder::tryRates(std::int64_t rate, std::int64_t dataRate) const
{
    const CanRates rates = {.sample = m_sampleRate, .nominal = rate, .data = dataRate == 0 ? rate : dataRate};
    const CanBitTimes times = m_settings.lookTimes(rates).front();
    const Sample idle = idleBits * m_sampleRate / rate;
    Score score;
    ChannelReader line(m_line);
    line.seek(0);
    for (int frames = 0; frames < mostFrames && line.edgesLeft() > 1 && line.edgesPassed() < mostEdges;) {
        const Sample from = std::max<Sample>(line.lastEdge(), 0);
        const bool wasIdle = line.level() != times.dominantHigh && line.peekEdge() - from >= idle;
        line.nextEdge();
        if (!wasIdle) {
            continue;
        }
        CanReceiver receiver(line, times);
        receiver.receive();
        ++frames;
        const bool isSwitched = receiver.frame().rateSwitch;
        score.sound += int(receiver.isRight());
        score.switched += int(isSwitched);
        score.broken += int(!receiver.isRight() && !isSwitched);
        line = receiver.line().reader();
    }
    return score;
}

std::int64_t CanRateFinder::findRate() const
{
    std::int64_t best = 0;
    Score most;
    const auto consider = [&](std::int64_t rate) {
        if (rate <= 0 || m_sampleRate < leastSamplesPerBit * rate) {
            return;
        }
        const Score score = tryRates(rate, m_settings.dataBaudrate.value());
        if (score.isBetterThan(most)) {
            most = score;
            best = rate;
        }
    };
    std::for_each(usualRates.begin(), usualRates.end(), consider);
    const std::int64_t measured = measuredRate();
    const bool isUsual = best > 0 && std::abs(double(measured - best)) < usualWithin * double(best);
    if (!isUsual) {
        consider(measured);
    }
    return best;
}

std::int64_t CanRateFinder::findDataRate(std::int64_t rate) const
{
    if (m_sampleRate < leastSamplesPerBit * rate || tryRates(rate, rate).switched == 0) {
        return 0;
    }
    std::vector<std::int64_t> candidates{rate}; // a sender may switch to the same rate
    candidates.insert(candidates.end(), usualDataRates.begin(), usualDataRates.end());
    for (const std::int64_t factor : {2, 4, 5, 8}) {
        candidates.push_back(factor * rate);
    }
    std::int64_t best = 0;
    int most = 0;
    const auto consider = [&](std::int64_t dataRate) {
        if (dataRate < rate || m_sampleRate < leastSamplesPerBit * dataRate) {
            return;
        }
        const int sound = tryRates(rate, dataRate).sound;
        if (sound > most) {
            most = sound;
            best = dataRate;
        }
    };
    std::for_each(candidates.begin(), candidates.end(), consider);
    const std::int64_t measured = measuredDataRate(rate);
    if (best == 0 || std::abs(double(measured - best)) >= usualWithin * double(best)) {
        consider(measured);
    }
    return best;
}

std::int64_t CanRateFinder::measuredRate() const
{
    ChannelReader line(m_line);
    line.seek(0);
    std::vector<Sample> widths;
    while (widths.size() < mostPulses && line.edgesLeft() > 1) {
        const Sample from = line.nextEdge();
        widths.push_back(line.peekEdge() - from);
    }
    return rateOf(widths);
}

/// From what lies between the first and the last pulse of a frame that are shorter than a nominal bit: these belong to
/// the data, or to the bits within which the rate changes, and these two are left out.
std::int64_t CanRateFinder::measuredDataRate(std::int64_t rate) const
{
    const Sample bit = m_sampleRate / rate;
    const Sample idle = idleBits * m_sampleRate / rate;
    ChannelReader line(m_line);
    line.seek(0);
    std::vector<Sample> widths;
    std::vector<Sample> ofFrame;
    std::size_t behindShort = 0; ///< of the frame's pulses so many are up to the last short one
    for (std::int64_t edges = 0; edges < mostEdges && line.edgesLeft() > 1; ++edges) {
        const Sample from = line.nextEdge();
        const Sample width = line.peekEdge() - from;
        if (width >= idle) {
            if (behindShort > 2) {
                widths.insert(widths.end(), ofFrame.begin() + 1, ofFrame.begin() + std::ptrdiff_t(behindShort) - 1);
            }
            ofFrame.clear();
            behindShort = 0;
            continue;
        }
        const bool isShort = 10 * width < 9 * bit;
        if (isShort || !ofFrame.empty()) {
            ofFrame.push_back(width);
            behindShort = isShort ? ofFrame.size() : behindShort;
        }
    }
    return rateOf(widths);
}

/// From the width of the shortest that are there often: one bit, as the bits of a check differ enough.
std::int64_t CanRateFinder::rateOf(std::vector<Sample> &widths) const
{
    if (widths.empty()) {
        return 0;
    }
    std::sort(widths.begin(), widths.end());
    const double shortest = double(widths[widths.size() / 10]);
    double samples = 0.0;
    double bits = 0.0;
    for (const Sample width : widths) {
        const double count = std::round(double(width) / shortest);
        if (count >= 1.0 && count <= 5.0) {
            samples += double(width);
            bits += count;
        }
    }
    return bits > 0.0 ? std::llround(double(m_sampleRate) * bits / samples) : 0;
}
