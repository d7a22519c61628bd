#pragma once

#include "files/CaptureFiller.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

/// Fills a capture from rows of bytes, one row a sample, in which bit c modulo 8 of byte c / 8 is the level of channel
/// c.
///
/// Private to this folder; one thread at a time.
class SampleFiller {
public:
    static constexpr int rowMax = 4096; ///< bytes

    /// @param row   bytes of a row, 1 to rowMax
    /// @param bits  the bit of the row that is channel 0, 1 and so on; 1 to CaptureFiller::channelMax, all in the row
    SampleFiller(int row, std::vector<int> bits);

    [[nodiscard]] bool isGood() const { return m_filler.isGood(); }
    [[nodiscard]] int row() const { return m_row; }
    /// Takes whole rows: what is left of the last one is not looked at.
    /// @return false when the memory is spent, or there are more samples than 40 bits count
    /// Cost: some nanoseconds a change, a small part of one a byte where nothing changes.
    [[nodiscard]] bool add(std::span<const std::uint8_t> bytes);
    [[nodiscard]] std::int64_t samples() const { return m_samples; }
    [[nodiscard]] bool isTooLong() const { return m_isTooLong; }
    /// Closes the capture, which has a sample at least, and hands it over. Once.
    [[nodiscard]] std::unique_ptr<SmpData> finish(std::int64_t rate) { return m_filler.finish(m_samples, rate, 0); }

private:
    template<class Word>
    [[nodiscard]] bool addWords(const std::uint8_t *from, std::int64_t rows);
    [[nodiscard]] bool addWide(const std::uint8_t *from, std::int64_t rows);
    [[nodiscard]] std::uint64_t gathered(const std::uint8_t *row) const;

    CaptureFiller m_filler;
    const int m_row;
    const std::vector<int> m_bits;
    std::array<int, 64> m_channels{}; ///< by the bits of a row of up to 8 bytes
    std::uint64_t m_mask = 0;         ///< those that are channels
    std::int64_t m_samples = 0;
    std::uint64_t m_last = 0; ///< the last row of up to 8 bytes
    std::vector<std::uint8_t> m_lastRow;
    bool m_isTooLong = false;
};
