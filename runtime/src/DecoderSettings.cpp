#include "corvanlux/analyzer/DecoderSettings.h"

#include "HexDigits.h"
#include "SettingPrivate.h"

#include <algorithm>
#include <set>
#include <string_view>

namespace lux {
namespace {

using SettingList = std::vector<detail::Setting::Private *>;

/// What stands in a stored text as it is: no separator, no "%", no control character, ASCII only.
bool isPlain(unsigned char c)
{
    return c > ' ' && c < 0x7F && c != ',' && c != ';' && c != '=' && c != '%';
}

std::string escaped(std::string_view text)
{
    std::string out;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (isPlain(byte))
            out += c;
        else
            (out += '%') += {detail::hexDigits[byte >> 4], detail::hexDigits[byte & 15U]};
    }
    return out;
}

int digitValue(char c)
{
    const char *found = std::char_traits<char>::find(detail::hexDigits, sizeof detail::hexDigits - 1, c);
    return found == nullptr ? -1 : int(found - detail::hexDigits);
}

std::string unescaped(std::string_view text)
{
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && digitValue(text[i + 1]) >= 0 && digitValue(text[i + 2]) >= 0) {
            out += char(digitValue(text[i + 1]) * 16 + digitValue(text[i + 2]));
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

std::string quoted(const detail::Setting::Private &setting)
{
    return '"' + std::string(setting.face->GetTitle()) + '"';
}

/// Why this value cannot be that of the setting; empty when it can.
std::string problemOf(const detail::Setting::Private &setting)
{
    const AnalyzerSettingInterface *face = setting.face.get();
    const double number = setting.inUse.number;
    switch (face->GetType()) {
    case AnalyzerInterfaceTypeId::Channel:
        if (number < 0 && !static_cast<const AnalyzerSettingInterfaceChannel *>(face)->GetSelectionOfNoneIsAllowed())
            return "Please select a channel for " + quoted(setting) + '.';
        break;
    case AnalyzerInterfaceTypeId::Integer: {
        const auto *integer = static_cast<const AnalyzerSettingInterfaceInteger *>(face);
        if (number < integer->GetMin() || number > integer->GetMax())
            return quoted(setting) + " must be from " + std::to_string(integer->GetMin()) + " to " +
                   std::to_string(integer->GetMax()) + '.';
        break;
    }
    case AnalyzerInterfaceTypeId::NumberList: {
        const auto *list = static_cast<const AnalyzerSettingInterfaceNumberList *>(face);
        bool known = false;
        for (std::uint32_t i = 0; i < list->GetListboxNumbersCount(); ++i)
            known = known || list->GetListboxNumber(i) == number;
        if (!known)
            return quoted(setting) + " must be one of the list.";
        break;
    }
    default:
        break;
    }
    return {};
}

std::string sharedChannel(const SettingList &settings)
{
    for (std::size_t i = 0; i < settings.size(); ++i) {
        for (std::size_t j = i + 1; j < settings.size(); ++j) {
            const bool channels = settings[i]->face->GetType() == AnalyzerInterfaceTypeId::Channel &&
                                  settings[j]->face->GetType() == AnalyzerInterfaceTypeId::Channel;
            if (channels && settings[i]->inUse.number >= 0 && settings[i]->inUse.number == settings[j]->inUse.number)
                return quoted(*settings[i]) + " and " + quoted(*settings[j]) + " must be different channels.";
        }
    }
    return {};
}

} // namespace

Settings::Settings() : m_private(new Private)
{
    AddExportOption(0, "Decoded frames");
    AddExportExtension(0, "Text file", "txt");
    AddExportExtension(0, "CSV file", "csv");
}

Settings::~Settings()
{
    delete m_private;
}

std::string Settings::check() const
{
    return {};
}

bool Settings::channelsMayBeShared() const
{
    return false;
}

void Settings::addExport(std::uint32_t optionId, const char *name, const char *description, const char *extension)
{
    if (GetFileExtensionCount(optionId) == 0)
        AddExportOption(optionId, name);
    AddExportExtension(optionId, description, extension);
}

std::string Settings::problem() const
{
    std::string sentence;
    for (auto *setting : m_private->settings) {
        if (sentence.empty())
            sentence = problemOf(*setting);
    }
    if (sentence.empty() && !channelsMayBeShared())
        sentence = sharedChannel(m_private->settings);
    return sentence.empty() ? check() : sentence;
}

bool Settings::ApplyInterfaces()
{
    std::vector<SettingValue> before;
    for (auto *setting : m_private->settings) {
        before.push_back(setting->inUse);
        setting->inUse = setting->edited();
    }
    const std::string sentence = problem();
    SetErrorText(sentence.c_str());
    if (sentence.empty())
        return true;
    for (std::size_t i = 0; i < before.size(); ++i)
        m_private->settings[i]->inUse = before[i];
    return false;
}

void Settings::LoadText(const char *text)
{
    for (auto *setting : m_private->settings)
        setting->show(setting->initial);
    std::string_view rest = text == nullptr ? "" : text;
    while (!rest.empty()) {
        const std::string_view part = rest.substr(0, rest.find(','));
        rest.remove_prefix(std::min(rest.size(), part.size() + 1));
        const std::size_t equals = part.find('=');
        if (equals == std::string_view::npos)
            continue;
        const std::string_view key = part.substr(0, equals);
        for (auto *setting : m_private->settings) {
            if (key == setting->face->GetKey())
                setting->face->SetFromText(unescaped(part.substr(equals + 1)).c_str());
        }
    }
    for (auto *setting : m_private->settings)
        setting->inUse = setting->edited();
}

const char *Settings::SaveText()
{
    std::string &saved = m_private->saved;
    saved.clear();
    for (auto *setting : m_private->settings) {
        const SettingValue edited = setting->edited();
        setting->show(setting->inUse);
        if (!saved.empty())
            saved += ',';
        saved += std::string(setting->face->GetKey()) + '=' + escaped(setting->face->GetAsText());
        setting->show(edited);
    }
    return saved.c_str();
}

} // namespace lux
