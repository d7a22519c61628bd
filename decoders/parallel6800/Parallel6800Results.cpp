#include "Parallel6800Results.h"

Parallel6800Results::Parallel6800Results(const Parallel6800Settings &settings)
    : StrobedBusResults(settings.bits(), settings.rs.isDefined())
{
    // On the highest data line, so that an access stands once.
    if (settings.data.width() > 0) {
        showBubblesOn(settings.data[settings.data.width() - 1]);
    }
}
