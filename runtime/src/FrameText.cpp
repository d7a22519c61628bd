#include "corvanlux/analyzer/FrameText.h"

#include "CopyText.h"
#include "HexDigits.h"
#include "Hidden.h"

#include <algorithm>
#include <deque>
#include <string>
#include <utility>
#include <vector>

namespace lux {

struct LUX_HIDDEN FrameText::Private {
    void clear()
    {
        used = 0;
        starts.clear();
    }
    /// Begins a text. @return where its `size` characters, its 0 among them, are to be written
    char *begin(std::size_t size)
    {
        if (text.size() < used + size)
            text.resize(2 * (used + size));
        starts.push_back(used);
        return text.data() + std::exchange(used, used + size);
    }
    std::vector<char> text;           ///< the texts, each ended by a 0; the first `used` of them
    std::size_t used = 0;             ///< bytes of `text`
    std::vector<std::size_t> starts;  ///< of each in `text`
    std::vector<const char *> result; ///< what strings() hands out
};

FrameText::FrameText() : m_private(new Private) {}

FrameText::~FrameText()
{
    delete m_private;
}

void FrameText::start(Purpose purpose, const Channel &channel, DisplayBase base)
{
    m_purpose = purpose;
    m_channel = channel;
    m_base = base;
    m_private->clear();
}

void FrameText::addPieces(const std::string_view *pieces, std::size_t count)
{
    if (m_purpose == Purpose::Tabular)
        m_private->clear(); // only the last is wanted
    std::size_t size = 1;
    for (std::size_t i = 0; i < count; ++i)
        size += pieces[i].size();
    char *out = m_private->begin(size);
    for (std::size_t i = 0; i < count; ++i)
        out += pieces[i].copy(out, pieces[i].size());
    *out = '\0';
}

void FrameText::addBytes(std::string_view before, std::span<const std::uint8_t> bytes, std::size_t most)
{
    const bool cut = bytes.size() > most;
    bytes = bytes.first(std::min(bytes.size(), most));
    const bool printable =
        m_base == DisplayBase::Ascii && !bytes.empty() &&
        std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t b) { return b >= 0x20 && b < 0x7F; });
    std::string text;
    if (printable) {
        text += '"';
        text.append(bytes.begin(), bytes.end());
        text += '"';
    } else {
        for (const std::uint8_t byte : bytes) {
            if (!text.empty())
                text += ' ';
            text += number(byte, 8).view();
        }
    }
    add(before, text, cut ? " ..." : "");
}

std::string_view FrameText::last() const
{
    if (m_private->starts.empty())
        return {};
    const std::size_t start = m_private->starts.back();
    return {m_private->text.data() + start, m_private->used - start - 1};
}

void FrameText::strings(const char *const **texts, std::uint32_t *count) const
{
    m_private->result.clear();
    for (const std::size_t start : m_private->starts)
        m_private->result.push_back(m_private->text.data() + start);
    *texts = m_private->result.data();
    *count = std::uint32_t(m_private->result.size());
}

// ---- values ---------------------------------------------------------------------------------------------------------

struct LUX_HIDDEN FrameValues::Private {
    FrameValue &add(const char *name, FrameValueType type)
    {
        values.emplace_back();
        values.back().name = detail::orEmpty(name);
        values.back().type = type;
        return values.back();
    }
    /// Storage for a text, the same at each frame.
    std::string &nextText()
    {
        if (texts.size() == textCount)
            texts.emplace_back();
        texts[textCount].clear();
        return texts[textCount++];
    }
    const char *kind = "";
    std::vector<FrameValue> values;
    std::deque<std::string> texts;
    std::size_t textCount = 0;
};

FrameValues::FrameValues() : m_private(new Private) {}

FrameValues::~FrameValues()
{
    delete m_private;
}

void FrameValues::start()
{
    m_private->kind = "";
    m_private->values.clear();
    m_private->textCount = 0;
}

FrameValues &FrameValues::kind(const char *name)
{
    m_private->kind = detail::orEmpty(name);
    return *this;
}

FrameValues &FrameValues::number(const char *name, std::uint64_t value)
{
    m_private->add(name, FrameValueType::Number).number = value;
    return *this;
}

FrameValues &FrameValues::flag(const char *name, bool value)
{
    m_private->add(name, FrameValueType::Flag).number = value ? 1 : 0;
    return *this;
}

FrameValues &FrameValues::text(const char *name, std::string_view value)
{
    std::string &kept = m_private->nextText();
    kept = value;
    m_private->add(name, FrameValueType::Text).text = kept.c_str();
    return *this;
}

FrameValues &FrameValues::hex(const char *name, std::uint64_t value, unsigned digits)
{
    std::string &kept = m_private->nextText();
    for (unsigned i = digits; i-- > 0;)
        kept += detail::hexDigits[i < 16 ? value >> (4 * i) & 15U : 0];
    m_private->add(name, FrameValueType::Hex).text = kept.c_str();
    return *this;
}

FrameValues &FrameValues::hex(const char *name, std::span<const std::uint8_t> bytes)
{
    std::string &kept = m_private->nextText();
    for (const std::uint8_t byte : bytes)
        kept += {detail::hexDigits[byte >> 4], detail::hexDigits[byte & 15U]};
    m_private->add(name, FrameValueType::Hex).text = kept.c_str();
    return *this;
}

FrameValues &FrameValues::none(const char *name)
{
    m_private->add(name, FrameValueType::None);
    return *this;
}

const char *FrameValues::frameKind() const
{
    return m_private->kind;
}

std::span<const FrameValue> FrameValues::list() const
{
    return m_private->values;
}

} // namespace lux
