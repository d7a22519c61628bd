#include "Parallel6800Settings.h"

using lux::ActiveLevel;
using lux::Presence;

Parallel6800Settings::Parallel6800Settings()
    : cs(*this, "cs", "Chip select (CSX)", "Accesses count while it is active", Presence::Optional),
      rs(*this, "rs", "Data/command (D/CX)", "Low for a command, high for data", Presence::Optional),
      rw(*this, "rw", "Read/write (R/WX)", "High for a read; without it all are writes", Presence::Optional),
      e(*this, "e", "Enable (E)", "The strobe of an access"),
      data(*this, mostLines),
      width(*this, "width", "Width", "The data lines of the bus",
            {{0, "auto", "Automatic", "As many as there are channels for"}, {8, "8", "8 bits"}, {16, "16", "16 bits"}},
            0),
      csPolarity(
          *this, "cs_polarity", "Chip select is active", "The level of chip select at which accesses count",
          {{int(ActiveLevel::Low), "low|active-low|0", "Low"}, {int(ActiveLevel::High), "high|active-high|1", "High"}},
          ActiveLevel::Low),
      enablePolarity(
          *this, "e_polarity", "Enable is active", "The level of the strobe of an access",
          {{int(ActiveLevel::Low), "low|active-low|0", "Low"}, {int(ActiveLevel::High), "high|active-high|1", "High"}},
          ActiveLevel::High)
{
    lux::StrobedBusResults::addExports([this](auto... option) { addExport(option...); });
}

unsigned Parallel6800Settings::bits() const
{
    return lux::strobedBits(width, data);
}

std::string Parallel6800Settings::check() const
{
    if (data.width() == 0) {
        return "Choose a channel for one data line at least";
    }
    return {};
}
