#pragma once

#include "CanCheck.h"
#include "CanFrame.h"
#include "CanLine.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

/// Reads one frame from its SOF on (ISO 11898-1:2015, 10.4): bit stuffing, fields, checks.
class CanReceiver {
public:
    /// A bit that was looked at.
    struct Look {
        lux::Sample at;
        bool isStuff;
        bool isWrong; ///< of a whole frame: the end of a wrong check or stuff count, a slot without acknowledgement
    };

    CanReceiver(const lux::ChannelReader &atStart, const CanBitTimes &times)
        : m_line(atStart, times), m_begin(atStart.position())
    {}

    void receive();

    [[nodiscard]] const CanFrame &frame() const { return m_frame; }
    /// Also set for a whole frame whose last bits are wrong.
    [[nodiscard]] CanFault fault() const { return m_fault; }
    /// All that was sent was read, with a right check; what follows may be wrong.
    [[nodiscard]] bool isRight() const { return m_frame.isWhole && m_frame.crcRight; }
    [[nodiscard]] lux::Sample begin() const { return m_begin; }
    /// The first sample behind the frame, or behind the bit that breaks it.
    [[nodiscard]] lux::Sample end() const { return m_end; }
    /// The line behind the last bit that was looked at.
    [[nodiscard]] const CanLine &line() const { return m_line; }
    [[nodiscard]] std::span<const Look> looks() const { return {m_looks.data(), m_lookCount}; }

private:
    bool fail(CanFault fault)
    {
        m_fault = fault;
        return false;
    }
    bool look(bool &recessive, bool isStuff);
    void markLastWrong() { m_looks[m_lookCount - 1].isWrong = true; }
    bool stuffBit();
    bool bit(bool &value);
    bool bits(unsigned count, std::uint32_t &value);

    bool startOfFrame();
    bool arbitration();
    bool control();
    bool controlOfFd();
    bool dataLength();
    bool data();
    bool check();
    bool checkOfFd();
    bool fixedStuffBit();
    bool fixedBits(unsigned count, unsigned &sinceStuff, std::uint32_t &value);
    bool crcDelimiter();
    /// An edge of the sender's, and which of the frame's bits begins with it.
    struct Edge {
        lux::Sample at;
        std::int64_t bit;
    };
    template<typename Use>
    void eachEdge(Use &&use) const;
    [[nodiscard]] CanTime fittedEnd() const;
    [[nodiscard]] CanTime followedEnd() const;
    bool acknowledgeSlot(bool &recessive);
    bool acknowledgement();
    void endOfFrame();

    CanLine m_line;
    CanFrame m_frame;
    CanFault m_fault = CanFault::None;
    lux::Sample m_begin;
    lux::Sample m_end = 0;
    bool m_isClassic = false; ///< known from FDF on
    // Bit stuffing (10.5).
    unsigned m_run = 0; ///< equal bits so far
    bool m_level = true;
    unsigned m_stuffBits = 0;
    can::BitString m_plain;   ///< without stuff bits
    can::BitString m_stuffed; ///< with them
    bool m_isFitted = false;  ///< the places of the bits behind the check
    std::size_t m_slot = 0;   ///< the look at the ACK slot
    std::size_t m_lookCount = 0;
    std::array<Look, 800> m_looks;
};
