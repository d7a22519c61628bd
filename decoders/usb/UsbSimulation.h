#pragma once

#include "UsbPacket.h"

#include <corvanlux/analyzer/Simulation.h>
#include <cstdint>
#include <span>
#include <vector>

/// What goes wrong with a packet of the simulation.
enum class UsbMishap : std::uint8_t { None, WrongCrc, StuffError, WrongSync };

/// Host and device of a simulated bus: packets as bits on D+ and D-.
class UsbDriver {
public:
    UsbDriver(lux::Simulation &simulation, const Channel &dp, const Channel &dm, bool fullSpeed);

    void token(std::uint8_t pid, std::uint32_t address, std::uint32_t endpoint, UsbMishap mishap = UsbMishap::None);
    void startOfFrame(std::uint32_t number);
    void data(std::uint8_t pid, std::span<const std::uint8_t> bytes, UsbMishap mishap = UsbMishap::None);
    void handshake(std::uint8_t pid, UsbMishap mishap = UsbMishap::None);
    void keepAlive();
    void reset();
    /// Three milliseconds of J, then K for longer than a device may drive it, and its end (7.1.7.6, 7.1.7.7).
    void suspendAndResume();
    /// Of a full-speed bus: packets to a low-speed device behind a hub (8.6.5), until `endOfLowSpeed`.
    void preamble();
    void endOfLowSpeed();
    /// J for so many bits.
    void wait(std::int64_t bits);

private:
    void send(const std::vector<std::uint8_t> &bytes, UsbMishap mishap = UsbMishap::None);
    void sendBits(const std::vector<std::uint8_t> &bytes, std::uint8_t sync);
    void sendToken(std::uint8_t pid, std::uint32_t bits, UsbMishap mishap);
    void drive(bool j);
    void endOfPacket();
    void singleEndedZero();

    lux::Simulation &m_simulation;
    lux::SimulationLine &m_j; ///< the line that is high in J
    lux::SimulationLine &m_k;
    std::int64_t m_rate; ///< bits/s
};
