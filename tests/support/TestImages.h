#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <map>
#include <numeric>
#include <string>
#include <vector>

/// Firmware and FPGA images that a build without those of the makers can be tried with: noise in the right formats, the
/// same at each build. They are compiled into tests, and written to a folder by make_images. Standard C++ alone.
namespace testImages {

using Bytes = std::vector<std::uint8_t>;
using Memory = std::map<std::uint32_t, std::uint8_t>; ///< bytes by address

/// Noise that follows from a name.
inline Bytes noise(const std::string &name, std::size_t size)
{
    std::uint32_t state = std::accumulate(name.begin(), name.end(), 2166136261U, [](std::uint32_t hash, char c) {
        return (hash ^ std::uint8_t(c)) * 16777619U; // FNV-1a
    });
    Bytes bytes(size);
    std::generate(bytes.begin(), bytes.end(), [&state] {
        state = state * 1664525U + 1013904223U;
        return std::uint8_t(state >> 24);
    });
    return bytes;
}

// ---- firmware -------------------------------------------------------------------------------------------------------

inline const std::vector<std::string> hexFirmwares = {"fw01A1", "fw01A2", "fw01A3", "fw03A1"};
inline const std::string imageFirmware = "fw01A4";
constexpr std::uint32_t imageEntry = 0x40000000;

inline void place(Memory &memory, std::uint32_t address, const Bytes &bytes)
{
    for (const std::uint8_t byte : bytes) {
        memory[address++] = byte;
    }
}

/// What stands in the controller's RAM when the firmware of a product has been sent.
inline Memory firmwareMemory(const std::string &name)
{
    Memory memory;
    if (name == imageFirmware) {
        place(memory, 0, noise(name + "a", 0x4000));         // whole pieces of 1024 bytes
        place(memory, 0x10000000, noise(name + "b", 1000));  // less than one
        place(memory, imageEntry, noise(name + "c", 60000)); // some and a rest
    } else {
        place(memory, 0, noise(name + "a", 259));
        place(memory, 0x1A00, noise(name + "b", 33));
    }
    return memory;
}

/// The runs of adjacent addresses.
inline std::map<std::uint32_t, Bytes> sections(const Memory &memory)
{
    std::map<std::uint32_t, Bytes> found;
    Bytes *last = nullptr;
    std::uint32_t next = 0;
    for (const auto &[address, byte] : memory) {
        if (last == nullptr || address != next) {
            last = &found[address];
        }
        last->push_back(byte);
        next = address + 1;
    }
    return found;
}

inline std::string hexDigits(std::uint32_t value, int digits)
{
    char text[9];
    std::snprintf(text, sizeof text, "%0*X", digits, unsigned(value));
    return text;
}

/// One record of Intel HEX text, with its line end.
inline std::string hexRecord(std::uint32_t address, int type, const Bytes &data)
{
    Bytes all{std::uint8_t(data.size()), std::uint8_t(address >> 8), std::uint8_t(address), std::uint8_t(type)};
    all.insert(all.end(), data.begin(), data.end());
    all.push_back(std::uint8_t(-std::accumulate(all.begin(), all.end(), 0)));
    std::string text = ":";
    for (const std::uint8_t byte : all) {
        text += hexDigits(byte, 2);
    }
    return text + "\r\n";
}

inline std::string hexText(const Memory &memory)
{
    constexpr std::size_t recordSize = 16;
    std::string text;
    for (const auto &[start, bytes] : sections(memory)) {
        for (std::size_t at = 0; at < bytes.size(); at += recordSize) {
            const auto first = bytes.begin() + std::ptrdiff_t(at);
            const Bytes data(first, first + std::ptrdiff_t(std::min(recordSize, bytes.size() - at)));
            text += hexRecord(start + std::uint32_t(at), 0, data);
        }
    }
    return text + hexRecord(0, 1, {});
}

inline void putLittle(Bytes &bytes, std::uint32_t value)
{
    for (int shift = 0; shift < 32; shift += 8) {
        bytes.push_back(std::uint8_t(value >> shift));
    }
}

/// A binary image with a "CY" head. The sections' sizes must be whole words.
inline Bytes imageOf(const Memory &memory, std::uint32_t entry)
{
    Bytes image{'C', 'Y', 0x1C, 0xB0};
    std::uint32_t checksum = 0;
    for (const auto &[start, bytes] : sections(memory)) {
        putLittle(image, std::uint32_t(bytes.size() / 4));
        putLittle(image, start);
        image.insert(image.end(), bytes.begin(), bytes.end());
        for (std::size_t i = 0; i + 3 < bytes.size(); i += 4) {
            checksum += std::uint32_t(bytes[i]) | std::uint32_t(bytes[i + 1]) << 8 | std::uint32_t(bytes[i + 2]) << 16 |
                        std::uint32_t(bytes[i + 3]) << 24;
        }
    }
    putLittle(image, 0);
    putLittle(image, entry);
    putLittle(image, checksum);
    return image;
}

/// The file of a firmware.
inline Bytes firmware(const std::string &name)
{
    const Memory memory = firmwareMemory(name);
    if (name == imageFirmware) {
        return imageOf(memory, imageEntry);
    }
    const std::string text = hexText(memory);
    return {text.begin(), text.end()};
}

// ---- FPGA -----------------------------------------------------------------------------------------------------------

/// Sizes in bytes on both sides of those at which an upload takes a block more.
inline const std::map<std::string, std::size_t> fpgaImages = {
    {"RV2320", 2048}, {"RV2420", 2049},   {"RV2520", 4096},    {"RV2310A_0", 6144}, {"RV2310A_1", 6145},
    {"RV2320A", 1},   {"RV2420A", 20000}, {"RV2520A", 100000}, {"RV2540A", 65536},  {"RV2720", 50000},
};

inline Bytes fpga(const std::string &name)
{
    return noise(name, fpgaImages.at(name));
}

} // namespace testImages
