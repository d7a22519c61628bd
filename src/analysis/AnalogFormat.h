#pragma once

#include <QString>

#include <cstdint>

/// How the measured values of an analog signal are written: number and unit without a blank between them.
///
/// Pure, any thread, cost a few operations each.

/// `ps` picoseconds in the largest unit up to "s" in which they are a whole number: 1500000 is "1500ns", 1234567 is
/// "1234567ps", 0 is "0s".
[[nodiscard]] QString formatTimePs(std::int64_t ps);

/// `hz` in the largest unit up to "GHz" in which it is a whole number.
[[nodiscard]] QString formatFrequency(std::int64_t hz);

/// `millivolts` with two decimals: in "V" from 100 mV on, below that, and for all negative values, in "mV". What is no
/// number is written as "nanmV".
[[nodiscard]] QString formatVoltage(double millivolts);

/// `percent` with two decimals and "%"; "nan%", "inf%" and "-inf%" for what is no number.
[[nodiscard]] QString formatPercent(double percent);
