#include "session/RunStatus.h"

#include "acquisition/SmpState.h"
#include "settings/Language.h"

#include <algorithm>

namespace RunStatus {

ErrorText errorText(int sta, int err, int transferMode)
{
    if (err == smpError::noMemory) {
        return {::tr("Out of memory, Sample abort."), false, false};
    }
    if (transferMode == 1 && (err == smpError::timedOut || err == smpError::endedEarly)) {
        return {::tr("Cannot keep up with this sample rate.") + QStringLiteral("\r\n") +
                    ::tr("Please try to reduce the sample rate."),
                true, false};
    }
    return {QStringLiteral("S-") + QString::number(err + sta * 256, 16), false, true};
}

QString dialogErrorText(int err, const ErrorText &error)
{
    if (err == smpError::noMemory) {
        return error.text;
    }
    return ::tr("An error occurred") + QStringLiteral(": ") + error.text;
}

QString stateText(int sta)
{
    static const char *const texts[] = {trLater("Sample start"), trLater("Pre-sampling"),
                                        trLater("Waiting for trigger"), trLater("Sampling"), trLater("Data reading")};
    if (sta < 0 || sta >= int(std::size(texts))) {
        return {};
    }
    return ::tr(texts[sta]) + QStringLiteral("...");
}

int shownProgress(int value)
{
    return std::clamp(value, 1, 99);
}

} // namespace RunStatus
