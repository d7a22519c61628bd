#pragma once

#include "AnalogInput.h"

#include <memory>
#include <vector>

namespace emulator {

/// The inputs of an instrument with analog channels: digital ones from one signal, each analog one of its own.
class MixedSignal : public LogicSignal {
public:
    /// @param digital  not null; also gives the analog channels that have no input
    /// @param analog   by channel; null for one without input
    MixedSignal(std::shared_ptr<LogicSignal> digital, std::vector<std::unique_ptr<AnalogInput>> analog);

    [[nodiscard]] std::int64_t rate() const override { return m_digital->rate(); }
    [[nodiscard]] SignalRun at(std::int64_t position, std::uint32_t mask) override
    {
        return m_digital->at(position, mask);
    }
    [[nodiscard]] std::int8_t analogAt(int channel, const SampleMoment &moment) override;

private:
    std::shared_ptr<LogicSignal> m_digital;
    std::vector<std::unique_ptr<AnalogInput>> m_analog;
};

} // namespace emulator
