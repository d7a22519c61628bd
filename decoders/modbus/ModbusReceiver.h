#pragma once

#include "ModbusSettings.h"
#include "common/Crc.h"

#include <cstdint>
#include <functional>
#include <vector>

/// The check of RTU frames (Modbus over serial line V1.02, 6.2.2): the lower byte is sent first.
using ModbusCrc = lux::Crc<lux::CrcModel{.width = 16, .polynomial = 0x8005, .initial = 0xffff, .lsbFirst = true}>;

/// One direction: makes frames out of characters, by silence (RTU) or by ':' and line ends (ASCII).
class ModbusReceiver {
public:
    /// What was received: a frame, or characters that make none.
    struct Received {
        std::vector<std::uint8_t> bytes; ///< with the check; of what is no frame, the characters
        lux::Sample first = 0;
        lux::Sample last = 0;
        bool isFrame = false;
        bool isCheckRight = false;
        bool hasParityError = false;
        bool hasFramingError = false;
        bool hasPause = false;     ///< a silence of more than 1.5 characters within
        lux::Sample pauseEnd = -1; ///< the start behind the last such silence
    };
    /// Is told each character, right after it was read.
    using Watcher = std::function<void(const lux::AsyncLine &, const lux::AsyncCharacter &)>;

    ModbusReceiver(const lux::ChannelReader &line, const lux::BitGrid &grid, const lux::AsyncFormat &format,
                   ModbusMode mode, std::int64_t sampleRate);

    /// The next frame, or what is none. @return false when there is no further one; what the capture cuts is left out
    [[nodiscard]] bool next(Received &received, const Watcher &watch);

private:
    enum class Step : std::uint8_t { Goes, Ends, Breaks };

    [[nodiscard]] bool findStart();
    [[nodiscard]] bool read(lux::AsyncCharacter &character);
    void add(Received &received, const lux::AsyncCharacter &character) const;
    [[nodiscard]] bool nextRtu(Received &received, const Watcher &watch);
    [[nodiscard]] bool endsBefore(lux::Sample start, Received &received) const;
    [[nodiscard]] bool nextAscii(Received &received, const Watcher &watch);
    [[nodiscard]] Step takeAscii(Received &received, const lux::AsyncCharacter &character);

    lux::AsyncLine m_line;
    ModbusMode m_mode;
    lux::Sample m_sampleCount;
    lux::Sample m_shortSilence; ///< no longer one is within a frame
    lux::Sample m_longSilence;  ///< so long a one ends a frame
    lux::Sample m_timeout;      ///< between two characters of an ASCII frame
    ModbusCrc m_crc;
    bool m_hasStart = false;
    bool m_hasFrame = false; ///< one was read already
    // Of an ASCII frame.
    unsigned m_digits = 0;
    std::uint8_t m_half = 0;
    bool m_hasReturn = false;
    bool m_hasColon = false; ///< the next frame's first character was read already
    lux::AsyncCharacter m_colon;
};
