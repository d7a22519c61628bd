#pragma once

#include "AnalyzerSettingInterface.h"
#include "AnalyzerSettings.h"

#include <cstdint>
#include <initializer_list>
#include <limits>
#include <string>

namespace lux {

class Settings;

/// Whether a channel setting may be left at "None".
enum class Presence : std::uint8_t { Required, Optional };

namespace detail {

/// A setting: a value in use, and the interface by which it is edited. Its kind tells which of the values counts.
class LUX_ANALYZER_API Setting {
public:
    Setting(const Setting &) = delete;
    Setting &operator=(const Setting &) = delete;

    struct Private;
    [[nodiscard]] Private *internals() const { return m_private; } ///< for the runtime itself

protected:
    Setting(Settings &owner, AnalyzerSettingInterface *face, const char *key, const char *title, const char *toolTip);
    ~Setting();
    [[nodiscard]] AnalyzerSettingInterface *face() const;
    /// The interface's value is the default, and in use from now on.
    void begin();
    [[nodiscard]] double number() const;
    [[nodiscard]] const std::string &text() const;

private:
    Private *m_private;
};

} // namespace detail

/// A channel. Not defined in the beginning.
class LUX_ANALYZER_API ChannelSetting : public detail::Setting {
public:
    ChannelSetting(Settings &owner, const char *key, const char *title, const char *toolTip,
                   Presence presence = Presence::Required);
    ~ChannelSetting();
    [[nodiscard]] Channel value() const;
    [[nodiscard]] bool isDefined() const { return value().isDefined(); }
    operator Channel() const { return value(); } // NOLINT(google-explicit-constructor): reads as the value that it is
};

/// A whole number within limits, both included.
class LUX_ANALYZER_API IntegerSetting : public detail::Setting {
public:
    struct Range {
        std::int32_t least = 0;
        std::int32_t most = std::numeric_limits<std::int32_t>::max();
    };
    IntegerSetting(Settings &owner, const char *key, const char *title, const char *toolTip, Range range,
                   std::int32_t value);
    ~IntegerSetting();
    [[nodiscard]] std::int32_t value() const;
    operator std::int32_t() const { return value(); } // NOLINT(google-explicit-constructor)
};

/// One entry of a list: its number, its stable word with further spellings ("msb|msb-first"), its text for the user.
struct Choice {
    std::int32_t number;
    const char *word;
    const char *text;
    const char *toolTip = "";
};

/// A choice from a list of numbers.
class LUX_ANALYZER_API NumberListSetting : public detail::Setting {
public:
    NumberListSetting(Settings &owner, const char *key, const char *title, const char *toolTip,
                      std::initializer_list<Choice> choices, std::int32_t value);
    ~NumberListSetting();
    [[nodiscard]] std::int32_t value() const;
    operator std::int32_t() const { return value(); } // NOLINT(google-explicit-constructor)
};

/// A choice from a list that stands for the values of an enumeration: write the numbers as int(Parity::Even).
template<class Enum>
class ChoiceSetting : public NumberListSetting {
public:
    ChoiceSetting(Settings &owner, const char *key, const char *title, const char *toolTip,
                  std::initializer_list<Choice> choices, Enum value)
        : NumberListSetting(owner, key, title, toolTip, choices, std::int32_t(value))
    {}
    [[nodiscard]] Enum value() const { return Enum(NumberListSetting::value()); }
    operator Enum() const { return value(); } // NOLINT(google-explicit-constructor)
};

/// A text: printable characters.
class LUX_ANALYZER_API TextSetting : public detail::Setting {
public:
    TextSetting(Settings &owner, const char *key, const char *title, const char *toolTip, const char *value = "");
    ~TextSetting();
    [[nodiscard]] const std::string &value() const { return text(); }
};

/// A check box.
class LUX_ANALYZER_API BoolSetting : public detail::Setting {
public:
    /// @param title  may be empty; `checkBoxText` stands beside the box
    BoolSetting(Settings &owner, const char *key, const char *title, const char *checkBoxText, const char *toolTip,
                bool value = false);
    ~BoolSetting();
    [[nodiscard]] bool value() const;
    operator bool() const { return value(); } // NOLINT(google-explicit-constructor)
};

/// The settings of a decoder as a list of members, from which interfaces, stored text and command-line keys are made:
///
///     class UartSettings : public lux::Settings {
///     public:
///         lux::ChannelSetting rx{*this, "rx", "RX", "The line to decode"};
///         lux::IntegerSetting baudrate{*this, "baudrate", "Bit rate (bits/s)", "0 finds it", {0, 100000000}, 0};
///         lux::ChoiceSetting<Parity> parity{*this, "parity", "Parity", "", {{int(Parity::None), "none", "None"},
///                                           {int(Parity::Even), "even", "Even"}}, Parity::None};
///     };
///
/// A member gives the value in use, `m_settings.baudrate`, as the type that it stands for. Keys and words are
/// lower-case ASCII letters, digits, "_" (words also "." and "-"), and never change once they are out. Titles, tool
/// tips and messages are English; the program translates them. The stored text is "key=value,key=value" in the order of
/// the members, with %XX for what would be mistaken.
class LUX_ANALYZER_API Settings : public AnalyzerSettings {
public:
    Settings();
    ~Settings() override;
    bool ApplyInterfaces() final;
    void LoadText(const char *text) final;
    [[nodiscard]] const char *SaveText() final;

    /// Why no decode can run with the values in use, such as those of a stored text that was edited by hand.
    /// @return empty when one can, or a sentence for the user. Thread: that of SaveText(), or the worker of a run.
    [[nodiscard]] std::string problem() const;

    struct Private;
    [[nodiscard]] Private *internals() const { return m_private; } ///< for the runtime itself

protected:
    /// Whether the values, already those in use, go together. Required channels are defined, and all channels
    /// different, when it is called. @return empty, or a sentence for the user: "Clock and data must be different
    /// channels"
    [[nodiscard]] virtual std::string check() const;
    /// By default all defined channels must be different ones.
    [[nodiscard]] virtual bool channelsMayBeShared() const;
    /// Every decoder has option 0, the frames as text ("txt") and as CSV ("csv"). Further ones are numbered from 1.
    void addExport(std::uint32_t optionId, const char *name, const char *description, const char *extension);

private:
    Private *m_private;
};

} // namespace lux
