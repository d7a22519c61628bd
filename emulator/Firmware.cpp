#include "Firmware.h"

#include <algorithm>
#include <array>

namespace emulator {

namespace {

struct Piece {
    std::uint32_t start;
    std::uint32_t size;
};

/// The image kind's RAM: instructions, data, and the large one.
constexpr std::array<Piece, 3> imageRam{{{0, 0x4000}, {0x10000000, 0x2000}, {0x40000000, 0x80000}}};

bool within(std::uint32_t address, std::size_t length, Piece piece)
{
    return address >= piece.start && address - piece.start <= piece.size &&
           length <= piece.size - (address - piece.start);
}

} // namespace

void Firmware::powerOn()
{
    m_memory.clear();
    m_writes.clear();
    m_complaints.clear();
    m_entry = 0;
    m_held = false;
    m_opened = false;
    m_started = false;
}

bool Firmware::refuse(const char *why)
{
    m_complaints.emplace_back(why);
    return false;
}

bool Firmware::write(std::uint32_t address, std::span<const std::uint8_t> data)
{
    m_writes.push_back({address, data.size()});
    return m_format == FirmwareFormat::HexRecords ? writeHex(address, data) : writeImage(address, data);
}

std::uint8_t Firmware::read(std::uint32_t address)
{
    m_opened = true;
    const auto found = m_memory.find(address);
    return found == m_memory.end() ? std::uint8_t(0) : found->second;
}

bool Firmware::writeHex(std::uint32_t address, std::span<const std::uint8_t> data)
{
    if (data.empty()) {
        return refuse("a write without data");
    }
    if (address == cpuControl) {
        if (data.size() != 1) {
            return refuse("a write to the control register of other than one byte");
        }
        const bool hold = (data[0] & 1) != 0;
        if (m_held && !hold) {
            start();
        }
        m_held = hold;
        return true;
    }
    if (!m_held) {
        return refuse("a write while the CPU runs");
    }
    if (!within(address, data.size(), {0, hexRamSize})) {
        return refuse("a write outside the RAM");
    }
    store(address, data);
    return true;
}

bool Firmware::writeImage(std::uint32_t address, std::span<const std::uint8_t> data)
{
    if (!m_opened) {
        return refuse("a write before the load was opened");
    }
    if (data.empty()) {
        if (!m_memory.contains(address)) {
            return refuse("a start outside what was loaded");
        }
        m_entry = address;
        start();
        return true;
    }
    if (data.size() > imagePiece) {
        return refuse("a write of more than 1024 bytes");
    }
    if (std::none_of(imageRam.begin(), imageRam.end(),
                     [&](Piece piece) { return within(address, data.size(), piece); })) {
        return refuse("a write outside the RAM");
    }
    store(address, data);
    return true;
}

void Firmware::store(std::uint32_t address, std::span<const std::uint8_t> data)
{
    for (const std::uint8_t byte : data) {
        m_memory[address++] = byte;
    }
}

void Firmware::start()
{
    if (m_memory.empty()) {
        refuse("a start without a firmware");
    } else if (!m_expected.empty() && m_memory != m_expected) {
        refuse("not the firmware that belongs here");
    } else {
        m_started = true;
    }
}

} // namespace emulator
