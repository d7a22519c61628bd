#include "JtagSettings.h"

using lux::BitOrder;
using lux::Presence;

JtagSettings::JtagSettings()
    : tck(*this, "tck", "TCK", "The test clock"),
      tms(*this, "tms", "TMS", "The line that leads from state to state"),
      tdi(*this, "tdi", "TDI", "The data to the device", Presence::Optional),
      tdo(*this, "tdo", "TDO", "The data from the device", Presence::Optional),
      trst(*this, "trst", "TRST", "The test reset, active low", Presence::Optional),
      bitOrder(*this, "bit_order", "Bit order", "Which bit of a register is the first that is shifted",
               {{int(BitOrder::LsbFirst), "lsb|lsb-first", "Lowest first", "As the standard has it"},
                {int(BitOrder::MsbFirst), "msb|msb-first", "Highest first"}},
               BitOrder::LsbFirst),
      cableDelay(*this, "cable_delay", "Cable delay (ns)",
                 "TDO is read so long behind the rising edge of TCK, where a long cable makes it late", {}, 0),
      showStates(*this, "states", "", "Show states", "A bubble for each state on TMS", true)
{
    addExport(Vectors, "Vectors like SVF", "Text file", "svf");
}

std::string JtagSettings::check() const
{
    if (!tdi.isDefined() && !tdo.isDefined()) {
        return "Choose a channel for TDI or TDO";
    }
    return {};
}
