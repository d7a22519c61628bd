#include "Parallel8080Results.h"

Parallel8080Results::Parallel8080Results(const Parallel8080Settings &settings)
    : StrobedBusResults(settings.bits(), settings.rs.isDefined())
{
    // On the highest data line, so that an access stands once.
    if (settings.data.width() > 0) {
        showBubblesOn(settings.data[settings.data.width() - 1]);
    }
}
