#pragma once

#include "device/DevBase.h"

#include <memory>

/// Builds the model of `code`; any code without a model builds the no-hardware device. Main thread.
[[nodiscard]] std::unique_ptr<DevBase> createDevice(int code);
