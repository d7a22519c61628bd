#include "analysis/CaptureDifference.h"
#include "cli/Arguments.h"
#include "cli/CaptureSource.h"
#include "cli/Commands.h"
#include "cli/FrameWriter.h"
#include "cli/Output.h"
#include "cli/Quantity.h"
#include "cli/Terminal.h"

#include <QVector>

#include <algorithm>
#include <cstdio>

namespace {

// As diff(1) has them (POSIX.1-2017, Shell and Utilities, diff).
constexpr int diffSame = 0;
constexpr int diffDiffers = 1;
constexpr int diffTrouble = 2;

const char *const diffUsage =
    "Usage: luxcli diff A B [--tolerance N] [--channels LIST] [--at-trigger]\n"
    "\n"
    "Compares two captures (.cxdat, .sr, .vcd) of the same rate. Tells, for each channel that differs, where\n"
    "the first difference is and how many edges differ; nothing when they are the same.\n"
    "\n"
    "      --tolerance N    an edge may be earlier or later by N samples, or by a time such as 20ns\n"
    "  -c, --channels LIST  compare these, such as 0-2,7; without it all\n"
    "      --at-trigger     lay the triggers on each other, and compare what both captures have\n"
    "  -h, --help           this text\n"
    "\n"
    "Exit code: 0 the same, 1 they differ, 2 trouble; 130 when Ctrl+C ended it.\n";

struct DiffJob {
    QString tolerance = QStringLiteral("0");
    QVector<int> channels; ///< empty for all
    bool atTrigger = false;
};

bool hasData(const SmpData &data, int chn)
{
    return data.lastPosition(chn) >= 0;
}

/// Samples of `text`, which is a number of them or a time. @return nothing for what is neither
std::optional<std::int64_t> toleranceOf(const QString &text, std::int64_t rate)
{
    if (!text.endsWith(QLatin1Char('s'))) {
        return Quantity::count(text);
    }
    const auto time = Quantity::time(text);
    return time ? Quantity::samples(*time, rate) : std::nullopt;
}

void writeDifference(Output &out, int chn, const ChannelDifference &found, std::int64_t rate)
{
    const char *const what = found.startLevel ? "the level at the start"
                             : found.inA      ? "an edge of the first"
                                              : "an edge of the second";
    out << "channel " << chn << ": first difference at sample " << found.first << " ("
        << secondsText(found.first, rate).toStdString() << " s), " << what << "; " << found.differing
        << " edges differ of " << found.edgesA << " and " << found.edgesB << '\n';
}

bool compareChannels(Output &out, const SmpData &a, const SmpData &b, const DifferenceRange &range, const DiffJob &job)
{
    bool isSame = true;
    for (int chn = 0; chn < std::max(a.chnCount, b.chnCount) && !Terminal::wasInterrupted(); ++chn) {
        const bool inA = hasData(a, chn);
        const bool inB = hasData(b, chn);
        if ((!job.channels.isEmpty() && !job.channels.contains(chn)) || (!inA && !inB)) {
            continue;
        }
        if (inA != inB) {
            out << "channel " << chn << ": only in the " << (inA ? "first" : "second") << '\n';
            isSame = false;
            continue;
        }
        const ChannelDifference found = compareChannel(a, b, chn, range);
        if (!found.isSame()) {
            writeDifference(out, chn, found, a.smpFrequ());
            isSame = false;
        }
    }
    return isSame;
}

int compareCaptures(Output &out, const SmpData &a, const SmpData &b, const DiffJob &job)
{
    const SmpReadLock lockA(&a);
    const SmpReadLock lockB(&b);
    const auto tolerance = toleranceOf(job.tolerance, a.smpFrequ());
    if (!tolerance) {
        Terminal::say(QStringLiteral("--tolerance takes samples, or a time such as 20ns"));
        return diffTrouble;
    }
    if (a.smpFrequ() != b.smpFrequ()) {
        Terminal::say(QStringLiteral("the captures have different rates: %1 and %2 Hz")
                          .arg(QString::number(a.smpFrequ()), QString::number(b.smpFrequ())));
        return diffTrouble;
    }
    for (const int chn : job.channels) {
        if (!hasData(a, chn) && !hasData(b, chn)) {
            Terminal::say(QStringLiteral("neither capture has channel %1").arg(chn));
            return diffTrouble;
        }
    }
    DifferenceRange range{0, 0, 0, *tolerance};
    if (job.atTrigger) {
        range.startA = std::max<std::int64_t>(a.trgPos() - b.trgPos(), 0);
        range.startB = std::max<std::int64_t>(b.trgPos() - a.trgPos(), 0);
    }
    range.samples = std::min(a.smpCount() - range.startA, b.smpCount() - range.startB);
    bool isSame = true;
    if (!job.atTrigger && std::abs(a.smpCount() - b.smpCount()) > *tolerance) {
        out << "length: " << a.smpCount() << " and " << b.smpCount() << " samples\n";
        isSame = false;
    }
    isSame = compareChannels(out, a, b, range, job) && isSame;
    if (Terminal::wasInterrupted()) {
        return Terminal::interrupted;
    }
    return isSame ? diffSame : diffDiffers;
}

int diffFiles(const QStringList &paths, const DiffJob &job)
{
    const CaptureSource a = CaptureSource::openOrTell(paths.at(0));
    const CaptureSource b = a.data ? CaptureSource::openOrTell(paths.at(1)) : CaptureSource();
    if (Terminal::wasInterrupted()) {
        return Terminal::interrupted;
    }
    if (!a.data || !b.data) {
        return diffTrouble;
    }
    Output out{QString()};
    const int code = compareCaptures(out, *a.data, *b.data, job);
    const int written = out.finish(Terminal::good);
    if (written == Terminal::interrupted) {
        return written;
    }
    const bool isWhole = a.warning.isEmpty() && b.warning.isEmpty();
    return written == Terminal::good && isWhole ? code : std::max(code, diffTrouble);
}

/// @return a message for the user; empty when the arguments make sense
QString readDiffJob(const Arguments::Parsed &parsed, DiffJob &job)
{
    for (const QString &text : parsed.values(QStringLiteral("--channels"))) {
        const auto list = Quantity::channels(text);
        if (!list) {
            return QStringLiteral("\"%1\" is no list of channels such as 0-2,7").arg(text);
        }
        job.channels += *list;
    }
    job.tolerance = parsed.value(QStringLiteral("--tolerance")).value_or(job.tolerance);
    job.atTrigger = parsed.has(QStringLiteral("--at-trigger"));
    constexpr std::int64_t anyRate = 1;
    if (!toleranceOf(job.tolerance, anyRate)) {
        return QStringLiteral("--tolerance takes samples, or a time such as 20ns");
    }
    return parsed.operands.size() != 2 ? QStringLiteral("two files are to be named") : QString();
}

} // namespace

int Commands::diff(const QStringList &arguments)
{
    const Arguments::Parsed parsed =
        Arguments::parse(arguments, {{QStringLiteral("--at-trigger"), {}, false},
                                     {QStringLiteral("--channels"), QStringLiteral("-c"), true},
                                     {QStringLiteral("--help"), QStringLiteral("-h"), false},
                                     {QStringLiteral("--tolerance"), {}, true}});
    if (parsed.error.isEmpty() && parsed.has(QStringLiteral("--help"))) {
        std::fputs(diffUsage, stdout);
        return Terminal::good;
    }
    DiffJob job;
    const QString error = parsed.error.isEmpty() ? readDiffJob(parsed, job) : parsed.error;
    if (!error.isEmpty()) {
        Terminal::say(error + QStringLiteral("; \"luxcli diff --help\" tells more"));
        return Terminal::wrongUsage;
    }
    return diffFiles(parsed.operands, job);
}
