#include "Ps2Settings.h"

Ps2Settings::Ps2Settings()
    : clock(*this, "clk", "CLK", "The clock line"),
      data(*this, "data", "DATA", "The data line"),
      codeSet(*this, "scan_code_set", "Scan code set", "Which codes the keyboard sends for its keys",
              {{int(Ps2CodeSet::One), "1", "Set 1"},
               {int(Ps2CodeSet::Two), "2", "Set 2", "What keyboards use after power-on"},
               {int(Ps2CodeSet::Three), "3", "Set 3"}},
              Ps2CodeSet::Two)
{
    addExport(Keys, "Keys and commands", "Text file", "txt");
    addExport(Keys, "Keys and commands", "CSV file", "csv");
}
