#include "OneWireSettings.h"

OneWireSettings::OneWireSettings()
    : line(*this, "owr", "OWR", "The data line"),
      speed(*this, "overdrive", "Speed", "How fast the bits are",
            {{int(OneWireSpeed::Auto), "auto", "Auto",
              "Follows the overdrive commands, and finds the speed at the start"},
             {int(OneWireSpeed::Standard), "false|no|off|0|standard", "Standard", "15.4 kbit/s at most"},
             {int(OneWireSpeed::Overdrive), "true|yes|on|1|overdrive", "Overdrive",
              "125 kbit/s at most, from the start until a reset at standard speed"}},
            OneWireSpeed::Auto)
{
    addExport(Messages, "Messages", "Text file", "txt");
    addExport(Messages, "Messages", "CSV file", "csv");
}
