#include "SwiNames.h"

#include "common/Crc.h"

std::string_view swi::flagName(std::uint64_t flag)
{
    switch (flag) {
    case Command:
        return "Command";
    case Transmit:
        return "Transmit";
    case Idle:
        return "Idle";
    case Sleep:
        return "Sleep";
    default:
        return {};
    }
}

std::string_view swi::opcodeName(unsigned opcode)
{
    switch (opcode) {
    case 0x01:
        return "Pause";
    case 0x02:
        return "Read";
    case 0x08:
        return "MAC";
    case 0x11:
        return "HMAC";
    case 0x12:
        return "Write";
    case 0x15:
        return "GenDig";
    case 0x16:
        return "Nonce";
    case 0x17:
        return "Lock";
    case 0x1b:
        return "Random";
    case 0x1c:
        return "DeriveKey";
    case 0x20:
        return "UpdateExtra";
    case 0x24:
        return "Counter";
    case 0x28:
        return "CheckMac";
    case 0x30:
        return "DevRev";
    case 0x40:
        return "GenKey";
    case 0x41:
        return "Sign";
    case 0x43:
        return "ECDH";
    case 0x45:
        return "Verify";
    case 0x46:
        return "PrivWrite";
    case 0x47:
        return "SHA";
    default:
        return {};
    }
}

std::string_view swi::statusName(unsigned status)
{
    switch (status) {
    case 0x00:
        return "success";
    case 0x01:
        return "miscompare";
    case 0x03:
        return "parse error";
    case 0x0f:
        return "execution error";
    case 0x11:
        return "awake";
    case 0xff:
        return "CRC or communication error";
    default:
        return {};
    }
}

std::uint32_t swi::crcOf(std::span<const std::uint8_t> bytes)
{
    lux::Crc<lux::CrcModel{.width = 16, .polynomial = 0x8005}> crc;
    for (const std::uint8_t byte : bytes) {
        crc.addByte(std::uint8_t(lux::reversed(byte, 8)));
    }
    return crc.value();
}

bool swi::isCrcRight(std::span<const std::uint8_t> block)
{
    const std::size_t covered = block.size() - crcBytes;
    return crcOf(block.first(covered)) == (block[covered] | std::uint32_t(block[covered + 1]) << 8);
}
