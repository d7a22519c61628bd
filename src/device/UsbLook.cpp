#include "device/UsbLook.h"

#include "device/UsbIds.h"
#include "device/UsbLink.h"
#include "device/UsbReadRun.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr std::size_t pathRoom = 260; ///< bytes, with the final 0
constexpr int maxInterfaces = 100;
constexpr std::uint32_t descriptorSize = 18;
constexpr std::uint8_t pipeInSmall = 0x82; ///< of the product that takes no bulk data
constexpr std::int32_t chunkHighSpeed = 0x100000;
constexpr std::int32_t chunkFullSpeed = 102400;
constexpr int packetHighSpeed = 512; ///< bytes, the least of a bulk pipe at high speed
constexpr std::uint16_t levelFullSpeed = 0x0110;

constexpr std::uint32_t writeTimeoutMs = 3000;
constexpr std::uint32_t controlTimeoutMs = 2000;

/// A list that is freed on every way out.
class ListHold {
public:
    explicit ListHold(UsbPlatform &platform) : m_platform(platform), list(platform.openList()) {}
    ~ListHold() { m_platform.freeList(list); }
    ListHold(const ListHold &) = delete;
    ListHold &operator=(const ListHold &) = delete;

private:
    UsbPlatform &m_platform;

public:
    const UsbList list;
};

int countInterfaces(UsbPlatform &platform, UsbList list)
{
    int count = 0;
    while (list != UsbList::None && count < maxInterfaces && platform.listHas(list, count)) {
        ++count;
    }
    return count;
}

std::uint16_t littleEndian(const std::uint8_t *bytes)
{
    return std::uint16_t(bytes[0] | bytes[1] << 8);
}

bool hasPath(UsbPlatform &platform, UsbList list, int count, const std::string &wanted)
{
    std::array<char, pathRoom> path{};
    for (int index = 0; index < count; ++index) {
        if (usbFetchPath(platform, list, index, path) == usbPathFits && wanted == path.data()) {
            return true;
        }
    }
    return false;
}

/// @return null when it cannot be opened
std::shared_ptr<UsbLink> openLink(UsbPlatform &platform, const char *path)
{
    UsbFile file = UsbFile::None;
    if (!platform.openFile(path, file).ok()) {
        return nullptr;
    }
    UsbInterface iface = UsbInterface::None;
    if (!platform.initInterface(file, iface).ok()) {
        platform.closeFile(file);
        return nullptr;
    }
    return std::make_shared<UsbLink>(platform, file, iface);
}

/// Finds the end point `pipeIn`. @return its packet size in bytes, 0 without one, -1 when the device does not tell
int packetSize(const UsbLink &link)
{
    int count = 0;
    if (!link.platform.interfaceSettings(link.iface, count).ok()) {
        return -1;
    }
    for (int index = 0; index < count; ++index) {
        UsbPipe pipe;
        if (link.platform.queryPipe(link.iface, index, pipe).ok() && pipe.id == link.pipeIn) {
            return pipe.maxPacket;
        }
    }
    return 0;
}

void setUpPipes(const UsbLink &link)
{
    link.platform.selectSetting(link.iface);
    const auto set = [&link](std::uint8_t pipe, UsbPolicy policy, std::uint32_t value) {
        link.platform.setPipePolicy(link.iface, pipe, policy, value);
    };
    set(link.pipeOut, UsbPolicy::TransferTimeout, writeTimeoutMs);
    set(link.pipeIn, UsbPolicy::TransferTimeout, UsbReadRun::silenceMs);
    set(link.pipeIn, UsbPolicy::AllowPartialReads, 1);
    set(link.pipeIn, UsbPolicy::AutoFlush, 0);
    set(link.pipeIn, UsbPolicy::RawIo, 1);
}

/// Reads the identity of a device that has just been opened and sets up its pipes.
/// @return false when it cannot be used
bool readProfile(UsbLink &link, UsbProfile &profile)
{
    std::array<std::uint8_t, descriptorSize> descriptor{};
    std::uint32_t moved = 0;
    if (!link.platform.deviceDescriptor(link.iface, descriptor, moved).ok() || moved != descriptorSize) {
        return false;
    }
    // USB 2.0, table 9-8: bcdUSB at 2, idVendor at 8, idProduct at 10.
    profile.bcdUsb = littleEndian(&descriptor[2]);
    profile.vendorId = littleEndian(&descriptor[8]);
    profile.productId = littleEndian(&descriptor[10]);
    link.pipeIn = usbDataPipe(profile.productId);
    link.pipeOut = link.pipeIn == pipeInSmall ? 0x00 : 0x02;

    const int packet = packetSize(link);
    if (packet < 0) {
        return false;
    }
    profile.pipeReady = packet > 0;
    if (profile.pipeReady) {
        setUpPipes(link);
        profile.chunkSize = packet < packetHighSpeed ? chunkFullSpeed : chunkHighSpeed;
        if (packet < packetHighSpeed) {
            profile.bcdUsb = std::min(profile.bcdUsb, levelFullSpeed);
        }
    }
    for (const int pipe : {0x00, 0x80}) {
        link.platform.setPipePolicy(link.iface, std::uint8_t(pipe), UsbPolicy::TransferTimeout, controlTimeoutMs);
    }
    return true;
}

UsbLook openFirst(UsbPlatform &platform, UsbList list, int count)
{
    std::array<char, pathRoom> path{};
    for (int index = 0; index < count; ++index) {
        if (usbFetchPath(platform, list, index, path) != usbPathFits) {
            continue;
        }
        UsbLook look;
        look.opened = openLink(platform, path.data());
        if (look.opened && readProfile(*look.opened, look.profile)) {
            look.path = path.data();
            return look;
        }
    }
    return {};
}

} // namespace

UsbLook lookAtUsb(UsbPlatform &platform, const std::optional<std::string> &openPath)
{
    const ListHold hold(platform);
    const int count = countInterfaces(platform, hold.list);
    if (!openPath) {
        return openFirst(platform, hold.list, count);
    }
    UsbLook look;
    look.isGone = !hasPath(platform, hold.list, count, *openPath);
    return look;
}

std::uint32_t usbFetchPath(UsbPlatform &platform, UsbList list, int index, std::span<char> room)
{
    constexpr std::size_t longest = 0x10000; // bytes; no system has a longer path
    const auto failed = [](const UsbResult &result) { return 0x80070000U | (result.system & 0xFFFFU); };

    std::size_t needed = 0;
    UsbResult result = platform.interfaceDetail(list, index, {}, needed);
    if (!result.ok() && result.error != UsbError::TooSmall) {
        return failed(result);
    }
    const std::unique_ptr<char[]> detail(needed <= longest ? new (std::nothrow) char[needed + 1]() : nullptr);
    if (!detail) {
        return usbPathNoMemory;
    }
    result = platform.interfaceDetail(list, index, {detail.get(), needed}, needed);
    if (!result.ok()) {
        return failed(result);
    }
    const std::size_t length = std::strlen(detail.get());
    const std::size_t kept = std::min(length, room.size() - 1);
    std::memcpy(room.data(), detail.get(), kept);
    room[kept] = '\0';
    return kept == length ? usbPathFits : usbPathCut;
}
