#include "files/ChannelOffer.h"

#include "files/CaptureFiller.h"
#include "files/ForeignFile.h"

#include <QRegularExpression>

#include <algorithm>
#include <charconv>
#include <map>
#include <utility>

namespace {

/// A name with its bit: "data[7]".
struct BitName {
    std::string_view name;
    int index = 0;
    bool hasIndex = false;
};

BitName bitNameOf(std::string_view text)
{
    const std::size_t open = text.rfind('[');
    if (open == std::string_view::npos || open == 0 || text.back() != ']') {
        return {text};
    }
    const std::string_view digits = text.substr(open + 1, text.size() - open - 2);
    BitName found{text.substr(0, open), 0, true};
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), found.index);
    return error == std::errc() && end == digits.data() + digits.size() ? found : BitName{text};
}

/// Whether `text` is `scope`, a dot and `name`; or `name` alone, for no scope.
bool isFullName(std::string_view text, std::string_view scope, std::string_view name)
{
    return scope.empty() ? text == name
                         : text.size() == scope.size() + 1 + name.size() && text.starts_with(scope) &&
                               text[scope.size()] == '.' && text.ends_with(name);
}

void addOnce(std::vector<ChannelOffer::Bit> &bits, const ChannelOffer::Bit &bit)
{
    if (std::find(bits.begin(), bits.end(), bit) == bits.end()) {
        bits.push_back(bit);
    }
}

} // namespace

std::int32_t ChannelOffer::addScope(std::string path)
{
    m_memory += std::int64_t(sizeof(std::string) + path.size());
    m_scopes.push_back(std::move(path));
    return std::int32_t(m_scopes.size() - 1);
}

void ChannelOffer::add(Entry entry)
{
    m_memory += std::int64_t(2 * sizeof entry + entry.name.size()); // lists grow by doubling
    entry.number = m_total;
    m_total += entry.width;
    m_entries.push_back(std::move(entry));
}

ChannelOffer::Bit ChannelOffer::bitOf(std::int64_t number) const
{
    const auto behind = std::upper_bound(m_entries.begin(), m_entries.end(), number,
                                         [](std::int64_t wanted, const Entry &entry) { return wanted < entry.number; });
    const auto index = behind - m_entries.begin() - 1;
    return {std::int32_t(index), std::int32_t(number - m_entries[std::size_t(index)].number)};
}

QString ChannelOffer::nameOf(const Bit &bit, bool withScope) const
{
    const Entry &entry = m_entries[std::size_t(bit.entry)];
    QString name = QString::fromStdString(entry.name);
    const std::string &path = m_scopes[std::size_t(entry.scope)];
    if (withScope && !path.empty()) {
        name.prepend(QString::fromStdString(path) + QLatin1Char('.'));
    }
    const QString index = entry.isIndexed ? QStringLiteral("[%1]").arg(entry.low + bit.bit * entry.step) : QString();
    return name.left(foreignNameMax - index.size()) + index;
}

bool ChannelOffer::takeNumbers(const QString &item, std::vector<Bit> &bits, QString &error) const
{
    static const QRegularExpression form(QStringLiteral("^(\\d{1,9})(?:-(\\d{1,9}))?$"));
    const QRegularExpressionMatch match = form.match(item);
    if (!match.hasMatch()) {
        return false;
    }
    const qlonglong first = match.captured(1).toLongLong();
    const qlonglong last = match.captured(2).isEmpty() ? first : match.captured(2).toLongLong();
    if (last >= m_total) {
        error = QStringLiteral("there is no channel %1; the last one is %2").arg(last).arg(m_total - 1);
    } else if (qAbs(last - first) >= CaptureFiller::channelMax) {
        error = QStringLiteral("channels %1 are more than %2").arg(item).arg(CaptureFiller::channelMax);
    } else {
        for (qlonglong number = first; number != last; number += first < last ? 1 : -1) {
            addOnce(bits, bitOf(number));
        }
        addOnce(bits, bitOf(last));
    }
    return true;
}

/// Adds the bits of all entries of that name, a few more than can be used at most.
void ChannelOffer::matchesOf(const std::string &item, bool withScope, std::vector<Bit> &found) const
{
    const BitName one = bitNameOf(item);
    const auto names = [&](const Entry &entry, std::string_view text) {
        return withScope ? isFullName(text, m_scopes[std::size_t(entry.scope)], entry.name) : text == entry.name;
    };
    for (std::size_t i = 0; i < m_entries.size() && found.size() <= CaptureFiller::channelMax; ++i) {
        const Entry &entry = m_entries[i];
        if (names(entry, item)) {
            for (int bit = 0; bit < std::min(entry.width, CaptureFiller::channelMax + 1); ++bit) {
                found.push_back({std::int32_t(i), bit});
            }
        } else if (one.hasIndex && entry.isIndexed && names(entry, one.name)) {
            const std::int64_t bit = (std::int64_t(one.index) - entry.low) * entry.step;
            if (bit >= 0 && bit < entry.width) {
                found.push_back({std::int32_t(i), std::int32_t(bit)});
            }
        }
    }
}

void ChannelOffer::takeNamed(const QString &item, std::vector<Bit> &bits, QString &error) const
{
    const std::string text = item.toStdString();
    std::vector<Bit> found;
    matchesOf(text, false, found);
    if (found.empty()) {
        matchesOf(text, true, found);
    }
    if (found.empty()) {
        error = QStringLiteral("there is no channel \"%1\"").arg(item);
        return;
    }
    const auto other = std::find_if(found.begin(), found.end(), [&](const Bit &bit) {
        return m_entries[std::size_t(bit.entry)].scope != m_entries[std::size_t(found.front().entry)].scope;
    });
    if (other != found.end()) {
        error = QStringLiteral("\"%1\" is several channels, such as %2 and %3")
                    .arg(item, fullNameOf(found.front()), fullNameOf(*other));
        return;
    }
    for (const Bit &bit : found) {
        addOnce(bits, bit);
    }
}

QString ChannelOffer::tooMany() const
{
    constexpr std::size_t named = 8;
    QStringList names;
    for (std::size_t i = 0; i < std::min(m_entries.size(), named); ++i) {
        names.append(QString::fromStdString(m_entries[i].name).left(40));
    }
    const bool hasNames =
        std::any_of(names.cbegin(), names.cend(), [](const QString &name) { return !name.isEmpty(); });
    const QString byNames =
        QStringLiteral(" or names (%1%2)")
            .arg(names.join(QStringLiteral(", ")), m_entries.size() > named ? QStringLiteral(", ...") : QString());
    return QStringLiteral("%1 channels are more than %2; \"luxcli convert --channels\" picks some: numbers (0-7)%3")
        .arg(QString::number(m_total), QString::number(CaptureFiller::channelMax), hasNames ? byNames : QString());
}

/// Names without their scope, where that tells them apart.
void ChannelOffer::tellNames(Pick &pick) const
{
    std::map<QString, int> uses;
    for (const Bit &bit : pick.bits) {
        ++uses[nameOf(bit, false)];
    }
    for (const Bit &bit : pick.bits) {
        const QString name = nameOf(bit, false);
        pick.names.append(uses[name] > 1 ? fullNameOf(bit) : name);
    }
}

ChannelOffer::Pick ChannelOffer::pick(const QStringList &wanted) const
{
    Pick pick;
    for (const QString &item : wanted) {
        if (pick.error.isEmpty() && !takeNumbers(item, pick.bits, pick.error)) {
            takeNamed(item, pick.bits, pick.error);
        }
    }
    if (m_total < 1) {
        pick.error = QStringLiteral("there is no channel in it");
    } else if (wanted.isEmpty() && m_total <= CaptureFiller::channelMax) {
        for (std::int64_t number = 0; number < m_total; ++number) {
            pick.bits.push_back(bitOf(number));
        }
    } else if (wanted.isEmpty()) {
        pick.error = tooMany();
    } else if (pick.error.isEmpty() && pick.bits.size() > std::size_t(CaptureFiller::channelMax)) {
        pick.error = QStringLiteral("more than %1 channels are picked").arg(CaptureFiller::channelMax);
    }
    if (!pick.error.isEmpty()) {
        pick.bits.clear();
    }
    tellNames(pick);
    return pick;
}
