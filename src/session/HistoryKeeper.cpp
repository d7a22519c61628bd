#include "session/HistoryKeeper.h"

#include "acquisition/SmpState.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "files/CaptureHistory.h"
#include "session/Session.h"
#include "settings/Config.h"
#include "settings/ConfigDocument.h"
#include "settings/HistoryOptions.h"

#include <cstdint>
#include <utility>

HistoryKeeper::HistoryKeeper(Session &session, CaptureHistory &history)
    : now([] { return QDateTime::currentDateTimeUtc(); }), m_history(history)
{
    connect(&session, &Session::sigSmpSta, this, [this](int sta, int err, int /*n*/) {
        if (sta == smpState::starting && err == smpError::none) {
            captureStarts();
        }
    });
    connect(&session, &Session::sigSmpDataReady, this, &HistoryKeeper::dataReady);
    connect(&session, &Session::sigDeviceLeaves, this, [this] { m_history.stayWith(gDev->smpData.get()); });
    // Before a file's data is announced the device object is replaced by that of the file's settings.
    connect(&session, &Session::sigDeviceReplaced, this, [this] { m_run = Run::None; });
}

void HistoryKeeper::captureStarts()
{
    m_run = gDev->connected ? Run::OnInstrument : Run::Simulated;
}

void HistoryKeeper::dataReady()
{
    const Run run = std::exchange(m_run, Run::None);
    const HistoryOptions options = HistoryOptions::stored();
    const bool isWanted = options.keep == KeepCaptures::All
                              ? run != Run::None
                              : options.keep == KeepCaptures::OfInstruments && run == Run::OnInstrument;
    if (isWanted) {
        const HistoryLimits limits{options.captures, std::int64_t(options.gigabytes) << 30};
        m_history.keep({gDev->smpData.get(), gDev->name, now(), limits}, configCopy());
    }
}
