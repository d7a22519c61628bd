#include "ManchesterResults.h"

#include <algorithm>
#include <array>
#include <utility>

using lux::FrameText;
using lux::FrameValues;

namespace {

/// The text and the value of each field.
constexpr std::array<std::pair<const char *, const char *>, 7> fieldNames{{{"Start bit", "start"},
                                                                           {"Mode", "mode"},
                                                                           {"Toggle", "toggle"},
                                                                           {"Address", "address"},
                                                                           {"Command", "command"},
                                                                           {"Customer code", "customer"},
                                                                           {"Data", "data"}}};

} // namespace

ManchesterResults::ManchesterResults(const ManchesterSettings &settings)
    : m_line(settings.data),
      m_wordBits(unsigned(settings.bits.value())),
      m_asBytes(settings.format == ManchesterFormat::Words)
{
    showBubblesOn(m_line);
}

/// The bits of a run as 0 and 1.
std::string ManchesterResults::bitsOf(const FrameData &frame, std::size_t most) const
{
    const auto packed = bytes(frame.data);
    const std::size_t count = std::min<std::size_t>({frame.extra, most, packed.size() * 8});
    std::string text(count, '0');
    for (std::size_t i = 0; i < count; ++i) {
        text[i] = (packed[i / 8] >> (7 - i % 8) & 1U) != 0 ? '1' : '0';
    }
    return text;
}

void ManchesterResults::describe(const FrameData &frame, FrameText &out) const
{
    constexpr std::size_t mostShown = 256;
    const lux::ShortText count = lux::formatCount(frame.extra);
    switch (frame.kind) {
    case Bits: {
        out.add(count);
        out.add(count, " bits");
        if (m_asBytes) {
            lux::ShortText head(count);
            head.add(" bits: ");
            out.addBytes(head, bytes(frame.data), mostShown / 8);
            break;
        }
        const std::string bits = bitsOf(frame, mostShown);
        const char *more = frame.extra > mostShown ? "..." : "";
        out.add(bits, more);
        out.add(count, " bits: ", bits, more);
        break;
    }
    case Word:
        out.add(out.number(frame.data, m_wordBits));
        out.add("Word ", out.number(frame.data, m_wordBits));
        break;
    case Part:
        out.add("!");
        out.add(out.number(frame.data, frame.extra), " !");
        out.add("Rest of ", count, frame.extra == 1 ? " bit: " : " bits: ", out.number(frame.data, frame.extra));
        break;
    case Violation:
        out.add("!");
        out.add("Violation");
        out.add("Code violation");
        break;
    case Leader:
        out.add("L");
        out.add("Leader");
        break;
    case Element:
        out.add(out.number(frame.data, frame.extra));
        out.add(fieldNames.at(frame.line).first, " ", out.number(frame.data, frame.extra));
        break;
    default:
        break;
    }
}

void ManchesterResults::values(const FrameData &frame, FrameValues &out) const
{
    switch (frame.kind) {
    case Bits:
        out.kind("bits").text("v", bitsOf(frame, frame.extra));
        break;
    case Word:
        out.kind("word").number("v", frame.data);
        break;
    case Part:
        out.kind("rest").number("n", frame.extra).number("v", frame.data);
        break;
    case Violation:
        out.kind("violation");
        break;
    case Leader:
        out.kind("leader");
        break;
    case Element:
        out.kind("element").text("name", fieldNames.at(frame.line).second).number("v", frame.data);
        break;
    default:
        break;
    }
}

std::span<const char *const> ManchesterResults::columns() const
{
    static constexpr const char *names[] = {"v", "n", "name"};
    return names;
}
