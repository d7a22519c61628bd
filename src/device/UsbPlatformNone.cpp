#include "device/UsbPlatformNone.h"

namespace {
constexpr UsbResult gone{UsbError::Gone};
} // namespace

UsbList UsbPlatformNone::openList()
{
    return UsbList::None;
}

bool UsbPlatformNone::listHas(UsbList, int)
{
    return false;
}

UsbResult UsbPlatformNone::interfaceDetail(UsbList, int, std::span<char>, std::size_t &needed)
{
    needed = 0;
    return {UsbError::NotFound};
}

void UsbPlatformNone::freeList(UsbList) {}

UsbResult UsbPlatformNone::openFile(const char *, UsbFile &file)
{
    file = UsbFile::None;
    return {UsbError::NotFound};
}

void UsbPlatformNone::closeFile(UsbFile) {}

UsbResult UsbPlatformNone::initInterface(UsbFile, UsbInterface &iface)
{
    iface = UsbInterface::None;
    return gone;
}

void UsbPlatformNone::freeInterface(UsbInterface) {}

UsbResult UsbPlatformNone::deviceDescriptor(UsbInterface, std::span<std::uint8_t>, std::uint32_t &moved)
{
    moved = 0;
    return gone;
}

UsbResult UsbPlatformNone::interfaceSettings(UsbInterface, int &count)
{
    count = 0;
    return gone;
}

UsbResult UsbPlatformNone::queryPipe(UsbInterface, int, UsbPipe &)
{
    return gone;
}

UsbResult UsbPlatformNone::selectSetting(UsbInterface)
{
    return gone;
}

UsbResult UsbPlatformNone::setPipePolicy(UsbInterface, std::uint8_t, UsbPolicy, std::uint32_t)
{
    return gone;
}

UsbResult UsbPlatformNone::controlTransfer(UsbInterface, const UsbSetup &, std::uint8_t *, std::uint32_t &moved)
{
    moved = 0;
    return gone;
}

UsbResult UsbPlatformNone::writePipe(UsbInterface, std::uint8_t, std::span<const std::uint8_t>, std::uint32_t &moved)
{
    moved = 0;
    return gone;
}

std::unique_ptr<UsbReadSlot> UsbPlatformNone::makeReadSlot()
{
    return std::make_unique<UsbReadSlot>();
}

UsbResult UsbPlatformNone::queueRead(UsbInterface, std::uint8_t, std::uint8_t *, std::uint32_t, UsbReadSlot &)
{
    return gone;
}

bool UsbPlatformNone::waitRead(UsbReadSlot &, int)
{
    return false;
}

UsbResult UsbPlatformNone::readResult(UsbInterface, UsbReadSlot &, std::uint32_t &moved)
{
    moved = 0;
    return {UsbError::NotFound};
}

UsbResult UsbPlatformNone::abortPipe(UsbInterface, std::uint8_t)
{
    return gone;
}

UsbResult UsbPlatformNone::flushPipe(UsbInterface, std::uint8_t)
{
    return gone;
}

UsbResult UsbPlatformNone::resetPipe(UsbInterface, std::uint8_t)
{
    return gone;
}

bool UsbPlatformNone::registerHotplug(std::uintptr_t, std::function<void()>)
{
    return false;
}
