#include "UsbSettings.h"

UsbSettings::UsbSettings()
    : dp(*this, "dp", "D+", "The line D+; packets are shown on it"),
      dm(*this, "dm", "D-", "The line D-; transactions are shown on it"),
      speed(*this, "speed", "Speed", "The speed of the bus at the place where it was captured",
            {{int(UsbSpeed::Auto), "auto|automatic", "Auto", "Found from the level of the idle bus"},
             {int(UsbSpeed::Low), "low|low-speed|ls", "Low speed, 1.5 Mbit/s"},
             {int(UsbSpeed::Full), "full|full-speed|fs", "Full speed, 12 Mbit/s"}},
            UsbSpeed::Auto)
{
    addExport(Pcap, "Packets for a packet analyzer", "Packet capture", "pcap");
    addExport(Transactions, "Transactions", "Text file", "txt");
    addExport(Transactions, "Transactions", "CSV file", "csv");
}
