#pragma once

#include "Instrument.h"

#include <array>
#include <optional>

/// The messages of USB/IP, protocol version 1.1.1 (the kernel's Documentation/usb/usbip_protocol.rst): numbers in
/// network order, two opening operations that are answered in full, then headers of 48 bytes with data behind them.
namespace emulator::usbip {

constexpr std::uint16_t version = 0x0111;

enum class Operation : std::uint16_t { ListDevices = 0x8005, Import = 0x8003 };
enum class OperationStatus : std::uint32_t { Good = 0, Busy = 2, NoDevice = 4 };
enum class Command : std::uint32_t { Submit = 1, Unlink = 2, SubmitAnswer = 3, UnlinkAnswer = 4 };

constexpr std::size_t operationSize = 8; ///< head of an operation
constexpr std::size_t busIdSize = 32;
constexpr std::size_t headSize = 48;
constexpr const char *busId = "1-1";

struct OperationHead {
    std::uint16_t version;
    std::uint16_t code;
};
[[nodiscard]] OperationHead parseOperation(std::span<const std::uint8_t, operationSize> head);
/// The answer to a list request: at most the one device.
[[nodiscard]] Bytes deviceList(const Instrument &device);
/// The answer to an import: with the device's description only if it is granted.
[[nodiscard]] Bytes importAnswer(const Instrument &device, OperationStatus status);

/// A command of the host.
struct Head {
    std::uint32_t command = 0;
    std::uint32_t sequence = 0;
    bool toHost = false;
    std::uint32_t endpoint = 0;
    std::uint32_t length = 0;  ///< submit: bytes of the transfer
    std::uint32_t unlinks = 0; ///< unlink: the sequence number of the transfer to take back
    std::array<std::uint8_t, 8> setup{};
};
[[nodiscard]] Head parseHead(std::span<const std::uint8_t, headSize> head);

using HeadBytes = std::array<std::uint8_t, headSize>;
/// @param status  0 or a negative Linux error number
[[nodiscard]] HeadBytes submitAnswer(std::uint32_t sequence, std::int32_t status, std::uint32_t actual);
[[nodiscard]] HeadBytes unlinkAnswer(std::uint32_t sequence, std::int32_t status);

/// The Linux error number by which a transfer's outcome is told.
[[nodiscard]] std::int32_t statusOf(Outcome outcome);
constexpr std::int32_t takenBack = -104; ///< ECONNRESET

} // namespace emulator::usbip
