#include "SwdAnalyzer.h"

#include <algorithm>
#include <bit>
#include <cstdint>

using lux::Simulation;

namespace {

constexpr std::int64_t usualRate = 1000000; ///< Hz of SWCLK
constexpr std::int64_t samplesPerClock = 8;
constexpr std::int64_t partsOfClock = 2;
constexpr std::uint64_t allOnes = ~std::uint64_t(0);
constexpr unsigned onesOfReset = 52;
constexpr unsigned bitsOfData = 32;
constexpr std::uint32_t resetEvery = 32; ///< transfers
constexpr std::uint32_t waitEvery = 5;
constexpr std::uint32_t faultEvery = 31;
constexpr std::uint32_t silenceEvery = 29;
constexpr std::uint32_t wrongParityEvery = 67;

/// The eight bits of a request. @param place  APnDP, RnW, A[2], A[3] from the lowest bit on
unsigned requestOf(unsigned place)
{
    return 0x81U | place << 1 | unsigned(std::popcount(place)) % 2 << 5;
}

} // namespace

/// Line reset, switch, line reset, a read of DPIDR, a request of wrong parity; then transfers whose data counts, with
/// answers of all kinds and wrong parity in between. The port is left to JTAG or to the dormant state by turns, and
/// switched to again.
void SwdAnalyzer::simulate(Simulation &simulation)
{
    const std::uint32_t number = m_sent++;
    if (number % resetEvery == 0) {
        sendBits(simulation, allOnes, onesOfReset);
        sendBits(simulation, 0xe79e, 16);
        sendBits(simulation, allOnes, onesOfReset);
        sendBits(simulation, 0, 4);
        sendTransfer(simulation, 0x2, SwdAck::Ok, 0x2ba01477); // read of DPIDR
        sendBits(simulation, 0, 8);
        sendBits(simulation, requestOf(0x2) ^ 0x20U, 8); // the same of wrong parity: nobody answers
        sendBits(simulation, 0, 8);
    }
    const SwdAck ack = number % silenceEvery == 6 ? SwdAck::NoReply
                       : number % faultEvery == 3 ? SwdAck::Fault
                       : number % waitEvery == 2  ? SwdAck::Wait
                                                  : SwdAck::Ok;
    // APnDP, RnW, A[2:3]; writes go to an access port, so that they change nothing of the port itself.
    const unsigned request = (number % 3 == 0 ? 0x2U : 0x1U) | (number >> 2 & 3U) << 2;
    sendTransfer(simulation, request, ack, number, number % wrongParityEvery == 5);
    sendBits(simulation, 0, 8 + simulation.random(8));
    if (number % resetEvery == resetEvery - 1) {
        leave(simulation, number / resetEvery % 2 == 0);
    }
}

/// By a sequence behind a line reset (ARM IHI 0031, B5.3); the dormant port is woken again, by the alert and the
/// activation code of SWD.
void SwdAnalyzer::leave(Simulation &simulation, bool isDormant)
{
    sendBits(simulation, allOnes, onesOfReset);
    sendBits(simulation, isDormant ? 0xe3bc : 0xe73c, 16);
    if (!isDormant) {
        return;
    }
    sendBits(simulation, allOnes, 8);
    sendBits(simulation, 0x86852d956209f392, 64);
    sendBits(simulation, 0x19bc0ea2e3ddafe9, 64);
    sendBits(simulation, 0, 4);
    sendBits(simulation, 0x1a, 8);
}

/// @param request  APnDP, RnW, A[2], A[3] from the lowest bit on
void SwdAnalyzer::sendTransfer(Simulation &simulation, unsigned request, SwdAck ack, std::uint32_t value,
                               bool wrongParity)
{
    const bool isRead = (request & 2U) != 0;
    sendBits(simulation, requestOf(request), 8);
    sendBits(simulation, 1, 1);
    sendBits(simulation, ack == SwdAck::Ok ? 1 : ack == SwdAck::Wait ? 2 : ack == SwdAck::Fault ? 4 : 7, 3);
    if (!isRead || ack != SwdAck::Ok) {
        sendBits(simulation, 1, 1);
    }
    if (ack == SwdAck::Ok) {
        sendBits(simulation, value, bitsOfData);
        sendBits(simulation, (unsigned(std::popcount(value)) % 2) ^ unsigned(wrongParity), 1);
        if (isRead) {
            sendBits(simulation, 1, 1);
        }
    }
}

/// The lowest bit first; SWDIO changes while SWCLK is low.
void SwdAnalyzer::sendBits(Simulation &simulation, std::uint64_t bits, unsigned count)
{
    const std::int64_t rate =
        std::max<std::int64_t>(1, std::min(usualRate, simulation.sampleRate() / samplesPerClock)) * partsOfClock;
    for (unsigned i = 0; i < count; ++i) {
        simulation.line(m_settings.swclk, true).set(false);
        simulation.line(m_settings.swdio, true).set((bits >> i & 1U) != 0);
        simulation.holdTime(1, rate);
        simulation.line(m_settings.swclk, true).set(true);
        simulation.holdTime(1, rate);
    }
}
