#include "SdioBus.h"

#include "common/Crc.h"

#include <algorithm>
#include <optional>

using lux::ChannelReader;
using lux::Sample;

namespace {

// The checks (4.5): x^7 + x^3 + 1 of commands, x^16 + x^12 + x^5 + 1 of each data line.
constexpr lux::CrcModel crc7 = {.width = 7, .polynomial = 0x09};
constexpr lux::CrcModel crc16 = {.width = 16, .polynomial = 0x1021};
constexpr unsigned crc16Bits = 16;
constexpr unsigned statusBits = 3;
constexpr std::uint64_t allOnesAndEnd = 0xff;

constexpr unsigned mostLines = 4;
constexpr std::size_t mostEdges = 2; ///< of a clock

/// What the data lines carry with the rises of the clock, or with its falls.
struct EdgeData {
    std::array<lux::Crc<crc16>, mostLines> crc{};
    std::array<std::uint32_t, mostLines> sent{}; ///< the checks that were sent
    std::uint32_t byte = 0;                      ///< its lower eight bits are those that came last

    void addData(unsigned mask, unsigned width)
    {
        for (unsigned line = 0; line < width; ++line) {
            crc[line].addBit((mask >> line & 1U) != 0);
        }
        byte = byte << width | mask;
    }
    void addCheck(unsigned mask, unsigned width)
    {
        for (unsigned line = 0; line < width; ++line) {
            sent[line] = sent[line] << 1 | (mask >> line & 1U);
        }
    }
    [[nodiscard]] bool isRight(unsigned width) const
    {
        bool isRight = true;
        for (unsigned line = 0; line < width; ++line) {
            isRight = isRight && sent[line] == crc[line].value();
        }
        return isRight;
    }
};

Sample endOfClock(const ChannelReader &clk)
{
    return std::min(clk.peekEdge(), clk.sampleCount()) - 1;
}

} // namespace

bool goToRise(ChannelReader &clk)
{
    if (clk.level()) {
        if (!clk.hasEdge()) {
            return false;
        }
        clk.nextEdge();
    }
    if (!clk.hasEdge()) {
        return false;
    }
    clk.nextEdge();
    return true;
}

// ---- CMD ------------------------------------------------------------------------------------------------------------

bool SdioCommandLine::next(SdioToken &token, SdioLength response)
{
    bool isAtStart = false;
    if (!m_isInStep) {
        if (!findStep(response)) {
            return false;
        }
        isAtStart = true;
        m_isInStep = true;
    }
    while (isAtStart || findStart()) {
        isAtStart = false;
        readToken(token, response);
        m_isHeld = bitsFrom(0, token.bits) == 0 && token.bits <= SdioToken::shortBits;
        if (!m_isHeld || !token.isWhole()) {
            return true;
        }
    }
    return false;
}

/// A capture may begin in a token. Goes to the first start bit of a sound one, or to one behind a pause where no sound
/// token begins within what would be its bits: a pause may also be ones of an argument.
bool SdioCommandLine::findStep(SdioLength response)
{
    struct Place {
        ChannelReader clk;
        ChannelReader cmd;
    };
    std::optional<Place> paused;
    Sample end = 0;
    while (findStart() && (!paused || m_clk.position() <= end)) {
        const Place start{m_clk, m_cmd};
        const bool isBehind = !paused && isBehindPause();
        SdioToken token;
        readToken(token, response);
        const bool isFound = isSound(token);
        m_clk = start.clk;
        m_cmd = start.cmd;
        if (isFound) {
            return true;
        }
        if (isBehind) {
            paused = start;
            end = token.last;
        }
    }
    if (paused) {
        m_clk = paused->clk;
        m_cmd = paused->cmd;
    }
    return paused.has_value();
}

void SdioCommandLine::readToken(SdioToken &token, SdioLength response)
{
    token = {};
    token.first = m_clk.position();
    token.last = endOfClock(m_clk);
    token.bits = 1;
    m_bytes = {};
    if (readBits(token, SdioToken::shortBits)) {
        token.isLong = isLong(token, response);
        if (token.isLong) {
            (void)readBits(token, SdioToken::longBits);
        }
    }
    takeFields(token);
}

/// A start bit is low at a rise of the clock. What was low before the first rise, or for a token's length, is no bit.
bool SdioCommandLine::findStart()
{
    if (m_isHeld && !m_cmd.level()) {
        if (!m_cmd.hasEdge()) {
            return false;
        }
        m_cmd.nextEdge();
    }
    m_isHeld = false;
    for (;;) {
        if (m_cmd.level()) {
            if (!m_cmd.hasEdge()) {
                return false;
            }
            m_clk.advanceTo(m_cmd.nextEdge() - 1); // the clock may rise in the same sample
        }
        if (!goToRise(m_clk)) {
            return false;
        }
        if (!m_cmd.levelAt(m_clk.position())) {
            return true;
        }
    }
}

/// Whether CMD was high before the start bit for as long as between two commands (4.12, N_CC and N_RC).
bool SdioCommandLine::isBehindPause() const
{
    constexpr Sample pauseClocks = 8;
    ChannelReader behind = m_clk;
    if (!goToRise(behind)) {
        return false;
    }
    const Sample period = behind.position() - m_clk.position();
    const Sample fall = std::max<Sample>(m_cmd.lastEdge(), 0);
    ChannelReader before = m_cmd;
    before.seek(std::max<Sample>(fall - 1, 0));
    return fall > 0 && before.level() && fall - std::max<Sample>(before.lastEdge(), 0) >= (pauseClocks - 1) * period;
}

/// A token with the right check and end, or R3, which has none; behind it the line is high. The check of a line that
/// does not change may be right as well, and one of ones may be the line at rest behind a token.
bool SdioCommandLine::isSound(const SdioToken &token) const
{
    constexpr std::uint8_t ones = 0x7f;
    const bool isStill = token.argument == UINT32_MAX || (token.crc | token.index | token.argument) == 0;
    ChannelReader clk = m_clk;
    return !isStill && token.isWhole() && token.endRight &&
           ((token.crcRight && token.crc != ones) || token.hasNoCheck()) &&
           (!goToRise(clk) || m_cmd.peekLevel(clk.position()));
}

/// Up to so many bits in all, the start bit included.
bool SdioCommandLine::readBits(SdioToken &token, unsigned count)
{
    while (token.bits < count) {
        if (!goToRise(m_clk)) {
            return false;
        }
        const auto bit = std::uint8_t(m_cmd.levelAt(m_clk.position()));
        m_bytes[token.bits / 8] = std::uint8_t(m_bytes[token.bits / 8] << 1 | bit);
        token.last = endOfClock(m_clk);
        ++token.bits;
    }
    return true;
}

/// R2 has 136 bits, and six ones for an index, as R3 has with ones in place of its check (4.9).
bool SdioCommandLine::isLong(const SdioToken &token, SdioLength response) const
{
    constexpr unsigned headBits = 8;
    constexpr std::uint64_t headOfLong = 0x3f;
    if (bitsFrom(0, headBits) != headOfLong || response == SdioLength::Short) {
        return false;
    }
    return response == SdioLength::Long || bitsFrom(token.bits - headBits, headBits) != allOnesAndEnd;
}

std::uint64_t SdioCommandLine::bitsFrom(unsigned from, unsigned count) const
{
    std::uint64_t value = 0;
    for (unsigned i = from; i < from + count; ++i) {
        value = value << 1 | (m_bytes[i / 8] >> (7 - i % 8) & 1U);
    }
    return value;
}

void SdioCommandLine::takeFields(SdioToken &token) const
{
    if (token.bits < 8) {
        return;
    }
    token.fromHost = bitsFrom(1, 1) != 0;
    token.index = std::uint8_t(bitsFrom(2, 6));
    if (!token.isWhole()) {
        return;
    }
    const std::size_t checked = token.bits / 8 - 1;
    const std::span<const std::uint8_t> bytes(m_bytes.data(), checked);
    if (token.isLong) {
        std::copy_n(m_bytes.begin() + 1, SdioToken::registerBytes, token.content.begin());
    } else {
        token.argument = std::uint32_t(bitsFrom(8, 32));
    }
    token.crc = std::uint8_t(bitsFrom(token.bits - 8, 7));
    // The check of a long response is that of the register in it (5.2).
    token.crcRight = token.crc == lux::Crc<crc7>::of(token.isLong ? bytes.subspan(1) : bytes);
    token.endRight = bitsFrom(token.bits - 1, 1) != 0;
}

// ---- DAT ------------------------------------------------------------------------------------------------------------

SdioDataLines::SdioDataLines(const ChannelReader &clk, std::span<ChannelReader *const> lines, unsigned width,
                             bool isDouble)
    : m_clk(clk), m_width(width), m_used(width), m_edges(isDouble ? mostEdges : 1)
{
    for (const ChannelReader *line : lines) {
        m_lines.push_back(*line);
    }
}

bool SdioDataLines::takeRise()
{
    if (!goToRise(m_clk)) {
        return false;
    }
    m_taken = m_clk.position();
    return true;
}

/// From a rise to the fall behind it.
bool SdioDataLines::takeFall()
{
    if (!m_clk.hasEdge()) {
        return false;
    }
    m_taken = m_clk.nextEdge();
    return true;
}

unsigned SdioDataLines::levels()
{
    unsigned mask = 0;
    for (unsigned i = 0; i < m_used; ++i) {
        mask |= unsigned(m_lines[i].levelAt(m_taken)) << i;
    }
    return mask;
}

void SdioDataLines::skipTo(Sample sample)
{
    sample = std::min(sample, m_clk.sampleCount() - 1);
    m_clk.advanceTo(sample);
    m_lines[0].advanceTo(sample);
}

void SdioDataLines::returnTo(Sample sample)
{
    m_clk.seek(sample);
    for (ChannelReader &line : m_lines) {
        line.seek(sample);
    }
}

bool SdioDataLines::findStart(Sample end)
{
    ChannelReader &dat0 = m_lines[0];
    for (;;) {
        if (dat0.level()) {
            if (!dat0.hasEdgeBefore(end)) {
                return false;
            }
            // The clock may rise in the same sample.
            m_clk.advanceTo(dat0.nextEdge() - 1);
        }
        ChannelReader clk = m_clk;
        if (!goToRise(clk) || clk.position() > end) {
            return false;
        }
        m_clk = clk;
        m_taken = clk.position();
        if (levels() == 0) {
            return true;
        }
    }
}

/// With double data rate (DDR50) the first byte of each two comes with the rises and the second with the falls, and so
/// do their checks. What a fall has behind the start bit says nothing.
void SdioDataLines::readBlock(SdioBlock &block, std::size_t length, Sample stop)
{
    std::array<EdgeData, mostEdges> data;
    block = {};
    block.first = m_taken;
    block.bytes.reserve(length + 1);
    const unsigned width = m_used;
    if (m_edges > 1 && !takeFall()) {
        return;
    }
    const std::size_t clocks = (length + m_edges - 1) / m_edges * 8 / width;
    for (std::size_t clock = 1; clock <= clocks; ++clock) {
        for (std::size_t edge = 0; edge < m_edges; ++edge) {
            if (!takeEdge(edge) || m_taken > stop) {
                return;
            }
            data[edge].addData(levels(), width);
        }
        for (std::size_t edge = 0; clock * width % 8 == 0 && edge < m_edges; ++edge) {
            block.bytes.push_back(std::uint8_t(data[edge].byte));
        }
        block.last = endOfClock(m_clk);
    }
    block.bytes.resize(length); // of an odd number the last falls have none
    for (unsigned bit = 0; bit < crc16Bits; ++bit) {
        for (std::size_t edge = 0; edge < m_edges; ++edge) {
            if (!takeEdge(edge) || m_taken > stop) {
                return;
            }
            data[edge].addCheck(levels(), width);
        }
    }
    if (!takeRise() || m_taken > stop) {
        return;
    }
    block.endRight = levels() == (1U << width) - 1U;
    block.last = endOfClock(m_clk);
    block.crcRight = std::all_of(data.begin(), data.begin() + std::ptrdiff_t(m_edges),
                                 [width](const EdgeData &edge) { return edge.isRight(width); });
    block.isWhole = true;
}

bool SdioDataLines::readStatus(std::uint8_t &status, Sample &last)
{
    status = 0;
    for (unsigned bit = 0; bit < statusBits; ++bit) {
        if (!takeRise()) {
            return false;
        }
        status = std::uint8_t(unsigned(status) << 1 | unsigned(m_lines[0].levelAt(m_taken)));
    }
    if (!takeRise()) {
        return false;
    }
    last = endOfClock(m_clk);
    return true;
}

bool SdioDataLines::isBusy()
{
    return takeRise() && !m_lines[0].levelAt(m_taken);
}

bool SdioDataLines::release(Sample end, Sample &at)
{
    if (m_lines[0].level()) {
        at = m_lines[0].position();
        return true;
    }
    if (!m_lines[0].hasEdgeBefore(end)) {
        return false;
    }
    at = m_lines[0].nextEdge();
    m_clk.advanceTo(at);
    return true;
}
