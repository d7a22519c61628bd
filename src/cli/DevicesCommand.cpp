#include "cli/DevicesCommand.h"

#include "cli/Arguments.h"
#include "cli/Commands.h"
#include "cli/FrameWriter.h"
#include "cli/Terminal.h"
#include "device/DevModels.h"
#include "device/UsbPlatforms.h"

#include <cstdio>
#include <string>

namespace {

const char *const devicesUsage =
    "Usage: luxcli devices [--json]\n"
    "\n"
    "Lists the instruments that are plugged in, one a line: model, serial number, port and state. One that\n"
    "has not been sent its firmware yet does not tell its model.\n"
    "\n"
    "      --json         one line of JSON each\n"
    "  -h, --help         this text\n";

const char *wordOf(FoundInstrument::State state)
{
    switch (state) {
    case FoundInstrument::State::Ready:
        return "ready";
    case FoundInstrument::State::NoFirmware:
        return "no-firmware";
    case FoundInstrument::State::InUse:
        return "in-use";
    case FoundInstrument::State::NoRights:
        return "no-rights";
    case FoundInstrument::State::Unusable:
        break;
    }
    return "unusable";
}

std::string modelName(const FoundInstrument &instrument)
{
    return instrument.model != 0 ? createModel(instrument.model)->name.toStdString() : std::string();
}

std::string serialOf(const FoundInstrument &instrument)
{
    return instrument.uid.toHex().toUpper().toStdString();
}

void writeInstrumentText(Output &out, const FoundInstrument &instrument)
{
    const auto orNone = [](const std::string &text) { return text.empty() ? std::string("-") : text; };
    out << orNone(modelName(instrument)) << '\t' << orNone(serialOf(instrument)) << '\t'
        << instrument.port.toStdString() << '\t' << wordOf(instrument.state);
    if (const QString obstacle = obstacleOf(instrument); !obstacle.isEmpty()) {
        out << " (" << obstacle.toStdString() << ')';
    }
    out << '\n';
}

void writeInstrumentJson(Output &out, const FoundInstrument &instrument)
{
    const auto writeOrNull = [&out](const std::string &text) {
        if (text.empty()) {
            out << "null";
        } else {
            writeJsonText(out, text);
        }
    };
    out << "{\"model\":";
    writeOrNull(modelName(instrument));
    out << ",\"code\":" << (instrument.model != 0 ? std::to_string(instrument.model) : "null") << ",\"serial\":";
    writeOrNull(serialOf(instrument));
    out << ",\"port\":";
    writeJsonText(out, instrument.port.toStdString());
    out << ",\"state\":\"" << wordOf(instrument.state) << "\"}\n";
}

} // namespace

QString obstacleOf(const FoundInstrument &instrument)
{
    switch (instrument.state) {
    case FoundInstrument::State::InUse:
        return QStringLiteral("another program uses it");
    case FoundInstrument::State::NoRights:
        return QStringLiteral("no right to open it: the udev rule 60-corvanlux.rules gives it, and counts when the "
                              "instrument is plugged in again");
    case FoundInstrument::State::Unusable:
        return QStringLiteral("it does not answer");
    case FoundInstrument::State::Ready:
    case FoundInstrument::State::NoFirmware:
        break;
    }
    return {};
}

void writeInstruments(Output &out, const std::vector<FoundInstrument> &instruments, bool isJson)
{
    for (const FoundInstrument &instrument : instruments) {
        if (isJson) {
            writeInstrumentJson(out, instrument);
        } else {
            writeInstrumentText(out, instrument);
        }
    }
}

int Commands::devices(const QStringList &arguments)
{
    const Arguments::Parsed parsed = Arguments::parse(
        arguments, {{QStringLiteral("--help"), QStringLiteral("-h"), false}, {QStringLiteral("--json"), {}, false}});
    if (parsed.error.isEmpty() && parsed.has(QStringLiteral("--help"))) {
        std::fputs(devicesUsage, stdout);
        return Terminal::good;
    }
    if (!parsed.error.isEmpty() || !parsed.operands.isEmpty()) {
        Terminal::say((parsed.error.isEmpty() ? QStringLiteral("nothing is to be named") : parsed.error) +
                      QStringLiteral("; \"luxcli devices --help\" tells more"));
        return Terminal::wrongUsage;
    }
    const bool isJson = parsed.has(QStringLiteral("--json"));
    const std::unique_ptr<UsbPlatform> platform = makeUsbPlatform();
    const std::vector<FoundInstrument> instruments = surveyInstruments(*platform);
    Output out{QString()};
    writeInstruments(out, instruments, isJson);
    if (instruments.empty() && !isJson) {
        Terminal::say(QStringLiteral("no instrument is plugged in"));
    }
    return out.finish(Terminal::good);
}
