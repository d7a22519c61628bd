#include "files/VcdReader.h"

#include "files/CaptureFiller.h"
#include "files/TimeGrid.h"
#include "files/VcdDeclarations.h"

#include <QIODevice>

#include <limits>
#include <optional>

namespace {

/// What the first letter of a word in the values says.
enum class Word : std::uint8_t { Bad, Blank, Low, High, Unknown, Vector, Other, Time, Command };

constexpr auto words = [] {
    std::array<Word, 256> kinds{};
    const auto set = [&kinds](const char *letters, Word kind) {
        for (; *letters != '\0'; ++letters) {
            kinds[std::uint8_t(*letters)] = kind;
        }
    };
    set(" \t\n\v\f\r", Word::Blank);
    set("0lL", Word::Low); // weak levels and further unknown ones are no part of the standard, but common
    set("1hH", Word::High);
    set("xXzZuUwW-", Word::Unknown);
    set("bB", Word::Vector);
    set("rRsS", Word::Other);
    set("#", Word::Time);
    set("$", Word::Command);
    return kinds;
}();

/// The channels that a code carries.
struct Signal {
    std::uint64_t mask = 0; ///< of its lowest bit
    std::int32_t first = 0; ///< in the list of targets
    std::int32_t count = 0; ///< there; 0 for one that has no other bits
};

/// A channel, and the bit of a vector that it is.
struct Target {
    std::int32_t code;
    std::int32_t bit;
    std::uint64_t mask;
};

/// How reading the values ended.
enum class Ended { Done, Bad, Cancelled, NoMemory, NotOfRate };

/// The values of a dump on their way to the store.
class Values {
public:
    Values(VcdText &text, const VcdDeclarations &declared, const ChannelOffer::Pick &pick, bool takesRate)
        : m_text(text),
          m_declared(declared),
          m_filler(int(pick.bits.size())),
          m_grid(m_filler, declared.ticksPerSecond, takesRate ? declared.toldRate : 0, false),
          m_signals(std::size_t(declared.codes.count()))
    {
        assign(pick);
    }

    [[nodiscard]] Ended read(qint64 size, const ForeignHook &hook);
    [[nodiscard]] std::unique_ptr<SmpData> finish()
    {
        const std::int64_t trigger = std::min(m_declared.toldTrigger, m_samples - 1);
        return m_filler.finish(m_samples, m_grid.rate(), std::max<std::int64_t>(trigger, 0));
    }
    [[nodiscard]] std::int64_t unknowns() const { return m_unknowns; }

private:
    void assign(const ChannelOffer::Pick &pick);
    [[nodiscard]] Ended readWords();
    [[nodiscard]] Ended takeWord(const char *&at, Word kind);
    [[nodiscard]] Ended takeScalar(const char *&at, Word kind);
    [[nodiscard]] Ended takeVector(const char *&at);
    void setVector(const Signal &signal, std::string_view digits);
    [[nodiscard]] Ended takeTime(const char *&at);
    [[nodiscard]] Ended takeCommand(const char *&at);
    [[nodiscard]] Ended commit();
    [[nodiscard]] std::int64_t placed(std::int64_t ticks, Ended &ended);
    [[nodiscard]] Ended close();
    [[nodiscard]] const char *wordEnd(const char *from) const;
    /// The signal of a value at `at`; null, with the failure told, for a code that is none.
    [[nodiscard]] const Signal *signalOf(const char *at, std::string_view code);
    [[nodiscard]] Ended bad(const char *at, const QString &what)
    {
        m_text.fail(at, what);
        return Ended::Bad;
    }

    VcdText &m_text;
    const VcdDeclarations &m_declared;
    CaptureFiller m_filler;
    TimeGrid m_grid;
    std::vector<Signal> m_signals; ///< of each code
    std::vector<Target> m_targets;
    std::uint64_t m_levels = 0; ///< behind the values read so far
    std::int64_t m_now = 0;     ///< ticks
    std::int64_t m_last = 0;    ///< position of the last change
    std::int64_t m_samples = 0;
    std::int64_t m_unknowns = 0;
    bool m_hasTime = false;
    bool m_hasValue = false; ///< behind the last time
};

void Values::assign(const ChannelOffer::Pick &pick)
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
const char *Values::wordEnd(const char *from) const
{
    while (std::uint8_t(*from) > ' ') {
        ++from;
    }
    return from == m_text.pieces.end() && !m_text.pieces.atEnd() ? nullptr : from;
}

std::int64_t Values::placed(std::int64_t ticks, Ended &ended)
{
    const std::int64_t pos = m_grid.place(ticks);
    if (pos == TimeGrid::notOfRate) {
        ended = Ended::NotOfRate;
    } else if (pos == TimeGrid::tooLong) {
        ended = bad(m_text.at, QStringLiteral("the time before needs more than 2^40 samples"));
    } else if (pos == TimeGrid::tooFine) {
        ended = bad(m_text.at, QStringLiteral("the time before needs a sample rate above 2^40 Hz"));
    }
    return pos;
}

/// The values of the present time are all known.
Ended Values::commit()
{
    if (m_levels == m_filler.levels()) {
        return Ended::Done;
    }
    if (m_now == 0) {
        m_filler.setStart(m_levels);
        return Ended::Done;
    }
    Ended ended = Ended::Done;
    const std::int64_t pos = placed(m_now, ended);
    if (ended != Ended::Done) {
        return ended;
    }
    if (pos <= m_last && m_grid.rate() == m_declared.toldRate) {
        return Ended::NotOfRate;
    }
    m_last = pos;
    return m_filler.change(m_levels, pos) ? Ended::Done : Ended::NoMemory;
}

Ended Values::takeTime(const char *&at)
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
        return Ended::Done;
    }
    m_text.at = from;
    const Ended ended = commit();
    m_now = ticks;
    m_hasValue = false;
    return ended;
}

const Signal *Values::signalOf(const char *at, std::string_view code)
{
    const std::int32_t number = m_declared.codes.find(code);
    if (number < 0) {
        m_text.fail(at, code.empty() ? QStringLiteral("a value without an identifier code")
                                     : QStringLiteral("an identifier code that is not declared"));
        return nullptr;
    }
    return &m_signals[std::size_t(number)];
}

Ended Values::takeScalar(const char *&at, Word kind)
{
    const char *const code = at + 1;
    const char *const end = wordEnd(code);
    if (end == nullptr) {
        return bad(at, QStringLiteral("a word without an end"));
    }
    const Signal *const signal = signalOf(at, {code, std::size_t(end - code)});
    if (signal == nullptr) {
        return Ended::Bad;
    }
    at = end;
    m_hasValue = true;
    if (signal->count > 1 || (signal->count == 1 && signal->mask == 0)) {
        setVector(*signal, {code - 1, 1});
        return Ended::Done;
    }
    m_levels = kind == Word::High ? m_levels | signal->mask : m_levels & ~signal->mask;
    m_unknowns += kind == Word::Unknown && signal->mask != 0;
    return Ended::Done;
}

/// A value with fewer digits than the variable has is filled up: by 0, or by the x or z that it begins with (18.2.1).
void Values::setVector(const Signal &signal, std::string_view digits)
{
    const Word leading = digits.empty() ? Word::Low : words[std::uint8_t(digits.front())];
    for (std::int32_t i = signal.first; i < signal.first + signal.count; ++i) {
        const Target &target = m_targets[std::size_t(i)];
        const auto bit = std::size_t(target.bit);
        const Word kind = bit < digits.size()        ? words[std::uint8_t(digits[digits.size() - 1 - bit])]
                          : leading == Word::Unknown ? Word::Unknown
                                                     : Word::Low;
        m_levels = kind == Word::High ? m_levels | target.mask : m_levels & ~target.mask;
        m_unknowns += kind == Word::Unknown;
    }
}

/// "b1010 code", or a value of another kind in the same form.
Ended Values::takeVector(const char *&at)
{
    const bool isBits = words[std::uint8_t(*at)] == Word::Vector;
    const char *const value = at + 1;
    const char *const valueEnd = wordEnd(value);
    const char *code = valueEnd;
    while (code != nullptr && code < m_text.pieces.end() && words[std::uint8_t(*code)] == Word::Blank) {
        ++code;
    }
    const char *const end = code != nullptr ? wordEnd(code) : nullptr;
    if (end == nullptr) {
        return bad(at, QStringLiteral("a word without an end"));
    }
    const Signal *const signal = signalOf(at, {code, std::size_t(end - code)});
    if (signal == nullptr) {
        return Ended::Bad;
    }
    const std::string_view digits(value, std::size_t(valueEnd - value));
    const auto isLevel = [](char c) {
        const Word kind = words[std::uint8_t(c)];
        return kind == Word::Low || kind == Word::High || kind == Word::Unknown;
    };
    if (isBits && (digits.empty() || !std::all_of(digits.begin(), digits.end(), isLevel))) {
        return bad(at, QStringLiteral("this is no value of bits"));
    }
    m_hasValue = true;
    if (isBits) {
        setVector(*signal, digits);
    }
    at = end;
    return Ended::Done;
}

/// Blocks of values ("$dumpvars" and so on to "$end") are what stands in them; a comment is passed over.
Ended Values::takeCommand(const char *&at)
{
    const char *const end = wordEnd(at);
    if (end == nullptr) {
        return bad(at, QStringLiteral("a word without an end"));
    }
    const std::string_view word(at, std::size_t(end - at));
    if (word == "$end" || word.starts_with("$dump")) {
        at = end;
        return Ended::Done;
    }
    m_text.at = end;
    const bool passed = m_text.passToEnd();
    at = m_text.at;
    return passed ? Ended::Done : Ended::Bad;
}

Ended Values::takeWord(const char *&at, Word kind)
{
    switch (kind) {
    case Word::Blank:
        ++at;
        return Ended::Done;
    case Word::Low:
    case Word::High:
    case Word::Unknown:
        return takeScalar(at, kind);
    case Word::Time:
        return takeTime(at);
    case Word::Vector:
    case Word::Other:
        return takeVector(at);
    case Word::Command:
        return takeCommand(at);
    case Word::Bad:
        break;
    }
    return bad(at, *at == '\0' ? QStringLiteral("a byte of zero") : QStringLiteral("this is no value and no time"));
}

/// What is at hand of the file.
Ended Values::readWords()
{
    const char *at = m_text.at;
    // A comment may bring further pieces of the file.
    while (at < m_text.pieces.safeEnd()) {
        const Ended ended = takeWord(at, words[std::uint8_t(*at)]);
        if (ended != Ended::Done) {
            return ended;
        }
    }
    m_text.at = at;
    return Ended::Done;
}

Ended Values::close()
{
    if (m_text.pieces.hasFailed()) {
        return bad(m_text.at, {});
    }
    if (!m_hasTime && !m_hasValue) {
        return bad(m_text.at, QStringLiteral("there is no value in it"));
    }
    Ended ended = commit();
    if (ended != Ended::Done) {
        return ended;
    }
    const std::int64_t end = placed(m_now, ended);
    m_samples = end + (m_hasValue || end == 0 ? 1 : 0);
    if (ended == Ended::Done && m_samples > CaptureFiller::positionMax) {
        ended = bad(m_text.at, QStringLiteral("the time before needs more than 2^40 samples"));
    }
    return ended;
}

Ended Values::read(qint64 size, const ForeignHook &hook)
{
    if (!m_filler.isGood()) {
        return Ended::NoMemory;
    }
    for (;;) {
        const Ended ended = readWords();
        if (ended != Ended::Done) {
            return ended;
        }
        if (m_text.pieces.atEnd()) {
            return close();
        }
        if (hook && !hook(size > 0 ? double(m_text.pieces.taken()) / double(size) : 0)) {
            return Ended::Cancelled;
        }
        m_text.at = m_text.pieces.fill(m_text.at);
    }
}

ForeignCapture failed(FileResult result, const QString &detail)
{
    ForeignCapture capture;
    capture.result = result;
    capture.detail = detail;
    return capture;
}

QStringList notesOf(const VcdDeclarations &declared, const Values &values)
{
    QStringList notes;
    if (!declared.hasScale) {
        notes.append(QStringLiteral("there is no time scale; taken for nanoseconds"));
    }
    if (declared.otherKinds > 0) {
        notes.append(QStringLiteral("%1 variables are no bits and are passed over").arg(declared.otherKinds));
    }
    if (values.unknowns() > 0) {
        notes.append(QStringLiteral("%1 values x or z are taken for 0").arg(values.unknowns()));
    }
    return notes;
}

/// One pass. @return nothing when the rate that is told turns out to be wrong
std::optional<ForeignCapture> readOnce(QIODevice &device, const ForeignOptions &options, const ForeignHook &hook,
                                       bool takesRate)
{
    VcdText text(device);
    VcdDeclarations declared;
    if (!declared.read(text)) {
        return failed(FileResult::Damaged, text.error);
    }
    const ChannelOffer::Pick pick = declared.offer.pick(options.channels);
    if (!pick.error.isEmpty()) {
        return failed(FileResult::Damaged, pick.error);
    }
    Values values(text, declared, pick, takesRate);
    switch (values.read(device.size(), hook)) {
    case Ended::Done:
        break;
    case Ended::Bad:
        return failed(FileResult::Damaged, text.error);
    case Ended::Cancelled:
        return failed(FileResult::Cancelled, {});
    case Ended::NoMemory:
        return failed(FileResult::NoMemory, {});
    case Ended::NotOfRate:
        return std::nullopt;
    }
    ForeignCapture capture;
    capture.notes = notesOf(declared, values);
    capture.names = pick.names;
    capture.capture = values.finish();
    return capture;
}

} // namespace

ForeignCapture readVcd(QIODevice &device, const ForeignOptions &options, const ForeignHook &hook)
{
    auto capture = readOnce(device, options, hook, true);
    if (!capture && device.seek(0)) {
        capture = readOnce(device, options, hook, false);
    }
    return capture ? std::move(*capture) : failed(FileResult::Failed, {});
}
