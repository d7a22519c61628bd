#include "Parallel8080Analyzer.h"

#include <algorithm>

using lux::Sample;
using lux::Strobe;
using lux::StrobedBus;
using lux::StrobedBusResults;

LUX_PLUGIN(Parallel8080Analyzer)

/// MIPI DBI-2 v2.0, type B: words are taken where WRX or RDX goes high again. An access with both is none of either.
void Parallel8080Analyzer::decode()
{
    StrobedBus bus(reader(m_settings.cs), m_settings.csPolarity, reader(m_settings.rs));
    for (unsigned i = 0; i < m_settings.bits(); ++i) {
        bus.data().add(reader(m_settings.data[i]));
    }
    const MarkerType arrow =
        m_settings.strobePolarity == lux::ActiveLevel::Low ? MarkerType::UpArrow : MarkerType::DownArrow;
    Strobe write(reader(m_settings.wr), m_settings.strobePolarity);
    Strobe read(reader(m_settings.rd), m_settings.strobePolarity);
    bool isClash = write.isActive() && read.isActive();
    while (write.hasEdge() || read.hasEdge()) {
        const bool isWrite = write.peekEdge() <= read.peekEdge();
        Strobe &strobe = isWrite ? write : read;
        const Strobe &other = isWrite ? read : write;
        if (!strobe.advance()) {
            isClash = isClash || other.isActive();
        } else if (!isClash || !other.isActive()) {
            const Sample first = isClash ? std::min(strobe.first(), other.first()) : strobe.first();
            const auto kind = isClash   ? StrobedBusResults::Clash
                              : isWrite ? StrobedBusResults::Write
                                        : StrobedBusResults::Read;
            if (bus.add(results(), first, strobe.end(), kind)) {
                results().mark(isWrite ? m_settings.wr : m_settings.rd, strobe.end(),
                               isClash ? MarkerType::ErrorX : arrow);
            }
            isClash = false;
        }
    }
}
