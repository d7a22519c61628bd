#pragma once

#include <QString>

#include <cstdint>

/// What the window shows of an instrument's bring-up, as plain values. All texts are translated. Any thread.
namespace InitStatus {

/// The label while an instrument is brought up.
[[nodiscard]] QString connectingText();

/// The label of an error: "I-" and state * 256 + error in hexadecimal, behind words.
[[nodiscard]] QString errorText(int sta, int err);

/// The bar of a state without an error, percent; -1 for a state that leaves it alone.
[[nodiscard]] int progress(int sta, int n);

/// True for a message by which Windows tells a window that a device has arrived or has been removed. Pure.
/// @param parameter  the message's first parameter
[[nodiscard]] bool isDeviceChange(std::uint32_t message, std::uintptr_t parameter);

} // namespace InitStatus
