#include "device/UsbTransport.h"

#include "device/UsbIds.h"
#include "device/UsbLink.h"
#include "device/UsbReadRun.h"
#include "settings/HostSystem.h"
#include "settings/PostedCall.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr int maxInterfaces = 100;
constexpr std::uint32_t descriptorSize = 18;
constexpr std::uint8_t pipeInSmall = 0x82; ///< of the product that takes no bulk data
constexpr std::int32_t chunkHighSpeed = 0x100000;
constexpr std::int32_t chunkFullSpeed = 102400;
constexpr int packetHighSpeed = 512; ///< bytes, the least of a bulk pipe at high speed
constexpr std::uint16_t levelFullSpeed = 0x0110;

constexpr std::size_t maxData = 0xFFFF; ///< bytes of a control transfer

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
    const ListHold hold(*m_platform);
    const int count = countInterfaces(*m_platform, hold.list);
    if (!isOpen()) {
        return openFirst(hold.list, count) ? 1 : 0;
    }
    if (hasOpenPath(hold.list, count)) {
        return 0;
    }
    close();
    return -1;
}

void UsbTransport::close()
{
    deviceOpen.store(0, std::memory_order_release);
    std::shared_ptr<UsbLink> closing;
    {
        const std::lock_guard lock(m_mutex);
        closing.swap(m_link);
    }
    if (closing) {
        closing->cut();
    }
}

bool UsbTransport::openFirst(UsbList list, int count)
{
    for (int index = 0; index < count; ++index) {
        if (usbFetchPath(*m_platform, list, index, m_path) != usbPathFits) {
            continue;
        }
        std::shared_ptr<UsbLink> opened = openLink();
        if (!opened || !readProfile(*opened)) {
            continue;
        }
        {
            const std::lock_guard lock(m_mutex);
            m_link = std::move(opened);
        }
        deviceOpen.store(1, std::memory_order_release);
        return true;
    }
    return false;
}

std::shared_ptr<UsbLink> UsbTransport::openLink()
{
    UsbFile file = UsbFile::None;
    if (!m_platform->openFile(m_path.data(), file).ok()) {
        return nullptr;
    }
    UsbInterface iface = UsbInterface::None;
    if (!m_platform->initInterface(file, iface).ok()) {
        m_platform->closeFile(file);
        return nullptr;
    }
    return std::make_shared<UsbLink>(*m_platform, file, iface);
}

bool UsbTransport::hasOpenPath(UsbList list, int count) const
{
    std::array<char, pathRoom> path{};
    for (int index = 0; index < count; ++index) {
        if (usbFetchPath(*m_platform, list, index, path) == usbPathFits &&
            std::strcmp(path.data(), m_path.data()) == 0) {
            return true;
        }
    }
    return false;
}

bool UsbTransport::readProfile(UsbLink &link)
{
    std::array<std::uint8_t, descriptorSize> descriptor{};
    std::uint32_t moved = 0;
    if (!m_platform->deviceDescriptor(link.iface, descriptor, moved).ok() || moved != descriptorSize) {
        return false;
    }
    // USB 2.0, table 9-8: bcdUSB at 2, idVendor at 8, idProduct at 10.
    bcdUsb = littleEndian(&descriptor[2]);
    vendorId = littleEndian(&descriptor[8]);
    productId = littleEndian(&descriptor[10]);
    link.pipeIn = usbDataPipe(productId);
    link.pipeOut = link.pipeIn == pipeInSmall ? 0x00 : 0x02;
    pipeIn = link.pipeIn;
    pipeOut = link.pipeOut;

    const int packet = packetSize(link);
    if (packet < 0) {
        return false;
    }
    if (packet > 0) {
        setUpPipes(link, packet);
    }
    pipeReady = packet > 0 ? 1 : 0;
    for (const int pipe : {0x00, 0x80}) {
        m_platform->setPipePolicy(link.iface, std::uint8_t(pipe), UsbPolicy::TransferTimeout, controlTimeoutMs);
    }
    return true;
}

int UsbTransport::packetSize(const UsbLink &link) const
{
    int count = 0;
    if (!m_platform->interfaceSettings(link.iface, count).ok()) {
        return -1;
    }
    for (int index = 0; index < count; ++index) {
        UsbPipe pipe;
        if (m_platform->queryPipe(link.iface, index, pipe).ok() && pipe.id == link.pipeIn) {
            return pipe.maxPacket;
        }
    }
    return 0;
}

void UsbTransport::setUpPipes(const UsbLink &link, int packet)
{
    m_platform->selectSetting(link.iface);
    const auto set = [this, &link](std::uint8_t pipe, UsbPolicy policy, std::uint32_t value) {
        m_platform->setPipePolicy(link.iface, pipe, policy, value);
    };
    set(link.pipeOut, UsbPolicy::TransferTimeout, writeTimeoutMs);
    set(link.pipeIn, UsbPolicy::TransferTimeout, UsbReadRun::silenceMs);
    set(link.pipeIn, UsbPolicy::AllowPartialReads, 1);
    set(link.pipeIn, UsbPolicy::AutoFlush, 0);
    set(link.pipeIn, UsbPolicy::RawIo, 1);
    if (packet < packetHighSpeed) {
        chunkSize = chunkFullSpeed;
        bcdUsb = std::min(bcdUsb.load(), levelFullSpeed);
    } else {
        chunkSize = chunkHighSpeed;
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

int UsbTransport::readStream(std::int32_t limit)
{
    const std::shared_ptr<UsbLink> held = link();
    InterfaceDevCallback *const receiver = callback.load(std::memory_order_acquire);
    if (!held || receiver == nullptr) {
        return runNotOpen;
    }
    Slots taken = takeSlots();
    if (!taken[0]) {
        return runNoMemory;
    }
    held->startRun();
    const int result = UsbReadRun(*held, taken, *receiver, chunkSize, limit).run();
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
