#include "SdioTransfer.h"

#include "SdioNames.h"

void SdioTransfer::command(const SdioToken &token)
{
    m_isApplication = m_nextIsApplication;
    m_nextIsApplication = token.index == sdio::applicationCommand;
    m_last = token.index;
    m_hasLast = true;
    m_mayBeBusy = false;
    if (token.index == sdio::stopTransmission || token.index == 0) {
        m_direction = Direction::None;
    } else if (m_isApplication) {
        applicationData(token);
    } else {
        plainData(token);
    }
}

void SdioTransfer::response(const SdioToken &)
{
    if (!m_hasLast) {
        return;
    }
    m_mayBeBusy = m_direction == Direction::None && sdio::responseOf(m_last, m_isApplication) == sdio::Response::R1b;
}

SdioLength SdioTransfer::responseLength() const
{
    if (!m_hasLast) {
        return SdioLength::Unknown;
    }
    return sdio::responseOf(m_last, m_isApplication) == sdio::Response::R2 ? SdioLength::Long : SdioLength::Short;
}

void SdioTransfer::blockDone()
{
    if (m_blocksLeft != endless && --m_blocksLeft == 0) {
        m_direction = Direction::None;
    }
}

void SdioTransfer::giveUp()
{
    m_direction = Direction::None;
}

void SdioTransfer::begin(Direction direction, std::size_t length, std::uint32_t blocks)
{
    m_direction = direction;
    m_length = length;
    m_blocksLeft = blocks;
}

/// ACMD13, 22 and 51 (SD Physical Layer Simplified Specification 6.00, 4.7.4). One that is not defined does what the
/// plain command does (4.3.9).
void SdioTransfer::applicationData(const SdioToken &token)
{
    constexpr std::size_t statusBytes = 64;
    constexpr std::size_t countBytes = 4;
    constexpr std::size_t scrBytes = 8;
    switch (token.index) {
    case 13:
        begin(Direction::Read, statusBytes);
        break;
    case 22:
        begin(Direction::Read, countBytes);
        break;
    case 51:
        begin(Direction::Read, scrBytes);
        break;
    case 6: // these have no data: bus width, blocks to erase, start-up, card detection
    case 23:
    case sdio::sendOpCond:
    case 42:
        break;
    default:
        plainData(token);
        break;
    }
}

void SdioTransfer::plainData(const SdioToken &token)
{
    constexpr std::size_t functionBytes = 64; // of CMD6 (4.3.10) and CMD19 (4.2.4.5)
    constexpr std::size_t csdBytes = 16;
    constexpr std::size_t protectBytes = 4;
    const std::uint32_t count = m_setCount != 0 ? m_setCount : endless;
    switch (token.index) {
    case sdio::setBlockLength:
        if (token.argument >= 1 && token.argument <= mostLength) {
            m_setLength = token.argument;
        }
        break;
    case sdio::setBlockCount:
        m_setCount = token.argument;
        return;
    case sdio::readSingleBlock:
        begin(Direction::Read, m_setLength);
        break;
    case sdio::readMultipleBlock:
        begin(Direction::Read, m_setLength, count);
        break;
    case sdio::writeBlock:
    case 42:
        begin(Direction::Write, m_setLength);
        break;
    case sdio::writeMultipleBlock:
        begin(Direction::Write, m_setLength, count);
        break;
    case 6:
    case 19:
        begin(Direction::Read, functionBytes);
        break;
    case 27:
        begin(Direction::Write, csdBytes);
        break;
    case 30:
        begin(Direction::Read, protectBytes);
        break;
    case 56:
        begin((token.argument & 1U) != 0 ? Direction::Read : Direction::Write, m_setLength);
        break;
    case sdio::ioReadWriteDirect:
        direct(token.argument);
        break;
    case sdio::ioReadWriteExtended:
        extended(token.argument);
        break;
    default:
        break; // such as CMD13, which may be sent during a transfer
    }
    m_setCount = 0;
}

/// CMD52 sets the block size of a function through its registers (SDIO Simplified Specification 3.00, 6.9 and 6.10).
void SdioTransfer::direct(std::uint32_t argument)
{
    const bool isWrite = (argument >> 31) != 0;
    const std::uint32_t function = argument >> 28 & 7U;
    const std::uint32_t address = argument >> 9 & 0x1ffffU;
    const std::uint32_t lowByte = address & 0xffU;
    if (!isWrite || function != 0 || address >> 8 > 7 || (lowByte != 0x10 && lowByte != 0x11)) {
        return;
    }
    std::size_t &length = m_functionLengths[address >> 8];
    const std::size_t value = argument & 0xffU;
    length = lowByte == 0x10 ? (length & ~std::size_t(0xff)) | value : (length & 0xffU) | value << 8;
}

/// CMD53 (5.3): bytes or blocks of a function.
void SdioTransfer::extended(std::uint32_t argument)
{
    const Direction direction = (argument >> 31) != 0 ? Direction::Write : Direction::Read;
    const std::uint32_t function = argument >> 28 & 7U;
    const bool isBlocks = (argument >> 27 & 1U) != 0;
    const std::uint32_t count = argument & 0x1ffU;
    if (!isBlocks) {
        begin(direction, count == 0 ? usualLength : count);
        return;
    }
    const std::size_t known = m_functionLengths[function];
    begin(direction, known >= 1 && known <= mostLength ? known : usualLength, count == 0 ? endless : count);
}
