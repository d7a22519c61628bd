#pragma once

#include "Instrument.h"

#include <cstring>
#include <string>
#include <vector>

/// A host that speaks the wire protocol to an emulated instrument, written without the program: requests byte by byte
/// and decoders as naive as can be.
namespace bench {

using emulator::Answer;
using emulator::Bytes;
using emulator::Instrument;
using emulator::InstrumentOptions;
using emulator::Outcome;
using emulator::SetupPacket;

constexpr std::uint64_t millisecond = 1'000'000;

/// An instrument that comes with its firmware running, and whose sample i is sample i of the signal.
/// @param pace  of the real one's, 0 for as fast as it is asked
inline InstrumentOptions steadyOptions(int model = 8, double pace = 0)
{
    InstrumentOptions options;
    options.model = model;
    options.firmwareInside = true;
    options.pace = pace;
    options.direct = true;
    return options;
}

inline Bytes little(std::uint64_t value, int bytes)
{
    Bytes out;
    for (int i = 0; i < bytes; ++i) {
        out.push_back(std::uint8_t(value >> (8 * i)));
    }
    return out;
}

inline Bytes operator+(Bytes a, const Bytes &b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

/// Sends `data` with a request; the answer's bytes are what was taken.
inline Answer send(Instrument &device, std::uint8_t request, std::uint16_t value, Bytes data = {},
                   std::uint16_t index = 0)
{
    return device.control({0x40, request, value, index, std::uint16_t(data.size())}, data);
}

inline bool sent(Instrument &device, std::uint8_t request, std::uint16_t value, const Bytes &data = {},
                 std::uint16_t index = 0)
{
    const Answer answer = send(device, request, value, data, index);
    return answer.outcome == Outcome::Done && answer.bytes == data.size();
}

/// What the device answers; shorter than asked for, or empty after a stall.
inline Bytes ask(Instrument &device, std::uint8_t request, std::uint16_t value, std::uint16_t length)
{
    Bytes data(length, 0xEE);
    const Answer answer = device.control({0xC0, request, value, 0, length}, data);
    data.resize(answer.outcome == Outcome::Done ? answer.bytes : 0);
    return data;
}

inline std::uint64_t number(const Bytes &bytes, std::size_t at, std::size_t length)
{
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < length; ++i) {
        value |= std::uint64_t(bytes.at(at + i)) << (8 * i);
    }
    return value;
}

inline std::uint16_t status(Instrument &device)
{
    const Bytes word = ask(device, 0x20, 0, 2);
    return word.size() == 2 ? std::uint16_t(number(word, 0, 2)) : std::uint16_t(0);
}

/// Reads the bulk pipe in transfers of `transfer` bytes until one ends short, nothing comes, or `limit` is reached.
inline Bytes readBulk(Instrument &device, std::size_t limit, std::size_t transfer = 4096, std::uint8_t endpoint = 0x86)
{
    Bytes all;
    while (all.size() < limit) {
        Bytes buffer(transfer);
        std::size_t got = 0;
        bool ends = false;
        while (!ends) {
            const Answer answer = device.bulkIn(endpoint, std::span(buffer).subspan(got));
            if (answer.outcome != Outcome::Done) {
                all.insert(all.end(), buffer.begin(), buffer.begin() + std::ptrdiff_t(got));
                return all;
            }
            got += answer.bytes;
            ends = answer.ends;
        }
        all.insert(all.end(), buffer.begin(), buffer.begin() + std::ptrdiff_t(got));
        if (got < transfer) {
            break;
        }
    }
    return all;
}

/// The smallest firmware of the HEX kind: three bytes at 0, between a stop and a start of the CPU.
inline bool sendHexFirmware(Instrument &device)
{
    return sent(device, 0xA0, 0xE600, {1}) && sent(device, 0xA0, 0x0000, {0x02, 0x00, 0x03}) &&
           sent(device, 0xA0, 0xE600, {0});
}

/// The smallest firmware of the image kind.
inline bool sendImageFirmware(Instrument &device)
{
    return ask(device, 0xA0, 0, 1).size() == 1 && sent(device, 0xA0, 0x0000, {1, 2, 3, 4}, 0x4000) &&
           sent(device, 0xA0, 0x0000, {}, 0x4000);
}

/// An image of `size` bytes, announced, sent in blocks and closed. @return the status byte, -1 for a failed request
inline int uploadFpga(Instrument &device, std::size_t size)
{
    Bytes buffer((size + 2047) / 4096 * 4096 + 4096);
    for (std::size_t i = 0; i < size; ++i) {
        buffer[i] = std::uint8_t(i * 7 + 1);
    }
    if (!sent(device, 0x50, 0, little(size, 4))) {
        return -1;
    }
    for (std::size_t at = 0; at < buffer.size(); at += 4096) {
        const Answer answer = device.bulkOut(0x02, std::span(buffer).subspan(at, 4096));
        if (answer.outcome != Outcome::Done || answer.bytes != 4096) {
            return -1;
        }
    }
    const Bytes byte = ask(device, 0x50, 0, 1);
    return byte.size() == 1 ? byte[0] : -1;
}

/// Plugs in a device and brings it up to the point where it takes captures.
inline bool bringUp(Instrument &device)
{
    device.attach();
    if (!device.firmwareRuns()) {
        const bool image = device.deviceDescriptor()[10] == 0xA4;
        if (!(image ? sendImageFirmware(device) : sendHexFirmware(device))) {
            return false;
        }
        device.tick(1000 * millisecond);
    }
    const bool loaded = device.model().code == 1 || uploadFpga(device, 10000) == 0;
    return loaded && sent(device, 0x10, 1) && (status(device) & 3) == 1;
}

struct Triggers {
    std::uint32_t enabled = 0xFFFF;
    std::uint32_t takesPart = 0;
    std::uint32_t level = 0;
    std::uint32_t polarity = 0;
};

struct Samples {
    std::uint64_t depth = 1000;
    std::uint64_t preTrigger = 0;
    std::uint32_t preMemory = 0;
    std::uint16_t divider = 1;
};

inline bool configure(Instrument &device, const Samples &s, const Triggers &t = {})
{
    return sent(device, 0x20, 0x30,
                little(t.enabled, 4) + little(t.takesPart, 4) + little(t.level, 4) + little(t.polarity, 4)) &&
           sent(device, 0x20, 0x20,
                little(s.depth, 5) + little(s.preTrigger, 5) + little(s.preMemory, 4) + little(s.divider, 2));
}

inline bool run(Instrument &device, bool on = true)
{
    return sent(device, 0x20, 0, {std::uint8_t(on ? 3 : 0)});
}

struct Info {
    std::uint32_t recordCount = 0;
    std::uint32_t triggerRecord = 0;
    std::uint32_t endAddress = 0;
};

inline Info captureInfo(Instrument &device)
{
    const Bytes bytes = ask(device, 0x20, 0x10, 12);
    if (bytes.size() != 12) {
        return {};
    }
    return {std::uint32_t(number(bytes, 0, 4)), std::uint32_t(number(bytes, 4, 4)), std::uint32_t(number(bytes, 8, 4))};
}

/// Reads a window of the memory.
inline Bytes readWindow(Instrument &device, std::uint32_t address, std::uint32_t size)
{
    if (!sent(device, 0x38, 0) || !sent(device, 0x20, 0x10, little(address, 4) + little(size, 4)) ||
        !sent(device, 0x30, 0)) {
        return {};
    }
    return readBulk(device, size);
}

/// All whole groups of the last capture, as a host fetches them.
inline Bytes readBack(Instrument &device)
{
    const Info info = captureInfo(device);
    const std::uint32_t size = device.model().channels == 32 ? info.recordCount / 6 * 32 : info.recordCount / 5 * 16;
    std::int64_t start = std::int64_t(info.endAddress) - size;
    start += start < 0 ? device.memory().size() : 0;
    return readWindow(device, std::uint32_t(start), size);
}

/// A capture as one word a sample, and the position behind the record `triggerRecord`.
struct Decoded {
    std::vector<std::uint32_t> samples;
    std::int64_t trigger = -1;
    bool sound = true; ///< counts above 0, check bytes that fit
};

inline Decoded decode16(const Bytes &bytes, std::uint32_t triggerRecord = 0)
{
    Decoded out;
    std::uint32_t records = 0;
    for (std::size_t group = 0; group + 16 <= bytes.size(); group += 16) {
        for (std::size_t r = 0; r < 5; ++r) {
            const std::size_t at = group + r * 3;
            out.sound = out.sound && bytes[at + 2] != 0;
            out.samples.insert(out.samples.end(), bytes[at + 2], std::uint32_t(number(bytes, at, 2)));
            if (++records == triggerRecord) {
                out.trigger = std::int64_t(out.samples.size());
            }
        }
    }
    return out;
}

inline Decoded decode32(const Bytes &bytes, std::uint32_t triggerRecord = 0)
{
    Decoded out;
    std::uint32_t records = 0;
    for (std::size_t group = 0; group + 32 <= bytes.size(); group += 32) {
        out.sound = out.sound && (bytes[group + 30] ^ bytes[group + 31]) == 0xFF;
        for (std::size_t r = 0; r < 6; ++r) {
            const std::size_t at = group + r * 5;
            out.sound = out.sound && bytes[at + 4] != 0;
            out.samples.insert(out.samples.end(), bytes[at + 4], std::uint32_t(number(bytes, at, 4)));
            if (++records == triggerRecord) {
                out.trigger = std::int64_t(out.samples.size());
            }
        }
    }
    return out;
}

/// A sliced stream as one word a sample.
inline std::vector<std::uint32_t> decodeSliced(const Bytes &bytes, const std::vector<int> &channels)
{
    std::vector<std::uint32_t> samples;
    const std::size_t group = 2 * channels.size();
    for (std::size_t at = 0; at + group <= bytes.size(); at += group) {
        for (std::size_t k = 0; k < 16; ++k) {
            std::uint32_t word = 0;
            for (std::size_t c = 0; c < channels.size(); ++c) {
                const auto bit = std::uint32_t(number(bytes, at + 2 * c, 2) >> k & 1);
                word |= bit << channels[c];
            }
            samples.push_back(word);
        }
    }
    return samples;
}

/// Samples `from` to `from + count` of a signal, one by one.
inline std::vector<std::uint32_t> samplesOf(emulator::LogicSignal &signal, std::int64_t from, std::size_t count,
                                            std::uint32_t mask = 0xFFFF)
{
    std::vector<std::uint32_t> samples;
    for (std::size_t i = 0; i < count; ++i) {
        samples.push_back(signal.at(from + std::int64_t(i), mask).levels);
    }
    return samples;
}

} // namespace bench
