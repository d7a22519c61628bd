#include "CaptureConfig.h"

namespace emulator {

SampleConfig SampleConfig::parse(std::span<const std::uint8_t, size> block)
{
    SampleConfig config;
    config.depth = std::int64_t(readLittle(block.subspan(0, 5)));
    config.preTrigger = std::int64_t(readLittle(block.subspan(5, 5)));
    config.preMemory = std::uint32_t(readLittle(block.subspan(10, 4)));
    config.clockDivider = std::uint16_t(readLittle(block.subspan(14, 2)));
    return config;
}

TriggerConfig TriggerConfig::parse(std::span<const std::uint8_t, size> block)
{
    const auto mask = [block](std::size_t at) { return std::uint32_t(readLittle(block.subspan(at, 4))); };
    return {mask(0), mask(4), mask(8), mask(12)};
}

} // namespace emulator
