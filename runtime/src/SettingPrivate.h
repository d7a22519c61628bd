#pragma once

#include "Hidden.h"
#include "corvanlux/analyzer/DecoderSettings.h"

#include <memory>
#include <string>
#include <vector>

/// A setting's value, of whatever kind: a channel's index is a number, that of "None" -1.
struct SettingValue {
    double number = 0;
    std::string text;
};

struct LUX_HIDDEN lux::detail::Setting::Private {
    /// The value that the interface shows; and the other way.
    [[nodiscard]] SettingValue edited() const;
    void show(const SettingValue &value);

    std::unique_ptr<AnalyzerSettingInterface> face;
    SettingValue initial;
    SettingValue inUse;
};

struct LUX_HIDDEN lux::Settings::Private {
    std::vector<lux::detail::Setting::Private *> settings; ///< in the order of the members
    std::string saved;
};
