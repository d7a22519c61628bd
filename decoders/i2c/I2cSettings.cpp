#include "I2cSettings.h"

I2cSettings::I2cSettings()
    : scl(*this, "scl", "SCL", "The clock line"),
      sda(*this, "sda", "SDA", "The data line"),
      addressFormat(*this, "address_format", "Address", "How device addresses are shown",
                    {{int(I2cAddressFormat::SevenBits), "7", "7 bits"},
                     {int(I2cAddressFormat::EightBits), "8", "8 bits with the direction"}},
                    I2cAddressFormat::SevenBits),
      glitchFilter(*this, "glitch_filter", "Glitch filter (ns)", "Shorter pulses on both lines are passed over",
                   {.least = 0, .most = 1000000}, usualSpike)
{
    addExport(DataBytes, "Data bytes", "Binary file", "bin");
    addExport(Messages, "Messages", "Text file", "txt");
    addExport(Messages, "Messages", "CSV file", "csv");
}
