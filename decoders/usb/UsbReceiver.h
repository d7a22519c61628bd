#pragma once

#include "UsbLine.h"
#include "UsbPacket.h"

#include <cstdint>

/// Takes packets from the line (Universal Serial Bus Specification 2.0, 7.1.7 to 7.1.9): bits in their middle, NRZI,
/// bit stuffing. Edges between J and K move the place of the bits, each by a quarter of a bit at most, as in a receiver
/// that samples four times a bit.
class UsbReceiver {
public:
    static constexpr std::int64_t lowRate = 1500000; ///< bits/s
    static constexpr std::int64_t fullRate = 12000000;

    /// @param sampleRate  Hz
    UsbReceiver(std::int64_t sampleRate, bool fullSpeed);

    /// Reads a packet. `line` stands at the first edge to K, and then behind the packet.
    ///
    /// With few samples a bit an edge may be seen as near to the bit before as to its own; which it is depends on the
    /// sender's clock. A packet that is not right is read again, with edges taken as a bit earlier and later.
    void receive(UsbLine &line, UsbPacket &packet) const;
    /// An SE0 of that length ends a packet; a shorter one is the skew of two edges (7.1.4.1, 7.1.13.2).
    [[nodiscard]] bool isEndOfPacket(lux::Sample length) const { return isLongerThanSkew(length, m_bit); }
    /// So many bits of the bus in samples.
    [[nodiscard]] lux::Sample samplesOf(std::int64_t bits) const { return (bits * m_bit) >> fractionBits; }

private:
    using Time = std::int64_t; ///< in 1/65536 of a sample
    static constexpr unsigned fractionBits = 16;

    class Bits;

    /// How edges are taken where an edge is hardly known better than to a bit.
    struct Way {
        Time bias = 0;  ///< by which they count as later
        Time slack = 0; ///< by which they may be off without a move of the bits
    };

    /// The usual one, of which nothing is computed.
    struct Plain {
        static constexpr Time bias = 0;
        static constexpr Time slack = 0;
    };

    template<class HowTaken>
    void read(UsbLine &line, UsbPacket &packet, const HowTaken &way) const;

    [[nodiscard]] bool isLowSpeedPacket(const UsbLine &line) const;
    [[nodiscard]] static bool isLongerThanSkew(lux::Sample length, Time bit)
    {
        return 2 * (length << fractionBits) > bit;
    }
    [[nodiscard]] static bool endsHere(const UsbLine &line, Time bit);
    void endOfPacket(UsbLine &line, UsbPacket &packet) const;

    Time m_bit;
    Time m_lowBit;
    bool m_fullSpeed;
    bool m_hasFewSamples;
};
