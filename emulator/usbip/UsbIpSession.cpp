#include "usbip/UsbIpSession.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace emulator::usbip {

void Session::startImported()
{
    m_state = State::Imported;
    m_wasImported = true;
    m_generation = m_device.generation();
}

bool Session::holdsDevice() const
{
    return m_wasImported && m_device.attached() && m_device.generation() == m_generation;
}

void Session::receive(std::span<const std::uint8_t> bytes)
{
    m_input.insert(m_input.end(), bytes.begin(), bytes.end());
    std::size_t taken = 0;
    do {
        taken = m_state == State::Operation ? takeOperation() : m_state == State::Imported ? takeCommand() : 0;
        m_input.erase(m_input.begin(), m_input.begin() + std::ptrdiff_t(taken));
    } while (taken > 0);
}

/// The first operation of the input. @return its bytes, 0 if it is not whole
std::size_t Session::takeOperation()
{
    if (m_input.size() < operationSize) {
        return 0;
    }
    const OperationHead head = parseOperation(std::span(m_input).first<operationSize>());
    if (head.version != version) {
        finish();
        return 0;
    }
    if (head.code == std::uint16_t(Operation::ListDevices)) {
        send(deviceList(m_device));
        finish();
        return operationSize;
    }
    if (head.code != std::uint16_t(Operation::Import)) {
        finish();
        return 0;
    }
    if (m_input.size() < operationSize + busIdSize) {
        return 0;
    }
    const auto name = m_input.begin() + operationSize;
    const auto end = std::find(name, name + busIdSize, std::uint8_t(0));
    const bool known = std::string_view(busId) == std::string(name, end);
    const OperationStatus status = !known || !m_device.attached() ? OperationStatus::NoDevice
                                   : m_taken                      ? OperationStatus::Busy
                                                                  : OperationStatus::Good;
    send(importAnswer(m_device, status));
    if (status == OperationStatus::Good) {
        startImported();
    } else {
        finish();
    }
    return operationSize + busIdSize;
}

/// The first command of the input. @return its bytes, 0 if it is not whole
std::size_t Session::takeCommand()
{
    if (m_input.size() < headSize) {
        return 0;
    }
    const Head head = parseHead(std::span(m_input).first<headSize>());
    if (head.command == std::uint32_t(Command::Unlink)) {
        unlink(head);
        return headSize;
    }
    constexpr std::uint32_t lastEndpoint = 15;
    if (head.command != std::uint32_t(Command::Submit) || head.length > longestTransfer ||
        head.endpoint > lastEndpoint) {
        finish(); // no way to find the next command
        return 0;
    }
    const std::size_t data = head.toHost ? 0 : head.length;
    if (m_input.size() < headSize + data) {
        return 0;
    }
    submit(head, std::span(m_input).subspan(headSize, data));
    return headSize + data;
}

void Session::submit(const Head &head, std::span<const std::uint8_t> data)
{
    if (m_transfers.contains(head.sequence)) {
        finish();
        return;
    }
    Transfer &transfer = m_transfers[head.sequence];
    transfer.toHost = head.toHost;
    transfer.block = {std::make_unique_for_overwrite<std::uint8_t[]>(headSize + head.length), headSize + head.length};
    std::memcpy(transfer.block.bytes.get() + headSize, data.data(), data.size());
    Urb urb;
    urb.key = head.sequence;
    urb.endpoint = std::uint8_t(head.endpoint | (head.toHost && head.endpoint != 0 ? 0x80U : 0U));
    urb.kind = head.endpoint == 0 ? Urb::Kind::Control : head.toHost ? Urb::Kind::BulkIn : Urb::Kind::BulkOut;
    urb.setup = SetupPacket::fromBytes(head.setup);
    urb.buffer = {transfer.block.bytes.get() + headSize, head.length};
    m_urbs.submit(urb);
}

void Session::unlink(const Head &head)
{
    const std::optional<Urb> urb = m_urbs.cancel(head.unlinks);
    // What a read had got is not lost: it is answered first, as if the order to take it back had come too late.
    const bool hasData = urb && urb->actual > 0;
    if (hasData) {
        answer(*urb, Outcome::Done);
    } else if (urb) {
        m_transfers.erase(urb->key);
    }
    send(unlinkAnswer(head.sequence, urb && !hasData ? takenBack : 0));
}

void Session::pump()
{
    if (m_state != State::Imported) {
        return;
    }
    if (!holdsDevice()) {
        finish(); // to the host the end of the connection is the device's leaving
        return;
    }
    if (isFull()) {
        return;
    }
    for (const Urb &urb : m_urbs.pump()) {
        answer(urb, urb.outcome);
    }
    if (!m_device.attached()) {
        finish();
    }
}

/// Sends what became of a transfer, and forgets it.
void Session::answer(const Urb &urb, Outcome outcome)
{
    const auto found = m_transfers.find(urb.key);
    if (found == m_transfers.end()) {
        return;
    }
    Block block = std::move(found->second.block);
    const HeadBytes head = submitAnswer(std::uint32_t(urb.key), statusOf(outcome), std::uint32_t(urb.actual));
    std::copy(head.begin(), head.end(), block.bytes.get());
    block.size = headSize + (found->second.toHost ? urb.actual : 0);
    m_transfers.erase(found);
    m_waiting += block.size;
    m_output.push_back(std::move(block));
}

void Session::send(std::span<const std::uint8_t> bytes)
{
    Block block{std::make_unique_for_overwrite<std::uint8_t[]>(bytes.size()), bytes.size()};
    std::copy(bytes.begin(), bytes.end(), block.bytes.get());
    m_waiting += block.size;
    m_output.push_back(std::move(block));
}

void Session::finish()
{
    m_state = State::Finished;
    for (const auto &[key, transfer] : m_transfers) {
        (void)m_urbs.cancel(key);
    }
    m_transfers.clear();
}

std::span<const std::uint8_t> Session::output() const
{
    if (m_output.empty()) {
        return {};
    }
    return std::span<const std::uint8_t>(m_output.front().bytes.get(), m_output.front().size).subspan(m_sent);
}

void Session::sent(std::size_t bytes)
{
    m_sent += bytes;
    m_waiting -= bytes;
    while (!m_output.empty() && m_sent >= m_output.front().size) {
        m_sent -= m_output.front().size;
        m_output.pop_front();
    }
}

} // namespace emulator::usbip
