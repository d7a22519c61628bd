#include "files/VcdReader.h"

#include "files/VcdDeclarations.h"
#include "files/VcdValues.h"
#include "store/SmpData.h"

#include <QIODevice>

#include <optional>

namespace {

ForeignCapture failed(FileResult result, const QString &detail)
{
    ForeignCapture capture;
    capture.result = result;
    capture.detail = detail;
    return capture;
}

QStringList notesOf(const VcdDeclarations &declared, const VcdValues &values)
{
    QStringList notes;
    if (!declared.hasScale) {
        notes.append(QStringLiteral("there is no time scale; taken for nanoseconds"));
    }
    if (declared.otherKinds > 0) {
        notes.append(QStringLiteral("%1 variables are no bits and are passed over").arg(declared.otherKinds));
    }
    if (values.unknowns() > 0) {
        notes.append(QStringLiteral("%1 values x or z are taken for 0").arg(values.unknowns()));
    }
    return notes;
}

/// One pass. @return nothing when the rate that is told turns out to be wrong
std::optional<ForeignCapture> readOnce(QIODevice &device, const ForeignOptions &options, const ForeignHook &hook,
                                       bool takesRate)
{
    VcdText text(device);
    VcdDeclarations declared;
    if (!declared.read(text)) {
        return failed(FileResult::Damaged, text.error);
    }
    const ChannelOffer::Pick pick = declared.offer.pick(options.channels);
    if (!pick.error.isEmpty()) {
        return failed(FileResult::Damaged, pick.error);
    }
    VcdValues values(text, declared, pick, takesRate);
    switch (values.read(device.size(), hook)) {
    case VcdEnded::Done:
        break;
    case VcdEnded::Bad:
        return failed(FileResult::Damaged, text.error);
    case VcdEnded::Cancelled:
        return failed(FileResult::Cancelled, {});
    case VcdEnded::NoMemory:
        return failed(FileResult::NoMemory, {});
    case VcdEnded::NotOfRate:
        return std::nullopt;
    }
    ForeignCapture capture;
    capture.notes = notesOf(declared, values);
    capture.names = pick.names;
    capture.capture = values.finish();
    return capture;
}

} // namespace

ForeignCapture readVcd(QIODevice &device, const ForeignOptions &options, const ForeignHook &hook)
{
    auto capture = readOnce(device, options, hook, true);
    if (!capture && device.seek(0)) {
        capture = readOnce(device, options, hook, false);
    }
    return capture ? std::move(*capture) : failed(FileResult::Failed, {});
}
