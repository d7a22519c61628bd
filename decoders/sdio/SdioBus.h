#pragma once

#include <array>
#include <corvanlux/analyzer/ChannelReader.h>
#include <cstdint>
#include <span>
#include <vector>

// The lines of an SD bus: what is sent on CMD and on DAT0 to DAT3, without what it means. Both walk the clock with
// readers of their own and never leave the decode at the data's end.

/// A command or a response (SD Physical Layer Simplified Specification 6.00, 4.7.2 and 4.9).
struct SdioToken {
    static constexpr unsigned shortBits = 48;
    static constexpr unsigned longBits = 136;
    static constexpr std::size_t registerBytes = 15;

    lux::Sample first = 0; ///< the rise of the clock that takes the start bit
    lux::Sample last = 0;  ///< the last sample before the clock falls behind the end bit
    unsigned bits = 0;     ///< fewer than a token has when the capture ends
    bool fromHost = false;
    bool isLong = false;
    std::uint8_t index = 0;
    std::uint32_t argument = 0;
    std::array<std::uint8_t, registerBytes> content{}; ///< the register of a long response
    std::uint8_t crc = 0;
    bool crcRight = false;
    bool endRight = false;

    [[nodiscard]] bool isWhole() const { return bits == (isLong ? longBits : shortBits); }
    /// R3 and R4 have ones in place of index and check (4.9.4).
    [[nodiscard]] bool hasNoCheck() const { return !fromHost && !isLong && index == 0x3f && crc == 0x7f; }
};

/// What a response must be, as the command before it tells.
enum class SdioLength : std::uint8_t { Unknown, Short, Long };

class SdioCommandLine {
public:
    SdioCommandLine(const lux::ChannelReader &clk, const lux::ChannelReader &cmd) : m_clk(clk), m_cmd(cmd) {}

    /// Reads the next token. @param response  of which length it is when it comes from the card
    /// @return false when there is none
    bool next(SdioToken &token, SdioLength response);

private:
    [[nodiscard]] bool findStart();
    [[nodiscard]] bool readBits(SdioToken &token, unsigned count);
    [[nodiscard]] bool findStep(SdioLength response);
    void readToken(SdioToken &token, SdioLength response);
    [[nodiscard]] bool isBehindPause() const;
    [[nodiscard]] bool isSound(const SdioToken &token) const;
    [[nodiscard]] bool isLong(const SdioToken &token, SdioLength response) const;
    [[nodiscard]] std::uint64_t bitsFrom(unsigned from, unsigned count) const;
    void takeFields(SdioToken &token) const;

    lux::ChannelReader m_clk;
    lux::ChannelReader m_cmd;
    std::array<std::uint8_t, SdioToken::longBits / 8> m_bytes{};
    bool m_isHeld = true;    ///< the line is low without being a start bit
    bool m_isInStep = false; ///< it is known where tokens begin
};

/// A block of data with a check a line (3.6.1, 4.5).
struct SdioBlock {
    lux::Sample first = 0;
    lux::Sample last = 0;
    bool crcRight = false;
    bool endRight = false;
    bool isWhole = false;
    std::vector<std::uint8_t> bytes;
};

class SdioDataLines {
public:
    /// @param isDouble  blocks are taken at both edges of the clock
    SdioDataLines(const lux::ChannelReader &clk, std::span<lux::ChannelReader *const> lines, unsigned width,
                  bool isDouble);

    [[nodiscard]] bool exists() const { return m_lines[0].exists(); }
    /// Goes to the next start bit of all lines in use that the clock takes before `end`.
    bool findStart(lux::Sample end);
    /// Reads the block whose start bit was found. It is not whole when the capture or `stop` ends it.
    void readBlock(SdioBlock &block, std::size_t length, lux::Sample stop);
    /// Reads a status of three bits on DAT0 whose start bit was found. @return false when the capture ends it
    bool readStatus(std::uint8_t &status, lux::Sample &last);
    /// Whether DAT0 is low at the next rise of the clock, so that the card is busy. Goes there.
    bool isBusy();
    /// The first sample at which DAT0 is high again; false when it stays low up to `end` or to the capture's end.
    bool release(lux::Sample end, lux::Sample &at);
    /// The edge of the clock that was taken last: a rise, but within a block of double data rate.
    [[nodiscard]] lux::Sample taken() const { return m_taken; }
    /// What comes before that sample is not looked at.
    void skipTo(lux::Sample sample);
    /// Back to that sample, where what comes behind it was not what was looked for.
    void returnTo(lux::Sample sample);
    /// The lines in use for the next search: a status comes on DAT0 alone.
    void useDat0(bool alone) { m_used = alone ? 1 : m_width; }

private:
    [[nodiscard]] bool takeRise();
    [[nodiscard]] bool takeFall();
    [[nodiscard]] bool takeEdge(std::size_t edge) { return edge == 0 ? takeRise() : takeFall(); }
    [[nodiscard]] unsigned levels();

    lux::ChannelReader m_clk;
    std::vector<lux::ChannelReader> m_lines;
    unsigned m_width;
    unsigned m_used;
    std::size_t m_edges; ///< of a clock at which data is taken, the rise first
    lux::Sample m_taken = 0;
};

/// Takes the clock to its next rise. @return false when there is none
[[nodiscard]] bool goToRise(lux::ChannelReader &clk);
