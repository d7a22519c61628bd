#include "LinResults.h"
#include "common/Pcap.h"

using lux::ExportWriter;

namespace {

// LINKTYPE_LIN of the registry of pcap's link types: a head of 8 bytes and the data.
constexpr std::uint32_t linkType = 212;
constexpr std::uint8_t formatRevision = 1;
constexpr std::size_t headBytes = 8;

enum ChecksumType : unsigned { Unknown = 0, Classic = 1, Enhanced = 2 };
enum Error : unsigned { NoResponse = 1, Framing = 2, Parity = 4, Checksum = 8 };

ChecksumType checksumTypeOf(const LinFrame &frame)
{
    if (!frame.hasChecksum()) {
        return Unknown;
    }
    return frame.isRight(LinChecksum::Enhanced) ? Enhanced : frame.isRight(LinChecksum::Classic) ? Classic : Unknown;
}

} // namespace

void LinResults::exportFile(ExportWriter &out, std::uint32_t optionId) const
{
    if (optionId == LinSettings::Pcap) {
        exportPcap(out);
    } else {
        exportFrames(out);
    }
}

void LinResults::exportPcap(ExportWriter &out) const
{
    lux::writePcapHead(out, linkType);
    const std::uint64_t count = frameCount();
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        if (one.kind == Whole) {
            writePacket(out, one);
        }
        out.progress(i, count);
    }
}

void LinResults::writePacket(ExportWriter &out, const FrameData &frame) const
{
    const LinFrame lin = unpacked(frame);
    const auto data = lin.data();
    const unsigned errors =
        (lin.count == 0 ? unsigned(NoResponse) : 0U) | (has(frame, FramingError) ? unsigned(Framing) : 0U) |
        (has(frame, ParityWrong) ? unsigned(Parity) : 0U) | (has(frame, ChecksumWrong) ? unsigned(Checksum) : 0U);
    lux::writePcapPacketHead(out, frame.firstSample, GetSampleRate(), headBytes + data.size());
    out.byte(formatRevision);
    out.little(0, 3);
    out.byte(std::uint8_t(data.size() << 4 | unsigned(checksumTypeOf(lin)))); // bits 2 and 3: a frame, no event
    out.byte(lin.pid);
    out.byte(lin.checksum());
    out.byte(std::uint8_t(errors));
    out.write(data);
}
