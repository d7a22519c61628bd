#pragma once

#include <cstdint>
#include <span>

/// Searches a stream of one byte a sample, bit i for channel i, for the trigger.
///
/// It goes on from buffer to buffer. The trigger is the first sample that passes all masks; the first sample of the
/// stream counts as its own predecessor. Belongs to one thread. Eight samples are looked at as one number, and nothing
/// depends on what a sample holds: some gigabytes a second while no trigger comes.
class SmpTrigBytes8 {
public:
    /// The trigger of eight channels, bit i for channel i.
    struct Masks {
        std::uint32_t edge = 0;  ///< channels of which one must move
        std::uint32_t fall = 0;  ///< of these, the ones that must fall; the others must rise
        std::uint32_t level = 0; ///< channels tested by level
        std::uint32_t value = 0; ///< their levels
        bool operator==(const Masks &) const = default;
    };

    /// The masks for the smpTrigCode of each channel, from channel 0 on; those beyond 32 are left out. Pure.
    [[nodiscard]] static Masks masksOf(std::span<const std::int32_t> codes);

    /// Begins at the start of a stream.
    void start(const Masks &masks);

    /// Looks through the next buffer of the stream.
    /// @return the trigger's index in this buffer, or -1. After a trigger the next call must be start().
    [[nodiscard]] std::int64_t scan(std::span<const std::uint8_t> bytes);

private:
    [[nodiscard]] std::uint64_t matchOf(std::uint64_t samples);

    // Each mask in every byte of a word.
    std::uint64_t m_edge = 0;
    std::uint64_t m_fall = 0;
    std::uint64_t m_level = 0;
    std::uint64_t m_value = 0;
    std::uint64_t m_noEdge = 0; ///< all bits when no edge is asked for
    std::uint64_t m_last = 0;   ///< the sample before
    bool m_first = true;        ///< the stream's first sample is still to come
};
