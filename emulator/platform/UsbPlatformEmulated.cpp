#include "platform/UsbPlatformEmulated.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

using emulator::Urb;

namespace {

std::string pathOf(int port, unsigned generation)
{
    return "emulated:" + std::to_string(port) + ":" + std::to_string(generation);
}

} // namespace

// ---- finding and opening

UsbPlatformEmulated::~UsbPlatformEmulated()
{
    // The pump calls without the lock: waits for a call that is under way.
    std::unique_lock lock(m_bus.m_mutex);
    m_bus.m_changed = nullptr;
    m_bus.m_transferEnded.wait(lock, [this] { return !m_bus.m_calling; });
}

bool UsbPlatformEmulated::allFreed()
{
    const Turn turn(m_bus);
    return m_lists.empty() && m_files.empty() && m_interfaces.empty();
}

UsbList UsbPlatformEmulated::openList()
{
    const Turn turn(m_bus);
    std::vector<Device> devices;
    for (std::size_t i = 0; i < m_bus.m_ports.size(); ++i) {
        const emulator::Instrument &instrument = *m_bus.m_ports[i]->instrument;
        if (instrument.attached()) {
            devices.push_back({int(i), instrument.generation()});
        }
    }
    m_lists[++m_lastHandle] = std::move(devices);
    return UsbList(m_lastHandle);
}

bool UsbPlatformEmulated::listHas(UsbList list, int index)
{
    const Turn turn(m_bus);
    const auto found = m_lists.find(std::uintptr_t(list));
    return found != m_lists.end() && index >= 0 && std::size_t(index) < found->second.size();
}

UsbResult UsbPlatformEmulated::interfaceDetail(UsbList list, int index, std::span<char> room, std::size_t &needed)
{
    needed = 0;
    if (!listHas(list, index)) {
        return {UsbError::NotFound};
    }
    const Turn turn(m_bus);
    const Device device = m_lists.at(std::uintptr_t(list))[std::size_t(index)];
    const std::string path = pathOf(device.port, device.generation);
    needed = path.size() + 1;
    if (room.size() < needed) {
        return {UsbError::TooSmall};
    }
    std::memcpy(room.data(), path.c_str(), needed);
    return {};
}

void UsbPlatformEmulated::freeList(UsbList list)
{
    const Turn turn(m_bus);
    m_lists.erase(std::uintptr_t(list));
}

UsbResult UsbPlatformEmulated::openFile(const char *path, UsbFile &file)
{
    file = UsbFile::None;
    const Turn turn(m_bus);
    for (std::size_t i = 0; i < m_bus.m_ports.size(); ++i) {
        const emulator::Instrument &instrument = *m_bus.m_ports[i]->instrument;
        if (instrument.attached() && pathOf(int(i), instrument.generation()) == path) {
            m_files[++m_lastHandle] = {int(i), instrument.generation()};
            file = UsbFile(m_lastHandle);
            return {};
        }
    }
    return {UsbError::NotFound};
}

void UsbPlatformEmulated::closeFile(UsbFile file)
{
    const Turn turn(m_bus);
    m_files.erase(std::uintptr_t(file));
}

UsbResult UsbPlatformEmulated::initInterface(UsbFile file, UsbInterface &iface)
{
    iface = UsbInterface::None;
    const Turn turn(m_bus);
    const auto found = m_files.find(std::uintptr_t(file));
    if (found == m_files.end()) {
        return {UsbError::NotFound};
    }
    const Device device = found->second;
    if (!m_bus.isPresent(device.port, device.generation)) {
        return {UsbError::Gone};
    }
    Interface opened;
    opened.device = device;
    const emulator::Bytes configuration =
        m_bus.m_ports[std::size_t(device.port)]->instrument->configurationDescriptor();
    constexpr std::uint8_t endpointType = 5;
    for (std::size_t at = 0; at + 1 < configuration.size() && configuration[at] > 0; at += configuration[at]) {
        if (configuration[at + 1] == endpointType) {
            const std::span<const std::uint8_t> d(configuration.data() + at, 7);
            opened.pipes.push_back({d[2], std::uint16_t(d[4] | d[5] << 8)});
        }
    }
    m_interfaces[++m_lastHandle] = std::move(opened);
    iface = UsbInterface(m_lastHandle);
    return {};
}

void UsbPlatformEmulated::freeInterface(UsbInterface iface)
{
    const Turn turn(m_bus);
    const auto isOurs = [iface](const EmulatedBus::Transfer &transfer) {
        return transfer.owner == std::uintptr_t(iface);
    };
    m_bus.cancelAll(isOurs, UsbError::Aborted);
    m_interfaces.erase(std::uintptr_t(iface));
}

bool UsbPlatformEmulated::registerHotplug(std::uintptr_t /*window*/, std::function<void()> changed)
{
    const Turn turn(m_bus);
    m_bus.forgetChanges();
    m_bus.m_changed = std::move(changed);
    return true;
}

// ---- what a device is

UsbPlatformEmulated::Interface *UsbPlatformEmulated::find(UsbInterface iface)
{
    const auto found = m_interfaces.find(std::uintptr_t(iface));
    return found == m_interfaces.end() ? nullptr : &found->second;
}

bool UsbPlatformEmulated::isPresent(const Interface &iface) const
{
    return m_bus.isPresent(iface.device.port, iface.device.generation);
}

const UsbPipe *UsbPlatformEmulated::findPipe(const Interface &iface, std::uint8_t pipe) const
{
    const auto found =
        std::find_if(iface.pipes.begin(), iface.pipes.end(), [pipe](const UsbPipe &p) { return p.id == pipe; });
    return found == iface.pipes.end() ? nullptr : &*found;
}

UsbResult UsbPlatformEmulated::deviceDescriptor(UsbInterface iface, std::span<std::uint8_t> room, std::uint32_t &moved)
{
    constexpr std::uint8_t fromDevice = 0x80;
    constexpr std::uint8_t getDescriptor = 6;
    constexpr std::uint16_t device = 0x0100;
    const UsbSetup setup{fromDevice, getDescriptor, device, 0, std::uint16_t(room.size())};
    return controlTransfer(iface, setup, room.data(), moved);
}

UsbResult UsbPlatformEmulated::interfaceSettings(UsbInterface iface, int &count)
{
    count = 0;
    const Turn turn(m_bus);
    const Interface *opened = find(iface);
    if (opened == nullptr || !isPresent(*opened)) {
        return {UsbError::Gone};
    }
    count = int(opened->pipes.size());
    return {};
}

UsbResult UsbPlatformEmulated::queryPipe(UsbInterface iface, int index, UsbPipe &pipe)
{
    const Turn turn(m_bus);
    const Interface *opened = find(iface);
    if (opened == nullptr || !isPresent(*opened)) {
        return {UsbError::Gone};
    }
    if (index < 0 || std::size_t(index) >= opened->pipes.size()) {
        return {UsbError::NotFound};
    }
    pipe = opened->pipes[std::size_t(index)];
    return {};
}

UsbResult UsbPlatformEmulated::selectSetting(UsbInterface iface)
{
    constexpr std::uint8_t toInterface = 0x01;
    constexpr std::uint8_t setInterface = 11;
    std::uint32_t moved = 0;
    return controlTransfer(iface, {toInterface, setInterface, 0, 0, 0}, nullptr, moved);
}

UsbResult UsbPlatformEmulated::setPipePolicy(UsbInterface iface, std::uint8_t pipe, UsbPolicy policy,
                                             std::uint32_t value)
{
    const Turn turn(m_bus);
    Interface *opened = find(iface);
    if (opened == nullptr) {
        return {UsbError::Gone};
    }
    const bool isControl = (pipe & 0x7F) == 0;
    if (!isControl && findPipe(*opened, pipe) == nullptr) {
        return {UsbError::NotFound};
    }
    if (policy == UsbPolicy::TransferTimeout) {
        opened->timeouts[pipe] = value;
        return {};
    }
    return {isControl ? UsbError::Failed : UsbError::None};
}

// ---- transfers

EmulatedBus::Clock::time_point UsbPlatformEmulated::deadline(const Interface &iface, std::uint8_t pipe) const
{
    const auto found = iface.timeouts.find(pipe);
    return found == iface.timeouts.end() || found->second == 0
               ? EmulatedBus::Clock::time_point::max()
               : m_bus.time() + std::chrono::milliseconds(found->second);
}

UsbResult UsbPlatformEmulated::transfer(UsbInterface iface, Urb urb, std::uint8_t timeoutPipe, std::uint32_t &moved)
{
    moved = 0;
    Turn turn(m_bus);
    const Interface *opened = find(iface);
    if (opened == nullptr || !isPresent(*opened)) {
        return {UsbError::Gone};
    }
    if (urb.kind == Urb::Kind::BulkOut && ((urb.endpoint & 0x80) != 0 || findPipe(*opened, urb.endpoint) == nullptr)) {
        return {UsbError::NotFound};
    }
    auto transfer = std::make_shared<EmulatedBus::Transfer>();
    transfer->port = opened->device.port;
    transfer->owner = std::uintptr_t(iface);
    transfer->deadline = deadline(*opened, timeoutPipe);
    m_bus.submit(transfer, urb);
    // Most are answered at once; what is not waits for the pump.
    m_bus.passTime();
    (void)m_bus.pumpOnce();
    while (!transfer->ended) {
        turn.wait(m_bus.m_transferEnded);
    }
    moved = std::uint32_t(transfer->moved);
    return {transfer->error};
}

UsbResult UsbPlatformEmulated::controlTransfer(UsbInterface iface, const UsbSetup &setup, std::uint8_t *data,
                                               std::uint32_t &moved)
{
    Urb urb;
    urb.kind = Urb::Kind::Control;
    urb.setup = {setup.requestType, setup.request, setup.value, setup.index, setup.length};
    urb.buffer = {data, data == nullptr ? 0 : std::size_t(setup.length)};
    return transfer(iface, urb, setup.isIn() ? 0x80 : 0x00, moved);
}

UsbResult UsbPlatformEmulated::writePipe(UsbInterface iface, std::uint8_t pipe, std::span<const std::uint8_t> data,
                                         std::uint32_t &moved)
{
    std::vector<std::uint8_t> copy(data.begin(), data.end());
    Urb urb;
    urb.kind = Urb::Kind::BulkOut;
    urb.endpoint = pipe;
    urb.buffer = copy;
    return transfer(iface, urb, pipe, moved);
}

// ---- reads

struct UsbPlatformEmulated::Slot final : UsbReadSlot {
    std::shared_ptr<EmulatedBus::Transfer> transfer; ///< null while idle
};

std::unique_ptr<UsbReadSlot> UsbPlatformEmulated::makeReadSlot()
{
    return std::make_unique<Slot>();
}

UsbResult UsbPlatformEmulated::queueRead(UsbInterface iface, std::uint8_t pipe, std::uint8_t *buffer,
                                         std::uint32_t size, UsbReadSlot &slot)
{
    auto &place = static_cast<Slot &>(slot);
    const Turn turn(m_bus);
    place.transfer = nullptr;
    const Interface *opened = find(iface);
    if (opened == nullptr || !isPresent(*opened)) {
        return {UsbError::Gone};
    }
    if ((pipe & 0x80) == 0 || findPipe(*opened, pipe) == nullptr) {
        return {UsbError::NotFound};
    }
    place.transfer = std::make_shared<EmulatedBus::Transfer>();
    place.transfer->port = opened->device.port;
    place.transfer->owner = std::uintptr_t(iface);
    place.transfer->deadline = deadline(*opened, pipe);
    Urb urb;
    urb.kind = Urb::Kind::BulkIn;
    urb.endpoint = pipe;
    urb.buffer = {buffer, size};
    m_bus.submit(place.transfer, urb);
    return {};
}

bool UsbPlatformEmulated::waitRead(UsbReadSlot &slot, int ms)
{
    auto &place = static_cast<Slot &>(slot);
    std::unique_lock lock(m_bus.m_mutex);
    const std::shared_ptr<EmulatedBus::Transfer> transfer = place.transfer;
    if (transfer == nullptr) {
        return false;
    }
    constexpr std::chrono::milliseconds again(5); // the bus's time does not wake anybody
    const auto hasEnded = [&transfer] { return transfer->ended; };
    for (const auto until = m_bus.time() + std::chrono::milliseconds(ms); !hasEnded() && m_bus.time() < until;) {
        m_bus.m_transferEnded.wait_for(lock, again, hasEnded);
    }
    return hasEnded();
}

UsbResult UsbPlatformEmulated::readResult(UsbInterface /*iface*/, UsbReadSlot &slot, std::uint32_t &moved)
{
    auto &place = static_cast<Slot &>(slot);
    const Turn turn(m_bus);
    moved = 0;
    if (place.transfer == nullptr) {
        return {UsbError::NotFound};
    }
    if (!place.transfer->ended) {
        return {UsbError::Pending};
    }
    const std::shared_ptr<EmulatedBus::Transfer> transfer = std::exchange(place.transfer, nullptr);
    if (transfer->error == UsbError::None) {
        moved = std::uint32_t(transfer->moved);
    }
    return {transfer->error};
}

UsbResult UsbPlatformEmulated::abortPipe(UsbInterface iface, std::uint8_t pipe)
{
    const Turn turn(m_bus);
    const Interface *opened = find(iface);
    if (opened == nullptr) {
        return {UsbError::Gone};
    }
    if (findPipe(*opened, pipe) == nullptr) {
        return {UsbError::NotFound};
    }
    const auto isOurs = [iface, pipe](const EmulatedBus::Transfer &transfer) {
        return transfer.owner == std::uintptr_t(iface) && transfer.endpoint == pipe;
    };
    m_bus.cancelAll(isOurs, UsbError::Aborted);
    return {isPresent(*opened) ? UsbError::None : UsbError::Gone};
}

UsbResult UsbPlatformEmulated::flushPipe(UsbInterface iface, std::uint8_t pipe)
{
    const Turn turn(m_bus);
    const Interface *opened = find(iface);
    if (opened == nullptr || !isPresent(*opened)) {
        return {UsbError::Gone};
    }
    // The bus holds nothing back that nobody has asked for.
    return {findPipe(*opened, pipe) == nullptr ? UsbError::NotFound : UsbError::None};
}

UsbResult UsbPlatformEmulated::resetPipe(UsbInterface iface, std::uint8_t pipe)
{
    constexpr std::uint8_t toEndpoint = 0x02;
    constexpr std::uint8_t clearFeature = 1;
    {
        const Turn turn(m_bus);
        const Interface *opened = find(iface);
        if (opened != nullptr && findPipe(*opened, pipe) == nullptr) {
            return {UsbError::NotFound};
        }
    }
    std::uint32_t moved = 0;
    return controlTransfer(iface, {toEndpoint, clearFeature, 0, pipe, 0}, nullptr, moved);
}
