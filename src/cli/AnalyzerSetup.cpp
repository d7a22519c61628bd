#include "cli/AnalyzerSetup.h"

#include "analyzer/PluginCall.h"
#include "cli/Terminal.h"

#include <corvanlux/analyzer/AnalyzerSettingInterface.h>
#include <corvanlux/analyzer/AnalyzerSettings.h>

namespace AnalyzerSetup {

namespace {

AnalyzerSettingInterface *faceOf(AnalyzerSettings &settings, const QString &key)
{
    for (std::uint32_t i = 0; i < settings.GetSettingsInterfacesCount(); ++i) {
        AnalyzerSettingInterface *face = settings.GetSettingsInterface(i);
        if (key == QLatin1String(face->GetKey())) {
            return face;
        }
    }
    return nullptr;
}

QString knownKeys(AnalyzerSettings &settings)
{
    QStringList keys;
    for (std::uint32_t i = 0; i < settings.GetSettingsInterfacesCount(); ++i) {
        keys.append(QString::fromLatin1(settings.GetSettingsInterface(i)->GetKey()));
    }
    return keys.join(QStringLiteral(", "));
}

QString knownNames(const AnalyzerManager &manager)
{
    QStringList names;
    for (const AnalyzerLib &lib : manager.foundLibraries()) {
        names.append(lib.fileName.section(QLatin1Char('.'), 0, -2));
    }
    return names.isEmpty() ? QStringLiteral("none") : names.join(QStringLiteral(", "));
}

QString apply(AnalyzerSettings &settings, const Arguments::Request &request)
{
    for (const auto &[key, value] : request.settings) {
        AnalyzerSettingInterface *face = faceOf(settings, key);
        if (face == nullptr) {
            return QStringLiteral("%1 has no setting \"%2\"; it has: %3").arg(request.name, key, knownKeys(settings));
        }
        if (!face->SetFromText(value.toUtf8().constData())) {
            return QStringLiteral("%1: \"%2\" is no value of %3").arg(request.name, value, key);
        }
    }
    if (!settings.ApplyInterfaces()) {
        const QString reason = QString::fromUtf8(settings.GetSaveErrorMessage());
        return request.name +
               (reason.isEmpty() ? QStringLiteral(" does not take these settings") : QStringLiteral(": ") + reason);
    }
    return {};
}

} // namespace

int libraryNamed(const AnalyzerManager &manager, const QString &name)
{
    const QVector<AnalyzerLib> &libraries = manager.foundLibraries();
    for (int i = 0; i < libraries.size(); ++i) {
        const AnalyzerLib &lib = libraries.at(i);
        const QString fileName = lib.fileName.section(QLatin1Char('.'), 0, -2);
        if (name.compare(lib.displayName, Qt::CaseInsensitive) == 0 ||
            name.compare(fileName, Qt::CaseInsensitive) == 0) {
            return i;
        }
    }
    return -1;
}

void sayPassedOver(const AnalyzerManager &manager)
{
    for (const PluginFolder::Refusal &refusal : manager.refusals()) {
        if (refusal.passedOver) {
            Terminal::say(QStringLiteral("%1 is passed over, since a program ended while it was tried; \"luxcli "
                                         "analyzers --retry %1\" tries it again")
                              .arg(refusal.fileName));
        }
    }
}

bool sayNotFound(const AnalyzerManager &manager, const QString &path)
{
    const QStringList names = manager.notFound();
    for (const QString &name : names) {
        Terminal::say(QStringLiteral("%1: the decoder \"%2\" that is stored was not found")
                          .arg(path, name.section(QLatin1Char('.'), 0, -2)));
    }
    return !names.isEmpty();
}

QString unknown(const AnalyzerManager &manager, const QString &name)
{
    return QStringLiteral("there is no decoder \"%1\"; there are: %2").arg(name, knownNames(manager));
}

Refusal add(AnalyzerManager &manager, const Arguments::Request &request)
{
    const int library = libraryNamed(manager, request.name);
    if (library < 0) {
        return {unknown(manager, request.name), Terminal::wrongUsage};
    }
    Analyzer *analyzer = manager.createAnalyzer(library);
    if (analyzer == nullptr) {
        return {QStringLiteral("the decoder \"%1\" could not be made").arg(request.name), Terminal::badInput};
    }
    Refusal refusal;
    const QString fault = pluginFault([&] { refusal.error = apply(*analyzer->GetAnalyzerSettings(), request); });
    refusal.code = refusal.error.isEmpty() ? Terminal::good : Terminal::wrongUsage;
    if (!fault.isEmpty()) {
        refusal = {request.name + QStringLiteral(": ") + fault, Terminal::badInput};
    }
    if (!refusal.error.isEmpty()) {
        manager.destroyAnalyzer(library, analyzer);
        return refusal;
    }
    manager.addLibIndex = library;
    manager.addAnalyzer(analyzer);
    return {};
}

} // namespace AnalyzerSetup
