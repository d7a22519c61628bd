// Other programs' files: how they are opened, and written.

#include "app/FileDialogs.h"
#include "app/MainMenu.h"
#include "app/ProgressJobDialog.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "files/AsideJob.h"
#include "files/CaptureWriter.h"
#include "files/ForeignFile.h"
#include "session/ForeignOpening.h"
#include "session/Session.h"
#include "settings/Config.h"

#include <utility>

OpenedCapture MainMenu::readForeignFile(const QString &path)
{
    const Session::FileJob held(m_session);
    ForeignCapture read;
    AsideJob(progressJobDialogs(window()), AsideJob::Kind::Load).run([&](const AsideJob::GoesOn &goesOn) {
        read = readForeign(path, foreignKindOf(path), {}, goesOn);
    });
    OpenedCapture opened;
    opened.outcome = {read.result};
    opened.outcome.detail = read.detail;
    opened.notes = read.notes;
    opened.isData = true;
    if (read.isDone()) {
        const ConfigDocument mine = configCopy();
        opened.settings = foreignSettings(read, &mine);
        opened.capture = std::move(read.capture);
    }
    return opened;
}

FileOutcome MainMenu::exportForeign(const QString &path, int kind, const CapturePart &part)
{
    const SmpData &capture = *gDev->smpData;
    CaptureOut out;
    out.kind = kind == FileDialogs::vcd ? CaptureKind::Vcd : CaptureKind::Sr;
    out.part = part;
    for (int chn = 0; chn < capture.chnCount; ++chn) {
        out.names += chnShowNameGet(chn);
    }
    FileOutcome outcome;
    AsideJob(progressJobDialogs(window()), AsideJob::Kind::Save).run([&](const AsideJob::GoesOn &goesOn) {
        out.hook = goesOn;
        outcome = writeCaptureFile(path, capture, out);
    });
    return outcome;
}
