#pragma once

#include "EdgeTree.h"

#include <cstddef>
#include <cstdint>

/// How the runtime sees a capture: owned and written by the program while no decoder runs, read here in place. The
/// layout is binding; multi-byte fields are little-endian.
struct DeviceCollection {
    const SmpEdgeRoot *const *chnRoots = nullptr; ///< `chnCount` roots; null for a channel that the capture lacks
    std::int64_t smpCount = 0;                    ///< samples of the capture
    std::int64_t smpFrequ = 0;                    ///< sample rate, Hz
    std::int64_t trgPos = 0;                      ///< sample of the trigger, 0 for none
    std::int32_t chnCount = 0;                    ///< digital channels
    std::uint8_t reserved[36] = {};               ///< never written by the program
    std::uint32_t deviceCode = 0;                 ///< code word of the current model
};

static_assert(offsetof(DeviceCollection, chnRoots) == 0);
static_assert(offsetof(DeviceCollection, smpCount) == 8);
static_assert(offsetof(DeviceCollection, smpFrequ) == 16);
static_assert(offsetof(DeviceCollection, trgPos) == 24);
static_assert(offsetof(DeviceCollection, chnCount) == 32);
static_assert(offsetof(DeviceCollection, reserved) == 36);
static_assert(offsetof(DeviceCollection, deviceCode) == 72);
static_assert(sizeof(DeviceCollection) == 80);
