#include "DsiSettings.h"

using lux::Presence;

DsiSettings::DsiSettings()
    : d0p(*this, "d0p", "D0+", "The positive line of lane 0; packets are shown on it"),
      d0n(*this, "d0n", "D0-", "The negative line of lane 0; bytes are shown on it"),
      d1p(*this, "d1p", "D1+", "The positive line of lane 1", Presence::Optional),
      d1n(*this, "d1n", "D1-", "The negative line of lane 1", Presence::Optional),
      d2p(*this, "d2p", "D2+", "The positive line of lane 2", Presence::Optional),
      d2n(*this, "d2n", "D2-", "The negative line of lane 2", Presence::Optional),
      d3p(*this, "d3p", "D3+", "The positive line of lane 3", Presence::Optional),
      d3n(*this, "d3n", "D3-", "The negative line of lane 3", Presence::Optional),
      lanes(*this, "lanes", "Lanes",
            "How many data lanes are decoded; low-power data is on lane 0 alone, ultra-low power and bursts on all",
            {.least = 1, .most = std::int32_t(mostLanes)}, 1)
{
    addExport(Packets, "Packets", "Text file", "txt");
    addExport(Packets, "Packets", "CSV file", "csv");
}

std::string DsiSettings::check() const
{
    const auto all = lines();
    for (std::size_t i = 1; i < std::size_t(lanes.value()); ++i) {
        if (!all[i].p.isDefined() || !all[i].n.isDefined()) {
            return "Choose both channels of each lane, or fewer lanes";
        }
    }
    return {};
}
