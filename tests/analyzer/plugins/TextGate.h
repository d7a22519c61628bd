#pragma once

#include <atomic>

/// Lets a test hold up the texts of the plug-in "text-waits": its TextGateOf() gives the one of the plug-in.
struct TextGate {
    std::atomic<bool> held{false};
    std::atomic<int> inside{0}; ///< texts that are being made
};
