#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// The fields of a PWM output, as texts and as numbers. Free functions over plain values; no widget.

/// The units of a frequency in the order in which they are offered: "MHz", "KHz", "Hz".
[[nodiscard]] QStringList pwmUnits();

/// A frequency as it is shown.
struct PwmFrequText {
    QString number; ///< 6 significant digits
    int unit = 0;   ///< index in pwmUnits()
    bool operator==(const PwmFrequText &) const = default;
};

/// `frequ` (Hz) in the smallest unit that keeps the number shown below 1000, or in the largest one.
[[nodiscard]] PwmFrequText pwmFrequText(double frequ);
/// A duty cycle in percent, 6 significant digits.
[[nodiscard]] QString pwmDutyText(double duty);

/// What is asked of an output.
struct PwmSetting {
    double frequ = 0; ///< Hz, 0.1 to 2e7
    double duty = 0;  ///< percent, 0 to 100
    bool operator==(const PwmSetting &) const = default;
};

/// Reads the fields of an output; `unit` is an index in pwmUnits().
/// @return nothing if one of the texts is not a number and nothing else, or lies outside its range
[[nodiscard]] std::optional<PwmSetting> readPwmFields(const QString &frequ, int unit, const QString &duty);
