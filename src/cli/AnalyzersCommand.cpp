#include "analyzer/AnalyzerManager.h"
#include "cli/AnalyzerSetup.h"
#include "cli/Arguments.h"
#include "cli/Commands.h"
#include "cli/Output.h"
#include "cli/PluginFaults.h"
#include "cli/Terminal.h"

#include <corvanlux/analyzer/AnalyzerSettingInterface.h>
#include <corvanlux/analyzer/AnalyzerSettings.h>
#include <cstdio>
#include <string>

namespace {

const char *const analyzersUsage =
    "Usage: luxcli analyzers [--all] [--retry FILE] [NAME]\n"
    "\n"
    "Lists the decoders that are found, or the settings of one: key, kind, values, default, meaning.\n"
    "\n"
    "      --all          also tell which files are none, and why\n"
    "      --retry FILE   try a decoder again that was passed over since a program ended with it\n"
    "  -h, --help         this text\n";

const char *kindOf(const AnalyzerSettingInterface &face)
{
    switch (face.GetType()) {
    case AnalyzerInterfaceTypeId::Channel:
        return "channel";
    case AnalyzerInterfaceTypeId::NumberList:
        return "choice";
    case AnalyzerInterfaceTypeId::Integer:
        return "integer";
    case AnalyzerInterfaceTypeId::Bool:
        return "switch";
    default:
        return "text";
    }
}

void writeSettingsTable(Output &out, const Analyzer &analyzer)
{
    const AnalyzerSettings *settings = analyzer.GetAnalyzerSettings();
    out << "key\tkind\tvalues\tdefault\ttitle\tmeaning\n";
    for (std::uint32_t i = 0; i < settings->GetSettingsInterfacesCount(); ++i) {
        const AnalyzerSettingInterface &face = *settings->GetSettingsInterface(i);
        const auto *box = dynamic_cast<const AnalyzerSettingInterfaceBool *>(&face);
        const std::string_view title = face.GetTitle();
        out << face.GetKey() << '\t' << kindOf(face) << '\t' << AnalyzerSetup::valuesOf(face) << '\t'
            << face.GetAsText() << '\t' << (title.empty() && box != nullptr ? box->GetCheckBoxText() : title) << '\t'
            << face.GetToolTip() << '\n';
    }
}

void writeLibraries(Output &out, const AnalyzerManager &manager)
{
    for (const AnalyzerLib &lib : manager.foundLibraries()) {
        out << lib.fileName.section(QLatin1Char('.'), 0, -2).toStdString() << '\t' << lib.displayName.toStdString()
            << '\n';
    }
}

void writeRefusals(Output &out, const AnalyzerManager &manager)
{
    for (const PluginFolder::Refusal &refusal : manager.refusals()) {
        out << refusal.fileName.toStdString() << "\tnot loaded: " << refusal.reason.toStdString() << '\n';
    }
}

int tellSettings(Output &out, AnalyzerManager &manager, const QString &name)
{
    const int library = AnalyzerSetup::libraryNamed(manager, name);
    PluginFaults faults(manager);
    Analyzer *analyzer = manager.createAnalyzer(library);
    if (analyzer == nullptr && library >= 0) {
        faults.say();
        return Terminal::badInput;
    }
    if (analyzer == nullptr) {
        Terminal::say(AnalyzerSetup::unknown(manager, name));
        return Terminal::wrongUsage;
    }
    writeSettingsTable(out, *analyzer);
    manager.destroyAnalyzer(library, analyzer);
    return Terminal::good;
}

/// @return false, and the user is told, when it is not passed over
bool retry(const QString &file)
{
    PluginGuard guard(PluginFolder::standardGuardFolder());
    const QStringList blocked = guard.blocked();
    if (!blocked.contains(file)) {
        Terminal::say(QStringLiteral("%1 is not passed over; these are: %2")
                          .arg(file, blocked.isEmpty() ? QStringLiteral("none") : blocked.join(QStringLiteral(", "))));
        return false;
    }
    guard.retry(file);
    return true;
}

} // namespace

int Commands::analyzers(const QStringList &arguments)
{
    const Arguments::Parsed parsed =
        Arguments::parse(arguments, {{QStringLiteral("--all"), {}, false},
                                     {QStringLiteral("--retry"), {}, true},
                                     {QStringLiteral("--help"), QStringLiteral("-h"), false}});
    if (!parsed.error.isEmpty() || parsed.operands.size() > 1) {
        Terminal::say((parsed.error.isEmpty() ? QStringLiteral("more than one name") : parsed.error) +
                      QStringLiteral("; \"luxcli analyzers --help\" tells more"));
        return Terminal::wrongUsage;
    }
    if (parsed.has(QStringLiteral("--help"))) {
        std::fputs(analyzersUsage, stdout);
        return Terminal::good;
    }
    if (const auto file = parsed.value(QStringLiteral("--retry")); file && !retry(*file)) {
        return Terminal::badInput;
    }
    AnalyzerManager manager;
    AnalyzerSetup::sayPassedOver(manager);
    Output out{QString()};
    int code = Terminal::good;
    if (!parsed.operands.isEmpty()) {
        code = tellSettings(out, manager, parsed.operands.constFirst());
    } else {
        writeLibraries(out, manager);
        if (parsed.has(QStringLiteral("--all"))) {
            writeRefusals(out, manager);
        }
    }
    return out.finish(code);
}
