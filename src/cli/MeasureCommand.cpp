#include "analysis/ChannelMeasures.h"
#include "cli/Arguments.h"
#include "cli/CaptureJob.h"
#include "cli/CaptureSource.h"
#include "cli/Commands.h"
#include "cli/Expectation.h"
#include "cli/FrameWriter.h"
#include "cli/Output.h"
#include "cli/Quantity.h"
#include "cli/Terminal.h"
#include "settings/Config.h"

#include <QVector>

#include <algorithm>
#include <cstdio>

namespace {

const char *const measureUsage =
    "Usage: luxcli measure FILE --channel LIST [--from T] [--to T] [--expect E]... [--json] [-o OUT]\n"
    "\n"
    "Measures channels of a capture (.cxdat, .sr, .vcd): edges, pulses, frequency, period, duty cycle and widths,\n"
    "each with minimum, mean, maximum and standard deviation.\n"
    "\n"
    "  -c, --channel LIST   channels, such as 3 or 0-2,7\n"
    "      --from T         measure from this time from the capture's start on, such as 1.5 or 20ms\n"
    "      --to T           measure up to this time\n"
    "  -e, --expect E       what must hold of each of the channels, such as 'frequency=1MHz+-1%',\n"
    "                       'high.min>=200ns', 'edges=1024' or 'duty=50%+-2%'; may be given several times\n"
    "      --json           one line of JSON a channel instead of text\n"
    "  -o, --output OUT     write to this file, which appears when it is whole\n"
    "  -h, --help           this text\n"
    "\n"
    "Exit code: 0 all holds, 1 bad input, 2 wrong usage, 3 something that is expected does not hold.\n";

struct MeasureJob {
    QVector<int> channels;
    std::optional<Quantity::Decimal> from;
    std::optional<Quantity::Decimal> to;
    QVector<Expectation> expectations;
    bool isJson = false;
};

/// One channel between two samples.
struct Measured {
    int chn = 0;
    std::int64_t rate = 0; // Hz
    std::int64_t from = 0;
    std::int64_t to = 0;
    ChannelMeasures measures;
};

std::string spreadText(const MeasuredSpread &spread, double value)
{
    switch (spread.unit) {
    case MeasuredSpread::Unit::Hertz:
        return Quantity::text(value, QStringLiteral("Hz")).toStdString();
    case MeasuredSpread::Unit::Seconds:
        return Quantity::text(value, QStringLiteral("s")).toStdString();
    case MeasuredSpread::Unit::Share:
        break;
    }
    return QString::number(value * 100, 'g', 6).toStdString() + " %";
}

std::string padded(const std::string &text, std::size_t width)
{
    return text + std::string(text.size() < width ? width - text.size() : 1, ' ');
}

void writeMeasuredText(Output &out, const Measured &measured)
{
    constexpr std::size_t nameWidth = 12;
    constexpr std::size_t valueWidth = 15;
    const ChannelMeasures &m = measured.measures;
    out << "channel " << measured.chn << ": " << chnShowNameGet(measured.chn).toStdString() << '\n';
    out << "from " << secondsText(measured.from, measured.rate).toStdString() << " s to "
        << secondsText(measured.to, measured.rate).toStdString() << " s\n";
    out << padded("edges", nameWidth) << m.edges() << " (" << m.rising << " rising, " << m.falling << " falling)\n";
    out << padded("pulses", nameWidth) << m.high.count << " high, " << m.low.count << " low\n";
    out << padded("", nameWidth);
    for (const char *head : {"minimum", "mean", "maximum"}) {
        out << padded(head, valueWidth);
    }
    out << "deviation\n";
    for (const MeasuredSpread &spread : spreadsOf(m, measured.rate)) {
        out << padded(spread.name, nameWidth);
        if (spread.count == 0) {
            out << "none\n";
            continue;
        }
        for (const double value : {spread.least, spread.mean, spread.most}) {
            out << padded(spreadText(spread, value), valueWidth);
        }
        out << spreadText(spread, spread.deviation) << '\n';
    }
}

/// With the shortest digits that mean the same number.
void writeReal(Output &out, double value)
{
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    out << std::string_view(digits, std::size_t(end - digits));
}

void writeExpectations(Output &out, const Measured &measured, const QVector<Expectation> &expectations)
{
    out << ",\"expect\":[";
    for (int i = 0; i < expectations.size(); ++i) {
        const Expectation &expectation = expectations.at(i);
        const std::optional<double> value = expectation.valueIn(measured.measures, measured.rate);
        out << (i > 0 ? "," : "") << "{\"text\":";
        writeJsonText(out, expectation.text().toStdString());
        out << ",\"value\":";
        if (value) {
            writeReal(out, *value);
        } else {
            out << "null";
        }
        out << ",\"holds\":" << (value && expectation.holds(*value) ? "true" : "false") << '}';
    }
    out << ']';
}

void writeMeasuredJson(Output &out, const Measured &measured, const QVector<Expectation> &expectations)
{
    const ChannelMeasures &m = measured.measures;
    out << "{\"channel\":" << measured.chn << ",\"name\":";
    writeJsonText(out, chnShowNameGet(measured.chn).toStdString());
    out << ",\"rate\":" << measured.rate << ",\"from\":" << measured.from << ",\"to\":" << measured.to;
    out << ",\"edges\":" << m.edges() << ",\"rising\":" << m.rising << ",\"falling\":" << m.falling
        << ",\"pulses\":" << m.high.count;
    for (const MeasuredSpread &spread : spreadsOf(m, measured.rate)) {
        out << ",\"" << spread.name << "\":";
        if (spread.count == 0) {
            out << "null";
            continue;
        }
        out << "{\"count\":" << spread.count << ",\"min\":";
        writeReal(out, spread.least);
        out << ",\"mean\":";
        writeReal(out, spread.mean);
        out << ",\"max\":";
        writeReal(out, spread.most);
        out << ",\"deviation\":";
        writeReal(out, spread.deviation);
        out << '}';
    }
    if (!expectations.isEmpty()) {
        writeExpectations(out, measured, expectations);
    }
    out << "}\n";
}

/// Tells of what does not hold. @return whether all holds
bool checkExpectations(const Measured &measured, const QVector<Expectation> &expectations)
{
    bool good = true;
    for (const Expectation &expectation : expectations) {
        const std::optional<double> value = expectation.valueIn(measured.measures, measured.rate);
        if (value && expectation.holds(*value)) {
            continue;
        }
        good = false;
        const QString found = value ? QStringLiteral("it is %1").arg(expectation.shown(*value))
                                    : QStringLiteral("there is nothing to measure");
        Terminal::say(QStringLiteral("channel %1: expected %2, but %3")
                          .arg(QString::number(measured.chn), expectation.text(), found));
    }
    return good;
}

int measureFile(const QString &path, const MeasureJob &job, Output &out)
{
    const CaptureSource source = CaptureSource::openOrTell(path);
    if (!source.data) {
        return Terminal::wasInterrupted() ? Terminal::interrupted : Terminal::badInput;
    }
    const SmpData &data = *source.data;
    const std::int64_t rate = data.smpFrequ();
    const auto sampleOf = [rate, &data](const std::optional<Quantity::Decimal> &time, std::int64_t otherwise) {
        const std::int64_t end = data.smpCount();
        return time ? std::min(Quantity::samples(*time, rate).value_or(end), end) : otherwise;
    };
    Measured measured{0, rate, sampleOf(job.from, 0), sampleOf(job.to, data.smpCount()), {}};
    int code = source.warning.isEmpty() ? Terminal::good : Terminal::badInput;
    if (measured.from >= measured.to) { // a slip, of which "edges=0" would hold
        Terminal::say(QStringLiteral("%1: there is nothing between these times").arg(path));
        return Terminal::badInput;
    }
    const SmpReadLock lock(&data);
    for (const int chn : job.channels) { // before anything is written
        if (data.lastPosition(chn) < 0) {
            Terminal::say(QStringLiteral("%1: the capture has no channel %2").arg(path).arg(chn));
            return Terminal::badInput;
        }
    }
    for (const int chn : job.channels) {
        measured.chn = chn;
        measured.measures = {};
        (void)measureChannel(data, chn, measured.from, measured.to, measured.measures); // it has data
        if (job.isJson) {
            writeMeasuredJson(out, measured, job.expectations);
        } else {
            writeMeasuredText(out, measured);
        }
        if (!checkExpectations(measured, job.expectations) && code == Terminal::good) {
            code = Terminal::notAsExpected;
        }
    }
    return code;
}

/// @return a message for the user; empty when the arguments make sense
QString readMeasureJob(const Arguments::Parsed &parsed, MeasureJob &job)
{
    for (const QString &text : parsed.values(QStringLiteral("--channel"))) {
        const auto list = Quantity::channels(text);
        if (!list) {
            return QStringLiteral("\"%1\" is no list of channels such as 0-2,7").arg(text);
        }
        job.channels += *list;
    }
    for (const QString &text : parsed.values(QStringLiteral("--expect"))) {
        QString error;
        const auto expectation = Expectation::parse(text, error);
        if (!expectation) {
            return error;
        }
        job.expectations.append(*expectation);
    }
    const auto readTime = [&parsed](const QString &name, std::optional<Quantity::Decimal> &time) {
        const auto text = parsed.value(name);
        time = text ? Quantity::time(*text) : std::nullopt;
        return !text || time;
    };
    if (!readTime(QStringLiteral("--from"), job.from) || !readTime(QStringLiteral("--to"), job.to)) {
        return QStringLiteral("--from and --to take a time such as 1.5 or 20ms");
    }
    job.isJson = parsed.has(QStringLiteral("--json"));
    if (parsed.operands.size() != 1) {
        return QStringLiteral("one file is to be named");
    }
    const QString out = parsed.value(QStringLiteral("--output")).value_or(QString());
    if (QString error = CaptureJob::overwritten(parsed.operands.first(), out); !error.isEmpty()) {
        return error;
    }
    return job.channels.isEmpty() ? QStringLiteral("no channel is named") : QString();
}

} // namespace

int Commands::measure(const QStringList &arguments)
{
    const Arguments::Parsed parsed =
        Arguments::parse(arguments, {{QStringLiteral("--channel"), QStringLiteral("-c"), true},
                                     {QStringLiteral("--expect"), QStringLiteral("-e"), true},
                                     {QStringLiteral("--from"), {}, true},
                                     {QStringLiteral("--help"), QStringLiteral("-h"), false},
                                     {QStringLiteral("--json"), {}, false},
                                     {QStringLiteral("--output"), QStringLiteral("-o"), true},
                                     {QStringLiteral("--to"), {}, true}});
    if (parsed.error.isEmpty() && parsed.has(QStringLiteral("--help"))) {
        std::fputs(measureUsage, stdout);
        return Terminal::good;
    }
    MeasureJob job;
    const QString error = parsed.error.isEmpty() ? readMeasureJob(parsed, job) : parsed.error;
    if (!error.isEmpty()) {
        Terminal::say(error + QStringLiteral("; \"luxcli measure --help\" tells more"));
        return Terminal::wrongUsage;
    }
    Output out(parsed.value(QStringLiteral("--output")).value_or(QString()));
    const int code = out.isGood() ? measureFile(parsed.operands.first(), job, out) : int(Terminal::badInput);
    return out.finish(code);
}
