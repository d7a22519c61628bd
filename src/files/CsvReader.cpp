#include "files/CsvReader.h"

#include "files/CaptureFiller.h"
#include "files/ChannelOffer.h"
#include "files/CsvLines.h"
#include "files/TimeGrid.h"

#include <QIODevice>

#include <optional>

namespace {

__extension__ typedef __int128 Wide;

ForeignCapture failed(FileResult result, const QString &detail = {})
{
    ForeignCapture capture;
    capture.result = result;
    capture.detail = detail;
    return capture;
}

bool isLevel(std::string_view field)
{
    return field == "0" || field == "1";
}

bool isUnknown(std::string_view field)
{
    return field.empty() || (field.size() == 1 && std::string_view("xXzZ-").find(field[0]) != std::string_view::npos);
}

/// What the first lines tell of the columns.
struct Columns {
    char separator = ',';
    bool hasTime = false;
    std::size_t count = 0;          ///< the time included
    std::vector<std::string> names; ///< of the columns; empty without a line of names
    std::string first;              ///< the first line of data

    /// @return false for a file without data
    [[nodiscard]] bool find(CsvLines &lines);
};

bool Columns::find(CsvLines &lines)
{
    std::string_view line;
    const auto isPassed = [&line] { return csvTrimmed(line).empty() || line[0] == '#' || line[0] == ';'; };
    bool found = lines.next(line);
    while (found && isPassed()) {
        found = lines.next(line);
    }
    if (!found) {
        return false;
    }
    separator = csvSeparator(line);
    std::vector<std::string> fields = csvFields(line, separator);
    const auto isNumber = [](const std::string &field) {
        std::int64_t ticks = 0;
        return isUnknown(field) || csvTime(field, ticks);
    };
    if (!std::all_of(fields.begin(), fields.end(), isNumber)) {
        names = std::move(fields);
        found = lines.next(line);
        while (found && csvTrimmed(line).empty()) {
            found = lines.next(line);
        }
        fields = found ? csvFields(line, separator) : std::vector<std::string>();
    }
    first = found ? std::string(line) : std::string();
    count = names.empty() ? fields.size() : names.size();
    const bool isNamedTime =
        !names.empty() && QString::fromStdString(names[0]).startsWith(QLatin1String("time"), Qt::CaseInsensitive);
    hasTime = isNamedTime || (!fields.empty() && !isLevel(fields[0]) && !isUnknown(fields[0]));
    return found;
}

/// The lines of data on their way to the store.
class Rows {
public:
    Rows(const Columns &columns, const ChannelOffer::Pick &pick, std::int64_t rate)
        : m_columns(columns),
          m_rate(rate),
          m_filler(int(pick.bits.size())),
          m_grid(m_filler, csvTicksPerSecond, 0, true),
          m_masks(columns.count)
    {
        for (std::size_t chn = 0; chn < pick.bits.size(); ++chn) {
            m_masks[std::size_t(pick.bits[chn].entry) + (columns.hasTime ? 1 : 0)] = std::uint64_t(1) << chn;
        }
    }

    [[nodiscard]] bool isGood() const { return m_filler.isGood(); }
    /// @return false with error() set, or for want of memory
    [[nodiscard]] bool take(std::string_view line);
    [[nodiscard]] bool close();
    [[nodiscard]] const QString &error() const { return m_error; }
    [[nodiscard]] std::int64_t unknowns() const { return m_unknowns; }
    [[nodiscard]] std::unique_ptr<SmpData> finish()
    {
        return m_filler.finish(m_samples, m_rate > 0 ? m_rate : m_grid.rate(), m_trigger);
    }

private:
    [[nodiscard]] bool takeFields(std::string_view line, std::uint64_t &levels, std::int64_t &ticks);
    [[nodiscard]] bool takeField(std::size_t column, std::string_view field, std::uint64_t &levels,
                                 std::int64_t &ticks);
    [[nodiscard]] bool commit();
    [[nodiscard]] std::int64_t placed(std::int64_t ticks);
    [[nodiscard]] bool fail(const QString &what)
    {
        m_error = what;
        return false;
    }

    const Columns &m_columns;
    const std::int64_t m_rate; ///< Hz, told; 0 if not
    CaptureFiller m_filler;
    TimeGrid m_grid;
    std::vector<std::uint64_t> m_masks; ///< of the channel of each column; 0 for none
    QString m_error;
    std::uint64_t m_levels = 0; ///< of the last line
    std::int64_t m_now = 0;     ///< ticks from the first line, or lines without times
    std::int64_t m_origin = 0;  ///< ticks of the first line
    std::int64_t m_last = 0;    ///< position of the last change
    std::int64_t m_samples = 0;
    std::int64_t m_trigger = 0;
    std::int64_t m_unknowns = 0;
    bool m_hasLine = false;
};

bool Rows::takeField(std::size_t column, std::string_view field, std::uint64_t &levels, std::int64_t &ticks)
{
    if (column >= m_columns.count) {
        return fail(QStringLiteral("more than %1 columns").arg(m_columns.count));
    }
    if (column == 0 && m_columns.hasTime) {
        return csvTime(field, ticks) || fail(QStringLiteral("this is no time in seconds"));
    }
    const std::uint64_t mask = m_masks[column];
    if (mask == 0 || field == "0") {
        return true;
    }
    if (field == "1") {
        levels |= mask;
        return true;
    }
    ++m_unknowns;
    return isUnknown(field) || fail(QStringLiteral("column %1 is neither 0 nor 1").arg(column + 1));
}

bool Rows::takeFields(std::string_view line, std::uint64_t &levels, std::int64_t &ticks)
{
    std::size_t column = 0;
    for (;; ++column) {
        const std::size_t stop = std::min(line.find(m_columns.separator), line.size());
        std::string_view field = csvTrimmed(line.substr(0, stop));
        if (field.size() >= 2 && field.front() == '"' && field.back() == '"') {
            field = csvTrimmed(field.substr(1, field.size() - 2));
        }
        if (!takeField(column, field, levels, ticks)) {
            return false;
        }
        if (stop == line.size()) {
            break;
        }
        line.remove_prefix(stop + 1);
    }
    return column + 1 == m_columns.count || fail(QStringLiteral("less than %1 columns").arg(m_columns.count));
}

bool Rows::take(std::string_view line)
{
    std::uint64_t levels = 0;
    std::int64_t ticks = m_hasLine ? m_now + 1 : 0;
    if (!takeFields(line, levels, ticks)) {
        return false;
    }
    if (!m_hasLine) {
        m_hasLine = true;
        m_origin = m_columns.hasTime ? ticks : 0;
        m_levels = levels;
        return true;
    }
    ticks -= m_origin; // each below 2^62
    if (ticks < m_now) {
        return fail(QStringLiteral("the time goes back"));
    }
    if (ticks > m_now && !commit()) {
        return false;
    }
    m_now = ticks;
    m_levels = levels;
    return true;
}

std::int64_t Rows::placed(std::int64_t ticks)
{
    std::int64_t pos = ticks;
    if (m_columns.hasTime && m_rate > 0) {
        const Wide nearest = (Wide(ticks) * m_rate + csvTicksPerSecond / 2) / csvTicksPerSecond;
        pos = nearest < CaptureFiller::positionMax ? std::int64_t(nearest) : TimeGrid::tooLong;
    } else if (m_columns.hasTime) {
        pos = m_grid.place(ticks);
    } else if (ticks >= CaptureFiller::positionMax) {
        pos = TimeGrid::tooLong;
    }
    if (pos < 0) {
        m_error = QStringLiteral("this time needs more than 2^40 samples");
    }
    return pos;
}

/// The levels of the line before hold from its time on.
bool Rows::commit()
{
    if (m_levels == m_filler.levels()) {
        return true;
    }
    const std::int64_t pos = placed(m_now);
    if (pos < 0) {
        return false;
    }
    if (pos == 0) {
        m_filler.setStart(m_levels);
        return true;
    }
    if (pos <= m_last) {
        return fail(QStringLiteral("the times before are closer than the samples of that rate"));
    }
    m_last = pos;
    return m_filler.change(m_levels, pos);
}

bool Rows::close()
{
    if (!commit()) {
        return false;
    }
    const std::int64_t end = placed(m_now);
    if (end < 0 || end >= CaptureFiller::positionMax) {
        return fail(QStringLiteral("this time needs more than 2^40 samples"));
    }
    if (m_origin < 0 && -m_origin <= m_now) {
        m_trigger = placed(-m_origin);
    }
    m_samples = placed(m_now) + 1; // the trigger may have made the grid finer
    return m_trigger >= 0 && m_samples > 0;
}

ForeignCapture readRows(CsvLines &lines, const Columns &columns, const ChannelOffer::Pick &pick, std::int64_t rate,
                        qint64 size, const ForeignHook &hook)
{
    constexpr std::int64_t hookEvery = 1 << 14; // lines
    Rows rows(columns, pick, rate);
    if (!rows.isGood()) {
        return failed(FileResult::NoMemory);
    }
    const auto bad = [&] {
        return rows.error().isEmpty()
                   ? failed(FileResult::NoMemory)
                   : failed(FileResult::Damaged, QStringLiteral("line %1: %2").arg(lines.number()).arg(rows.error()));
    };
    std::string_view line = columns.first;
    bool found = true;
    while (found) {
        if (!csvTrimmed(line).empty() && !rows.take(line)) {
            return bad();
        }
        if (lines.number() % hookEvery == 0 && hook && !hook(size > 0 ? double(lines.taken()) / double(size) : 0)) {
            return failed(FileResult::Cancelled);
        }
        found = lines.next(line);
    }
    if (lines.isTooLong()) {
        return failed(FileResult::Damaged, QStringLiteral("line %1 has no end").arg(lines.number()));
    }
    if (lines.hasFailed()) {
        return failed(FileResult::Failed, QStringLiteral("it cannot be read further"));
    }
    if (!rows.close()) {
        return bad();
    }
    ForeignCapture capture;
    if (rows.unknowns() > 0) {
        capture.notes.append(QStringLiteral("%1 empty or unknown fields are taken for 0").arg(rows.unknowns()));
    }
    capture.names = pick.names;
    capture.capture = rows.finish();
    if (rate == 0 && capture.capture) {
        capture.notes.append(QStringLiteral("no rate is told; taken for %1 Hz, the least that holds all times")
                                 .arg(capture.capture->smpFrequ()));
    }
    return capture;
}

} // namespace

ForeignCapture readCsv(QIODevice &device, const ForeignOptions &options, const ForeignHook &hook)
{
    CsvLines lines(device);
    Columns columns;
    if (!columns.find(lines)) {
        return failed(FileResult::Damaged, lines.isTooLong() ? QStringLiteral("line %1 has no end").arg(lines.number())
                                                             : QStringLiteral("there are no lines of data in it"));
    }
    ChannelOffer offer;
    for (std::size_t column = columns.hasTime ? 1 : 0; column < columns.count; ++column) {
        ChannelOffer::Entry entry;
        entry.name = columns.names.empty() ? std::string() : columns.names[column];
        offer.add(std::move(entry));
    }
    const ChannelOffer::Pick pick = offer.pick(options.channels);
    if (!pick.error.isEmpty()) {
        return failed(FileResult::Damaged, pick.error);
    }
    if (options.rate < 0 || options.rate > CaptureFiller::positionMax || (options.rate == 0 && !columns.hasTime)) {
        return failed(FileResult::Damaged,
                      QStringLiteral("there is no column of times: the rate must be told (--rate)"));
    }
    return readRows(lines, columns, pick, options.rate, device.size(), hook);
}
