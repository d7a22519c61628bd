#include "cli/Arguments.h"
#include "cli/Commands.h"
#include "cli/FrameWriter.h"
#include "cli/Output.h"
#include "cli/Terminal.h"
#include "files/CaptureFile.h"
#include "files/HistoryFolder.h"
#include "settings/FileReplacement.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>

namespace {

const char *const historyUsage = "Usage: luxcli history [list] [--json] [--folder DIR]\n"
                                 "       luxcli history fetch N -o FILE [--folder DIR]\n"
                                 "\n"
                                 "Lists the captures of instruments that the program has kept, the newest first, or\n"
                                 "copies the one of that number.\n"
                                 "\n"
                                 "      --json         one line of JSON a capture instead of text\n"
                                 "  -o, --output FILE  where the copy goes (.cxdat)\n"
                                 "      --folder DIR   a history elsewhere\n"
                                 "  -h, --help         this text\n";

constexpr qint64 pieceBytes = 1 << 20;

void writeText(Output &out, int number, const HistoryEntry &entry)
{
    out << number << "  " << entry.time.toLocalTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")).toStdString()
        << "  " << (entry.model.isEmpty() ? "-" : entry.model.toStdString()) << "  " << entry.frequency << " Hz  "
        << entry.samples << " samples  " << secondsText(entry.samples, entry.frequency).toStdString() << " s  "
        << entry.bytes << " bytes\n";
}

void writeJson(Output &out, int number, const HistoryEntry &entry)
{
    const QJsonObject object{{QStringLiteral("number"), number},
                             {QStringLiteral("time"), entry.time.toString(Qt::ISODateWithMs)},
                             {QStringLiteral("model"), entry.model},
                             {QStringLiteral("rate"), qint64(entry.frequency)},
                             {QStringLiteral("samples"), qint64(entry.samples)},
                             {QStringLiteral("seconds"), entry.seconds()},
                             {QStringLiteral("bytes"), qint64(entry.bytes)},
                             {QStringLiteral("path"), entry.path}};
    out << QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString() << '\n';
}

int list(const QVector<HistoryEntry> &entries, bool asJson)
{
    Output out{QString()};
    for (int i = 0; i < entries.size(); ++i) {
        asJson ? writeJson(out, i + 1, entries.at(i)) : writeText(out, i + 1, entries.at(i));
    }
    return out.finish(Terminal::good);
}

/// Copies a file, which appears under its new name when it is whole.
FileResult copy(const QString &from, const QString &to)
{
    QFile source(from);
    if (!source.open(QIODevice::ReadOnly)) {
        return FileResult::NoSuchFile;
    }
    FileReplacement target(to);
    const WriteFault begun = target.begin();
    QFile part(target.partPath());
    if (begun != WriteFault::None || !part.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered)) {
        return begun != WriteFault::None ? fileResultOf(begun) : fileResultOf(writeFaultOf(part));
    }
    Terminal::Progress progress(to);
    const auto size = double(source.size());
    while (!source.atEnd()) {
        const QByteArray piece = source.read(pieceBytes);
        if (Terminal::wasInterrupted() || piece.isEmpty()) {
            return Terminal::wasInterrupted() ? FileResult::Cancelled : FileResult::Failed;
        }
        if (!writeWhole(part, piece.constData(), piece.size())) {
            return fileResultOf(writeFaultOf(part));
        }
        progress.show(double(source.pos()) / size);
    }
    part.close();
    return fileResultOf(target.finish());
}

int fetch(const QVector<HistoryEntry> &entries, const QString &number, const QString &to)
{
    const int index = number.toInt() - 1;
    if (index < 0 || index >= entries.size()) {
        Terminal::say(QStringLiteral("there is no capture \"%1\" in the history").arg(number));
        return Terminal::badInput;
    }
    const FileResult result = copy(entries.at(index).path, to);
    if (result == FileResult::Done) {
        return Terminal::good;
    }
    if (result == FileResult::Cancelled) {
        return Terminal::interrupted;
    }
    Terminal::say(QStringLiteral("%1: %2").arg(to, fileReason({result})));
    return Terminal::badInput;
}

/// What is wrong with the arguments; empty for nothing.
QString faultOf(const Arguments::Parsed &parsed)
{
    const QString verb = parsed.operands.value(0, QStringLiteral("list"));
    const bool isFetch = verb == QLatin1String("fetch");
    if (!parsed.error.isEmpty()) {
        return parsed.error;
    }
    if (!isFetch && verb != QLatin1String("list")) {
        return QStringLiteral("\"%1\" is neither list nor fetch").arg(verb);
    }
    if (parsed.operands.size() > (isFetch ? 2 : 1)) {
        return QStringLiteral("\"%1\" is too much").arg(parsed.operands.last());
    }
    if (isFetch &&
        (parsed.operands.size() < 2 || parsed.value(QStringLiteral("--output")).value_or(QString()).isEmpty())) {
        return QStringLiteral("fetch needs a number and -o");
    }
    return {};
}

} // namespace

int Commands::history(const QStringList &arguments)
{
    const Arguments::Parsed parsed =
        Arguments::parse(arguments, {{QStringLiteral("--json"), {}, false},
                                     {QStringLiteral("--output"), QStringLiteral("-o"), true},
                                     {QStringLiteral("--folder"), {}, true},
                                     {QStringLiteral("--help"), QStringLiteral("-h"), false}});
    if (parsed.error.isEmpty() && parsed.has(QStringLiteral("--help"))) {
        std::fputs(historyUsage, stdout);
        return Terminal::good;
    }
    if (const QString fault = faultOf(parsed); !fault.isEmpty()) {
        Terminal::say(fault + QStringLiteral("; \"luxcli history --help\" tells more"));
        return Terminal::wrongUsage;
    }
    const QString folder = parsed.value(QStringLiteral("--folder")).value_or(HistoryFolder::standardPath());
    const QFileInfo there(folder);
    if (there.exists() && !(there.isDir() && there.isReadable())) { // without one nothing has been kept yet
        Terminal::say(QStringLiteral("%1: this is no folder that can be read").arg(folder));
        return Terminal::badInput;
    }
    const QVector<HistoryEntry> entries = HistoryFolder(folder).list();
    if (parsed.operands.size() == 2) {
        return fetch(entries, parsed.operands.at(1), *parsed.value(QStringLiteral("--output")));
    }
    return list(entries, parsed.has(QStringLiteral("--json")));
}
