#include "UnioSettings.h"

UnioSettings::UnioSettings() : line(*this, "scio", "SCIO", "The clock and data line")
{
    addExport(Messages, "Messages", "Text file", "txt");
    addExport(Messages, "Messages", "CSV file", "csv");
}
