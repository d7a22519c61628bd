#include "files/VcdDeclarations.h"

#include "files/CaptureFiller.h"

#include <QRegularExpression>

#include <charconv>
#include <cmath>
#include <cstring>

namespace {

constexpr std::size_t letters = 94; // '!' to '~'

bool isBlank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// Where a code of two or three letters stands in the table; its size for any other.
constexpr std::size_t fewSize = letters * letters * (letters + 1);
std::size_t fewIndex(std::string_view code)
{
    std::size_t index = 0;
    for (const char c : code) {
        const auto letter = std::size_t(std::uint8_t(c)) - std::size_t('!');
        if (letter >= letters) {
            return fewSize;
        }
        index = index * letters + letter;
    }
    return code.size() == 2 ? letters * letters * letters + index : index;
}

bool number(std::string_view text, std::int32_t &value)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

} // namespace

std::int32_t VcdCodes::add(std::string_view code)
{
    const auto isLetter = [](char c) { return c >= '!' && c <= '~'; };
    if (code.empty() || code.size() > lengthMax || !std::all_of(code.begin(), code.end(), isLetter)) {
        return -1;
    }
    const std::int32_t known = find(code);
    if (known >= 0) {
        return known;
    }
    if (code.size() == 1) {
        m_one[std::uint8_t(code[0])] = m_count;
    } else if (code.size() <= 3) {
        m_few.resize(fewSize, -1);
        m_few[fewIndex(code)] = m_count;
    } else {
        m_more.emplace(code, m_count);
    }
    return m_count++;
}

std::int32_t VcdCodes::findLong(std::string_view code) const
{
    if (code.size() == 2 || code.size() == 3) {
        const std::size_t index = fewIndex(code);
        return index < m_few.size() ? m_few[index] : -1;
    }
    const auto found = m_more.find(code);
    return found == m_more.end() ? -1 : found->second;
}

bool VcdText::fail(const char *place, const QString &what)
{
    error = pieces.hasFailed() ? QStringLiteral("it cannot be read further")
                               : QStringLiteral("line %1: %2").arg(pieces.lineOf(place)).arg(what);
    return false;
}

bool VcdText::word(std::string_view &word)
{
    for (;;) {
        while (at < pieces.end() && isBlank(*at)) {
            ++at;
        }
        if (at < pieces.safeEnd()) {
            break;
        }
        if (pieces.atEnd()) {
            return pieces.hasFailed() ? fail(at, {}) : false;
        }
        at = pieces.fill(at);
    }
    const char *const from = at;
    while (std::uint8_t(*at) > ' ') {
        ++at;
    }
    if (at == from) {
        return fail(from, QStringLiteral("a byte that is no text"));
    }
    if (at == pieces.end() && !pieces.atEnd()) {
        return fail(from, QStringLiteral("a word without an end"));
    }
    word = {from, std::size_t(at - from)};
    return true;
}

bool VcdText::passToEnd(std::string *text)
{
    constexpr std::size_t textMax = 512;
    constexpr std::string_view mark = "$end";
    for (;;) {
        const auto left = std::size_t(pieces.end() - at);
        const auto *hit = static_cast<const char *>(std::memchr(at, '$', left));
        const char *const stop = hit != nullptr ? hit : pieces.end();
        if (text != nullptr && text->size() < textMax) {
            text->append(at, std::min<std::size_t>(std::size_t(stop - at), textMax - text->size()));
        }
        const auto behind = std::size_t(pieces.end() - stop);
        if (behind <= mark.size() && !pieces.atEnd()) {
            at = pieces.fill(stop);
        } else if (hit == nullptr) {
            return fail(pieces.end(), QStringLiteral("the file ends before $end"));
        } else if (behind >= mark.size() && std::string_view(hit, mark.size()) == mark &&
                   std::uint8_t(hit[mark.size()]) <= ' ') {
            at = hit + mark.size();
            return true;
        } else {
            at = hit + 1;
        }
    }
}

bool VcdDeclarations::takeScale(VcdText &text)
{
    struct Unit {
        const char *name;
        std::int64_t perSecond;
    };
    static constexpr std::array<Unit, 6> units{{{"s", 1},
                                                {"ms", 1'000},
                                                {"us", 1'000'000},
                                                {"ns", 1'000'000'000},
                                                {"ps", 1'000'000'000'000},
                                                {"fs", 1'000'000'000'000'000}}};
    std::string told;
    if (!text.passToEnd(&told)) {
        return false;
    }
    told.erase(std::remove_if(told.begin(), told.end(), isBlank), told.end());
    for (const Unit &unit : units) {
        for (const std::int64_t count : {1, 10, 100}) {
            if (told == std::to_string(count) + unit.name) {
                ticksPerSecond = std::max<std::int64_t>(unit.perSecond / count, 1);
                timeFactor = unit.perSecond == 1 ? count : 1;
                hasScale = true;
                return true;
            }
        }
    }
    return text.fail(text.at,
                     QStringLiteral("\"%1\" is no time scale").arg(QString::fromStdString(told.substr(0, 40))));
}

bool VcdDeclarations::takeScope(VcdText &text)
{
    std::string_view word;
    if (!text.word(word) || word == "$end" || !text.word(word)) { // kind and name
        return text.error.isEmpty() ? text.fail(text.at, QStringLiteral("a scope without a name")) : false;
    }
    if (word != "$end") {
        std::string path(m_open.empty() ? std::string_view() : offer.scope(m_open.back()));
        path.append(path.empty() ? "" : ".").append(word);
        m_open.push_back(offer.addScope(std::move(path)));
        return text.passToEnd();
    }
    return text.fail(text.at, QStringLiteral("a scope without a name"));
}

/// Takes the range at the end of a name: "[7:0]", "[3]". @return false if it has none
static bool takeRange(std::string &name, ChannelOffer::Entry &entry)
{
    const std::size_t open = name.rfind('[');
    if (open == std::string::npos || open == 0 || name.back() != ']') {
        return false;
    }
    const std::string_view range = std::string_view(name).substr(open + 1, name.size() - open - 2);
    const std::size_t colon = range.find(':');
    std::int32_t high = 0;
    std::int32_t low = 0;
    if (!number(range.substr(0, colon), high) ||
        !number(colon == std::string_view::npos ? range : range.substr(colon + 1), low)) {
        return false;
    }
    const std::int64_t span = (std::int64_t(high) < low ? std::int64_t(low) - high : std::int64_t(high) - low) + 1;
    if (span != entry.width) {
        return false; // a member of an array, or anything else
    }
    entry.low = low;
    entry.step = high < low ? -1 : 1;
    entry.isIndexed = true;
    name.resize(open);
    return true;
}

bool VcdDeclarations::takeVariable(VcdText &text)
{
    const auto fail = [&text](const QString &what) { return text.error.isEmpty() ? text.fail(text.at, what) : false; };
    std::string_view word;
    std::vector<std::string> words; // kind, width, code, name, parts of a range
    std::size_t bytes = 0;
    while (text.word(word) && word != "$end") {
        bytes += word.size();
        if (words.size() >= 64 || bytes > std::size_t(TextPieces::wordMax)) {
            return fail(QStringLiteral("a declaration without an end"));
        }
        words.emplace_back(word);
    }
    ChannelOffer::Entry entry;
    if (word != "$end" || words.size() < 4 || !number(words[1], entry.width) || entry.width < 1 ||
        entry.width > TextPieces::wordMax) {
        return fail(QStringLiteral("this is no declaration of a variable"));
    }
    const std::int32_t code = codes.add(words[2]);
    if (code < 0) {
        return fail(QStringLiteral("this identifier code cannot be"));
    }
    const std::string &kind = words[0];
    if (kind == "real" || kind == "realtime" || kind == "event" || kind == "string") {
        ++otherKinds; // its values are known by their code, and passed over
        return true;
    }
    for (std::size_t i = 3; i < words.size(); ++i) {
        entry.name += (i > 3 && words[i].front() != '[' ? " " : "") + words[i];
    }
    if (!takeRange(entry.name, entry)) {
        entry.isIndexed = entry.width > 1;
    }
    entry.scope = m_open.empty() ? 0 : m_open.back();
    offer.add(std::move(entry));
    codeOf.push_back(code);
    return true;
}

void VcdDeclarations::takeComment(const std::string &comment)
{
    static const QRegularExpression rate(QStringLiteral("(?:\\bat|rate:) ([0-9]+(?:\\.[0-9]+)?) ([kMG]?)Hz"));
    static const QRegularExpression trigger(QStringLiteral("\\btrigger: ([0-9]{1,12})\\b"));
    const QString text = QString::fromStdString(comment);
    const QRegularExpressionMatch told = rate.match(text);
    if (told.hasMatch()) {
        const QString unit = told.captured(2);
        const double factor = unit.isEmpty()               ? 1
                              : unit == QLatin1String("k") ? 1e3
                              : unit == QLatin1String("M") ? 1e6
                                                           : 1e9;
        const double hertz = told.captured(1).toDouble() * factor;
        toldRate = hertz >= 1 && hertz <= double(CaptureFiller::positionMax) ? std::llround(hertz) : 0;
    }
    const QRegularExpressionMatch at = trigger.match(text);
    if (at.hasMatch()) {
        toldTrigger = at.captured(1).toLongLong();
    }
}

bool VcdDeclarations::takeCommand(VcdText &text, std::string_view command)
{
    if (command == "$timescale") {
        return takeScale(text);
    }
    if (command == "$scope") {
        return takeScope(text);
    }
    if (command == "$var") {
        return takeVariable(text);
    }
    if (command == "$upscope" && !m_open.empty()) {
        m_open.pop_back();
    }
    std::string comment;
    if (!text.passToEnd(command == "$comment" ? &comment : nullptr)) {
        return false;
    }
    takeComment(comment);
    return true;
}

bool VcdDeclarations::read(VcdText &text)
{
    std::string_view word;
    while (text.word(word)) {
        if (word == "$enddefinitions") {
            return text.passToEnd();
        }
        const char *const from = text.at;
        if (word.front() != '$') {
            return text.fail(from,
                             QStringLiteral("\"%1\" is no declaration")
                                 .arg(QString::fromUtf8(word.data(), int(std::min<std::size_t>(word.size(), 40)))));
        }
        if (!takeCommand(text, std::string(word.substr(0, 32)))) {
            return false;
        }
        if (offer.isTooMuch()) {
            return text.fail(text.at, QStringLiteral("more variables than can be remembered"));
        }
    }
    return text.error.isEmpty() ? text.fail(text.at, QStringLiteral("the file ends within the declarations")) : false;
}
