#pragma once

#include "device/DevBase.h"

#include <memory>

class ConfigDocument;

/// Builds the model of `code`; any code without a model builds the no-hardware device. Main thread.
[[nodiscard]] std::unique_ptr<DevBase> createDevice(int code);

/// The digital channels of the model that settings name; those of the no-hardware device if they name none. Pure.
[[nodiscard]] int digitalChannelsOf(const ConfigDocument &settings);
