#include "SettingPrivate.h"

#include <algorithm>

using lux::detail::Setting;

SettingValue Setting::Private::edited() const
{
    const AnalyzerSettingInterface *setting = face.get();
    switch (face->GetType()) {
    case AnalyzerInterfaceTypeId::Channel: {
        const Channel channel = static_cast<const AnalyzerSettingInterfaceChannel *>(setting)->GetChannel();
        return {channel.isDefined() ? double(channel.channelIndex) : -1, {}};
    }
    case AnalyzerInterfaceTypeId::NumberList:
        return {static_cast<const AnalyzerSettingInterfaceNumberList *>(setting)->GetNumber(), {}};
    case AnalyzerInterfaceTypeId::Integer:
        return {double(static_cast<const AnalyzerSettingInterfaceInteger *>(setting)->GetInteger()), {}};
    case AnalyzerInterfaceTypeId::Text:
        return {0, static_cast<const AnalyzerSettingInterfaceText *>(setting)->GetText()};
    case AnalyzerInterfaceTypeId::Bool:
        return {static_cast<const AnalyzerSettingInterfaceBool *>(setting)->GetValue() ? 1.0 : 0.0, {}};
    case AnalyzerInterfaceTypeId::Unknown:
        break;
    }
    return {};
}

void Setting::Private::show(const SettingValue &value)
{
    AnalyzerSettingInterface *setting = face.get();
    switch (face->GetType()) {
    case AnalyzerInterfaceTypeId::Channel:
        static_cast<AnalyzerSettingInterfaceChannel *>(setting)->SetChannel(
            value.number < 0 ? Channel() : Channel(0, std::uint32_t(value.number)));
        break;
    case AnalyzerInterfaceTypeId::NumberList:
        static_cast<AnalyzerSettingInterfaceNumberList *>(setting)->SetNumber(value.number);
        break;
    case AnalyzerInterfaceTypeId::Integer:
        static_cast<AnalyzerSettingInterfaceInteger *>(setting)->SetInteger(std::int32_t(value.number));
        break;
    case AnalyzerInterfaceTypeId::Text:
        static_cast<AnalyzerSettingInterfaceText *>(setting)->SetText(value.text.c_str());
        break;
    case AnalyzerInterfaceTypeId::Bool:
        static_cast<AnalyzerSettingInterfaceBool *>(setting)->SetValue(value.number != 0);
        break;
    case AnalyzerInterfaceTypeId::Unknown:
        break;
    }
}

namespace lux {
namespace detail {

Setting::Setting(Settings &owner, AnalyzerSettingInterface *face, const char *key, const char *title,
                 const char *toolTip)
    : m_private(new Private)
{
    m_private->face.reset(face);
    face->SetKey(key);
    face->SetTitleAndToolTip(title, toolTip);
    owner.AddInterface(face);
    owner.internals()->settings.push_back(m_private);
}

Setting::~Setting()
{
    delete m_private;
}

AnalyzerSettingInterface *Setting::face() const
{
    return m_private->face.get();
}

void Setting::begin()
{
    m_private->initial = m_private->inUse = m_private->edited();
}

double Setting::number() const
{
    return m_private->inUse.number;
}

const std::string &Setting::text() const
{
    return m_private->inUse.text;
}

} // namespace detail

// ---- the kinds ------------------------------------------------------------------------------------------------------

ChannelSetting::ChannelSetting(Settings &owner, const char *key, const char *title, const char *toolTip,
                               Presence presence)
    : Setting(owner, new AnalyzerSettingInterfaceChannel, key, title, toolTip)
{
    static_cast<AnalyzerSettingInterfaceChannel *>(face())->SetSelectionOfNoneIsAllowed(presence == Presence::Optional);
    begin();
}

ChannelSetting::~ChannelSetting() = default;

Channel ChannelSetting::value() const
{
    return number() < 0 ? Channel() : Channel(0, std::uint32_t(number()));
}

IntegerSetting::IntegerSetting(Settings &owner, const char *key, const char *title, const char *toolTip, Range range,
                               std::int32_t value)
    : Setting(owner, new AnalyzerSettingInterfaceInteger, key, title, toolTip)
{
    auto *integer = static_cast<AnalyzerSettingInterfaceInteger *>(face());
    integer->SetMin(range.least);
    integer->SetMax(range.most);
    integer->SetInteger(value);
    begin();
}

IntegerSetting::~IntegerSetting() = default;

std::int32_t IntegerSetting::value() const
{
    return std::int32_t(number());
}

NumberListSetting::NumberListSetting(Settings &owner, const char *key, const char *title, const char *toolTip,
                                     std::initializer_list<Choice> choices, std::int32_t value)
    : Setting(owner, new AnalyzerSettingInterfaceNumberList, key, title, toolTip)
{
    auto *list = static_cast<AnalyzerSettingInterfaceNumberList *>(face());
    for (const Choice &choice : choices)
        list->AddNumber(choice.number, choice.text, choice.toolTip, choice.word);
    list->SetNumber(value);
    begin();
}

NumberListSetting::~NumberListSetting() = default;

std::int32_t NumberListSetting::value() const
{
    return std::int32_t(number());
}

TextSetting::TextSetting(Settings &owner, const char *key, const char *title, const char *toolTip, const char *value)
    : Setting(owner, new AnalyzerSettingInterfaceText, key, title, toolTip)
{
    static_cast<AnalyzerSettingInterfaceText *>(face())->SetText(value);
    begin();
}

TextSetting::~TextSetting() = default;

BoolSetting::BoolSetting(Settings &owner, const char *key, const char *title, const char *checkBoxText,
                         const char *toolTip, bool value)
    : Setting(owner, new AnalyzerSettingInterfaceBool, key, title, toolTip)
{
    auto *box = static_cast<AnalyzerSettingInterfaceBool *>(face());
    box->SetCheckBoxText(checkBoxText);
    box->SetValue(value);
    begin();
}

BoolSetting::~BoolSetting() = default;

bool BoolSetting::value() const
{
    return number() != 0;
}

} // namespace lux
