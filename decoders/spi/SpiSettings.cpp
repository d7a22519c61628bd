#include "SpiSettings.h"

using lux::BitOrder;
using lux::Presence;

SpiSettings::SpiSettings()
    : clk(*this, "clk", "Clock", "The clock line (SCK)"),
      mosi(*this, "mosi", "MOSI", "The data from the controller (SDO, PICO)", Presence::Optional),
      miso(*this, "miso", "MISO", "The data to the controller (SDI, POCI)", Presence::Optional),
      cs(*this, "cs", "Select", "The select line of the device (CS, SS)", Presence::Optional),
      cpol(*this, "cpol", "Clock polarity (CPOL)", "The level of the clock while nothing is sent",
           {{0, "0|false", "0: low when idle"}, {1, "1|true", "1: high when idle"}}, 0),
      cpha(*this, "cpha", "Clock phase (CPHA)", "The edge of the clock at which data is taken",
           {{0, "0|false", "0: the leading edge"}, {1, "1|true", "1: the trailing edge"}}, 0),
      word(*this, "word", "Bits per word", "How many bits a word has", {.least = 2, .most = mostBits}, 8),
      bitOrder(*this, "bit_order", "Bit order", "Which bit of a word is sent first",
               {{int(BitOrder::MsbFirst), "msb|msb-first", "Highest first"},
                {int(BitOrder::LsbFirst), "lsb|lsb-first", "Lowest first"}},
               BitOrder::MsbFirst),
      csPolarity(*this, "cs_polarity", "Select is active", "The level at which the device is selected",
                 {{int(SpiSelect::Low), "low|active-low|0", "Low"},
                  {int(SpiSelect::High), "high|active-high|1", "High"},
                  {int(SpiSelect::None), "none", "Always", "The select line is not looked at"}},
                 SpiSelect::Low),
      idleTime(*this, "idle_time", "Idle time (ns)",
               "A word begins anew where the clock was still for so long; 0 for never", {}, 0)
{
    addExport(MosiWords, "Words of MOSI", "Binary file", "bin");
    addExport(MisoWords, "Words of MISO", "Binary file", "bin");
    addExport(Transfers, "Transfers", "Text file", "txt");
    addExport(Transfers, "Transfers", "CSV file", "csv");
}

Channel SpiSettings::select() const
{
    return csPolarity == SpiSelect::None ? Channel() : cs.value();
}

std::string SpiSettings::check() const
{
    if (!mosi.isDefined() && !miso.isDefined()) {
        return "Choose a channel for MOSI or MISO";
    }
    return {};
}
