#include "IrNecSettings.h"

IrNecSettings::IrNecSettings()
    : ir(*this, "ir", "IR", "The receiver's output, or the line of the light"),
      polarity(*this, "polarity", "Polarity", "The level while light is received",
               {{int(IrPolarity::Auto), "auto", "Auto", "The other level than that of the longest pause"},
                {int(IrPolarity::Low), "low|active-low|0", "Low", "As most receivers have it"},
                {int(IrPolarity::High), "high|active-high|1", "High"}},
               IrPolarity::Auto),
      carrier(
          *this, "carrier", "Carrier", "Whether the light's carrier is on the line",
          {{int(IrCarrier::Auto), "auto", "Auto"},
           {int(IrCarrier::Off), "off|false|no|0|demodulated", "Demodulated", "A receiver has taken the carrier away"},
           {int(IrCarrier::On), "on|true|yes|1", "With carrier", "30 to 60 kHz"}},
          IrCarrier::Auto),
      tolerance(*this, "tolerance", "Tolerance (%)", "How far a mark or a space may be off", {.least = 5, .most = 40},
                25)
{}
