#pragma once

#include <corvanlux/analyzer/DecoderSettings.h>
#include <string>

/// Which level of the line is a pulse; the numbers are stored.
enum class PulseLevel { Low = 0, High = 1 };

class PulseSettings : public lux::Settings {
public:
    lux::ChannelSetting line{*this, "line", "Line", "The line with the pulses"};
    lux::ChoiceSetting<PulseLevel> level{
        *this,
        "level",
        "Pulse level",
        "The level of a pulse; the other is the pause",
        {{int(PulseLevel::Low), "low", "Low"}, {int(PulseLevel::High), "high", "High"}},
        PulseLevel::High};
    lux::IntegerSetting shortest{
        *this, "shortest_ns", "Shortest pulse (ns)", "What is shorter is left out", {0, 1000000000}, 0};
    lux::IntegerSetting longest{
        *this, "longest_ns", "Longest pulse (ns)", "What is longer is an error, 0: nothing", {0, 1000000000}, 0};

protected:
    [[nodiscard]] std::string check() const override
    {
        const bool inOrder = longest == 0 || longest >= shortest;
        return inOrder ? "" : "The longest pulse must not be shorter than the shortest.";
    }
};
