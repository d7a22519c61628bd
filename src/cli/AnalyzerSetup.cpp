#include "cli/AnalyzerSetup.h"

#include "analyzer/PluginCall.h"
#include "cli/Terminal.h"

#include <algorithm>
#include <corvanlux/analyzer/AnalyzerSettingInterface.h>
#include <corvanlux/analyzer/AnalyzerSettings.h>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

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

/// The settings that a key stands for: the one of that name, or those that the decoder names otherwise.
QVector<AnalyzerSettingInterface *> facesOf(AnalyzerSettings &settings, const QString &key)
{
    if (AnalyzerSettingInterface *face = faceOf(settings, key); face != nullptr) {
        return {face};
    }
    static constexpr std::pair<const char *, const char *> alike[] = {
        {"baudrate", "bitrate"},  {"baudrate", "bit_rate"}, {"bitrate", "baudrate"}, {"bitrate", "bit_rate"},
        {"bit_rate", "baudrate"}, {"bit_rate", "bitrate"},  {"edge", "clock_edge"},  {"clock_edge", "edge"},
        {"invert", "invert_rx"},  {"invert", "invert_tx"}};
    QVector<AnalyzerSettingInterface *> faces;
    for (const auto &[name, other] : alike) {
        AnalyzerSettingInterface *face = key == QLatin1String(name) ? faceOf(settings, QLatin1String(other)) : nullptr;
        if (face != nullptr) {
            faces.append(face);
        }
    }
    return faces;
}

/// The mode of a serial peripheral interface: clock polarity and phase as one number, where they are two settings.
struct ClockMode {
    AnalyzerSettingInterface *polarity;
    AnalyzerSettingInterface *phase;
    [[nodiscard]] bool isKnown() const { return polarity != nullptr && phase != nullptr; }
};

ClockMode clockModeOf(AnalyzerSettings &settings, const QString &key)
{
    if (key != QLatin1String("mode") || faceOf(settings, key) != nullptr) {
        return {};
    }
    return {faceOf(settings, QStringLiteral("cpol")), faceOf(settings, QStringLiteral("cpha"))};
}

/// Takes the mode when all other settings are. @return why not: it is none, or another setting contradicts it
QString takeClockMode(const ClockMode &clock, const Arguments::Request &request, const QString &value)
{
    static const QStringList modes = {QStringLiteral("0"), QStringLiteral("1"), QStringLiteral("2"),
                                      QStringLiteral("3")};
    const int mode = modes.indexOf(value);
    if (mode < 0) {
        return QStringLiteral("%1: \"%2\" is no value of mode; possible: %3")
            .arg(request.name, value, modes.join(QLatin1Char('|')));
    }
    for (const auto &[face, bit] : {std::pair(clock.polarity, mode >> 1), std::pair(clock.phase, mode & 1)}) {
        const QString key = QLatin1String(face->GetKey());
        const QString before = QLatin1String(face->GetAsText());
        face->SetFromText(bit != 0 ? "1" : "0");
        const bool isNamed = std::any_of(request.settings.begin(), request.settings.end(),
                                         [&](const auto &setting) { return setting.first == key; });
        if (isNamed && before != QLatin1String(face->GetAsText())) {
            return QStringLiteral("%1: mode=%2 contradicts %3=%4").arg(request.name, value, key, before);
        }
    }
    return {};
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

/// A bit rate may be "auto" for 0, which finds it, and need not be whole.
bool take(AnalyzerSettingInterface &face, const QString &value)
{
    const bool isRate = QLatin1String(face.GetKey()).endsWith(QLatin1String("rate"));
    if (isRate && value.compare(QLatin1String("auto"), Qt::CaseInsensitive) == 0) {
        return face.SetFromText("0");
    }
    const double number = isRate ? value.toDouble() : 0;
    const bool isWithinLimits = number >= 1 && number <= std::numeric_limits<std::int32_t>::max();
    return face.SetFromText(isWithinLimits ? QByteArray::number(qRound(number)).constData()
                                           : value.toUtf8().constData());
}

QString apply(AnalyzerSettings &settings, const Arguments::Request &request)
{
    std::optional<QString> mode;
    for (const auto &[key, value] : request.settings) {
        if (clockModeOf(settings, key).isKnown()) {
            mode = value;
            continue;
        }
        const QVector<AnalyzerSettingInterface *> faces = facesOf(settings, key);
        if (faces.isEmpty()) {
            return QStringLiteral("%1 has no setting \"%2\"; it has: %3").arg(request.name, key, knownKeys(settings));
        }
        for (AnalyzerSettingInterface *face : faces) {
            if (!take(*face, value)) {
                const QString possible = QString::fromStdString(AnalyzerSetup::valuesOf(*face));
                return QStringLiteral("%1: \"%2\" is no value of %3").arg(request.name, value, key) +
                       (possible.isEmpty() ? QString() : QStringLiteral("; possible: ") + possible);
            }
        }
    }
    if (mode) {
        QString refusal = takeClockMode(clockModeOf(settings, QStringLiteral("mode")), request, *mode);
        if (!refusal.isEmpty()) {
            return refusal;
        }
    }
    if (!settings.ApplyInterfaces()) {
        const QString reason = QString::fromUtf8(settings.GetSaveErrorMessage());
        return request.name +
               (reason.isEmpty() ? QStringLiteral(" does not take these settings") : QStringLiteral(": ") + reason);
    }
    return {};
}

std::string wordsOf(const AnalyzerSettingInterfaceNumberList &list)
{
    std::string text;
    for (std::uint32_t i = 0; i < list.GetListboxNumbersCount(); ++i) {
        text += (i > 0 ? "|" : "");
        text += list.GetListboxWord(i);
    }
    return text;
}

} // namespace

std::string valuesOf(const AnalyzerSettingInterface &face)
{
    if (const auto *channel = dynamic_cast<const AnalyzerSettingInterfaceChannel *>(&face)) {
        return channel->GetSelectionOfNoneIsAllowed() ? "number or none" : "number";
    }
    if (const auto *list = dynamic_cast<const AnalyzerSettingInterfaceNumberList *>(&face)) {
        return wordsOf(*list);
    }
    if (const auto *integer = dynamic_cast<const AnalyzerSettingInterfaceInteger *>(&face)) {
        return std::to_string(integer->GetMin()) + " to " + std::to_string(integer->GetMax());
    }
    return dynamic_cast<const AnalyzerSettingInterfaceBool *>(&face) != nullptr ? "false|true" : "";
}

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
