#pragma once

#include "common/LinePair.h"

#include <cstdint>

namespace dsi {

// Codes of escape mode, the first bit the highest (MIPI Alliance Specification for D-PHY 1.1, 6.6, table 8).
inline constexpr std::uint8_t lowPowerData = 0xe1;
inline constexpr std::uint8_t ultraLowPower = 0x1e;
inline constexpr std::uint8_t resetTrigger = 0x62;
inline constexpr std::uint8_t tearingTrigger = 0x5d;     ///< Unknown-3 of D-PHY
inline constexpr std::uint8_t acknowledgeTrigger = 0x21; ///< Unknown-4 of D-PHY

} // namespace dsi

/// Something that a lane did.
struct DsiElement {
    enum class Kind : std::uint8_t {
        Entry,         ///< into escape mode, with a code of eight bits
        Byte,          ///< of low-power data
        Exit,          ///< out of escape mode; `value` bits of a byte are lost
        UltraLowPower, ///< from the entry to the stop state
        Turnaround,    ///< the other side drives the lane from now on
        Burst,         ///< high-speed data, which is not seen
    };

    Kind kind = Kind::Entry;
    std::uint8_t value = 0;
    lux::Sample first = 0;
    lux::Sample last = 0;
};

/// The low-power states of one lane (D-PHY 1.1, 6.1 to 6.6). Never leaves the decode at the data's end.
class DsiLane {
public:
    DsiLane(const lux::ChannelReader &p, const lux::ChannelReader &n) : m_pair(p, n) {}

    /// @return false at the data's end
    bool next(DsiElement &element);

private:
    enum State : unsigned {
        Lp00 = 0,
        Lp10 = 1,
        Lp01 = 2,
        Lp11 = 3
    }; // named as in the standard, the positive line first
    enum class Mode : std::uint8_t { Unknown, Stop, Escape, Data, Trigger, UltraLow };
    struct Bit {
        bool value = false;
        bool isExit = false;
        lux::Sample first = 0;
        lux::Sample last = 0;
    };

    [[nodiscard]] unsigned state() const { return m_pair.levels(); }
    bool step();
    bool fromStop(DsiElement &element, bool &isElement);
    bool request(DsiElement &element, bool &isElement);
    bool burst(DsiElement &element, bool &isElement);
    bool readBit(Bit &bit);
    bool readByte(DsiElement &element, bool &isElement);
    bool leave(DsiElement &element, bool &isElement);

    lux::LinePair m_pair;
    Mode m_mode = Mode::Unknown;
    lux::Sample m_entryEnd = 0;
};
