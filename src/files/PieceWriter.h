#pragma once

#include "files/DataBlocks.h"
#include "settings/FileReplacement.h"

#include <QIODevice>

#include <cstddef>
#include <cstdint>
#include <vector>

/// The bytes of an export on their way to the device, which it must outlive; in pieces, with a question after each
/// whether to go on. Any thread, one at a time.
class PieceWriter {
public:
    /// @param piece  bytes from which on a piece goes out
    /// @param room   bytes that may follow what is below `piece`
    PieceWriter(QIODevice &device, int piece, int room, const DataPieceHook &afterPiece)
        : m_device(device), m_afterPiece(afterPiece), m_piece(piece), m_buffer(std::size_t(piece + room))
    {}

    [[nodiscard]] char *end() { return m_buffer.data() + m_used; }
    void added(int bytes) { m_used += bytes; }
    [[nodiscard]] int used() const { return m_used; }
    [[nodiscard]] bool isFull() const { return m_used >= m_piece; }

    /// Hands all to the device. The bytes in the buffer stay as they are.
    [[nodiscard]] DataBlocksResult write(std::int64_t done)
    {
        if (!writeWhole(m_device, m_buffer.data(), m_used)) {
            return DataBlocksResult::DeviceError;
        }
        m_used = 0;
        return m_afterPiece && !m_afterPiece(done) ? DataBlocksResult::Stopped : DataBlocksResult::Done;
    }

private:
    QIODevice &m_device;
    const DataPieceHook &m_afterPiece;
    const int m_piece;
    int m_used = 0;
    std::vector<char> m_buffer;
};
