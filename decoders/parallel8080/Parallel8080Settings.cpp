#include "Parallel8080Settings.h"

using lux::ActiveLevel;
using lux::Presence;

Parallel8080Settings::Parallel8080Settings()
    : cs(*this, "cs", "Chip select (CSX)", "Accesses count while it is active", Presence::Optional),
      rs(*this, "rs", "Data/command (D/CX)", "Low for a command, high for data", Presence::Optional),
      wr(*this, "wr", "Write (WRX)", "The strobe of a write", Presence::Optional),
      rd(*this, "rd", "Read (RDX)", "The strobe of a read", Presence::Optional),
      data(*this, mostLines),
      width(*this, "width", "Width", "The data lines of the bus",
            {{0, "auto", "Automatic", "As many as there are channels for"}, {8, "8", "8 bits"}, {16, "16", "16 bits"}},
            0),
      csPolarity(
          *this, "cs_polarity", "Chip select is active", "The level of chip select at which accesses count",
          {{int(ActiveLevel::Low), "low|active-low|0", "Low"}, {int(ActiveLevel::High), "high|active-high|1", "High"}},
          ActiveLevel::Low),
      strobePolarity(
          *this, "strobe_polarity", "Strobes are active", "The level of the strobes of a write and a read",
          {{int(ActiveLevel::Low), "low|active-low|0", "Low"}, {int(ActiveLevel::High), "high|active-high|1", "High"}},
          ActiveLevel::Low)
{
    lux::StrobedBusResults::addExports([this](auto... option) { addExport(option...); });
}

unsigned Parallel8080Settings::bits() const
{
    return lux::strobedBits(width, data);
}

std::string Parallel8080Settings::check() const
{
    if (!wr.isDefined() && !rd.isDefined()) {
        return "Choose a channel for write or read";
    }
    if (data.width() == 0) {
        return "Choose a channel for one data line at least";
    }
    return {};
}
