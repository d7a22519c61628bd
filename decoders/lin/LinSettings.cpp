#include "LinSettings.h"

LinSettings::LinSettings()
    : rx(*this, "rx", "LIN", "The bus, or the receiver's output"),
      baudrate(*this, "baudrate", "Bit rate (bits/s)", "0 finds the rate from the sync fields of the capture",
               {.least = 0, .most = highestRate}, 0),
      version(
          *this, "version", "Version", "Since 2.0 the checksum is over the identifier, too",
          {{int(LinVersion::Version1), "1|1.1|1.2|1.3", "1.3"}, {int(LinVersion::Version2), "2|2.1|2.2|2.2A", "2.x"}},
          LinVersion::Version2),
      checksum(*this, "checksum", "Checksum", "What the checksum is taken over",
               {{int(LinChecksumRule::ByVersion), "auto", "As the version says"},
                {int(LinChecksumRule::Classic), "classic", "Classic", "The data"},
                {int(LinChecksumRule::Enhanced), "enhanced", "Enhanced", "The protected identifier and the data"}},
               LinChecksumRule::ByVersion)
{
    addExport(Pcap, "Frames for network analyzers", "pcap file", "pcap");
}

/// Diagnostic frames keep the classic checksum in all versions (LIN 2.2A, 2.3.1.5).
LinChecksum LinSettings::checksumFor(std::uint8_t id) const
{
    switch (checksum.value()) {
    case LinChecksumRule::Classic:
        return LinChecksum::Classic;
    case LinChecksumRule::Enhanced:
        return LinChecksum::Enhanced;
    case LinChecksumRule::ByVersion:
        break;
    }
    const bool isDiagnostic = id == LinFrame::masterRequest || id == LinFrame::slaveResponse;
    return version == LinVersion::Version1 || isDiagnostic ? LinChecksum::Classic : LinChecksum::Enhanced;
}
