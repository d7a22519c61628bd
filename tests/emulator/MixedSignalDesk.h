#pragma once

#include "AnalogWave.h"
#include "MixedSignal.h"
#include "WaveSignal.h"
#include "emulator/InstrumentDesk.h"
#include "platform/UsbPlatformEmulated.h"

#include <cmath>
#include <memory>
#include <utility>
#include <vector>

constexpr int mixedSignalModel = 97;

/// Instruments in the process of the test.
class EmulatedRoad final : public InstrumentRoad {
public:
    InstrumentBus &bus() override { return m_bus; }
    std::unique_ptr<UsbPlatform> makePlatform() override { return std::make_unique<UsbPlatformEmulated>(m_bus); }

private:
    EmulatedBus m_bus;
};

/// Digital channels that count at 1 MHz: channel i toggles every 2^i microseconds.
inline std::shared_ptr<emulator::WaveSignal> counter()
{
    return std::make_shared<emulator::WaveSignal>(1'000'000, emulator::WaveSignal::counter(16, 1));
}

inline std::unique_ptr<emulator::AnalogInput> generator(const emulator::AnalogWave::Settings &settings)
{
    return std::make_unique<emulator::AnalogWave>(settings);
}

/// A session over a mixed-signal instrument that has these at its analog inputs. It is not plugged in yet.
/// @param pace  seconds of sampling in a second; 0: a capture is over at once
inline std::unique_ptr<InstrumentDesk> mixedSignalDesk(std::unique_ptr<emulator::AnalogInput> first,
                                                       std::unique_ptr<emulator::AnalogInput> second, double pace = 0)
{
    emulator::InstrumentOptions options;
    options.model = mixedSignalModel;
    options.pace = pace;
    options.leaveAfter = emulator::nanosecondsPerMillisecond;
    options.returnAfter = emulator::nanosecondsPerMillisecond;
    std::vector<std::unique_ptr<emulator::AnalogInput>> inputs;
    inputs.push_back(std::move(first));
    inputs.push_back(std::move(second));
    auto desk = std::make_unique<InstrumentDesk>(std::make_unique<EmulatedRoad>());
    desk->road->bus().add(options, std::make_shared<emulator::MixedSignal>(counter(), std::move(inputs)));
    return desk;
}

[[nodiscard]] inline bool setRate(std::int64_t rate)
{
    return gDev->setSmpFrequIndex(gDev->smpFrequs.indexOf(rate)) && gDev->smpFrequ() == rate;
}

/// Within so many steps of the instrument's converter, and the two decimals of a volt that texts have.
[[nodiscard]] inline bool isAbout(double millivolts, double wanted, int steps = 1)
{
    constexpr double converterStep = 10000.0 / 255;
    constexpr double textStep = 10;
    return std::abs(millivolts - wanted) <= steps * converterStep + textStep / 2;
}
