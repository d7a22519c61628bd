#include "DmxSettings.h"

DmxSettings::DmxSettings()
    : rx(*this, "rx", "DMX", "Data+ of the line, or the receiver's output"),
      baudrate(*this, "baudrate", "Bit rate (bits/s)", "The standard has 250000; 0 finds the rate from the edges",
               {.least = 0, .most = highestRate}, standardRate),
      invert(*this, "invert", "Polarity", "Inverted", "The line is low while it is idle, as Data- is")
{
    addExport(Packets, "Packets, a line each", "CSV file", "csv");
    addExport(Packets, "Packets, a line each", "Text file", "txt");
}
