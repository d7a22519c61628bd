#include "cli/Arguments.h"
#include "cli/CaptureSource.h"
#include "cli/Commands.h"
#include "cli/FrameWriter.h"
#include "cli/Output.h"
#include "cli/Terminal.h"
#include "device/DevModels.h"
#include "settings/Config.h"

#include <cstdio>

namespace {

const char *const infoUsage = "Usage: luxcli info FILE...\n"
                              "\n"
                              "Tells model, rate, length, trigger, channels and analyzers of captures (.cxdat).\n"
                              "\n"
                              "  -h, --help         this text\n";

void writeChannels(Output &out, const SmpData &data)
{
    for (int chn = 0; chn < data.chnCount; ++chn) {
        const std::int64_t entries = data.entryCount(chn);
        if (entries > 0) { // the last one is the end mark
            out << "channel " << chn << ": " << chnShowNameGet(chn).toStdString() << ", " << entries - 1 << " edges\n";
        }
    }
}

void writeStoredAnalyzers(Output &out)
{
    const QStringList values = analyzersAll().split(QLatin1Char(';'));
    for (int i = 0; i + 2 < values.size(); i += 3) {
        out << "analyzer: " << values.at(i).section(QLatin1Char('.'), 0, -2).toStdString() << ':'
            << values.at(i + 1).toStdString() << '\n';
    }
}

int tell(Output &out, const QString &path)
{
    const CaptureSource source = CaptureSource::openOrTell(path);
    if (!source.data) {
        return Terminal::wasInterrupted() ? Terminal::interrupted : Terminal::badInput;
    }
    const SmpData &data = *source.data;
    out << "file: " << path.toStdString() << '\n';
    out << "model: " << createDevice(source.model)->name.toStdString() << '\n';
    out << "rate: " << data.smpFrequ() << " Hz\n";
    out << "samples: " << data.smpCount() << '\n';
    out << "length: " << secondsText(data.smpCount(), data.smpFrequ()).toStdString() << " s\n";
    out << "trigger: " << data.trgPos() << '\n';
    writeChannels(out, data);
    writeStoredAnalyzers(out);
    return source.warning.isEmpty() ? Terminal::good : Terminal::badInput;
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
