#include "ModbusResults.h"

#include <string>

using lux::FrameText;
using lux::FrameValues;
using lux::ShortText;

ModbusResults::ModbusResults(const ModbusSettings &settings)
    : m_rx(settings.rx), m_tx(settings.tx), m_checkBytes(settings.mode == ModbusMode::Rtu ? 2 : 1)
{
    for (const Channel &channel : {m_rx, m_tx}) {
        if (channel.isDefined()) {
            showBubblesOn(channel);
        }
    }
}

void ModbusResults::addReceived(const ModbusReceiver::Received &received, Line line, unsigned flags,
                                std::uint32_t asked)
{
    flags |= received.hasParityError ? unsigned(ParityError) : 0U;
    flags |= received.hasFramingError ? unsigned(FramingError) : 0U;
    flags |= received.hasPause ? unsigned(Pause) : 0U;
    flags |= received.isCheckRight ? 0U : unsigned(CheckWrong);
    add({.firstSample = received.first,
         .lastSample = received.last,
         .data = keep(received.bytes),
         .kind = std::uint8_t(received.isFrame ? Whole : Error),
         .line = line,
         .flags = std::uint16_t(flags),
         .extra = asked});
}

std::span<const std::uint8_t> ModbusResults::withoutCheck(const FrameData &frame) const
{
    const auto all = bytes(frame.data);
    return all.first(all.size() - m_checkBytes);
}

// ---- texts ----------------------------------------------------------------------------------------------------------

void ModbusResults::describe(const FrameData &frame, FrameText &out) const
{
    if (out.isBubble() && out.channel().channelIndex != channelOf(frame).channelIndex) {
        return;
    }
    if (frame.kind == Whole) {
        describeFrame(frame, out);
        return;
    }
    out.add("!");
    out.add("Error");
    out.addBytes(has(frame, FramingError) ? "No frame, framing error: " : "No frame: ", bytes(frame.data));
}

void ModbusResults::describeFrame(const FrameData &frame, FrameText &out) const
{
    const ModbusFrame modbus(withoutCheck(frame));
    ShortText errors(has(frame, CheckWrong) ? (m_checkBytes == 2 ? ", CRC error" : ", LRC error") : "");
    errors.add(has(frame, ParityError) ? ", parity error" : "");
    errors.add(has(frame, FramingError) ? ", framing error" : "");
    errors.add(has(frame, Pause) ? ", pause within" : "");
    const bool isWrong = !errors.view().empty();
    ShortText name(modbus.functionName());
    if (name.view().empty()) {
        name.add("Function ");
        name.add(out.number(modbus.function(), 7));
    }
    const std::string_view sign = isWrong ? " !" : "";
    const std::string_view side = modbus.isException() ? "exception" : has(frame, Response) ? "response" : "request";

    out.add(isWrong ? "!" : modbus.isException() ? "E" : has(frame, Response) ? "R" : "Q");
    out.add(out.number(modbus.function(), 7), sign);
    out.add(name, sign);
    out.add(out.number(modbus.unit(), 8), ": ", name, " ", side, sign);
    ShortText head("Unit ");
    head.add(out.number(modbus.unit(), 8));
    head.add(modbus.unit() == ModbusFrame::broadcast ? " (all): " : ": ");
    head.add(name);
    head.add(" ");
    head.add(side);
    const ShortText more = details(frame, modbus, out);
    out.add(head, more, errors);
    if (modbus.isException() || modbus.data().empty()) {
        return;
    }
    std::string full(head.view()); // it may be longer than a short text
    full += more.view();
    full += errors.view();
    full += ": ";
    out.addBytes(full, modbus.data());
}

/// Where and how many: of a response to a read as its request said it.
ShortText ModbusResults::details(const FrameData &frame, const ModbusFrame &modbus, const FrameText &out) const
{
    constexpr unsigned addressBits = 16;
    ShortText text;
    if (modbus.isException()) {
        const std::string_view name = modbus.exceptionName();
        text.add(", ");
        text.add(name.empty() ? "unknown code" : name);
        if (name.empty() && !modbus.data().empty()) {
            text.add(" ");
            text.add(out.number(modbus.data()[0], 8));
        }
        return text;
    }
    const bool isOfBoth = modbus.function() == ModbusFrame::ReadWriteRegisters;
    const bool isAnswerToRead = has(frame, Response) && (modbus.isRead() || isOfBoth);
    if (isAnswerToRead && !has(frame, HasRequest)) {
        return text;
    }
    switch (modbus.function()) {
    case ModbusFrame::ReadCoils:
    case ModbusFrame::ReadDiscreteInputs:
    case ModbusFrame::ReadHoldingRegisters:
    case ModbusFrame::ReadInputRegisters:
    case ModbusFrame::WriteMultipleCoils:
    case ModbusFrame::WriteMultipleRegisters:
        text.add(", address ");
        text.add(out.number(isAnswerToRead ? askedAddress(frame) : modbus.word(0), addressBits));
        text.add(", count ");
        text.add(lux::formatCount(isAnswerToRead ? askedCount(frame) : modbus.word(2)));
        break;
    case ModbusFrame::ReadWriteRegisters:
        text.add(", read address ");
        text.add(out.number(isAnswerToRead ? askedAddress(frame) : modbus.word(0), addressBits));
        text.add(", count ");
        text.add(lux::formatCount(isAnswerToRead ? askedCount(frame) : modbus.word(2)));
        if (!isAnswerToRead) {
            text.add(", write address ");
            text.add(out.number(modbus.word(4), addressBits));
            text.add(", count ");
            text.add(lux::formatCount(modbus.word(6)));
        }
        break;
    case ModbusFrame::WriteSingleCoil:
    case ModbusFrame::WriteSingleRegister:
    case ModbusFrame::MaskWriteRegister:
        text.add(", address ");
        text.add(out.number(modbus.word(0), addressBits));
        break;
    default:
        break;
    }
    return text;
}

// ---- values ---------------------------------------------------------------------------------------------------------

void ModbusResults::values(const FrameData &frame, FrameValues &out) const
{
    out.kind(frame.kind == Whole ? "frame" : "error").number("ch", channelOf(frame).channelIndex);
    out.hex("v", bytes(frame.data));
    if (frame.kind == Whole) {
        const ModbusFrame modbus(withoutCheck(frame));
        out.number("crc", !has(frame, CheckWrong)).number("unit", modbus.unit()).number("fn", modbus.function());
        out.text("side", has(frame, Response) ? "response" : "request");
        if (modbus.isException()) {
            out.number("exception", modbus.data().empty() ? 0 : modbus.data()[0]);
        }
    }
    if (has(frame, ParityError)) {
        out.number("pe", 1);
    }
    if (has(frame, FramingError)) {
        out.number("fe", 1);
    }
    if (has(frame, Pause)) {
        out.number("pause", 1);
    }
}

std::span<const char *const> ModbusResults::columns() const
{
    static constexpr const char *names[] = {"ch", "v", "crc", "unit", "fn", "side", "exception", "pe", "fe", "pause"};
    return names;
}
