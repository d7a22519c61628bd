#include "SmbusResults.h"

#include "SmbusProtocol.h"
#include "common/MessageExport.h"

#include <string>

using lux::FrameText;
using lux::FrameValues;
using lux::ShortText;

namespace {

constexpr unsigned addressBits = 7;

std::string_view ackText(const FrameData &frame)
{
    return (frame.flags & SmbusResults::Nack) != 0 ? "NACK" : "ACK";
}

} // namespace

SmbusResults::SmbusResults(const SmbusSettings &settings) : m_scl(settings.scl), m_sda(settings.sda)
{
    showBubblesOn(m_scl);
    showBubblesOn(m_sda);
}

/// The clock's row has the transactions, that of the data their elements.
void SmbusResults::describe(const FrameData &frame, FrameText &out) const
{
    if (out.isBubble()) {
        const Channel &own = frame.kind == Transaction || frame.kind == Timeout ? m_scl : m_sda;
        if (out.channel().channelIndex != own.channelIndex) {
            return;
        }
    }
    switch (frame.kind) {
    case Transaction:
        describeTransaction(frame, out);
        break;
    case Address:
        describeAddress(frame, out);
        break;
    case Data:
        describeData(frame, out);
        break;
    default:
        describeElement(frame, out);
        break;
    }
}

void SmbusResults::describeElement(const FrameData &frame, FrameText &out) const
{
    switch (frame.kind) {
    case Start:
        out.add("S");
        out.add("Start");
        break;
    case Restart:
        out.add("Sr");
        out.add("Restart");
        out.add("Repeated start");
        break;
    case Stop:
        out.add("P");
        out.add("Stop");
        break;
    case Cut:
        out.add("!");
        out.add("Cut");
        out.add("Byte cut after ", lux::formatCount(frame.extra), frame.extra == 1 ? " bit" : " bits");
        break;
    case Timeout:
        out.add("!");
        out.add("Time-out");
        out.add("Time-out: clock low for ",
                lux::formatDuration(frame.lastSample - frame.firstSample + 1, GetSampleRate()));
        break;
    default:
        break;
    }
}

void SmbusResults::describeTransaction(const FrameData &frame, FrameText &out) const
{
    const std::span<const std::uint8_t> all = bytes(frame.data);
    const bool isBroken = (frame.flags & Broken) != 0;
    const bool hasPec = (frame.flags & RightPec) != 0;
    const smbus::Protocol protocol = smbus::protocolOf({.bytes = all, .secondAddress = frame.extra, .hasPec = hasPec});
    const ShortText address = out.number(all[0] >> 1, addressBits);
    const std::string_view name = isBroken ? "Broken" : protocol.name;
    ShortText head;
    head.add(name);
    head.add(" ");
    head.add(address);
    if (protocol.hasCommand && !isBroken) {
        head.add(", command ");
        head.add(out.number(all[1], 8));
    }
    if (hasPec) {
        head.add(", PEC right");
    }
    if (all.size() == 1 && (frame.flags & Nack) != 0) {
        head.add(", no answer");
    }
    out.add(isBroken ? "!" : "T");
    out.add(name);
    out.add(name, " ", address);
    std::string full(head.view());
    full += (frame.flags & HeldByTarget) != 0 ? ", clock held for more than 25 ms" : "";
    full += (frame.flags & HeldInByte) != 0 ? ", clock held for more than 10 ms in a byte" : "";
    out.add(full);
    full += ": ";
    out.addBytes(full, all);
}

void SmbusResults::describeAddress(const FrameData &frame, FrameText &out) const
{
    const ShortText number = out.number(frame.data >> 1, addressBits);
    const bool isRead = (frame.flags & Read) != 0;
    const std::string_view fixed = smbus::addressName(unsigned(frame.data >> 1));
    out.add("A");
    out.add(number);
    out.add(number, isRead ? " R " : " W ", (frame.flags & Nack) != 0 ? "N" : "A");
    out.add(isRead ? "Read " : "Write ", number, " ", ackText(frame));
    if (fixed.empty()) {
        out.add("Address ", number, isRead ? " read, " : " write, ", ackText(frame));
    } else {
        out.add("Address ", number, " (", fixed, ")", isRead ? " read, " : " write, ", ackText(frame));
    }
}

void SmbusResults::describeData(const FrameData &frame, FrameText &out) const
{
    const ShortText number = out.number(frame.data, 8);
    const std::string_view word = frame.line == Command ? "Command " : frame.line == Pec ? "PEC " : "Data ";
    out.add(number);
    out.add(number, (frame.flags & Nack) != 0 ? " N" : " A");
    out.add(word, number, frame.line == Pec ? " right" : "", ", ", ackText(frame));
}

void SmbusResults::values(const FrameData &frame, FrameValues &out) const
{
    switch (frame.kind) {
    case Transaction: {
        const std::span<const std::uint8_t> all = bytes(frame.data);
        const bool hasPec = (frame.flags & RightPec) != 0;
        // The value tells of the bytes alone, also where a bus protocol has no packet error code.
        const bool isZero = (frame.flags & Broken) == 0 && smbus::Pec::of(all) == 0;
        out.kind("transaction").hex("v", all).number("pec", isZero);
        out.text("protocol",
                 (frame.flags & Broken) != 0
                     ? "broken"
                     : smbus::protocolOf({.bytes = all, .secondAddress = frame.extra, .hasPec = hasPec}).name);
        if ((frame.flags & (HeldByTarget | HeldInByte)) != 0) {
            out.number("sext", (frame.flags & HeldByTarget) != 0).number("mext", (frame.flags & HeldInByte) != 0);
        }
        break;
    }
    case Start:
        out.kind("start");
        break;
    case Restart:
        out.kind("restart");
        break;
    case Stop:
        out.kind("stop");
        break;
    case Cut:
        out.kind("cut").number("n", frame.extra).number("v", frame.data);
        break;
    case Timeout:
        out.kind("timeout");
        break;
    default:
        out.kind(frame.kind == Address ? "address" : "data");
        out.number("v", frame.kind == Address ? frame.data >> 1 : frame.data);
        out.number("rw", (frame.flags & Read) != 0).number("ack", (frame.flags & Nack) == 0);
        break;
    }
}

std::span<const char *const> SmbusResults::columns() const
{
    static constexpr const char *names[] = {"v", "rw", "ack", "pec", "protocol", "n", "sext", "mext"};
    return names;
}

void SmbusResults::exportFile(lux::ExportWriter &out, std::uint32_t optionId) const
{
    if (optionId == SmbusSettings::Transactions) {
        exportTransactions(out);
    } else {
        exportFrames(out);
    }
}

/// A line a transaction: time, a tab, its text.
void SmbusResults::exportTransactions(lux::ExportWriter &out) const
{
    const std::uint64_t count = frameCount();
    FrameText text;
    lux::MessageExport messages(out);
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        if (one.kind == Transaction || one.kind == Timeout) {
            text.start(FrameText::Purpose::Tabular, Channel(), out.base());
            describe(one, text);
            messages.whole(one, text.last());
        }
        out.progress(i, count);
    }
}
