#include "analyzer/RowFilter.h"

#include <algorithm>

namespace {

bool isAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

constexpr char smallLetter(char c)
{
    return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
}

} // namespace

RowFilter::RowFilter(const QString &searched) : m_searched(searched)
{
    const std::string bytes = searched.toStdString();
    if (isAscii(bytes)) {
        m_ascii.resize(bytes.size());
        std::transform(bytes.begin(), bytes.end(), m_ascii.begin(), smallLetter);
    }
}

bool RowFilter::matches(std::string_view text) const
{
    if (m_searched.isEmpty()) {
        return true;
    }
    if (m_ascii.empty() || !isAscii(text)) {
        return QString::fromUtf8(text.data(), int(text.size())).contains(m_searched, Qt::CaseInsensitive);
    }
    const auto same = [](char of, char wanted) { return smallLetter(of) == wanted; };
    return std::search(text.begin(), text.end(), m_ascii.begin(), m_ascii.end(), same) != text.end();
}
