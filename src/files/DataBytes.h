#pragma once

#include "files/DataBlocks.h"

#include <QtEndian>

#include <cstdint>
#include <memory>
#include <new>

/// What reading and writing the binary part have in common. Private to this folder.

/// Entries are taken and put 8 bytes at a time: room behind the last one of a buffer.
constexpr int wordSlack = 8;

/// The 5 bytes at `bytes`; 8 must be readable there.
inline std::int64_t take40(const std::uint8_t *bytes)
{
    return std::int64_t(qFromLittleEndian<quint64>(bytes) & quint64(dataFileMax));
}

/// Puts `value` as 5 bytes and writes over the 3 bytes behind them.
inline void put40(std::uint8_t *bytes, std::int64_t value)
{
    qToLittleEndian<quint64>(quint64(value) & quint64(dataFileMax), bytes);
}

/// Room for `bytes`, and for the word at the last of them; null when the heap refuses.
[[nodiscard]] inline std::unique_ptr<std::uint8_t[]> pieceBuffer(int bytes)
{
    return std::unique_ptr<std::uint8_t[]>(new (std::nothrow) std::uint8_t[std::size_t(bytes + wordSlack)]());
}
