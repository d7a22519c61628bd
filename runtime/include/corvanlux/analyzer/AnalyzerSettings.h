#pragma once

#include "AnalyzerExport.h"

#include <cstdint>

class AnalyzerSettingInterface;

/// The settings of one decoder. Owned by it; main thread, and never changed while its worker runs.
///
/// Decoders derive from lux::Settings (DecoderSettings.h), which writes all of this from a list of members. The order
/// of the virtual operations is binding. Texts are narrow, never null, and good until the next call that could change
/// them.
class LUX_ANALYZER_API AnalyzerSettings {
public:
    AnalyzerSettings();
    AnalyzerSettings(const AnalyzerSettings &) = delete;
    AnalyzerSettings &operator=(const AnalyzerSettings &) = delete;
    virtual ~AnalyzerSettings();
    /// Takes the values of the interfaces over when they are acceptable.
    /// @return false when they are not: nothing changes, and GetSaveErrorMessage() tells why
    virtual bool ApplyInterfaces() = 0;
    /// Restores what SaveText() made. Parts that are unknown or malformed are passed over, and get their defaults.
    virtual void LoadText(const char *text) = 0;
    /// All settings in a line: no ";", no line end; the same for the same settings.
    [[nodiscard]] virtual const char *SaveText() = 0;
    /// A short summary for people; by default SaveText().
    [[nodiscard]] virtual const char *GetSettingBrief();

    [[nodiscard]] std::uint32_t GetSettingsInterfacesCount() const;
    [[nodiscard]] AnalyzerSettingInterface *GetSettingsInterface(std::uint32_t index) const; ///< null outside the list
    /// How many of the interfaces are channels: they come first.
    [[nodiscard]] std::uint32_t GetChannelsCount() const;
    /// Why the last ApplyInterfaces() was refused; a sentence for the user.
    [[nodiscard]] const char *GetSaveErrorMessage() const;
    [[nodiscard]] std::uint32_t GetExportOptionsCount() const;
    /// @return false, with 0 and an empty text, outside the list
    bool GetExportOption(std::uint32_t index, std::uint32_t *optionId, const char **name) const;
    [[nodiscard]] std::uint32_t GetFileExtensionCount(std::uint32_t optionId) const;
    /// @param extension  without a dot
    bool GetFileExtension(std::uint32_t optionId, std::uint32_t index, const char **description,
                          const char **extension) const;

    // ---- for the decoder that derives from it --------------------------------------------------------------------

    /// The interface stays the caller's, and must live as long as these settings. Channels come first whatever the
    /// order.
    void AddInterface(AnalyzerSettingInterface *setting);
    void AddExportOption(std::uint32_t optionId, const char *name);
    void AddExportExtension(std::uint32_t optionId, const char *description, const char *extension);
    void SetErrorText(const char *text);

private:
    struct Private;
    Private *m_private;
};
static_assert(sizeof(AnalyzerSettings) == 2 * sizeof(void *));
