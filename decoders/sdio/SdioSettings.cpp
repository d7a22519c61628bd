#include "SdioSettings.h"

using lux::Presence;

SdioSettings::SdioSettings()
    : clk(*this, "clk", "CLK", "The clock line"),
      cmd(*this, "cmd", "CMD", "The line of commands and responses"),
      d0(*this, "d0", "DAT0", "The first data line; without it data is not decoded", Presence::Optional),
      d1(*this, "d1", "DAT1", "The second data line, for a bus of 4 bits", Presence::Optional),
      d2(*this, "d2", "DAT2", "The third data line, for a bus of 4 bits", Presence::Optional),
      d3(*this, "d3", "DAT3", "The fourth data line, for a bus of 4 bits", Presence::Optional),
      width(*this, "width", "Bus width", "How many data lines are in use",
            {{0, "auto", "Automatic", "Four bits when DAT0 to DAT3 have channels"},
             {1, "1", "1 bit: DAT0"},
             {4, "4", "4 bits: DAT0 to DAT3"}},
            0),
      ddr(*this, "ddr", "Data", "Double data rate (DDR50)",
          "Data is taken at both edges of the clock, commands and responses at its rise")
{
    addExport(Commands, "Commands", "Text file", "txt");
    addExport(Commands, "Commands", "CSV file", "csv");
}

unsigned SdioSettings::usedLines() const
{
    if (width.value() != 0) {
        return unsigned(width.value());
    }
    return hasAll() ? 4 : 1;
}

std::string SdioSettings::check() const
{
    if (width.value() == 4 && d0.isDefined() && !hasAll()) {
        return "Choose channels for DAT1 to DAT3, or a bus width of 1 bit";
    }
    if (ddr && d0.isDefined() && usedLines() != 4) {
        return "Double data rate needs a bus of 4 bits";
    }
    return {};
}
