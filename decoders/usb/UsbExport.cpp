#include "UsbResults.h"

using lux::ExportWriter;

void UsbResults::exportFile(ExportWriter &out, std::uint32_t optionId) const
{
    switch (optionId) {
    case UsbSettings::Pcap:
        exportPcap(out);
        break;
    case UsbSettings::Transactions:
        exportTransactions(out);
        break;
    default:
        exportFrames(out);
        break;
    }
}

/// A pcap file with times in nanoseconds and LINKTYPE_USB_2_0: packets from their identifier to their check.
void UsbResults::exportPcap(ExportWriter &out) const
{
    constexpr std::uint32_t magicOfNanoseconds = 0xa1b23c4d;
    constexpr std::uint32_t longestPacket = 65535;
    constexpr std::uint32_t linkType = 288;
    constexpr std::int64_t nanoseconds = 1000000000;
    out.little(magicOfNanoseconds, 4);
    out.little(2, 2); // version 2.4
    out.little(4, 2);
    out.little(0, 8); // times are those of the capture, all digits are right
    out.little(longestPacket, 4);
    out.little(linkType, 4);
    const std::int64_t rate = GetSampleRate();
    const std::uint64_t count = frameCount();
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        out.progress(i, count);
        if (one.kind != Packet || has(one, Short)) {
            continue;
        }
        const Bytes content(*this, one);
        const std::int64_t rest = one.firstSample % rate;
        // The rate is at most 10^10 Hz and the rest below it: as one product it would not stay within 64 bits.
        const auto nanos = std::int64_t(static_cast<long double>(rest) * nanoseconds / static_cast<long double>(rate));
        out.little(std::uint64_t(one.firstSample / rate), 4);
        out.little(std::uint64_t(nanos), 4);
        out.little(content.all().size(), 4);
        out.little(content.all().size(), 4);
        out.write(content.all());
    }
}

/// A line a transaction: time, then its text.
void UsbResults::exportTransactions(ExportWriter &out) const
{
    const std::uint64_t count = frameCount();
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        if (one.kind == Transaction) {
            lux::FrameText text;
            text.start(lux::FrameText::Purpose::Tabular, Channel(), out.base());
            describeTransaction(one, text);
            out.line(out.seconds(one.firstSample), " ", text.last());
        }
        out.progress(i, count);
    }
}
