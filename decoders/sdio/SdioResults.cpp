#include "SdioResults.h"

#include "common/MessageExport.h"

using lux::FrameText;
using lux::FrameValues;
using lux::ShortText;

SdioResults::SdioResults(const SdioSettings &settings) : m_cmd(settings.cmd), m_dat0(settings.d0)
{
    showBubblesOn(m_cmd);
    if (m_dat0.isDefined()) {
        showBubblesOn(m_dat0);
    }
}

void SdioResults::addToken(const SdioToken &token, std::uint8_t answers, std::uint16_t flags)
{
    const Kind kind = !token.isWhole() ? Cut : token.fromHost ? Command : token.isLong ? LongResponse : Response;
    const unsigned own = (token.crcRight ? 0U : unsigned(CrcWrong)) | (token.endRight ? 0U : unsigned(EndWrong)) |
                         (token.fromHost ? unsigned(FromHost) : 0U);
    add({.firstSample = token.first,
         .lastSample = token.last,
         .data = kind == LongResponse ? keep(token.content) : token.argument,
         .data2 = token.crc,
         .kind = kind,
         .flags = std::uint16_t(flags | own),
         .extra = token.index | std::uint32_t(answers) << 8 | token.bits << 16});
}

void SdioResults::addBlock(const SdioBlock &block, bool isWide)
{
    const unsigned flags = (block.crcRight ? 0U : unsigned(CrcWrong)) | (block.endRight ? 0U : unsigned(EndWrong)) |
                           (isWide ? unsigned(Wide) : 0U);
    add({.firstSample = block.first,
         .lastSample = block.last,
         .data = block.bytes.empty() ? 0 : keep(block.bytes),
         .kind = std::uint8_t(block.isWhole ? Data : CutData),
         .line = 1,
         .flags = std::uint16_t(flags),
         .extra = std::uint32_t(block.bytes.size())});
}

// ---- texts ----------------------------------------------------------------------------------------------------------

sdio::Response SdioResults::typeOf(const FrameData &frame)
{
    return has(frame, HasCommand) ? sdio::responseOf(answersOf(frame), has(frame, Application)) : sdio::Response::None;
}

/// R3 and R4 have ones in place of a check (4.9.4).
bool SdioResults::isWrong(const FrameData &frame)
{
    constexpr std::uint64_t noCheck = 0x7f;
    const bool isPlain = frame.kind == Response && indexOf(frame) == sdio::indexOfNone && frame.data2 == noCheck;
    return has(frame, EndWrong) || (has(frame, CrcWrong) && !isPlain);
}

void SdioResults::describe(const FrameData &frame, FrameText &out) const
{
    const bool isData = frame.line != 0;
    if (out.isBubble() && out.channel().channelIndex != (isData ? m_dat0 : m_cmd).channelIndex) {
        return;
    }
    switch (frame.kind) {
    case Command:
        describeCommand(frame, out);
        break;
    case Response:
    case LongResponse:
        describeResponse(frame, out);
        break;
    case Cut:
        out.add("!");
        out.add("Cut");
        out.add("Cut after ", lux::formatCount(bitsOf(frame)), bitsOf(frame) == 1 ? " bit" : " bits");
        break;
    case Status:
        out.add(frame.data == 2 ? "S" : "!");
        out.add("Status ", out.number(frame.data, 3));
        out.add("Block status: ", sdio::blockStatusName(std::uint8_t(frame.data)));
        break;
    case Busy:
        out.add("B");
        out.add("Busy");
        out.add("Busy for ", lux::formatDuration(frame.lastSample - frame.firstSample + 1, GetSampleRate()));
        break;
    default:
        describeData(frame, out);
        break;
    }
}

void SdioResults::describeCommand(const FrameData &frame, FrameText &out) const
{
    ShortText number(has(frame, Application) ? "ACMD" : "CMD");
    number.add(lux::formatCount(indexOf(frame)));
    const std::string_view name = sdio::commandName(indexOf(frame), has(frame, Application));
    const char *mark = isWrong(frame) ? " !" : "";
    out.add(isWrong(frame) ? "!" : "C");
    out.add(number, mark);
    if (!name.empty()) {
        out.add(number, " ", name, mark);
    }
    ShortText errors(has(frame, CrcWrong) ? ", CRC error" : "");
    errors.add(has(frame, EndWrong) ? ", end bit error" : "");
    out.add(number, name.empty() ? "" : " ", name, ", argument ", out.number(frame.data, 32), errors);
}

void SdioResults::describeResponse(const FrameData &frame, FrameText &out) const
{
    const sdio::Response type = typeOf(frame);
    const std::string_view typeName = sdio::responseName(type);
    ShortText title("Response");
    if (type != sdio::Response::None) {
        title = ShortText(typeName);
        title.add(has(frame, Application) ? " to ACMD" : " to CMD");
        title.add(lux::formatCount(answersOf(frame)));
    }
    ShortText errors;
    if (isWrong(frame)) {
        errors.add(has(frame, CrcWrong) ? ", CRC error" : "");
        errors.add(has(frame, EndWrong) ? ", end bit error" : "");
    }
    out.add(isWrong(frame) ? "!" : "R");
    if (type != sdio::Response::None) {
        out.add(typeName, isWrong(frame) ? " !" : "");
    }
    out.add(title, isWrong(frame) ? " !" : "");
    if (frame.kind == LongResponse) {
        title.add(errors);
        title.add(": ");
        out.addBytes(title, bytes(frame.data));
        return;
    }
    const auto status = std::uint32_t(frame.data);
    const ShortText number = out.number(frame.data, 32);
    if (type == sdio::Response::R1 || type == sdio::Response::R1b) {
        const std::string_view error = sdio::errorName(status);
        out.add(title, ": ", number, errors);
        out.add(title, ": ", number, ", state ", sdio::stateName(status), error.empty() ? "" : ", ", error, errors);
    } else {
        out.add(title, ": ", number, errors);
    }
}

void SdioResults::describeData(const FrameData &frame, FrameText &out) const
{
    const bool isCut = frame.kind == CutData;
    const bool wrong = isCut || isWrong(frame);
    const ShortText count = lux::formatCount(frame.extra);
    ShortText title("Data, ");
    title.add(count);
    title.add(frame.extra == 1 ? " byte" : " bytes");
    title.add(isCut ? ", cut" : has(frame, CrcWrong) ? ", CRC error" : "");
    title.add(!isCut && has(frame, EndWrong) ? ", end bit error" : "");
    out.add(wrong ? "!" : "D");
    out.add("Data", wrong ? " !" : "");
    out.add(title);
    if (frame.extra > 0) {
        title.add(": ");
        out.addBytes(title, bytes(frame.data), 16);
        out.addBytes(title, bytes(frame.data), 512);
    }
}

// ---- values ---------------------------------------------------------------------------------------------------------

void SdioResults::values(const FrameData &frame, FrameValues &out) const
{
    const bool isRight = !has(frame, CrcWrong);
    switch (frame.kind) {
    case Command:
    case Response:
    case LongResponse:
        out.kind(frame.kind == Command ? "command" : "response").number("idx", indexOf(frame));
        if (frame.kind == LongResponse) {
            out.hex("reg", bytes(frame.data));
        } else {
            out.number("arg", frame.data);
        }
        out.number("crc", frame.data2).number("ok", isRight).number("end", !has(frame, EndWrong));
        break;
    case Cut:
        out.kind("cut").number("n", bitsOf(frame));
        break;
    case Status:
        out.kind("status").number("v", frame.data);
        break;
    case Busy:
        out.kind("busy");
        break;
    default:
        out.kind(frame.kind == Data ? "data" : "cut_data").number("width", has(frame, Wide) ? 4 : 1);
        out.hex("v", frame.extra == 0 ? std::span<const std::uint8_t>() : bytes(frame.data));
        if (frame.kind == Data) {
            out.number("ok", isRight);
        }
        break;
    }
}

std::span<const char *const> SdioResults::columns() const
{
    static constexpr const char *names[] = {"idx", "arg", "reg", "crc", "ok", "end", "v", "width", "n"};
    return names;
}

void SdioResults::exportFile(lux::ExportWriter &out, std::uint32_t optionId) const
{
    if (optionId == SdioSettings::Commands) {
        exportCommands(out);
    } else {
        exportFrames(out);
    }
}

/// A line a command with all that answers it: "0.000012 CMD13 SEND_STATUS, argument 0x0 | R1 to CMD13: 0x900, state
/// tran".
void SdioResults::exportCommands(lux::ExportWriter &out) const
{
    FrameText text;
    lux::MessageExport messages(out);
    const std::uint64_t count = frameCount();
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        const bool isFirst = one.kind == Command || !messages.isOpen();
        if (isFirst) {
            messages.begin(one);
        }
        text.start(FrameText::Purpose::Tabular, Channel(), out.base());
        describe(one, text);
        messages.add(one, isFirst ? "" : "| ", text.last());
        out.progress(i, count);
    }
    messages.end();
}
