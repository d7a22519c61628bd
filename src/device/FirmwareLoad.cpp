#include "device/FirmwareLoad.h"

#include "device/DevRequests.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr int bulkWriteFailed = 3;

Bytes bytesOf(const QByteArray &bytes)
{
    return {reinterpret_cast<const std::uint8_t *>(bytes.constData()), std::size_t(bytes.size())};
}

std::uint32_t littleEndian(Bytes bytes, std::size_t at)
{
    return std::uint32_t(bytes[at]) | std::uint32_t(bytes[at + 1]) << 8 | std::uint32_t(bytes[at + 2]) << 16 |
           std::uint32_t(bytes[at + 3]) << 24;
}

int writeRam(BringUpRun &run, std::uint32_t address, Bytes data)
{
    return run.controlOut(devRequest::ram, std::uint16_t(address & 0xFFFF), std::uint16_t(address >> 16), data);
}

// ---- Intel HEX ------------------------------------------------------------------------------------------------------

/// The register whose bit 0 holds the controller's CPU.
constexpr std::uint32_t cpuControl = 0xE600;

int holdCpu(BringUpRun &run, bool hold)
{
    const std::array<std::uint8_t, 1> value{std::uint8_t(hold ? 1 : 0)};
    return writeRam(run, cpuControl, value);
}

/// `count` upper-case digits as a number; nothing when the text ends before, or one of them is none.
std::optional<unsigned> hexNumber(Bytes text, std::size_t at, std::size_t count)
{
    if (at + count > text.size()) {
        return std::nullopt;
    }
    unsigned value = 0;
    for (const std::uint8_t byte : text.subspan(at, count)) {
        if (byte >= '0' && byte <= '9') {
            value = value * 16 + (byte - '0');
        } else if (byte >= 'A' && byte <= 'F') {
            value = value * 16 + (byte - 'A' + 10);
        } else {
            return std::nullopt;
        }
    }
    return value;
}

// Places in a record, in digits from its colon.
constexpr std::size_t lengthAt = 1;
constexpr std::size_t addressAt = 3;
constexpr std::size_t typeAt = 7;
constexpr std::size_t dataAt = 9;
constexpr std::size_t checksumDigits = 2;

/// Sends the record whose colon is at `at`, and moves `at` on: behind a record that was sent, else by one.
int sendRecord(BringUpRun &run, Bytes text, std::size_t &at)
{
    const std::optional<unsigned> length = hexNumber(text, at + lengthAt, 2);
    const std::optional<unsigned> address = hexNumber(text, at + addressAt, 4);
    const std::optional<unsigned> type = hexNumber(text, at + typeAt, 2);
    if (!length || !address || !type) {
        return BringUpRun::transferFailed;
    }
    if (*type != 0 || *length == 0) {
        ++at;
        return BringUpRun::done;
    }
    std::vector<std::uint8_t> data;
    for (std::size_t i = 0; i < *length; ++i) {
        const std::optional<unsigned> byte = hexNumber(text, at + dataAt + 2 * i, 2);
        if (!byte) {
            return BringUpRun::transferFailed;
        }
        data.push_back(std::uint8_t(*byte));
    }
    at += dataAt + 2 * data.size() + checksumDigits;
    return at <= text.size() ? writeRam(run, *address, data) : BringUpRun::transferFailed;
}

// ---- images ---------------------------------------------------------------------------------------------------------

constexpr std::size_t imageHead = 4;  ///< bytes before the first section
constexpr std::size_t imageTail = 12; ///< bytes behind the last
constexpr std::size_t sectionHead = 8;
constexpr std::size_t entryFromEnd = 8;

int sendSection(BringUpRun &run, std::uint32_t address, Bytes data)
{
    constexpr std::size_t piece = 1024;
    while (data.size() > piece) {
        if (const int error = writeRam(run, address, data.first(piece)); error != 0) {
            return error;
        }
        address += piece;
        data = data.subspan(piece);
    }
    return writeRam(run, address, data);
}

// ---- FPGA -----------------------------------------------------------------------------------------------------------

constexpr std::size_t fpgaBlock = 4096;
constexpr int modelWithoutFpga = 1;
constexpr int uploading = 4; // the state that is reported

/// Writes one block whole, in as many writes as the device takes for it.
int writeBlock(BringUpRun &run, Bytes block)
{
    while (!block.empty()) {
        std::uint32_t moved = 0;
        const int error = run.bulkWrite(block, moved);
        if (error == BringUpRun::notOpen) {
            return error;
        }
        if (error != 0 || moved == 0) {
            return bulkWriteFailed;
        }
        block = block.subspan(std::min<std::size_t>(moved, block.size()));
    }
    return 0;
}

int writeImage(BringUpRun &run, Bytes buffer)
{
    constexpr int step = 10; // percent
    int reported = 0;
    for (std::size_t sent = 0; sent < buffer.size();) {
        if (const int error = writeBlock(run, buffer.subspan(sent, fpgaBlock)); error != 0) {
            return error;
        }
        sent += fpgaBlock;
        const int percent = int(sent * 100 / buffer.size());
        if (percent >= reported + step) {
            run.report(uploading, 0, percent);
            reported = percent;
        }
    }
    return 0;
}

int announceImage(BringUpRun &run, std::size_t size)
{
    std::array<std::uint8_t, 4> wire{};
    for (std::size_t i = 0; i < wire.size(); ++i) {
        wire[i] = std::uint8_t(size >> (8 * i));
    }
    return run.controlOut(devRequest::fpgaLoad, 0, 0, wire);
}

} // namespace

int sendFirmware(BringUpRun &run, const QByteArray &bytes)
{
    constexpr int leastImage = 65536;
    return bytes.size() < leastImage ? sendHexFirmware(run, bytes) : sendImageFirmware(run, bytes);
}

int sendHexFirmware(BringUpRun &run, const QByteArray &bytes)
{
    const Bytes text = bytesOf(bytes);
    if (const int error = holdCpu(run, true); error != 0) {
        return error;
    }
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] != ':') {
            ++at;
        } else if (const int error = sendRecord(run, text, at); error != 0) {
            return error;
        }
    }
    return holdCpu(run, false);
}

int sendImageFirmware(BringUpRun &run, const QByteArray &bytes)
{
    const Bytes image = bytesOf(bytes);
    std::array<std::uint8_t, 1> unused{};
    if (const int error = run.controlIn(devRequest::ram, 0, 0, unused); error != 0) {
        return error;
    }
    if (image.size() < imageHead + imageTail) {
        return BringUpRun::transferFailed;
    }
    const std::size_t end = image.size() - imageTail;
    for (std::size_t at = imageHead; at < end;) {
        const std::uint64_t size = std::uint64_t(littleEndian(image, at)) * 4;
        const std::uint32_t address = littleEndian(image, at + 4);
        at += sectionHead;
        if (size == 0 || at > end || size > end - at) {
            return BringUpRun::transferFailed;
        }
        if (const int error = sendSection(run, address, image.subspan(at, std::size_t(size))); error != 0) {
            return error;
        }
        at += std::size_t(size);
    }
    return writeRam(run, littleEndian(image, image.size() - entryFromEnd), {});
}

int uploadFpga(BringUpRun &run, const devIdentity::Model &model)
{
    constexpr int settlingMs = 100;
    if (model.code == modelWithoutFpga) {
        run.pause(settlingMs);
        return 0;
    }
    QFile file(devIdentity::fpgaImageOf(model));
    if (!file.exists() || !file.open(QIODevice::ReadOnly)) {
        return 1;
    }
    QByteArray image = file.readAll();
    const auto size = std::size_t(image.size());
    // Never less than half a block of zeros behind the image, so that its end does not hang on a short packet.
    const std::size_t wireSize = ((size + 2047) / fpgaBlock + 1) * fpgaBlock;
    image.append(int(wireSize - size), '\0');
    if (const int error = announceImage(run, size); error != 0) {
        return error;
    }
    if (const int error = writeImage(run, bytesOf(image)); error != 0) {
        return error;
    }
    std::array<std::uint8_t, 1> status{0xFF};
    if (const int error = run.controlIn(devRequest::fpgaLoad, 0, 0, status); error != 0) {
        return error;
    }
    return status[0];
}
