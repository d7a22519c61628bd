#include "UsbResults.h"
#include "common/MessageExport.h"
#include "common/Pcap.h"

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
    constexpr std::uint32_t linkType = 288;
    lux::writePcapHead(out, linkType);
    const std::uint64_t count = frameCount();
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        out.progress(i, count);
        if (one.kind != Packet || has(one, Short)) {
            continue;
        }
        const Bytes content(*this, one);
        lux::writePcapPacketHead(out, one.firstSample, GetSampleRate(), content.all().size());
        out.write(content.all());
    }
}

/// A line a transaction: time, then its text.
void UsbResults::exportTransactions(ExportWriter &out) const
{
    lux::MessageExport messages(out);
    const std::uint64_t count = frameCount();
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        if (one.kind == Transaction) {
            lux::FrameText text;
            text.start(lux::FrameText::Purpose::Tabular, Channel(), out.base());
            describeTransaction(one, text);
            messages.whole(one, text.last(), " ");
        }
        out.progress(i, count);
    }
}
