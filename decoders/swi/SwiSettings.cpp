#include "SwiSettings.h"

SwiSettings::SwiSettings()
    : line(*this, "sda", "SDA", "The single wire"),
      bitRate(*this, "bit_rate", "Bit rate (bits/s)", "Of the shortest pulse; devices use 230400",
              {.least = 1000, .most = 10000000}, usualRate)
{
    addExport(Blocks, "Blocks", "Text file", "txt");
    addExport(Blocks, "Blocks", "CSV file", "csv");
}
