#pragma once

#include "cli/Arguments.h"

#include <QString>
#include <QVector>

#include <cstdint>
#include <optional>

class DevBase;

/// What a command line wants of a capture. What it does not name is the model's default.
struct CaptureChoice {
    struct Trigger {
        int chn = 0;
        int code = 0; ///< smpTrigCode
    };

    std::optional<std::int64_t> rate;     ///< Hz
    std::optional<std::int64_t> depth;    ///< samples
    std::optional<QVector<int>> channels; ///< nothing: all, or as many from 0 on as the rate allows
    QVector<Trigger> triggers;
    std::optional<int> position;     ///< percent of the depth before the trigger, 0 to 99
    std::optional<double> threshold; ///< volts, -4 to 4

    /// The options that read() looks at, for Arguments::parse().
    [[nodiscard]] static QVector<Arguments::Option> options();
    /// @return why the values make no sense on any model, for the user; empty if they do
    [[nodiscard]] QString read(const Arguments::Parsed &parsed);
    /// Makes it the choice of `device`, whose settings are the defaults. Main thread, no capture runs.
    /// @return what the model has not, with the nearest that it has, for the user; empty for nothing
    [[nodiscard]] QString applyTo(DevBase &device) const;

private:
    [[nodiscard]] QString readNumbers(const Arguments::Parsed &parsed);
    [[nodiscard]] QString readTriggers(const Arguments::Parsed &parsed);
    [[nodiscard]] QString applyChannels(DevBase &device) const;
    [[nodiscard]] QString applyTriggers(DevBase &device) const;
    [[nodiscard]] QString applyThreshold(DevBase &device) const;
};
