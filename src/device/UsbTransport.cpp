#include "device/UsbTransport.h"

#include "device/UsbLink.h"
#include "device/UsbReadRun.h"
#include "settings/HostSystem.h"
#include "settings/PostedCall.h"

#include <utility>

namespace {

constexpr std::size_t maxData = 0xFFFF; ///< bytes of a control transfer

} // namespace

UsbTransport::UsbTransport(std::unique_ptr<UsbPlatform> platform, QObject *parent)
    : QObject(parent), m_platform(std::move(platform)), m_slots{m_platform->makeReadSlot(), m_platform->makeReadSlot()}
{}

UsbTransport::~UsbTransport()
{
    close();
}

bool UsbTransport::registerHotplug(std::uintptr_t window)
{
    return m_platform->registerHotplug(window, [this] { postCall(this, [this] { emit sigDevChange(); }); });
}

int UsbTransport::refresh()
{
    const UsbChange change = takeLook(look(openPath()));
    if (change.leaving) {
        change.leaving->cut();
    }
    return change.change;
}

std::optional<std::string> UsbTransport::openPath() const
{
    return isOpen() ? std::optional(m_path) : std::nullopt;
}

UsbLook UsbTransport::look(const std::optional<std::string> &openPath) const
{
    return lookAtUsb(*m_platform, openPath);
}

UsbChange UsbTransport::takeLook(UsbLook look)
{
    if (!look.opened) {
        return look.isGone && isOpen() ? UsbChange{-1, detach()} : UsbChange{};
    }
    if (isOpen()) {
        return {0, std::move(look.opened)};
    }
    m_path = look.path;
    vendorId = look.profile.vendorId;
    productId = look.profile.productId;
    bcdUsb = look.profile.bcdUsb;
    pipeIn = look.opened->pipeIn;
    pipeOut = look.opened->pipeOut;
    if (look.profile.pipeReady) {
        chunkSize = look.profile.chunkSize;
    }
    pipeReady = look.profile.pipeReady ? 1 : 0;
    {
        const std::lock_guard lock(m_mutex);
        m_link = std::move(look.opened);
    }
    deviceOpen.store(1, std::memory_order_release);
    return {1, nullptr};
}

std::shared_ptr<UsbLink> UsbTransport::detach()
{
    deviceOpen.store(0, std::memory_order_release);
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_link, nullptr);
}

void UsbTransport::close()
{
    if (const std::shared_ptr<UsbLink> closing = detach()) {
        closing->cut();
    }
}

void UsbTransport::setCallback(InterfaceDevCallback *receiver)
{
    callback.store(receiver, std::memory_order_release);
}

void UsbTransport::tuneChunkSize(std::int64_t bitsPerSecond)
{
    if (bitsPerSecond > 0) {
        chunkSize.store(usbChunkSize(bitsPerSecond), std::memory_order_relaxed);
    }
}

std::shared_ptr<UsbLink> UsbTransport::link() const
{
    const std::lock_guard lock(m_mutex);
    return m_link;
}

UsbTransport::Slots UsbTransport::takeSlots()
{
    const std::lock_guard lock(m_mutex);
    if (!m_slots[0] || !m_slots[1]) {
        return {};
    }
    return std::exchange(m_slots, Slots{});
}

int UsbTransport::readStream(std::int32_t limit, InterfaceDevCallback &receiver)
{
    const std::shared_ptr<UsbLink> held = link();
    if (!held || callback.load(std::memory_order_acquire) != &receiver) {
        return runNotOpen;
    }
    Slots taken = takeSlots();
    if (!taken[0]) {
        return runNoMemory;
    }
    held->startRun();
    const int result = UsbReadRun(*held, taken, receiver, chunkSize, limit).run();
    const std::lock_guard lock(m_mutex);
    m_slots = std::move(taken);
    return result;
}

void UsbTransport::breakOffStream()
{
    if (const std::shared_ptr<UsbLink> held = link()) {
        held->breakOff();
    }
}

int UsbTransport::controlOut(std::uint8_t request, std::uint16_t value, std::uint16_t index,
                             std::span<const std::uint8_t> data)
{
    if (data.size() > maxData) {
        return transferFailed;
    }
    // The platform takes one kind of pointer for both directions; for this one it only reads.
    return control({0x40, request, value, index, std::uint16_t(data.size())}, const_cast<std::uint8_t *>(data.data()));
}

int UsbTransport::controlIn(std::uint8_t request, std::uint16_t value, std::uint16_t index,
                            std::span<std::uint8_t> data)
{
    if (data.size() > maxData) {
        return transferFailed;
    }
    return control({0xC0, request, value, index, std::uint16_t(data.size())}, data.data());
}

int UsbTransport::control(const UsbSetup &setup, std::uint8_t *data)
{
    const std::shared_ptr<UsbLink> held = link();
    if (!held) {
        return notOpen;
    }
    std::uint32_t moved = 0;
    const UsbResult result = m_platform->controlTransfer(held->iface, setup, data, moved);
    if (result.error == UsbError::TimedOut) {
        timeOuts.fetch_add(1, std::memory_order_acq_rel);
    }
    return result.ok() && moved == setup.length ? done : transferFailed;
}

int UsbTransport::bulkWrite(std::span<const std::uint8_t> data, std::uint32_t &moved)
{
    moved = 0;
    const std::shared_ptr<UsbLink> held = link();
    if (!held) {
        return notOpen;
    }
    return m_platform->writePipe(held->iface, held->pipeOut, data, moved).ok() ? done : transferFailed;
}

QString UsbTransport::osName()
{
    return ::osName();
}

QString UsbTransport::osTag()
{
    return ::osTag();
}

std::int32_t usbChunkSize(std::int64_t bitsPerSecond)
{
    constexpr double longest = 0.2;   // s
    constexpr double shortest = 0.05; // s
    constexpr std::int32_t least = 2048;
    constexpr std::int32_t most = 1 << 30;
    const std::int64_t bytes = bitsPerSecond / 8; // per second; at 0 every size takes for ever
    const double rate = double(bytes);
    std::int32_t size = 0x100000;
    while (size / rate > longest) {
        size /= 2;
        if (size <= least) {
            return least;
        }
    }
    while (size / rate < shortest && size < most) {
        size *= 2;
    }
    return size;
}
