#pragma once

#include "LogicSignal.h"

#include <cstddef>
#include <vector>

namespace emulator {

/// A signal given by its edges: for each channel a start level and the positions at which it changes.
class EdgeSignal : public LogicSignal {
public:
    struct Channel {
        bool startLevel = false;
        std::vector<std::int64_t> edges; ///< strictly increasing, from 0; one at 0 inverts the start level at once
    };

    /// @param channels  up to 32; what lies above is left out
    EdgeSignal(std::int64_t rate, std::vector<Channel> channels);

    [[nodiscard]] std::int64_t rate() const override { return m_rate; }
    [[nodiscard]] SignalRun at(std::int64_t position, std::uint32_t mask) override;

    [[nodiscard]] const std::vector<Channel> &channels() const { return m_channels; }

private:
    struct Cursor {
        std::size_t index = 0; ///< of `next`
        std::int64_t next = never;
    };

    void seek(std::size_t channel, std::int64_t position);
    void seekAll(std::int64_t position);

    std::int64_t m_rate;
    std::vector<Channel> m_channels;
    std::vector<Cursor> m_cursors;
    std::vector<std::size_t> m_moving; ///< channels that have edges
    std::uint32_t m_levels = 0;        ///< at m_position
    std::int64_t m_position = 0;
};

} // namespace emulator
