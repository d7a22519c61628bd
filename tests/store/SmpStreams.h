#pragma once

#include "store/SmpData.h"

#include <cstdint>
#include <vector>

/// Builders of what devices send, and of captures. For tests and benchmarks.
namespace smpStreams {

using Bytes = std::vector<std::uint8_t>;

/// One run-length record.
struct Record {
    std::uint32_t word;
    std::uint8_t count;
};

/// Groups of five records of 16 bits; the last group is filled up with repeats of the last record.
inline Bytes rle16(const std::vector<Record> &records)
{
    Bytes bytes;
    for (std::size_t first = 0; first < records.size(); first += 5) {
        for (std::size_t i = first; i < first + 5; ++i) {
            const Record &r = records[i < records.size() ? i : records.size() - 1];
            bytes.insert(bytes.end(), {std::uint8_t(r.word), std::uint8_t(r.word >> 8), r.count});
        }
        bytes.push_back(0x5A); // the spare byte means nothing
    }
    return bytes;
}

/// Groups of six records of 32 bits with sound check bytes; filled up like rle16().
inline Bytes rle32(const std::vector<Record> &records)
{
    Bytes bytes;
    for (std::size_t first = 0; first < records.size(); first += 6) {
        for (std::size_t i = first; i < first + 6; ++i) {
            const Record &r = records[i < records.size() ? i : records.size() - 1];
            bytes.insert(bytes.end(), {std::uint8_t(r.word), std::uint8_t(r.word >> 8), std::uint8_t(r.word >> 16),
                                       std::uint8_t(r.word >> 24), r.count});
        }
        const auto check = std::uint8_t(first * 7);
        bytes.insert(bytes.end(), {check, std::uint8_t(check ^ 0xFF)});
    }
    return bytes;
}

/// Words of 16 samples of the channels `chns` in turn, from one word of all channels a sample. The samples are whole
/// groups of 16.
inline Bytes sliced(const std::vector<std::uint32_t> &samples, const std::vector<int> &chns)
{
    Bytes bytes;
    for (std::size_t first = 0; first + 16 <= samples.size(); first += 16) {
        for (const int chn : chns) {
            std::uint32_t word = 0;
            for (std::size_t k = 0; k < 16; ++k) {
                word |= (samples[first + k] >> chn & 1) << k;
            }
            bytes.insert(bytes.end(), {std::uint8_t(word), std::uint8_t(word >> 8)});
        }
    }
    return bytes;
}

/// Flags that enable the first `count` channels.
inline Bytes enabled(int count)
{
    return Bytes(std::size_t(count), 1);
}

} // namespace smpStreams
