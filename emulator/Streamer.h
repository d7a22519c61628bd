#pragma once

#include "Sampler.h"
#include "UsbTypes.h"

#include <vector>

namespace emulator {

/// The endless stream of an instrument without memory, from sample 0 on.
///
/// Bytes: one byte a sample, bit i for channel i. Sliced: groups of 16 samples, in which each captured channel in
/// rising order has a word of 16 bits, the first sample in bit 0.
class Streamer {
public:
    enum class Format { ByteSamples, SlicedWords };

    /// @param channels  what is captured; the byte format always sends all eight
    void start(Format format, const Sampler &sampler, std::uint32_t channels);
    /// The next bytes of the stream; always fills `out`.
    /// Cost: quiet stretches at the speed of memory; else some ten nanoseconds an edge and a group.
    void fill(std::span<std::uint8_t> out);
    /// Bytes that the stream has brought when `samples` were taken.
    [[nodiscard]] std::int64_t bytesIn(std::int64_t samples) const;

private:
    [[nodiscard]] std::size_t fillBytes(std::span<std::uint8_t> out);
    [[nodiscard]] std::size_t fillGroups(std::span<std::uint8_t> out);
    void repeatGroup(std::span<std::uint8_t> out, std::uint32_t levels) const;
    void buildGroup(std::uint8_t *out);
    [[nodiscard]] std::size_t groupSize() const { return m_format == Format::ByteSamples ? 1 : 2 * m_order.size(); }

    Format m_format = Format::ByteSamples;
    Sampler m_sampler;
    std::uint32_t m_channels = 0;
    std::vector<int> m_order;    ///< sliced: the channels that take turns
    std::int64_t m_position = 0; ///< sample of the next whole group
    SignalRun m_run;             ///< holds m_position if m_run.end is above it
    Bytes m_rest;                ///< the end of a group of which the start was sent
    std::size_t m_restAt = 0;
};

} // namespace emulator
