#include "app/RunStatus.h"

#include "app/Language.h"

#include <algorithm>

namespace RunStatus {

namespace {

constexpr int errTimedOut = 3;
constexpr int errOutOfMemory = 4;
constexpr int errStoppedEarly = 14;

} // namespace

ErrorText errorText(int sta, int err, int transferMode)
{
    if (err == errOutOfMemory) {
        return {::tr("Out of memory, Sample abort."), false, false};
    }
    if (transferMode == 1 && (err == errTimedOut || err == errStoppedEarly)) {
        return {::tr("Cannot keep up with this sample rate.") + QStringLiteral("\r\n") +
                    ::tr("Please try to reduce the sample rate."),
                true, false};
    }
    return {QStringLiteral("S-") + QString::number(err + sta * 256, 16), false, true};
}

QString dialogErrorText(int err, const ErrorText &error)
{
    if (err == errOutOfMemory) {
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
