#include "cli/CaptureSource.h"

#include "cli/Terminal.h"
#include "device/DevModels.h"
#include "files/CaptureFile.h"
#include "session/ForeignOpening.h"
#include "settings/Config.h"

#include <utility>

namespace {

CaptureSource openOther(const QString &path, ForeignKind kind, const ForeignOptions &options)
{
    CaptureSource source;
    ForeignCapture read;
    {
        Terminal::Progress line(QStringLiteral("Reading"));
        read = readForeign(path, kind, options, [&line](double share) {
            line.show(share);
            return !Terminal::wasInterrupted();
        });
    }
    if (!read.isDone()) {
        source.error = read.detail.isEmpty() ? fileReason({read.result}) : read.detail;
        return source;
    }
    for (const QString &note : read.notes) {
        Terminal::say(QStringLiteral("%1: note: %2").arg(path, note));
    }
    configTake(foreignSettings(read));
    source.model = globalGet(QStringLiteral("devModel")).toInt();
    source.data = std::move(read.capture);
    return source;
}

CaptureSource openOwn(const QString &path, bool anySuffix)
{
    CaptureFile file(digitalChannelsOf);
    file.anySuffix = anySuffix;
    file.mayGoOn = [] { return !Terminal::wasInterrupted(); };
    OpenedCapture opened = file.open(path);
    CaptureSource source;
    if (!opened.outcome.isDone()) {
        source.error = fileReason(opened.outcome);
    } else if (!opened.isData) {
        source.error = QStringLiteral("The file holds settings and no capture.");
    } else if (!opened.capture) {
        source.error = fileReason({FileResult::NoMemory});
    }
    if (!source.error.isEmpty()) {
        return source;
    }
    configTake(*opened.settings);
    source.model = globalGet(QStringLiteral("devModel")).toInt();
    source.warning = fileWarning(opened.outcome, [](int chn) { return chnShowNameGet(chn); }).simplified();
    source.data = std::move(opened.capture);
    return source;
}

CaptureSource tell(const QString &path, CaptureSource source)
{
    for (const QString &text : {source.error, source.warning}) {
        if (!text.isEmpty() && !Terminal::wasInterrupted()) {
            Terminal::say(QStringLiteral("%1: %2").arg(path, text));
        }
    }
    return source;
}

} // namespace

CaptureSource CaptureSource::open(const QString &path)
{
    return isForeignCapture(path) ? openOther(path, foreignKindOf(path), {}) : openOwn(path, false);
}

CaptureSource CaptureSource::openOrTell(const QString &path)
{
    return tell(path, open(path));
}

CaptureSource CaptureSource::openOrTell(const QString &path, ForeignKind kind, const ForeignOptions &options)
{
    return tell(path, kind == ForeignKind::None ? openOwn(path, true) : openOther(path, kind, options));
}
