#pragma once

#include <cstdint>

namespace lux::detail {

/// What leaves a decoder's simulate() that does not return by itself. No std::exception, as WorkerEnd is none.
class SimulationEnd {};

/// Operations on a simulation for one element: levels, times, numbers.
inline constexpr std::uint32_t mostSimulationSteps = 1U << 24;

} // namespace lux::detail
