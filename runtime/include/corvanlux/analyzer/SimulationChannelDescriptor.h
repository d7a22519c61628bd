#pragma once

#include "AnalyzerTypes.h"

#include <cstdint>

/// Run widths in samples, between two addresses.
struct SimulationData {
    std::uint32_t *begin = nullptr;
    std::uint32_t *end = nullptr;
};

/// What one channel carries in a simulated capture, block by block. Made and owned by the decoder, in an array that
/// stays in place as long as the decoder lives; on the simulation's thread throughout.
class LUX_ANALYZER_API SimulationChannelDescriptor {
public:
    SimulationChannelDescriptor();
    SimulationChannelDescriptor(const SimulationChannelDescriptor &) = delete;
    SimulationChannelDescriptor &operator=(const SimulationChannelDescriptor &) = delete;
    ~SimulationChannelDescriptor();

    [[nodiscard]] Channel GetChannel() const;
    [[nodiscard]] BitState GetInitialBitState() const; ///< level at sample 0
    [[nodiscard]] BitState GetCurrentBitState() const; ///< level of the last run handed out
    /// The runs since the last block, each below 2^31 samples; the last may go on in the next block, which then begins
    /// in the same level. Good until the next block is built; the caller may empty it.
    [[nodiscard]] SimulationData *GetData();

    struct Private;
    [[nodiscard]] Private *internals() { return m_private; } ///< for the runtime itself

private:
    Private *m_private;
};
static_assert(sizeof(SimulationChannelDescriptor) == sizeof(void *));
