#include "SmbusSettings.h"

SmbusSettings::SmbusSettings()
    : scl(*this, "scl", "SMBCLK", "The clock line"), sda(*this, "sda", "SMBDAT", "The data line")
{
    addExport(Transactions, "Transactions", "Text file", "txt");
    addExport(Transactions, "Transactions", "CSV file", "csv");
}
