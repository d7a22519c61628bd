#include "MixedSignal.h"

#include <utility>

namespace emulator {

MixedSignal::MixedSignal(std::shared_ptr<LogicSignal> digital, std::vector<std::unique_ptr<AnalogInput>> analog)
    : m_digital(std::move(digital)), m_analog(std::move(analog))
{}

std::int8_t MixedSignal::analogAt(int channel, const SampleMoment &moment)
{
    const auto i = std::size_t(channel);
    return channel >= 0 && i < m_analog.size() && m_analog[i] != nullptr ? convert(m_analog[i]->voltsAt(moment))
                                                                         : m_digital->analogAt(channel, moment);
}

} // namespace emulator
