#include "corvanlux/analyzer/AnalyzerSettingInterface.h"

#include "CopyText.h"
#include "Hidden.h"
#include "NumberText.h"

#include <algorithm>
#include <limits>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

using lux::detail::orEmpty;
using lux::detail::parseNumber;
using lux::detail::plainNumber;

// What the library allocates the library frees, whoever destroys it.
#define LUX_OWN_MEMORY(Class)                                                                                          \
    void *Class::operator new(std::size_t size)                                                                        \
    {                                                                                                                  \
        return ::operator new(size);                                                                                   \
    }                                                                                                                  \
    void Class::operator delete(void *memory)                                                                          \
    {                                                                                                                  \
        ::operator delete(memory);                                                                                     \
    }                                                                                                                  \
    void Class::operator delete(void *memory, std::size_t)                                                             \
    {                                                                                                                  \
        ::operator delete(memory);                                                                                     \
    }

LUX_OWN_MEMORY(AnalyzerSettingInterface)
LUX_OWN_MEMORY(AnalyzerSettingInterfaceChannel)
LUX_OWN_MEMORY(AnalyzerSettingInterfaceNumberList)
LUX_OWN_MEMORY(AnalyzerSettingInterfaceInteger)
LUX_OWN_MEMORY(AnalyzerSettingInterfaceText)
LUX_OWN_MEMORY(AnalyzerSettingInterfaceBool)

#undef LUX_OWN_MEMORY

namespace {

char lowered(char c)
{
    return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
}

/// The same letters, in either case.
bool isSameWord(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char left, char right) { return lowered(left) == lowered(right); });
}

/// Whether `text` is one of "msb|msb-first", in either case, or the same number in other digits: "2.0" is "2".
bool isSpelling(std::string_view spellings, std::string_view text)
{
    const std::optional<double> number = parseNumber(text);
    while (!spellings.empty()) {
        const std::string_view spelling = spellings.substr(0, spellings.find('|'));
        spellings.remove_prefix(std::min(spellings.size(), spelling.size() + 1));
        if (isSameWord(spelling, text) || (number && parseNumber(spelling) == number))
            return true;
    }
    return false;
}

} // namespace

// ---- what all have --------------------------------------------------------------------------------------------------

struct LUX_HIDDEN AnalyzerSettingInterface::Private {
    std::string title;
    std::string toolTip;
    std::string key;
    std::string asText;
};

AnalyzerSettingInterface::AnalyzerSettingInterface() : m_private(new Private) {}

AnalyzerSettingInterface::~AnalyzerSettingInterface()
{
    delete m_private;
}

AnalyzerInterfaceTypeId AnalyzerSettingInterface::GetType() const
{
    return AnalyzerInterfaceTypeId::Unknown;
}

const char *AnalyzerSettingInterface::GetTitle() const
{
    return m_private->title.c_str();
}

const char *AnalyzerSettingInterface::GetToolTip() const
{
    return m_private->toolTip.c_str();
}

void AnalyzerSettingInterface::SetTitleAndToolTip(const char *title, const char *toolTip)
{
    m_private->title = orEmpty(title);
    m_private->toolTip = orEmpty(toolTip);
}

const char *AnalyzerSettingInterface::GetKey() const
{
    return m_private->key.c_str();
}

void AnalyzerSettingInterface::SetKey(const char *key)
{
    m_private->key = orEmpty(key);
}

bool AnalyzerSettingInterface::SetFromText(const char *text)
{
    const std::string_view value = orEmpty(text);
    switch (GetType()) {
    case AnalyzerInterfaceTypeId::Channel:
        return static_cast<AnalyzerSettingInterfaceChannel *>(this)->takeText(value);
    case AnalyzerInterfaceTypeId::NumberList:
        return static_cast<AnalyzerSettingInterfaceNumberList *>(this)->takeText(value);
    case AnalyzerInterfaceTypeId::Integer:
        return static_cast<AnalyzerSettingInterfaceInteger *>(this)->takeText(value);
    case AnalyzerInterfaceTypeId::Text:
        return static_cast<AnalyzerSettingInterfaceText *>(this)->takeText(value);
    case AnalyzerInterfaceTypeId::Bool:
        return static_cast<AnalyzerSettingInterfaceBool *>(this)->takeText(value);
    case AnalyzerInterfaceTypeId::Unknown:
        break;
    }
    return false;
}

const char *AnalyzerSettingInterface::GetAsText() const
{
    std::string &out = m_private->asText;
    out.clear();
    switch (GetType()) {
    case AnalyzerInterfaceTypeId::Channel: {
        const Channel channel = static_cast<const AnalyzerSettingInterfaceChannel *>(this)->GetChannel();
        out = channel.isDefined() ? std::to_string(channel.channelIndex) : "none";
        break;
    }
    case AnalyzerInterfaceTypeId::NumberList: {
        const auto *list = static_cast<const AnalyzerSettingInterfaceNumberList *>(this);
        for (std::uint32_t i = 0; i < list->GetListboxNumbersCount() && out.empty(); ++i) {
            if (list->GetListboxNumber(i) == list->GetNumber())
                out = list->GetListboxWord(i);
        }
        if (out.empty())
            out = plainNumber(list->GetNumber());
        break;
    }
    case AnalyzerInterfaceTypeId::Integer:
        out = std::to_string(static_cast<const AnalyzerSettingInterfaceInteger *>(this)->GetInteger());
        break;
    case AnalyzerInterfaceTypeId::Text:
        out = static_cast<const AnalyzerSettingInterfaceText *>(this)->GetText();
        break;
    case AnalyzerInterfaceTypeId::Bool:
        out = static_cast<const AnalyzerSettingInterfaceBool *>(this)->GetValue() ? "true" : "false";
        break;
    case AnalyzerInterfaceTypeId::Unknown:
        break;
    }
    return out.c_str();
}

// ---- channel --------------------------------------------------------------------------------------------------------

struct LUX_HIDDEN AnalyzerSettingInterfaceChannel::Private {
    Channel channel;
    bool noneIsAllowed = false;
};

AnalyzerSettingInterfaceChannel::AnalyzerSettingInterfaceChannel() : m_private(new Private) {}

AnalyzerSettingInterfaceChannel::~AnalyzerSettingInterfaceChannel()
{
    delete m_private;
}

AnalyzerInterfaceTypeId AnalyzerSettingInterfaceChannel::GetType() const
{
    return AnalyzerInterfaceTypeId::Channel;
}

Channel AnalyzerSettingInterfaceChannel::GetChannel() const
{
    return m_private->channel;
}

void AnalyzerSettingInterfaceChannel::SetChannel(const Channel &channel)
{
    m_private->channel = channel.isDefined() ? channel : Channel();
}

bool AnalyzerSettingInterfaceChannel::GetSelectionOfNoneIsAllowed() const
{
    return m_private->noneIsAllowed;
}

void AnalyzerSettingInterfaceChannel::SetSelectionOfNoneIsAllowed(bool allowed)
{
    m_private->noneIsAllowed = allowed;
}

bool AnalyzerSettingInterfaceChannel::takeText(std::string_view text)
{
    if (isSameWord(text, "none") || text == "-1") {
        m_private->channel = Channel();
        return true;
    }
    constexpr double most = 65535;
    const std::optional<double> number = parseNumber(text);
    if (!number || *number < 0 || *number > most || *number != double(std::uint32_t(*number)))
        return false;
    m_private->channel = Channel(0, std::uint32_t(*number));
    return true;
}

// ---- number list ----------------------------------------------------------------------------------------------------

struct LUX_HIDDEN AnalyzerSettingInterfaceNumberList::Private {
    struct Entry {
        double number;
        std::string text;
        std::string toolTip;
        std::string word;
        std::string spellings; ///< of the word, itself included, with "|" between
    };
    [[nodiscard]] const Entry &entry(std::uint32_t index) const
    {
        static const Entry none{0, {}, {}, {}, {}};
        return index < entries.size() ? entries[index] : none;
    }
    std::vector<Entry> entries;
    double number = 0;
};

AnalyzerSettingInterfaceNumberList::AnalyzerSettingInterfaceNumberList() : m_private(new Private) {}

AnalyzerSettingInterfaceNumberList::~AnalyzerSettingInterfaceNumberList()
{
    delete m_private;
}

AnalyzerInterfaceTypeId AnalyzerSettingInterfaceNumberList::GetType() const
{
    return AnalyzerInterfaceTypeId::NumberList;
}

void AnalyzerSettingInterfaceNumberList::AddNumber(double number, const char *text, const char *toolTip,
                                                   const char *word)
{
    const std::string_view spellings = orEmpty(word);
    m_private->entries.push_back({number, orEmpty(text), orEmpty(toolTip),
                                  std::string(spellings.substr(0, spellings.find('|'))), std::string(spellings)});
}

void AnalyzerSettingInterfaceNumberList::ClearNumbers()
{
    m_private->entries.clear();
}

std::uint32_t AnalyzerSettingInterfaceNumberList::GetListboxNumbersCount() const
{
    return std::uint32_t(m_private->entries.size());
}

double AnalyzerSettingInterfaceNumberList::GetListboxNumber(std::uint32_t index) const
{
    return m_private->entry(index).number;
}

const char *AnalyzerSettingInterfaceNumberList::GetListboxString(std::uint32_t index) const
{
    return m_private->entry(index).text.c_str();
}

const char *AnalyzerSettingInterfaceNumberList::GetListboxToolTip(std::uint32_t index) const
{
    return m_private->entry(index).toolTip.c_str();
}

const char *AnalyzerSettingInterfaceNumberList::GetListboxWord(std::uint32_t index) const
{
    return m_private->entry(index).word.c_str();
}

double AnalyzerSettingInterfaceNumberList::GetNumber() const
{
    return m_private->number;
}

void AnalyzerSettingInterfaceNumberList::SetNumber(double number)
{
    m_private->number = number;
}

bool AnalyzerSettingInterfaceNumberList::takeText(std::string_view text)
{
    for (const auto &entry : m_private->entries) {
        if (isSpelling(entry.word.empty() ? plainNumber(entry.number) : entry.spellings, text)) {
            m_private->number = entry.number;
            return true;
        }
    }
    return false;
}

// ---- integer --------------------------------------------------------------------------------------------------------

struct LUX_HIDDEN AnalyzerSettingInterfaceInteger::Private {
    std::int32_t value = 0;
    std::int32_t least = 0;
    std::int32_t most = std::numeric_limits<std::int32_t>::max();
};

AnalyzerSettingInterfaceInteger::AnalyzerSettingInterfaceInteger() : m_private(new Private) {}

AnalyzerSettingInterfaceInteger::~AnalyzerSettingInterfaceInteger()
{
    delete m_private;
}

AnalyzerInterfaceTypeId AnalyzerSettingInterfaceInteger::GetType() const
{
    return AnalyzerInterfaceTypeId::Integer;
}

std::int32_t AnalyzerSettingInterfaceInteger::GetInteger() const
{
    return m_private->value;
}

void AnalyzerSettingInterfaceInteger::SetInteger(std::int32_t value)
{
    m_private->value = value;
}

std::int32_t AnalyzerSettingInterfaceInteger::GetMin() const
{
    return m_private->least;
}

std::int32_t AnalyzerSettingInterfaceInteger::GetMax() const
{
    return m_private->most;
}

void AnalyzerSettingInterfaceInteger::SetMin(std::int32_t least)
{
    m_private->least = least;
}

void AnalyzerSettingInterfaceInteger::SetMax(std::int32_t most)
{
    m_private->most = most;
}

bool AnalyzerSettingInterfaceInteger::takeText(std::string_view text)
{
    const std::optional<double> number = parseNumber(text);
    if (!number || *number < m_private->least || *number > m_private->most || *number != double(std::int32_t(*number)))
        return false;
    m_private->value = std::int32_t(*number);
    return true;
}

// ---- text -----------------------------------------------------------------------------------------------------------

struct LUX_HIDDEN AnalyzerSettingInterfaceText::Private {
    std::string text;
};

AnalyzerSettingInterfaceText::AnalyzerSettingInterfaceText() : m_private(new Private) {}

AnalyzerSettingInterfaceText::~AnalyzerSettingInterfaceText()
{
    delete m_private;
}

AnalyzerInterfaceTypeId AnalyzerSettingInterfaceText::GetType() const
{
    return AnalyzerInterfaceTypeId::Text;
}

const char *AnalyzerSettingInterfaceText::GetText() const
{
    return m_private->text.c_str();
}

void AnalyzerSettingInterfaceText::SetText(const char *text)
{
    m_private->text = orEmpty(text);
}

bool AnalyzerSettingInterfaceText::takeText(std::string_view text)
{
    if (std::any_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }))
        return false;
    m_private->text = text;
    return true;
}

// ---- bool -----------------------------------------------------------------------------------------------------------

struct LUX_HIDDEN AnalyzerSettingInterfaceBool::Private {
    bool value = false;
    std::string checkBoxText;
};

AnalyzerSettingInterfaceBool::AnalyzerSettingInterfaceBool() : m_private(new Private) {}

AnalyzerSettingInterfaceBool::~AnalyzerSettingInterfaceBool()
{
    delete m_private;
}

AnalyzerInterfaceTypeId AnalyzerSettingInterfaceBool::GetType() const
{
    return AnalyzerInterfaceTypeId::Bool;
}

bool AnalyzerSettingInterfaceBool::GetValue() const
{
    return m_private->value;
}

void AnalyzerSettingInterfaceBool::SetValue(bool value)
{
    m_private->value = value;
}

const char *AnalyzerSettingInterfaceBool::GetCheckBoxText() const
{
    return m_private->checkBoxText.c_str();
}

void AnalyzerSettingInterfaceBool::SetCheckBoxText(const char *text)
{
    m_private->checkBoxText = orEmpty(text);
}

bool AnalyzerSettingInterfaceBool::takeText(std::string_view text)
{
    const bool yes = isSpelling("true|1|yes|on", text);
    if (!yes && !isSpelling("false|0|no|off", text))
        return false;
    m_private->value = yes;
    return true;
}
