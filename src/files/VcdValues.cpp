#include "files/VcdValues.h"

#include <algorithm>
#include <array>
#include <limits>

/// What the first letter of a word in the values says.
enum class VcdWord : std::uint8_t { Bad, Blank, Low, High, Unknown, Vector, Other, Time, Command };

namespace {

constexpr auto words = [] {
    std::array<VcdWord, 256> kinds{};
    const auto set = [&kinds](const char *letters, VcdWord kind) {
        for (; *letters != '\0'; ++letters) {
            kinds[std::uint8_t(*letters)] = kind;
        }
    };
    set(" \t\n\v\f\r", VcdWord::Blank);
    set("0lL", VcdWord::Low); // weak levels and further unknown ones are no part of the standard, but common
    set("1hH", VcdWord::High);
    set("xXzZuUwW-", VcdWord::Unknown);
    set("bB", VcdWord::Vector);
    set("rRsS", VcdWord::Other);
    set("#", VcdWord::Time);
    set("$", VcdWord::Command);
    return kinds;
}();

} // namespace

void VcdValues::assign(const ChannelOffer::Pick &pick)
{
    for (std::size_t chn = 0; chn < pick.bits.size(); ++chn) {
        const ChannelOffer::Bit &bit = pick.bits[chn];
        m_targets.push_back({m_declared.codeOf[std::size_t(bit.entry)], bit.bit, std::uint64_t(1) << chn});
    }
    std::stable_sort(m_targets.begin(), m_targets.end(),
                     [](const Target &a, const Target &b) { return a.code < b.code; });
    for (std::size_t i = 0; i < m_targets.size(); ++i) {
        Signal &signal = m_signals[std::size_t(m_targets[i].code)];
        signal.first = signal.count == 0 ? std::int32_t(i) : signal.first;
        ++signal.count;
        signal.mask |= m_targets[i].bit == 0 ? m_targets[i].mask : 0;
    }
}

/// The end of the word that begins at `from`; null when it is too long to be seen.
const char *VcdValues::wordEnd(const char *from) const
{
    while (std::uint8_t(*from) > ' ') {
        ++from;
    }
    return from == m_text.pieces.end() && !m_text.pieces.atEnd() ? nullptr : from;
}

std::int64_t VcdValues::placed(std::int64_t ticks, VcdEnded &ended)
{
    const std::int64_t pos = m_grid.place(ticks);
    if (pos == TimeGrid::notOfRate) {
        ended = VcdEnded::NotOfRate;
    } else if (pos == TimeGrid::tooLong) {
        ended = bad(m_text.at, QStringLiteral("the time before needs more than 2^40 samples"));
    } else if (pos == TimeGrid::tooFine) {
        ended = bad(m_text.at, QStringLiteral("the time before needs a sample rate above 2^40 Hz"));
    }
    return pos;
}

/// The values of the present time are all known.
VcdEnded VcdValues::commit()
{
    if (m_levels == m_filler.levels()) {
        return VcdEnded::Done;
    }
    if (m_now == 0) {
        m_filler.setStart(m_levels);
        return VcdEnded::Done;
    }
    VcdEnded ended = VcdEnded::Done;
    const std::int64_t pos = placed(m_now, ended);
    if (ended != VcdEnded::Done) {
        return ended;
    }
    if (pos <= m_last && m_grid.rate() == m_declared.toldRate) {
        return VcdEnded::NotOfRate;
    }
    m_last = pos;
    return m_filler.change(m_levels, pos) ? VcdEnded::Done : VcdEnded::NoMemory;
}

VcdEnded VcdValues::takeTime(const char *&at)
{
    const char *const from = at++;
    std::uint64_t time = 0;
    constexpr std::uint64_t most = std::numeric_limits<std::int64_t>::max();
    for (; *at >= '0' && *at <= '9'; ++at) {
        const auto digit = std::uint64_t(*at - '0');
        if (time > (most - digit) / 10) {
            return bad(from, QStringLiteral("this time has no room in 63 bits"));
        }
        time = time * 10 + digit;
    }
    if (at == from + 1 || std::uint8_t(*at) > ' ') {
        return bad(from, QStringLiteral("this is no time"));
    }
    if (time > most / std::uint64_t(m_declared.timeFactor)) {
        return bad(from, QStringLiteral("this time has no room in 63 bits"));
    }
    const std::int64_t ticks = std::int64_t(time) * m_declared.timeFactor;
    if (ticks < m_now) {
        return bad(from, QStringLiteral("the time goes back"));
    }
    m_hasTime = true;
    if (ticks == m_now) {
        return VcdEnded::Done;
    }
    m_text.at = from;
    const VcdEnded ended = commit();
    m_now = ticks;
    m_hasValue = false;
    return ended;
}

const VcdValues::Signal *VcdValues::signalOf(const char *at, std::string_view code)
{
    const std::int32_t number = m_declared.codes.find(code);
    if (number < 0) {
        m_text.fail(at, code.empty() ? QStringLiteral("a value without an identifier code")
                                     : QStringLiteral("an identifier code that is not declared"));
        return nullptr;
    }
    return &m_signals[std::size_t(number)];
}

VcdEnded VcdValues::takeScalar(const char *&at, VcdWord kind)
{
    const char *const code = at + 1;
    const char *const end = wordEnd(code);
    if (end == nullptr) {
        return bad(at, QStringLiteral("a word without an end"));
    }
    const Signal *const signal = signalOf(at, {code, std::size_t(end - code)});
    if (signal == nullptr) {
        return VcdEnded::Bad;
    }
    at = end;
    m_hasValue = true;
    if (signal->count > 1 || (signal->count == 1 && signal->mask == 0)) {
        setVector(*signal, {code - 1, 1});
        return VcdEnded::Done;
    }
    m_levels = kind == VcdWord::High ? m_levels | signal->mask : m_levels & ~signal->mask;
    m_unknowns += kind == VcdWord::Unknown && signal->mask != 0;
    return VcdEnded::Done;
}

/// A value with fewer digits than the variable has is filled up: by 0, or by the x or z that it begins with (18.2.1).
void VcdValues::setVector(const Signal &signal, std::string_view digits)
{
    const VcdWord leading = digits.empty() ? VcdWord::Low : words[std::uint8_t(digits.front())];
    for (std::int32_t i = signal.first; i < signal.first + signal.count; ++i) {
        const Target &target = m_targets[std::size_t(i)];
        const auto bit = std::size_t(target.bit);
        const VcdWord kind = bit < digits.size()           ? words[std::uint8_t(digits[digits.size() - 1 - bit])]
                             : leading == VcdWord::Unknown ? VcdWord::Unknown
                                                           : VcdWord::Low;
        m_levels = kind == VcdWord::High ? m_levels | target.mask : m_levels & ~target.mask;
        m_unknowns += kind == VcdWord::Unknown;
    }
}

/// "b1010 code", or a value of another kind in the same form.
VcdEnded VcdValues::takeVector(const char *&at)
{
    const bool isBits = words[std::uint8_t(*at)] == VcdWord::Vector;
    const char *const value = at + 1;
    const char *const valueEnd = wordEnd(value);
    const char *code = valueEnd;
    while (code != nullptr && code < m_text.pieces.end() && words[std::uint8_t(*code)] == VcdWord::Blank) {
        ++code;
    }
    const char *const end = code != nullptr ? wordEnd(code) : nullptr;
    if (end == nullptr) {
        return bad(at, QStringLiteral("a word without an end"));
    }
    const Signal *const signal = signalOf(at, {code, std::size_t(end - code)});
    if (signal == nullptr) {
        return VcdEnded::Bad;
    }
    const std::string_view digits(value, std::size_t(valueEnd - value));
    const auto isLevel = [](char c) {
        const VcdWord kind = words[std::uint8_t(c)];
        return kind == VcdWord::Low || kind == VcdWord::High || kind == VcdWord::Unknown;
    };
    if (isBits && (digits.empty() || !std::all_of(digits.begin(), digits.end(), isLevel))) {
        return bad(at, QStringLiteral("this is no value of bits"));
    }
    m_hasValue = true;
    if (isBits) {
        setVector(*signal, digits);
    }
    at = end;
    return VcdEnded::Done;
}

/// Blocks of values ("$dumpvars" and so on to "$end") are what stands in them; a comment is passed over.
VcdEnded VcdValues::takeCommand(const char *&at)
{
    const char *const end = wordEnd(at);
    if (end == nullptr) {
        return bad(at, QStringLiteral("a word without an end"));
    }
    const std::string_view word(at, std::size_t(end - at));
    if (word == "$end" || word.starts_with("$dump")) {
        at = end;
        return VcdEnded::Done;
    }
    m_text.at = end;
    const bool passed = m_text.passToEnd();
    at = m_text.at;
    return passed ? VcdEnded::Done : VcdEnded::Bad;
}

VcdEnded VcdValues::takeWord(const char *&at, VcdWord kind)
{
    switch (kind) {
    case VcdWord::Blank:
        ++at;
        return VcdEnded::Done;
    case VcdWord::Low:
    case VcdWord::High:
    case VcdWord::Unknown:
        return takeScalar(at, kind);
    case VcdWord::Time:
        return takeTime(at);
    case VcdWord::Vector:
    case VcdWord::Other:
        return takeVector(at);
    case VcdWord::Command:
        return takeCommand(at);
    case VcdWord::Bad:
        break;
    }
    return bad(at, *at == '\0' ? QStringLiteral("a byte of zero") : QStringLiteral("this is no value and no time"));
}

/// What is at hand of the file.
VcdEnded VcdValues::readWords()
{
    const char *at = m_text.at;
    // A comment may bring further pieces of the file.
    while (at < m_text.pieces.safeEnd()) {
        const VcdEnded ended = takeWord(at, words[std::uint8_t(*at)]);
        if (ended != VcdEnded::Done) {
            return ended;
        }
    }
    m_text.at = at;
    return VcdEnded::Done;
}

VcdEnded VcdValues::close()
{
    if (m_text.pieces.hasFailed()) {
        return bad(m_text.at, {});
    }
    if (!m_hasTime && !m_hasValue) {
        return bad(m_text.at, QStringLiteral("there is no value in it"));
    }
    VcdEnded ended = commit();
    if (ended != VcdEnded::Done) {
        return ended;
    }
    const std::int64_t end = placed(m_now, ended);
    m_samples = end + (m_hasValue || end == 0 ? 1 : 0);
    if (ended == VcdEnded::Done && m_samples > CaptureFiller::positionMax) {
        ended = bad(m_text.at, QStringLiteral("the time before needs more than 2^40 samples"));
    }
    return ended;
}

VcdEnded VcdValues::read(qint64 size, const ForeignHook &hook)
{
    if (!m_filler.isGood()) {
        return VcdEnded::NoMemory;
    }
    for (;;) {
        const VcdEnded ended = readWords();
        if (ended != VcdEnded::Done) {
            return ended;
        }
        if (m_text.pieces.atEnd()) {
            return close();
        }
        if (hook && !hook(size > 0 ? double(m_text.pieces.taken()) / double(size) : 0)) {
            return VcdEnded::Cancelled;
        }
        m_text.at = m_text.pieces.fill(m_text.at);
    }
}
