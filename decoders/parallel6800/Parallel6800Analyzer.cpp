#include "Parallel6800Analyzer.h"

using lux::ChannelReader;
using lux::Strobe;
using lux::StrobedBus;
using lux::StrobedBusResults;

LUX_PLUGIN(Parallel6800Analyzer)

/// MIPI DBI-2 v2.0, type A: words are taken where E goes low again; R/WX tells the direction.
void Parallel6800Analyzer::decode()
{
    StrobedBus bus(reader(m_settings.cs), m_settings.csPolarity, reader(m_settings.rs));
    for (unsigned i = 0; i < m_settings.bits(); ++i) {
        bus.data().add(reader(m_settings.data[i]));
    }
    const MarkerType arrow =
        m_settings.enablePolarity == lux::ActiveLevel::High ? MarkerType::DownArrow : MarkerType::UpArrow;
    ChannelReader direction = reader(m_settings.rw);
    Strobe enable(reader(m_settings.e), m_settings.enablePolarity);
    while (enable.hasEdge()) {
        if (enable.advance()) {
            const bool isRead = direction.levelAt(enable.end() - 1);
            const auto kind = isRead ? StrobedBusResults::Read : StrobedBusResults::Write;
            if (bus.add(results(), enable.first(), enable.end(), kind)) {
                results().mark(m_settings.e, enable.end(), arrow);
            }
        }
    }
}
