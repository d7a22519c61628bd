#pragma once

#include <corvanlux/analyzer/ChannelReader.h>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// Makes messages out of bytes (MIDI 1.0 Detailed Specification 4.2, pages 5 to 7 and ).
///
/// Knows what is expected next, and nothing of lines and frames.
class MidiParser {
public:
    static constexpr std::uint8_t systemExclusive = 0xf0;
    static constexpr std::uint8_t endOfExclusive = 0xf7;
    static constexpr std::uint8_t firstRealTime = 0xf8;

    enum class Event : std::uint8_t {
        None,     ///< more bytes are to come
        Complete, ///< the message is whole
    };

    /// What there is of a message that is not whole, or of bytes that belong to none.
    struct Pending {
        std::vector<std::uint8_t> bytes;
        std::uint8_t status = 0; ///< its own or the running one; 0 for stray data
        bool isRunning = false;  ///< the status byte was left out
        bool isStray = false;    ///< can become no message
    };

    [[nodiscard]] static constexpr bool isStatus(std::uint8_t byte) { return byte >= 0x80; }
    [[nodiscard]] static constexpr bool isRealTime(std::uint8_t byte) { return byte >= firstRealTime; }
    /// Data bytes behind a status byte; -1 for undefined ones and for system exclusive.
    [[nodiscard]] static int dataBytesOf(std::uint8_t status);
    /// System exclusive from F0 to F7 with a whole manufacturer's number: one byte, or three that begin with 00.
    [[nodiscard]] static bool isSoundExclusive(std::span<const std::uint8_t> bytes);

    /// Whether this byte, no real-time one, ends what is pending before it is whole.
    [[nodiscard]] bool interrupts(std::uint8_t byte) const;
    /// Takes a byte, no real-time one. What is pending and interrupted must have been dropped.
    Event take(std::uint8_t byte);
    [[nodiscard]] bool isPending() const { return !m_pending.bytes.empty(); }
    [[nodiscard]] const Pending &pending() const { return m_pending; }
    /// Forgets what is pending; the running status stays.
    void drop() { m_pending.bytes.clear(); }
    void forgetStatus() { m_running = 0; }

private:
    void begin(std::uint8_t status, bool isRunning, bool isStray);

    Pending m_pending;
    std::uint8_t m_running = 0; ///< 0 for none
};
