#pragma once

#include "device/UsbPlatform.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

class UsbLink;

/// What is known of a device that has just been opened.
struct UsbProfile {
    std::uint16_t vendorId = 0;
    std::uint16_t productId = 0;
    std::uint16_t bcdUsb = 0;          ///< the link level in BCD; at most 0x0110 for a device at full speed
    bool pipeReady = false;            ///< it runs its firmware: the bulk pipe is there
    std::int32_t chunkSize = 0x100000; ///< bytes of a bulk read; means something when `pipeReady`
};

/// What one look at the bus has come to: a value, which the thread that looks hands over whole.
struct UsbLook {
    bool isGone = false;             ///< the device that was asked for is no longer among those present
    std::shared_ptr<UsbLink> opened; ///< null when none was opened
    std::string path;                ///< of `opened`
    UsbProfile profile;              ///< of `opened`
};

/// Looks at the devices present. With a path: is that one still among them? Without: opens the first that can be used.
/// Blocks for as long as the system and the devices like: some control transfers, and seconds for a device that is
/// silent or that the system is not ready with. Any thread, but one look on a platform at a time.
[[nodiscard]] UsbLook lookAtUsb(UsbPlatform &platform, const std::optional<std::string> &openPath);

/// A path fetched from a list.
enum : std::uint32_t {
    usbPathFits = 0,
    usbPathNoMemory = 0x8007000E, ///< no memory for it
    usbPathCut = 0x8007007A,      ///< it was cut to fit
};
/// Fetches one path of a list, with a final 0.
/// @return usbPathFits, usbPathNoMemory, usbPathCut (then `room` holds its beginning), or 0x80070000 and the low 16
///         bits of the system's code. `room` is not touched in the other cases. Any thread, as the list.
[[nodiscard]] std::uint32_t usbFetchPath(UsbPlatform &platform, UsbList list, int index, std::span<char> room);
