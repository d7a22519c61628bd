#pragma once

#include "store/SmpData.h"

#include <array>
#include <bit>
#include <cstdint>
#include <memory>

/// Fills a capture of its own from the levels of all channels at increasing positions.
///
/// Private to this folder. Lives on the stack of whoever reads a file; one thread at a time. Memory is that of the
/// store, 5.1 bytes an edge, within the budget.
class CaptureFiller {
public:
    static constexpr int channelMax = 32;
    static constexpr std::int64_t positionMax = (std::int64_t(1) << 40) - 1; ///< also of a length

    /// A store of 8, 16 or 32 channels, of which the first `channels` hold data: 1 to channelMax.
    explicit CaptureFiller(int channels);

    /// False when not even the first blocks could be had.
    [[nodiscard]] bool isGood() const { return m_isGood; }
    /// Bit i is the level of channel i behind the last change.
    [[nodiscard]] std::uint64_t levels() const { return m_levels; }
    /// The levels at position 0. Before the first change().
    void setStart(std::uint64_t levels) { m_levels = m_start = levels; }

    /// The level of channel `chn` changes at `pos`: for who does not look at levels(), which change() alone keeps.
    /// @param pos  above that of the channel's last change, 1 to positionMax
    /// @return false when the memory is spent: then nothing more may be added
    /// Cost: a nanosecond or two.
    [[nodiscard]] bool flip(int chn, std::int64_t pos)
    {
        Tail &tail = m_tails[std::size_t(chn)];
        if (tail.leaf->count == SmpEdgeLeaf::capacity && !grow(tail)) [[unlikely]] {
            return false;
        }
        tail.leaf->setPosition(tail.leaf->count++, pos);
        return true;
    }
    /// The levels from `pos` on. Bits of channels without data must be 0.
    /// @param pos  above that of the last call, 1 to positionMax
    /// @return false when the memory is spent: then nothing more may be added
    /// Cost: a nanosecond or two for each channel that changes.
    [[nodiscard]] bool change(std::uint64_t levels, std::int64_t pos)
    {
        for (std::uint64_t left = levels ^ m_levels; left != 0; left &= left - 1) {
            if (!flip(std::countr_zero(left), pos)) [[unlikely]] {
                return false;
            }
        }
        m_levels = levels;
        return true;
    }

    /// The greatest number that divides `first` and all positions stored so far. Cost: a division an edge.
    [[nodiscard]] std::int64_t commonDivisor(std::int64_t first) const;
    /// Multiplies all positions stored so far by `factor`, or divides them by `divisor`, which is to divide all of
    /// them. What does not fit 40 bits is the caller's to know. Cost: one step an edge.
    void scale(std::int64_t factor, std::int64_t divisor);

    /// Closes the capture and hands it over. Once.
    /// @param samples  1 to positionMax, at least one more than the last position
    [[nodiscard]] std::unique_ptr<SmpData> finish(std::int64_t samples, std::int64_t rate, std::int64_t trigger);

private:
    /// Where the next entry of a channel goes.
    struct Tail {
        SmpEdgeRoot *root = nullptr;
        SmpEdgeLeaf *leaf = nullptr;
    };
    [[nodiscard]] bool grow(Tail &tail);
    template<class Visit>
    void forEachLeaf(const Visit &visit) const;

    std::unique_ptr<SmpData> m_data;
    std::array<Tail, channelMax> m_tails;
    int m_channels;
    std::uint64_t m_levels = 0;
    std::uint64_t m_start = 0;
    bool m_isGood = true;
};
