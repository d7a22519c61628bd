#include "MdioSettings.h"

MdioSettings::MdioSettings()
    : clock(*this, "mdc", "MDC", "The clock line"), data(*this, "mdio", "MDIO", "The data line")
{}
