#include "JtagResults.h"

#include <algorithm>
#include <string_view>

using lux::BitOrder;
using lux::FrameText;
using lux::FrameValues;

namespace {

constexpr unsigned bitsOfByte = 8;
constexpr unsigned bitsOfDigit = 4;
constexpr unsigned bitsOfWord = 64;

bool isSame(const Channel &a, const Channel &b)
{
    return a.isDefined() && a.channelIndex == b.channelIndex;
}

const char *registerOf(const FrameData &frame)
{
    return frame.kind == JtagResults::ShiftIr ? "IR" : frame.kind == JtagResults::ShiftDr ? "DR" : "Cut";
}

} // namespace

JtagResults::JtagResults(const JtagSettings &settings)
    : m_tms(settings.tms), m_tdi(settings.tdi), m_tdo(settings.tdo), m_order(settings.bitOrder)
{
    for (const Channel &channel : {m_tms, m_tdi, m_tdo}) {
        if (channel.isDefined()) {
            showBubblesOn(channel);
        }
    }
}

std::vector<std::uint8_t> JtagResults::packed(std::span<const std::uint64_t> words)
{
    std::vector<std::uint8_t> bytes;
    for (const std::uint64_t word : words) {
        for (unsigned bit = 0; bit < bitsOfWord; bit += bitsOfByte) {
            bytes.push_back(std::uint8_t(word >> bit));
        }
    }
    return bytes;
}

/// All digits of a shift's bits, the highest first.
std::string JtagResults::digits(const FrameData &frame, Line line, BitOrder order) const
{
    const std::uint64_t word = line == Line::Tdi ? frame.data : frame.data2;
    const std::uint32_t count = frame.extra;
    const std::span<const std::uint8_t> kept = count > bitsOfWord ? bytes(word) : std::span<const std::uint8_t>();
    const auto bitAt = [&](std::uint32_t i) {
        const std::uint32_t at = order == BitOrder::LsbFirst ? i : count - 1 - i;
        return count <= bitsOfWord ? unsigned(word >> at & 1U)
                                   : unsigned(kept[at / bitsOfByte]) >> at % bitsOfByte & 1U;
    };
    const std::uint32_t length = (count + bitsOfDigit - 1) / bitsOfDigit;
    std::string text(length, '0');
    for (std::uint32_t digit = 0; digit < length; ++digit) {
        unsigned value = 0;
        for (unsigned bit = 0; bit < bitsOfDigit && digit * bitsOfDigit + bit < count; ++bit) {
            value |= bitAt(digit * bitsOfDigit + bit) << bit;
        }
        text[length - 1 - digit] = "0123456789ABCDEF"[value];
    }
    return text;
}

/// In the chosen base; what is longer than 64 bits is hexadecimal.
std::string JtagResults::number(const FrameData &frame, Line line, DisplayBase base) const
{
    if (frame.extra > bitsOfWord) {
        return "0x" + digits(frame, line, m_order);
    }
    const std::uint64_t word = line == Line::Tdi ? frame.data : frame.data2;
    const std::uint64_t value = m_order == BitOrder::LsbFirst ? word : lux::reversed(word, frame.extra);
    return std::string(lux::formatNumber(value, frame.extra, base).view());
}

void JtagResults::describe(const FrameData &frame, FrameText &out) const
{
    const auto state = JtagState(frame.extra);
    if (!out.isBubble()) {
        if (frame.kind == State) {
            out.add(nameOf(state));
        } else {
            describeShift(frame, out);
        }
    } else if (frame.kind == State) {
        if (isSame(m_tms, out.channel())) {
            out.add(shortNameOf(state));
            out.add(nameOf(state));
        }
    } else if (isSame(m_tdi, out.channel())) {
        describeLine(frame, Line::Tdi, out);
    } else if (isSame(m_tdo, out.channel())) {
        describeLine(frame, Line::Tdo, out);
    }
}

void JtagResults::describeLine(const FrameData &frame, Line line, FrameText &out) const
{
    const std::string value = number(frame, line, out.base());
    out.add(registerOf(frame));
    out.add(registerOf(frame), " ", value);
    out.add(line == Line::Tdi ? "TDI " : "TDO ", registerOf(frame), " ", value, ", ", lux::formatCount(frame.extra),
            frame.extra == 1 ? " bit" : " bits");
}

void JtagResults::describeShift(const FrameData &frame, FrameText &out) const
{
    const std::string in = m_tdi.isDefined() ? "TDI " + number(frame, Line::Tdi, out.base()) : std::string();
    const std::string result = m_tdo.isDefined() ? "TDO " + number(frame, Line::Tdo, out.base()) : std::string();
    // 8.4.1: the code of all ones is that of BYPASS.
    const std::string sent = digits(frame, Line::Tdi, BitOrder::LsbFirst);
    const unsigned highest = (1U << ((frame.extra - 1) % bitsOfDigit + 1)) - 1;
    const bool isBypass = frame.kind == ShiftIr && m_tdi.isDefined() && sent[0] == "0123456789ABCDEF"[highest] &&
                          std::all_of(sent.begin() + 1, sent.end(), [](char digit) { return digit == 'F'; });
    out.add(registerOf(frame), ", ", lux::formatCount(frame.extra), frame.extra == 1 ? " bit: " : " bits: ", in,
            !in.empty() && !result.empty() ? ", " : "", result, isBypass ? " (BYPASS)" : "",
            frame.kind == Cut ? ", cut by TRST" : "");
}

void JtagResults::values(const FrameData &frame, FrameValues &out) const
{
    if (frame.kind == State) {
        out.kind("state").text("name", nameOf(JtagState(frame.extra))).number("clocks", frame.data);
        return;
    }
    out.kind(frame.kind == Cut ? "cut" : "shift");
    if (frame.kind != Cut) {
        out.text("reg", registerOf(frame));
    }
    out.number("n", frame.extra);
    const auto add = [&](const char *name, const Channel &channel, Line line) {
        if (!channel.isDefined()) {
            out.none(name);
            return;
        }
        const std::string text = digits(frame, line, m_order);
        out.text(name, std::string_view(text).substr(std::min(text.find_first_not_of('0'), text.size() - 1)));
    };
    add("tdi", m_tdi, Line::Tdi);
    add("tdo", m_tdo, Line::Tdo);
}

std::span<const char *const> JtagResults::columns() const
{
    static constexpr const char *names[] = {"reg", "n", "tdi", "tdo", "name", "clocks"};
    return names;
}

void JtagResults::exportFile(lux::ExportWriter &out, std::uint32_t optionId) const
{
    if (optionId == JtagSettings::Vectors) {
        exportVectors(out);
    } else {
        exportFrames(out);
    }
}

/// The statements of the Serial Vector Format that do what was seen: SIR and SDR, STATE RESET, RUNTEST. What TDO said
/// is what is expected.
void JtagResults::exportVectors(lux::ExportWriter &out) const
{
    out.line("ENDIR IDLE;");
    out.line("ENDDR IDLE;");
    const std::uint64_t count = frameCount();
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        out.progress(i, count);
        if (one.kind == ShiftIr || one.kind == ShiftDr) {
            exportShift(out, one);
        } else if (one.kind == State && JtagState(one.extra) == JtagState::TestLogicReset) {
            out.line("STATE RESET;");
        } else if (one.kind == State && JtagState(one.extra) == JtagState::RunTestIdle && one.data > 1) {
            out.line("RUNTEST ", lux::formatCount(std::int64_t(one.data)), " TCK;");
        } else if (one.kind == Cut) {
            out.line("! a shift was cut by TRST after ", lux::formatCount(one.extra), " bits");
        }
    }
}

void JtagResults::exportShift(lux::ExportWriter &out, const FrameData &frame) const
{
    out.write(frame.kind == ShiftIr ? "SIR " : "SDR ");
    out.write(lux::formatCount(frame.extra));
    out.write(" TDI (");
    out.write(digits(frame, Line::Tdi, BitOrder::LsbFirst));
    out.write(")");
    if (m_tdo.isDefined()) {
        out.write(" TDO (");
        out.write(digits(frame, Line::Tdo, BitOrder::LsbFirst));
        out.write(")");
    }
    out.write(";\n");
}
