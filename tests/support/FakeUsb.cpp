#include "support/FakeUsb.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>

struct FakeUsb::Slot final : UsbReadSlot {
    explicit Slot(FakeUsb &usb_) : usb(usb_) {}
    ~Slot() override
    {
        const Lock lock(usb.m_mutex);
        if (state == Queued) {
            usb.misuse.emplace_back("a slot goes while its read is queued");
        }
    }
    FakeUsb &usb;
    enum { Idle, Queued, Ended } state = Idle;
    std::uint8_t *buffer = nullptr;
    std::uint32_t size = 0;
    std::uint32_t moved = 0;
    UsbError error = UsbError::None;
};

FakeUsb::~FakeUsb()
{
    if (!allFreed()) {
        std::fputs("FakeUsb: something is still open\n", stderr);
    }
}

int FakeUsb::count(const std::string &call) const
{
    return int(std::count(calls.begin(), calls.end(), call));
}

void FakeUsb::plug(const FakeUsbDevice &device)
{
    const Lock lock(m_mutex);
    devices.push_back(device);
    if (changed) {
        changed();
    }
}

void FakeUsb::unplug()
{
    const Lock lock(m_mutex);
    unplugLocked();
}

void FakeUsb::hideDevices()
{
    const Lock lock(m_mutex);
    m_hidden = true;
}

void FakeUsb::unplugLocked()
{
    devices.clear();
    endAll(UsbError::Gone);
    if (changed) {
        changed();
    }
}

void FakeUsb::push(const FakeRead &read)
{
    const Lock lock(m_mutex);
    reads.push_back(read);
    m_ended.notify_all();
}

void FakeUsb::halt()
{
    const Lock lock(m_mutex);
    m_halted = true;
    endAll(UsbError::Halted);
}

UsbResult FakeUsb::enter(const std::string &call)
{
    calls.push_back(call);
    ++operations;
    if (operations == unplugAt) {
        unplugLocked();
    }
    return operations == failAt && !failShort ? failWith : UsbResult{};
}

UsbResult FakeUsb::enter(const std::string &call, UsbInterface iface)
{
    const UsbResult result = enter(call);
    if (interfacesOpen.count(std::uintptr_t(iface)) == 0) {
        misuse.push_back(call + " on an interface that is not open");
        return {UsbError::Failed};
    }
    if (result.ok() && deviceOf(iface) == nullptr) {
        return {UsbError::Gone, 22};
    }
    return result;
}

const FakeUsbDevice *FakeUsb::deviceOf(const std::string &path) const
{
    for (const FakeUsbDevice &device : devices) {
        if (device.path == path) {
            return &device;
        }
    }
    return nullptr;
}

const FakeUsbDevice *FakeUsb::deviceOf(UsbInterface iface)
{
    return deviceOf(m_pathOfInterface[std::uintptr_t(iface)]);
}

bool FakeUsb::hasPipe(UsbInterface iface, std::uint8_t pipe)
{
    const std::vector<UsbPipe> &pipes = deviceOf(iface)->pipes;
    return (pipe & 0x7F) == 0 ||
           std::any_of(pipes.begin(), pipes.end(), [pipe](const UsbPipe &p) { return p.id == pipe; });
}

UsbList FakeUsb::openList()
{
    const Lock lock(m_mutex);
    if (!enter("openList").ok()) {
        return UsbList::None;
    }
    std::vector<std::string> &paths = lists[++m_lastHandle];
    for (const FakeUsbDevice &device : devices) {
        if (!m_hidden) {
            paths.push_back(device.path);
        }
    }
    return UsbList(m_lastHandle);
}

bool FakeUsb::listHas(UsbList list, int index)
{
    const Lock lock(m_mutex);
    const auto paths = lists.find(std::uintptr_t(list));
    if (paths == lists.end()) {
        misuse.emplace_back("listHas without a list");
        return false;
    }
    return enter("listHas").ok() && index >= 0 && index < int(paths->second.size());
}

UsbResult FakeUsb::interfaceDetail(UsbList list, int index, std::span<char> room, std::size_t &needed)
{
    const Lock lock(m_mutex);
    needed = 0;
    const UsbResult result = enter("interfaceDetail");
    if (!result.ok()) {
        return result;
    }
    if (onDetail) {
        return onDetail(index, room, needed);
    }
    const std::vector<std::string> &paths = lists[std::uintptr_t(list)];
    if (index < 0 || index >= int(paths.size())) {
        return {UsbError::NotFound, 259};
    }
    const std::string &path = paths[std::size_t(index)];
    needed = path.size() + 1;
    if (room.size() < needed) {
        return {UsbError::TooSmall, 122};
    }
    std::memcpy(room.data(), path.c_str(), needed);
    return {};
}

void FakeUsb::freeList(UsbList list)
{
    const Lock lock(m_mutex);
    if (lists.erase(std::uintptr_t(list)) == 0 && list != UsbList::None) {
        misuse.emplace_back("freeList of none");
    }
}

UsbResult FakeUsb::openFile(const char *path, UsbFile &file)
{
    const Lock lock(m_mutex);
    file = UsbFile::None;
    const UsbResult result = enter(std::string("openFile ") + path);
    const FakeUsbDevice *device = deviceOf(path);
    if (!result.ok() || device == nullptr || !device->opens) {
        return result.ok() ? UsbResult{UsbError::NotFound, 2} : result;
    }
    file = UsbFile(++m_lastHandle);
    filesOpen.insert(m_lastHandle);
    m_pathOfFile[m_lastHandle] = path;
    return {};
}

void FakeUsb::closeFile(UsbFile file)
{
    const Lock lock(m_mutex);
    calls.emplace_back("closeFile");
    if (filesOpen.erase(std::uintptr_t(file)) == 0) {
        misuse.emplace_back("closeFile of none");
    }
    for (const std::uintptr_t iface : interfacesOpen) {
        if (m_pathOfInterface[iface] == m_pathOfFile[std::uintptr_t(file)]) {
            misuse.emplace_back("closeFile before its interface");
        }
    }
    if (onClose) {
        onClose();
    }
}

UsbResult FakeUsb::initInterface(UsbFile file, UsbInterface &iface)
{
    const Lock lock(m_mutex);
    iface = UsbInterface::None;
    const UsbResult result = enter("initInterface");
    const std::string &path = m_pathOfFile[std::uintptr_t(file)];
    const FakeUsbDevice *device = deviceOf(path);
    if (!result.ok() || device == nullptr || !device->initialises) {
        return result.ok() ? UsbResult{UsbError::Gone, 22} : result;
    }
    iface = UsbInterface(++m_lastHandle);
    interfacesOpen.insert(m_lastHandle);
    m_pathOfInterface[m_lastHandle] = path;
    return {};
}

void FakeUsb::freeInterface(UsbInterface iface)
{
    const Lock lock(m_mutex);
    calls.emplace_back("freeInterface");
    if (interfacesOpen.erase(std::uintptr_t(iface)) == 0) {
        misuse.emplace_back("freeInterface of none");
    }
    endAll(UsbError::Aborted);
}

UsbResult FakeUsb::deviceDescriptor(UsbInterface iface, std::span<std::uint8_t> room, std::uint32_t &moved)
{
    const Lock lock(m_mutex);
    moved = 0;
    const UsbResult result = enter("deviceDescriptor", iface);
    if (!result.ok()) {
        return result;
    }
    const FakeUsbDevice &d = *deviceOf(iface);
    const auto low = [](std::uint16_t v) { return std::uint8_t(v & 0xFF); };
    const auto high = [](std::uint16_t v) { return std::uint8_t(v >> 8); };
    const std::uint8_t bytes[18] = {18,
                                    1,
                                    low(d.bcdUsb),
                                    high(d.bcdUsb),
                                    0xFF,
                                    0xFF,
                                    0xFF,
                                    64,
                                    low(d.vendor),
                                    high(d.vendor),
                                    low(d.product),
                                    high(d.product),
                                    0,
                                    1,
                                    0,
                                    0,
                                    0,
                                    1};
    moved = std::min({std::uint32_t(room.size()), d.descriptorLength, 18U});
    if (operations == failAt && failShort) {
        --moved;
    }
    std::memcpy(room.data(), bytes, moved);
    return {};
}

UsbResult FakeUsb::interfaceSettings(UsbInterface iface, int &count)
{
    const Lock lock(m_mutex);
    count = 0;
    const UsbResult result = enter("interfaceSettings", iface);
    if (!result.ok() || !deviceOf(iface)->tellsSettings) {
        return result.ok() ? UsbResult{UsbError::Failed, 31} : result;
    }
    count = int(deviceOf(iface)->pipes.size());
    return {};
}

UsbResult FakeUsb::queryPipe(UsbInterface iface, int index, UsbPipe &pipe)
{
    const Lock lock(m_mutex);
    const UsbResult result = enter("queryPipe", iface);
    if (!result.ok()) {
        return result;
    }
    const std::vector<UsbPipe> &pipes = deviceOf(iface)->pipes;
    if (index < 0 || index >= int(pipes.size())) {
        return {UsbError::NotFound, 259};
    }
    pipe = pipes[std::size_t(index)];
    return {};
}

UsbResult FakeUsb::selectSetting(UsbInterface iface)
{
    const Lock lock(m_mutex);
    return enter("selectSetting", iface);
}

UsbResult FakeUsb::setPipePolicy(UsbInterface iface, std::uint8_t pipe, UsbPolicy policy, std::uint32_t value)
{
    const Lock lock(m_mutex);
    char text[64];
    std::snprintf(text, sizeof text, "policy %02X %u %u", unsigned(pipe), unsigned(policy), unsigned(value));
    const UsbResult result = enter(text, iface);
    if (!result.ok() || !hasPipe(iface, pipe)) {
        return result.ok() ? UsbResult{UsbError::NotFound, 87} : result;
    }
    if (pipe == 0x86 && policy == UsbPolicy::TransferTimeout) {
        m_readTimeout = value;
    }
    return {};
}

UsbResult FakeUsb::controlTransfer(UsbInterface iface, const UsbSetup &setup, std::uint8_t *data, std::uint32_t &moved)
{
    const Lock lock(m_mutex);
    moved = 0;
    const UsbResult result = enter("controlTransfer", iface);
    if (!result.ok()) {
        return result;
    }
    setups.push_back(setup);
    if (onControl) {
        return onControl(setup, data, moved);
    }
    moved = setup.length;
    if (operations == failAt && failShort && moved > 0) {
        --moved;
    }
    if (setup.isIn()) {
        std::fill_n(data, moved, std::uint8_t(0x5A));
    }
    return {};
}

UsbResult FakeUsb::writePipe(UsbInterface iface, std::uint8_t pipe, std::span<const std::uint8_t> data,
                             std::uint32_t &moved)
{
    const Lock lock(m_mutex);
    moved = 0;
    const UsbResult result = enter("writePipe", iface);
    if (!result.ok() || !hasPipe(iface, pipe) || pipe == 0) {
        return result.ok() ? UsbResult{UsbError::NotFound, 87} : result;
    }
    moved = std::min(std::uint32_t(data.size()), writeLimit);
    if (operations == failAt && failShort && moved > 0) {
        --moved;
    }
    writeSizes.push_back(moved);
    return {};
}

std::unique_ptr<UsbReadSlot> FakeUsb::makeReadSlot()
{
    const Lock lock(m_mutex);
    const int number = m_slotsMade++;
    if (std::find(slotsRefused.begin(), slotsRefused.end(), number) != slotsRefused.end()) {
        return nullptr;
    }
    return std::make_unique<Slot>(*this);
}

UsbResult FakeUsb::queueRead(UsbInterface iface, std::uint8_t pipe, std::uint8_t *buffer, std::uint32_t size,
                             UsbReadSlot &slot)
{
    const Lock lock(m_mutex);
    Slot &own = static_cast<Slot &>(slot);
    if (own.state == Slot::Queued) {
        misuse.emplace_back("queueRead into a slot that is in use");
    }
    own.state = Slot::Idle;
    const UsbResult result = enter("queueRead", iface);
    if (!result.ok() || !hasPipe(iface, pipe)) {
        return result.ok() ? UsbResult{UsbError::NotFound, 87} : result;
    }
    readSizes.push_back(size);
    buffers.push_back(buffer);
    own.buffer = buffer;
    own.size = size;
    own.state = Slot::Queued;
    m_queued.push_back(&own);
    if (m_halted) {
        endAll(UsbError::Halted);
    }
    return {};
}

void FakeUsb::end(Slot &slot, UsbError error, std::uint32_t bytes)
{
    slot.state = Slot::Ended;
    slot.error = error;
    slot.moved = std::min(bytes, slot.size);
    for (std::uint32_t i = 0; i < slot.moved; ++i) {
        slot.buffer[i] = std::uint8_t(sent++);
    }
    m_ended.notify_all();
}

void FakeUsb::endOldest(const FakeRead &read)
{
    Slot &slot = *m_queued.front();
    m_queued.pop_front();
    fewestLeft = std::min(fewestLeft, int(m_queued.size()));
    end(slot, read.kind == FakeRead::Fail ? read.error : UsbError::None,
        read.kind == FakeRead::Full ? slot.size : read.bytes);
}

void FakeUsb::endAll(UsbError error)
{
    for (Slot *slot : m_queued) {
        end(*slot, error, 0);
    }
    m_queued.clear();
}

bool FakeUsb::waitRead(UsbReadSlot &slot, int ms)
{
    Lock lock(m_mutex);
    Slot &own = static_cast<Slot &>(slot);
    if (!enter("waitRead " + std::to_string(ms)).ok()) {
        return false;
    }
    if (own.state == Slot::Idle) {
        misuse.emplace_back("waitRead on an idle slot");
        return false;
    }
    const bool pipeFirst = m_readTimeout != 0 && int(m_readTimeout) < ms;
    const auto until =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(pipeFirst ? int(m_readTimeout) : ms) * patience;
    while (own.state == Slot::Queued) {
        FakeRead next = whenUsedUp;
        if (!reads.empty()) {
            next = reads.front();
        }
        if (next.kind != FakeRead::Silence) {
            if (!reads.empty()) {
                reads.pop_front();
            }
            endOldest(next);
        } else if (!holds) {
            return false;
        } else if (m_ended.wait_until(lock, until) == std::cv_status::timeout && own.state == Slot::Queued) {
            ++waitsTimedOut;
            if (!pipeFirst) {
                return false;
            }
            endOldest(FakeRead::fail(UsbError::TimedOut));
        }
    }
    return own.state == Slot::Ended;
}

UsbResult FakeUsb::readResult(UsbInterface iface, UsbReadSlot &slot, std::uint32_t &moved)
{
    const Lock lock(m_mutex);
    moved = 0;
    Slot &own = static_cast<Slot &>(slot);
    const UsbResult result = enter("readResult");
    if (interfacesOpen.count(std::uintptr_t(iface)) == 0) {
        misuse.emplace_back("readResult on an interface that is not open");
    }
    if (own.state == Slot::Queued) {
        return {UsbError::Pending, 996};
    }
    if (own.state == Slot::Idle) {
        return {UsbError::NotFound, 87};
    }
    own.state = Slot::Idle;
    if (!result.ok()) {
        return result;
    }
    if (own.error != UsbError::None) {
        return {own.error, 31};
    }
    moved = own.moved;
    if (operations == failAt && failShort && moved > 0) {
        --moved;
        --sent;
    }
    return {};
}

UsbResult FakeUsb::abortPipe(UsbInterface iface, std::uint8_t)
{
    const Lock lock(m_mutex);
    const UsbResult result = enter("abortPipe", iface);
    endAll(UsbError::Aborted);
    return result;
}

UsbResult FakeUsb::flushPipe(UsbInterface iface, std::uint8_t)
{
    const Lock lock(m_mutex);
    if (!m_queued.empty()) {
        misuse.emplace_back("flushPipe while reads are queued");
    }
    return enter("flushPipe", iface);
}

UsbResult FakeUsb::resetPipe(UsbInterface iface, std::uint8_t)
{
    const Lock lock(m_mutex);
    if (!m_queued.empty()) {
        misuse.emplace_back("resetPipe while reads are queued");
    }
    m_halted = false;
    return enter("resetPipe", iface);
}

bool FakeUsb::registerHotplug(std::uintptr_t, std::function<void()> told)
{
    const Lock lock(m_mutex);
    if (!hotplugWorks) {
        return false;
    }
    changed = std::move(told);
    return true;
}
