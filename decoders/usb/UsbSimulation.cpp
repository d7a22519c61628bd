#include "UsbSimulation.h"

#include "UsbAnalyzer.h"
#include "UsbNames.h"

#include <array>

using lux::Simulation;

namespace {

constexpr unsigned stuffAfter = 6;
constexpr std::uint8_t wrongSync = 0x40;  ///< the last two bits change places
constexpr std::uint8_t unknownPid = 0x33; ///< its halves are equal

} // namespace

UsbDriver::UsbDriver(Simulation &simulation, const Channel &dp, const Channel &dm, bool fullSpeed)
    : m_simulation(simulation),
      m_j(simulation.line(fullSpeed ? dp : dm, true)),
      m_k(simulation.line(fullSpeed ? dm : dp, false)),
      m_rate(fullSpeed ? UsbReceiver::fullRate : UsbReceiver::lowRate)
{}

void UsbDriver::drive(bool j)
{
    m_j.set(j);
    m_k.set(!j);
    m_simulation.holdTime(1, m_rate);
}

void UsbDriver::singleEndedZero()
{
    m_j.set(false);
    m_k.set(false);
}

void UsbDriver::wait(std::int64_t bits)
{
    m_j.set(true);
    m_k.set(false);
    m_simulation.holdTime(bits, m_rate);
}

/// The sync pattern and the bytes (7.1.8, 7.1.9).
void UsbDriver::sendBits(const std::vector<std::uint8_t> &bytes, std::uint8_t sync)
{
    bool j = true;
    unsigned ones = 0;
    const auto sendByte = [&](std::uint8_t byte) {
        for (unsigned bit = 0; bit < 8; ++bit) {
            const bool isOne = (byte >> bit & 1U) != 0;
            j = isOne ? j : !j;
            drive(j);
            ones = isOne ? ones + 1 : 0;
            if (ones == stuffAfter) {
                j = !j;
                drive(j);
                ones = 0;
            }
        }
    };
    sendByte(sync);
    for (const std::uint8_t byte : bytes) {
        sendByte(byte);
    }
}

void UsbDriver::send(const std::vector<std::uint8_t> &bytes, UsbMishap mishap)
{
    sendBits(bytes, mishap == UsbMishap::WrongSync ? wrongSync : usb::sync);
    if (mishap == UsbMishap::StuffError) {
        for (unsigned i = 0; i < 2 * stuffAfter; ++i) {
            drive(false);
        }
    }
    endOfPacket();
}

/// Two bits of SE0 and one of J (7.1.7.4).
void UsbDriver::endOfPacket()
{
    singleEndedZero();
    m_simulation.holdTime(2, m_rate);
    wait(1);
}

void UsbDriver::sendToken(std::uint8_t pid, std::uint32_t bits, UsbMishap mishap)
{
    bits |= (usb::checkOfToken(bits) ^ std::uint32_t(mishap == UsbMishap::WrongCrc)) << 11;
    send({pid, std::uint8_t(bits), std::uint8_t(bits >> 8)}, mishap);
}

void UsbDriver::token(std::uint8_t pid, std::uint32_t address, std::uint32_t endpoint, UsbMishap mishap)
{
    sendToken(pid, address | endpoint << 7, mishap);
}

void UsbDriver::startOfFrame(std::uint32_t number)
{
    sendToken(usb::startOfFrame, number, UsbMishap::None);
}

void UsbDriver::data(std::uint8_t pid, std::span<const std::uint8_t> bytes, UsbMishap mishap)
{
    std::vector<std::uint8_t> packet = {pid};
    packet.insert(packet.end(), bytes.begin(), bytes.end());
    const std::uint32_t crc = lux::Crc<usb::crc16>::of(bytes) ^ std::uint32_t(mishap == UsbMishap::WrongCrc);
    packet.push_back(std::uint8_t(crc));
    packet.push_back(std::uint8_t(crc >> 8));
    send(packet, mishap);
}

void UsbDriver::handshake(std::uint8_t pid, UsbMishap mishap)
{
    send({pid}, mishap);
}

void UsbDriver::keepAlive()
{
    endOfPacket();
}

void UsbDriver::suspendAndResume()
{
    constexpr std::int64_t hertz = 1000;
    wait(0);
    m_simulation.holdTime(4, hertz);
    m_j.set(false);
    m_k.set(true);
    m_simulation.holdTime(2, hertz); // much shorter than a host's
    singleEndedZero();
    m_simulation.holdTime(2, UsbReceiver::lowRate);
    wait(8);
}

void UsbDriver::preamble()
{
    sendBits({usb::preamble}, usb::sync);
    wait(4);
    m_rate = UsbReceiver::lowRate;
}

void UsbDriver::endOfLowSpeed()
{
    m_rate = UsbReceiver::fullRate;
}

void UsbDriver::reset()
{
    constexpr std::int64_t hertz = 10000;
    singleEndedZero();
    m_simulation.holdTime(1, hertz); // much shorter than a host's, and long enough for a device
    wait(8);
}

namespace {

constexpr std::uint32_t rounds = 10;
constexpr std::uint32_t suspendEvery = 64; ///< rounds
constexpr std::int64_t turnaround = 4;     ///< bits between packets of a transaction (7.1.18)
constexpr std::int64_t rest = 40;          ///< longer than a device may wait with its answer

constexpr std::array<std::uint8_t, 8> getDeviceDescriptor = {0x80, 6, 0, 1, 0, 0, 18, 0};
constexpr std::array<std::uint8_t, 18> deviceDescriptor = {18,   1,    0x10, 0x01, 0, 0, 0, 8, 0x34,
                                                           0x12, 0x78, 0x56, 0,    1, 0, 0, 0, 1};

/// OUT with an answer.
void writeData(UsbDriver &bus, unsigned address, std::span<const std::uint8_t> bytes)
{
    bus.token(usb::out, address, 2);
    bus.wait(turnaround);
    bus.data(usb::data1, bytes);
    bus.wait(turnaround);
    bus.handshake(usb::ack);
}

/// IN with data that nobody can take. @param isCrc  because of its check, else because of its stuffing
void readBrokenData(UsbDriver &bus, unsigned address, std::span<const std::uint8_t> bytes, bool isCrc)
{
    bus.token(usb::in, address, isCrc ? 4 : 5);
    bus.wait(turnaround);
    bus.data(usb::data0, bytes, isCrc ? UsbMishap::WrongCrc : UsbMishap::StuffError);
}

/// A request with its stages: SETUP, three packets of data, status (8.5.3).
void readDescriptor(UsbDriver &bus)
{
    constexpr std::size_t mostBytes = 8;
    bus.token(usb::setup, 5, 0);
    bus.wait(turnaround);
    bus.data(usb::data0, getDeviceDescriptor);
    bus.wait(turnaround);
    bus.handshake(usb::ack);
    std::uint8_t pid = usb::data1;
    for (std::size_t at = 0; at < deviceDescriptor.size(); at += mostBytes) {
        bus.wait(rest);
        bus.token(usb::in, 5, 0);
        bus.wait(turnaround);
        const std::span<const std::uint8_t> left = std::span(deviceDescriptor).subspan(at);
        bus.data(pid, left.first(std::min(left.size(), mostBytes)));
        bus.wait(turnaround);
        bus.handshake(usb::ack);
        pid = pid == usb::data1 ? usb::data0 : usb::data1;
    }
    bus.wait(rest);
    bus.token(usb::out, 5, 0);
    bus.wait(turnaround);
    bus.data(usb::data1, {});
    bus.wait(turnaround);
    bus.handshake(usb::ack);
}

/// OUT with data to a device behind a hub, which has no time for it.
void sendToLowSpeed(UsbDriver &bus, std::uint32_t address, std::span<const std::uint8_t> bytes)
{
    bus.preamble();
    bus.token(usb::out, address, 6);
    bus.endOfLowSpeed();
    bus.wait(turnaround);
    bus.preamble();
    bus.data(usb::data0, bytes);
    bus.wait(turnaround); // the device's answer has no preamble
    bus.handshake(usb::nak);
    bus.endOfLowSpeed();
}

} // namespace

/// Transactions of all kinds in turn, with data that counts up, and now and then each error.
void UsbAnalyzer::simulate(Simulation &simulation)
{
    const bool fullSpeed = m_settings.speed != UsbSpeed::Low;
    UsbDriver bus(simulation, m_settings.dp, m_settings.dm, fullSpeed);
    const std::int64_t rate = fullSpeed ? UsbReceiver::fullRate : UsbReceiver::lowRate;
    if (simulation.sampleRate() < leastSamplesPerBit * rate) {
        simulation.hold(simulation.sampleRate()); // no bit could be told
        return;
    }
    const std::uint32_t number = m_sent++;
    const auto low = std::uint8_t(number);
    const std::array<std::uint8_t, 4> bytes = {low, 0xff, 0xff, std::uint8_t(~low)};
    bus.wait(rest + simulation.random(100));
    if (fullSpeed) {
        bus.startOfFrame(number & 0x7ffU);
    } else {
        bus.keepAlive();
    }
    bus.wait(rest);
    if (number % suspendEvery == suspendEvery - 1) {
        bus.suspendAndResume();
        return;
    }
    if (fullSpeed && number % suspendEvery == suspendEvery / 2 - 1) {
        sendToLowSpeed(bus, number & 0x7fU, bytes);
        return;
    }
    switch (number % rounds) {
    case 0:
        bus.reset();
        break;
    case 1:
        readDescriptor(bus);
        break;
    case 2:
        writeData(bus, number & 0x7fU, bytes);
        break;
    case 3:
    case 4: {
        const bool isStall = number % rounds == 4;
        bus.token(usb::in, number & 0x7fU, isStall ? 3 : 1);
        bus.wait(turnaround);
        bus.handshake(isStall ? usb::stall : usb::nak);
        break;
    }
    case 5:
        bus.token(usb::in, number & 0x7fU, 15, UsbMishap::WrongCrc);
        break;
    case 6:
    case 7:
        readBrokenData(bus, number & 0x7fU, bytes, number % rounds == 6);
        break;
    case 8:
        bus.handshake(usb::ack, UsbMishap::WrongSync);
        break;
    default:
        bus.handshake(unknownPid);
        break;
    }
}
