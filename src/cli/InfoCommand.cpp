#include "analyzer/StoredAnalyzer.h"
#include "cli/Arguments.h"
#include "cli/CaptureSource.h"
#include "cli/Commands.h"
#include "cli/FrameWriter.h"
#include "cli/Output.h"
#include "cli/Terminal.h"
#include "device/DevModels.h"
#include "files/CaptureFile.h"
#include "files/ForeignFile.h"
#include "settings/Config.h"

#include <cstdio>

namespace {

const char *const infoUsage =
    "Usage: luxcli info FILE...\n"
    "\n"
    "Tells model, rate, length, trigger, channels and analyzers of captures (.cxdat, .sr, .vcd).\n"
    "\n"
    "  -h, --help         this text\n";

/// What is told of a file.
struct Facts {
    QString error;   ///< for the user; empty for none
    QString warning; ///< the same
    CaptureFacts capture;
};

CaptureFacts factsOf(const SmpData &data)
{
    CaptureFacts facts{data.smpCount(), data.smpFrequ(), data.trgPos(), {}};
    for (int chn = 0; chn < data.chnCount; ++chn) {
        const std::int64_t entries = data.entryCount(chn);
        if (entries > 0) { // the last one is the end mark
            facts.channels.push_back({chn, entries - 1});
        }
    }
    return facts;
}

/// Of a data file the heads tell all; those of other programs are read. The settings become the process's.
Facts factsOf(const QString &path)
{
    Facts facts;
    if (isForeignCapture(path)) {
        const CaptureSource source = CaptureSource::open(path);
        facts.error = source.error;
        facts.warning = source.warning;
        facts.capture = source.data ? factsOf(*source.data) : CaptureFacts();
        return facts;
    }
    const OpenedCapture opened = CaptureFile(digitalChannelsOf).check(path, &facts.capture);
    if (!opened.outcome.isDone()) {
        facts.error = fileReason(opened.outcome);
    } else if (!opened.isData) {
        facts.error = QStringLiteral("The file holds settings and no capture.");
    } else {
        configTake(*opened.settings);
        facts.warning = fileWarning(opened.outcome, [](int chn) { return chnShowNameGet(chn); }).simplified();
    }
    return facts;
}

void writeStoredAnalyzers(Output &out)
{
    for (const StoredAnalyzer &stored : storedAnalyzers(analyzersAll())) {
        out << "analyzer: " << stored.fileName.section(QLatin1Char('.'), 0, -2).toStdString() << ':'
            << stored.settings.toStdString() << '\n';
    }
}

int tell(Output &out, const QString &path)
{
    const Facts facts = factsOf(path);
    if (Terminal::wasInterrupted()) {
        return Terminal::interrupted;
    }
    for (const QString &text : {facts.error, facts.warning}) {
        if (!text.isEmpty()) {
            Terminal::say(QStringLiteral("%1: %2").arg(path, text));
        }
    }
    if (!facts.error.isEmpty()) {
        return Terminal::badInput;
    }
    const CaptureFacts &capture = facts.capture;
    out << "file: " << path.toStdString() << '\n';
    out << "model: " << createModel(globalGet(QStringLiteral("devModel")).toInt())->name.toStdString() << '\n';
    out << "rate: " << capture.rate << " Hz\n";
    out << "samples: " << capture.samples << '\n';
    out << "length: " << secondsText(capture.samples, capture.rate).toStdString() << " s\n";
    out << "trigger: " << capture.trigger << '\n';
    for (const CaptureFacts::Channel &one : capture.channels) {
        out << "channel " << one.chn << ": " << chnShowNameGet(one.chn).toStdString() << ", " << one.edges
            << " edges\n";
    }
    writeStoredAnalyzers(out);
    return facts.warning.isEmpty() ? Terminal::good : Terminal::badInput;
}

} // namespace

int Commands::info(const QStringList &arguments)
{
    const Arguments::Parsed parsed =
        Arguments::parse(arguments, {{QStringLiteral("--help"), QStringLiteral("-h"), false}});
    if (parsed.error.isEmpty() && parsed.has(QStringLiteral("--help"))) {
        std::fputs(infoUsage, stdout);
        return Terminal::good;
    }
    if (!parsed.error.isEmpty() || parsed.operands.isEmpty()) {
        Terminal::say((parsed.error.isEmpty() ? QStringLiteral("no file is named") : parsed.error) +
                      QStringLiteral("; \"luxcli info --help\" tells more"));
        return Terminal::wrongUsage;
    }
    Output out{QString()};
    int code = Terminal::good;
    for (const QString &path : parsed.operands) {
        code = qMax(code, tell(out, path));
    }
    return out.finish(code);
}
