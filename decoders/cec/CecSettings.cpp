#include "CecSettings.h"

CecSettings::CecSettings() : line(*this, "cec", "CEC", "The CEC line")
{
    addExport(Messages, "Messages", "Text file", "txt");
    addExport(Messages, "Messages", "CSV file", "csv");
}
