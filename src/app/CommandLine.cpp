#include "app/CommandLine.h"

#include "controls/NoticeBox.h"
#include "files/CaptureFile.h"
#include "settings/Globals.h"
#include "settings/Language.h"

#include <QFileInfo>

#include <cstdio>

namespace CommandLine {

namespace {

bool isOption(const QString &argument)
{
    return argument.startsWith(QLatin1Char('-'));
}

bool hasAny(const QStringList &arguments, const char *brief, const char *full)
{
    return arguments.contains(QLatin1String(brief)) || arguments.contains(QLatin1String(full));
}

} // namespace

std::optional<QString> answer(const QStringList &arguments)
{
    if (hasAny(arguments, "-h", "--help")) {
        return QStringLiteral(
            "Usage: corvanlux [FILE]\n"
            "Logic analyzer. FILE is a data file (.cxdat), a settings file (.cxset) or another program's\n"
            "capture (.sr, .vcd) to open.\n"
            "\n"
            "  -h, --help     print this and exit\n"
            "  -v, --version  print the version and exit\n");
    }
    if (hasAny(arguments, "-v", "--version")) {
        return QStringLiteral("CorvanLUX " LUX_VERSION "\n");
    }
    return std::nullopt;
}

QStringList missingFiles(const QStringList &arguments)
{
    const QString opened = globalsFileArgument(arguments);
    QStringList missing;
    for (const QString &argument : arguments) {
        if (!opened.isEmpty() && argument == opened) {
            break;
        }
        if (!argument.isEmpty() && !isOption(argument) && !QFileInfo::exists(argument)) {
            missing += argument;
        }
    }
    return missing;
}

void tellMissing(QWidget *parent, const QStringList &files)
{
    if (files.isEmpty()) {
        return;
    }
    const QString reason = fileReason({FileResult::NoSuchFile});
    for (const QString &file : files) {
        std::fprintf(stderr, "corvanlux: %s: %s\n", qPrintable(file), qPrintable(reason));
    }
    const QString end = QStringLiteral("\r\n");
    showNotice(parent, QMessageBox::Information, ::tr("An error occurred"),
               ::tr("File open failed.") + end + files.join(end) + end + reason);
}

} // namespace CommandLine
