#include "corvanlux/analyzer/AnalyzerSettings.h"

#include "CopyText.h"
#include "Hidden.h"
#include "corvanlux/analyzer/AnalyzerSettingInterface.h"

#include <algorithm>
#include <string>
#include <vector>

using lux::detail::orEmpty;

struct LUX_HIDDEN AnalyzerSettings::Private {
    struct Extension {
        std::string description;
        std::string extension;
    };
    struct Option {
        std::uint32_t id;
        std::string name;
        std::vector<Extension> extensions;
    };
    [[nodiscard]] const Option *option(std::uint32_t id) const
    {
        const auto it =
            std::find_if(options.begin(), options.end(), [id](const Option &option) { return option.id == id; });
        return it == options.end() ? nullptr : &*it;
    }
    std::vector<AnalyzerSettingInterface *> channels;
    std::vector<AnalyzerSettingInterface *> others;
    std::vector<Option> options;
    std::string error;
};

AnalyzerSettings::AnalyzerSettings() : m_private(new Private) {}

AnalyzerSettings::~AnalyzerSettings()
{
    delete m_private;
}

const char *AnalyzerSettings::GetSettingBrief()
{
    return SaveText();
}

std::uint32_t AnalyzerSettings::GetSettingsInterfacesCount() const
{
    return std::uint32_t(m_private->channels.size() + m_private->others.size());
}

AnalyzerSettingInterface *AnalyzerSettings::GetSettingsInterface(std::uint32_t index) const
{
    const std::size_t channels = m_private->channels.size();
    if (index < channels)
        return m_private->channels[index];
    return index - channels < m_private->others.size() ? m_private->others[index - channels] : nullptr;
}

std::uint32_t AnalyzerSettings::GetChannelsCount() const
{
    return std::uint32_t(m_private->channels.size());
}

const char *AnalyzerSettings::GetSaveErrorMessage() const
{
    return m_private->error.c_str();
}

std::uint32_t AnalyzerSettings::GetExportOptionsCount() const
{
    return std::uint32_t(m_private->options.size());
}

bool AnalyzerSettings::GetExportOption(std::uint32_t index, std::uint32_t *optionId, const char **name) const
{
    const bool found = index < m_private->options.size();
    *optionId = found ? m_private->options[index].id : 0;
    *name = found ? m_private->options[index].name.c_str() : "";
    return found;
}

std::uint32_t AnalyzerSettings::GetFileExtensionCount(std::uint32_t optionId) const
{
    const Private::Option *option = m_private->option(optionId);
    return option == nullptr ? 0 : std::uint32_t(option->extensions.size());
}

bool AnalyzerSettings::GetFileExtension(std::uint32_t optionId, std::uint32_t index, const char **description,
                                        const char **extension) const
{
    const Private::Option *option = m_private->option(optionId);
    const bool found = option != nullptr && index < option->extensions.size();
    *description = found ? option->extensions[index].description.c_str() : "";
    *extension = found ? option->extensions[index].extension.c_str() : "";
    return found;
}

void AnalyzerSettings::AddInterface(AnalyzerSettingInterface *setting)
{
    if (setting == nullptr)
        return;
    const bool isChannel = setting->GetType() == AnalyzerInterfaceTypeId::Channel;
    (isChannel ? m_private->channels : m_private->others).push_back(setting);
}

void AnalyzerSettings::AddExportOption(std::uint32_t optionId, const char *name)
{
    m_private->options.push_back({optionId, orEmpty(name), {}});
}

void AnalyzerSettings::AddExportExtension(std::uint32_t optionId, const char *description, const char *extension)
{
    for (Private::Option &option : m_private->options) {
        if (option.id == optionId)
            option.extensions.push_back({orEmpty(description), orEmpty(extension)});
    }
}

void AnalyzerSettings::SetErrorText(const char *text)
{
    m_private->error = orEmpty(text);
}
