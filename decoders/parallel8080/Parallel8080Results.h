#pragma once

#include "Parallel8080Settings.h"

/// The accesses of a bus with a strobe for writing and one for reading.
class Parallel8080Results final : public lux::StrobedBusResults {
public:
    explicit Parallel8080Results(const Parallel8080Settings &settings);
};
