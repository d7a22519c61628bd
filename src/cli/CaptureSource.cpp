#include "cli/CaptureSource.h"

#include "cli/Terminal.h"
#include "device/DevModels.h"
#include "files/CaptureFile.h"
#include "settings/Config.h"

#include <utility>

CaptureSource CaptureSource::open(const QString &path)
{
    CaptureFile file(digitalChannelsOf);
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

CaptureSource CaptureSource::openOrTell(const QString &path)
{
    CaptureSource source = open(path);
    for (const QString &text : {source.error, source.warning}) {
        if (!text.isEmpty() && !Terminal::wasInterrupted()) {
            Terminal::say(QStringLiteral("%1: %2").arg(path, text));
        }
    }
    return source;
}
