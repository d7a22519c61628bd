#pragma once

#include "device/DevBase.h"

#include <memory>

class ConfigDocument;

/// Builds the model of `code`; any code without a model builds the no-hardware device. Main thread.
[[nodiscard]] std::unique_ptr<DevBase> createDevice(int code);
/// The same for who looks at its name and lists only: it takes no capture, and what the transport reads goes on to whom
/// it went before. Main thread.
[[nodiscard]] std::unique_ptr<const DevBase> createModel(int code);

/// The digital channels of the model that settings name; those of the no-hardware device if they name none. Pure.
[[nodiscard]] int digitalChannelsOf(const ConfigDocument &settings);
