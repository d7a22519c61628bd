#include "QspiResults.h"

#include "common/MessageExport.h"

#include <algorithm>

using lux::FrameText;
using lux::FrameValues;
using lux::ShortText;

namespace {

constexpr std::size_t addressBytes = 4; ///< before the single-line bytes

} // namespace

QspiResults::QspiResults(const QspiSettings &settings) : m_cs(settings.cs), m_set(settings.set)
{
    const std::array<Channel, 4> lines = settings.lines();
    m_io = lines[0].isDefined() ? lines[0] : lines[1];
    showBubblesOn(m_cs);
    showBubblesOn(m_io);
}

FrameData QspiResults::transferFrame(const Content &content, lux::Sample first, lux::Sample last)
{
    std::vector<std::uint8_t> rest;
    for (unsigned shift = 32; shift > 0; shift -= 8) {
        rest.push_back(std::uint8_t(content.address >> (shift - 8)));
    }
    rest.insert(rest.end(), content.out.begin(), content.out.end());
    rest.insert(rest.end(), content.in.begin(), content.in.end());
    return {.firstSample = first,
            .lastSample = last,
            .data = content.data.empty() ? 0 : keep(content.data),
            .data2 = keep(rest),
            .kind = Transfer,
            .line = std::uint8_t(content.data.empty() ? 0 : 1),
            .flags = std::uint16_t(content.flags),
            .extra = std::uint32_t(content.command) | std::uint32_t(content.lines) << 8 |
                     std::uint32_t(content.mode) << 16 | std::uint32_t(content.out.size()) << 24};
}

std::span<const std::uint8_t> QspiResults::dataOf(const FrameData &frame) const
{
    return frame.line == 0 ? std::span<const std::uint8_t>() : bytes(frame.data);
}

std::uint32_t QspiResults::addressOf(const FrameData &frame) const
{
    std::uint32_t address = 0;
    for (const std::uint8_t byte : restOf(frame).first(addressBytes)) {
        address = address << 8 | byte;
    }
    return address;
}

std::string_view QspiResults::nameOf(const FrameData &frame) const
{
    const QspiCommand *command = findCommand(m_set, commandOf(frame), has(frame, Qpi));
    return command == nullptr ? std::string_view() : command->name;
}

// ---- texts ----------------------------------------------------------------------------------------------------------

void QspiResults::describe(const FrameData &frame, FrameText &out) const
{
    const bool isTransfer = frame.kind == Transfer || frame.kind == Short;
    if (out.isBubble() && out.channel().channelIndex != (isTransfer ? m_cs : m_io).channelIndex) {
        return;
    }
    const ShortText byte = out.number(frame.data, 8);
    switch (frame.kind) {
    case Transfer:
        describeTransfer(frame, out);
        break;
    case Short:
        out.add("!");
        out.add("Short");
        out.add("Select with ", lux::formatCount(std::int64_t(frame.data)), frame.data == 1 ? " clock" : " clocks");
        break;
    case Command: {
        const std::string_view name = nameOf(frame);
        out.add("C");
        out.add(byte);
        out.add("Command ", byte);
        if (!name.empty()) {
            out.add(name);
            out.add("Command ", byte, ": ", name);
        }
        break;
    }
    case Address:
        out.add("A");
        out.add(out.number(frame.data, has(frame, FourBytes) ? 32 : 24));
        out.add("Address ", out.number(frame.data, has(frame, FourBytes) ? 32 : 24));
        break;
    case Mode:
        out.add("M");
        out.add("Mode ", byte);
        break;
    case Dummy:
        out.add("X");
        out.add("Dummy");
        out.add("Dummy, ", lux::formatCount(std::int64_t(frame.data)), frame.data == 1 ? " clock" : " clocks");
        break;
    default:
        out.add(byte);
        out.add(has(frame, Raw) ? "Data " : has(frame, Write) ? "Write " : "Read ", byte);
        break;
    }
}

void QspiResults::describeTransfer(const FrameData &frame, FrameText &out) const
{
    const std::string_view name = nameOf(frame);
    const std::span<const std::uint8_t> data = dataOf(frame);
    ShortText title;
    if (has(frame, HasCommand)) {
        const ShortText code = out.number(commandOf(frame), 8);
        title = name.empty() ? code : ShortText(name);
        out.add("T");
        out.add(code);
        out.add(title);
    } else {
        title = ShortText("Data");
        out.add("D");
        out.add(title);
    }
    title.add(has(frame, Continued) ? ", continued" : "");
    if (has(frame, HasAddress)) {
        title.add(" ");
        title.add(out.number(addressOf(frame), has(frame, FourBytes) ? 32 : 24));
        out.add(title);
    }
    if (has(frame, HasMode)) {
        title.add(", mode ");
        title.add(out.number(modeOf(frame), 8));
    }
    ShortText count(title);
    if (!data.empty()) {
        count.add(", ");
        count.add(lux::formatCount(std::int64_t(data.size())));
        count.add(data.size() == 1 ? " byte" : " bytes");
    }
    out.add(count);
    if (!data.empty()) {
        count.add(": ");
        out.addBytes(count, data, mostShown);
    }
}

// ---- values ---------------------------------------------------------------------------------------------------------

void QspiResults::values(const FrameData &frame, FrameValues &out) const
{
    switch (frame.kind) {
    case Transfer:
        transferValues(frame, out);
        break;
    case Short:
        out.kind("short").number("n", frame.data);
        break;
    case Command:
        out.kind("command").hex("v", frame.data, 2);
        break;
    case Address:
        out.kind("address").hex("v", frame.data, has(frame, FourBytes) ? 8 : 6);
        break;
    case Mode:
        out.kind("mode").hex("v", frame.data, 2);
        break;
    case Dummy:
        out.kind("dummy").number("n", frame.data);
        break;
    default:
        out.kind("data").hex("v", frame.data, 2);
        break;
    }
}

void QspiResults::transferValues(const FrameData &frame, FrameValues &out) const
{
    const auto shown = [](std::span<const std::uint8_t> all) { return all.first(std::min(all.size(), mostShown)); };
    out.kind("transfer");
    if (has(frame, HasCommand)) {
        out.hex("cmd", commandOf(frame), 2);
    }
    if (has(frame, HasAddress)) {
        out.hex("addr", addressOf(frame), has(frame, FourBytes) ? 8 : 6);
    }
    if (has(frame, HasMode)) {
        out.hex("mode", modeOf(frame), 2);
    }
    const std::span<const std::uint8_t> data = shown(dataOf(frame));
    if (!data.empty()) {
        out.number("lines", linesOf(frame)).hex("data", data);
    }
    const std::size_t count = singleCountOf(frame);
    if (count > 0) {
        out.hex("out", restOf(frame).subspan(addressBytes, count));
        out.hex("in", restOf(frame).subspan(addressBytes + count));
    }
    if (!data.empty() && linesOf(frame) > 1) {
        out.hex(linesOf(frame) == 2 ? "data2" : "data4", data);
    }
}

std::span<const char *const> QspiResults::columns() const
{
    static constexpr const char *names[] = {"cmd", "addr", "mode", "lines", "data", "v",
                                            "n",   "out",  "in",   "data2", "data4"};
    return names;
}

// ---- exports --------------------------------------------------------------------------------------------------------

void QspiResults::exportFile(lux::ExportWriter &out, std::uint32_t optionId) const
{
    switch (optionId) {
    case QspiSettings::ReadData:
        exportData(out, false);
        break;
    case QspiSettings::WrittenData:
        exportData(out, true);
        break;
    case QspiSettings::Transfers:
        exportTransfers(out);
        break;
    default:
        exportFrames(out);
        break;
    }
}

/// The data of all transfers in one direction, without commands and addresses. Raw data counts as read.
void QspiResults::exportData(lux::ExportWriter &out, bool written) const
{
    const std::uint64_t count = frameCount();
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        if (one.kind == Transfer && has(one, Write) == written) {
            out.write(dataOf(one));
        }
        out.progress(i, count);
    }
}

/// A line a transfer, with all its phases.
void QspiResults::exportTransfers(lux::ExportWriter &out) const
{
    const std::uint64_t count = frameCount();
    FrameText text;
    lux::MessageExport messages(out);
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        if (one.kind == Transfer || one.kind == Short) {
            text.start(FrameText::Purpose::Tabular, Channel(), out.base());
            describe(one, text);
            messages.whole(one, text.last());
        }
        out.progress(i, count);
    }
}
