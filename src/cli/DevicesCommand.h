#pragma once

#include "cli/Output.h"
#include "device/DeviceSurvey.h"

#include <QString>

#include <functional>
#include <memory>
#include <vector>

class UsbPlatform;

/// The way to the instruments that a command takes: makeUsbPlatform(), or a test's.
using PlatformFactory = std::function<std::unique_ptr<UsbPlatform>()>;

/// What keeps an instrument from being used, for the user; empty for one that can be.
[[nodiscard]] QString obstacleOf(const FoundInstrument &instrument);
/// Writes a line for each instrument, as text or as JSON. Pure but for `out`.
void writeInstruments(Output &out, const std::vector<FoundInstrument> &instruments, bool isJson);
