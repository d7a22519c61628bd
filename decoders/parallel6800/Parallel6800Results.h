#pragma once

#include "Parallel6800Settings.h"

/// The accesses of a bus with a clock of accesses and a line for their direction.
class Parallel6800Results final : public lux::StrobedBusResults {
public:
    explicit Parallel6800Results(const Parallel6800Settings &settings);
};
