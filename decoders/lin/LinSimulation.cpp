#include "LinSimulation.h"

#include "LinAnalyzer.h"

#include <array>

using lux::Simulation;
using lux::SimulationLine;

namespace {

constexpr std::int64_t simulatedAutoRate = 19200;
constexpr std::uint32_t mishapEvery = 9;
constexpr std::uint32_t diagnosticEvery = 16;
constexpr std::int64_t fastestWakeUpRate = 20000; ///< five bits are a wake-up signal up to this rate
constexpr std::int64_t wakeUpBits = 5;

} // namespace

LinSimulated LinSimulated::of(std::uint32_t number, const LinSettings &settings)
{
    static constexpr std::array<LinMishap, 8> mishaps = {
        LinMishap::NoAnswer, LinMishap::WrongChecksum, LinMishap::WrongParity, LinMishap::NoIdentifier,
        LinMishap::WakeUp,   LinMishap::FramingError,  LinMishap::NoSync,      LinMishap::OneByte};
    LinSimulated made;
    if (number % mishapEvery == mishapEvery - 1) {
        made.mishap = mishaps[number / mishapEvery % mishaps.size()];
    }
    const bool isDiagnostic = number % diagnosticEvery == diagnosticEvery - 2;
    const auto id = std::uint8_t(isDiagnostic ? LinFrame::masterRequest + (number / diagnosticEvery & 1U)
                                              : number * 7 % LinFrame::masterRequest);
    made.frame.pid = LinFrame::protectedId(id);
    if (made.mishap == LinMishap::WrongParity) {
        made.frame.pid ^= 0x40U;
    }
    if (made.mishap == LinMishap::NoAnswer) {
        return made;
    }
    const std::size_t size = isDiagnostic ? LinFrame::mostData : 1 + number % LinFrame::mostData;
    for (std::size_t i = 0; i < size; ++i) {
        made.frame.bytes[i] = std::uint8_t(number * std::size_t(31) + i * 67 + 1);
    }
    if (isDiagnostic) {
        made.frame.bytes = {0x7f, 0x06, 0xb2, 0x00, 0xff, 0x7f, 0xff, 0xff}; // read the product's identifier
    }
    made.frame.count = size + 1;
    const LinChecksum own = settings.checksumFor(id);
    made.frame.bytes[size] = LinFrame::checksumOf(own, made.frame.pid, std::span(made.frame.bytes).first(size));
    if (made.mishap == LinMishap::WrongChecksum) {
        made.frame.bytes[size] ^= 0x5aU;
    }
    if (made.mishap == LinMishap::FramingError) {
        made.frame.framingError = true;
        made.frame.count = size;
    }
    if (made.mishap == LinMishap::OneByte) {
        made.frame.count = 1;
    }
    return made;
}

/// Frames one behind the other, as a schedule has them, with pauses of all lengths within and between them.
void LinAnalyzer::simulate(Simulation &simulation)
{
    const std::int64_t rate = m_settings.baudrate.value() != 0 ? m_settings.baudrate.value() : simulatedAutoRate;
    SimulationLine &line = simulation.line(m_settings.rx, true);
    if (simulation.sampleRate() < leastSamplesPerBit * rate) {
        simulation.hold(simulation.sampleRate()); // no bit could be told
        return;
    }
    const auto send = [&](bool level, std::int64_t bits) {
        line.set(level);
        simulation.holdTime(bits, rate);
    };
    const auto sendByte = [&](unsigned byte, bool hasStop = true) {
        send(false, 1);
        for (unsigned i = 0; i < 8; ++i) {
            send((byte >> i & 1U) != 0, 1);
        }
        send(hasStop, 1);
        send(true, simulation.random(3) + (hasStop ? 0 : 1));
    };
    LinSimulated next = LinSimulated::of(m_sent++, m_settings);
    send(true, 40 + simulation.random(60));
    if (next.mishap == LinMishap::WakeUp && rate <= fastestWakeUpRate) {
        send(false, wakeUpBits);
        send(true, 60);
        return;
    }
    send(false, 13 + simulation.random(4));
    if (next.mishap == LinMishap::NoSync) {
        send(true, 60);
        return;
    }
    send(true, 1 + simulation.random(3));
    sendByte(0x55);
    if (next.mishap == LinMishap::NoIdentifier) {
        send(true, 60);
        return;
    }
    sendByte(next.frame.pid);
    send(true, simulation.random(8));
    for (std::size_t i = 0; i < next.frame.count; ++i) {
        sendByte(next.frame.bytes[i]);
    }
    if (next.frame.framingError) {
        sendByte(next.frame.bytes[next.frame.count], false);
    }
}
