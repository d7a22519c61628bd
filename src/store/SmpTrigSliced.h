#pragma once

#include <array>
#include <cstdint>
#include <span>

/// Searches a stream of slices for the trigger: 16-bit words of the enabled channels in turn, bit k of a word being the
/// channel's sample k of the current group of 16.
///
/// It goes on from buffer to buffer, so that a group, and an edge, may lie across two of them. The trigger is the first
/// sample at which each channel is as its code asks; no sample before the first one exists, so that none there is an
/// edge. Belongs to one thread. 64 samples of a channel are looked at as one number, only of channels that take part,
/// and nothing depends on what a sample holds: some gigabytes a second while no trigger comes.
class SmpTrigSliced {
public:
    static constexpr int groupSamples = 16;
    static constexpr int wordBytes = 2;
    static constexpr int maxChannels = 64;

    /// Begins at the start of a stream.
    /// @param kinds  smpTrigCode of each enabled channel in ascending order; those beyond 64 are left out
    void start(std::span<const std::int32_t> kinds);

    /// Looks through the next buffer of the stream, whole words; half a word at its end is passed over.
    /// @return the trigger's sample, counted from the first sample of the first group that ends in this buffer (which
    ///         may have begun in an earlier one), or -1. After a trigger the next call must be start().
    [[nodiscard]] std::int64_t scan(std::span<const std::uint8_t> bytes);

private:
    /// A channel that takes part. Its words are turned so that a set bit is the level that is asked for.
    struct Part {
        int slot = 0;
        std::uint16_t turn = 0; ///< 0xFFFF turns the words over: low levels and falling edges
        bool edge = false;
        std::uint16_t last = 0; ///< edges: the turned sample before the next word, in bit 0
    };

    [[nodiscard]] std::uint32_t matchOf(Part &part, std::uint32_t word) const;
    void takeWord(std::uint32_t word);
    [[nodiscard]] std::uint64_t matchOfBlock(const std::uint8_t *at);

    std::array<Part, maxChannels> m_parts; ///< the first `m_partCount`, in the order of their slots
    int m_partCount = 0;
    int m_slots = 0;           ///< channels that take turns
    int m_slot = 0;            ///< of the next word
    int m_part = 0;            ///< the first part whose slot is still to come in this group
    bool m_firstGroup = true;  ///< of the stream
    std::uint32_t m_match = 0; ///< of the current group so far
};
