#include "files/CaptureWriter.h"

#include "files/CsvWriter.h"
#include "files/DataExport.h"
#include "files/SrWriter.h"
#include "files/VcdWriter.h"
#include "settings/FileReplacement.h"
#include "store/SmpData.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cmath>

namespace {

/// A part as the writers take it. @return false for one that is empty or not of this capture
bool selectionOf(const SmpData &data, const CapturePart &part, DataSelection &selection)
{
    const auto limited = [&data](double pos) {
        return std::isnan(pos) ? 0.0 : std::clamp(pos, 0.0, double(data.smpCount()));
    };
    if (data.smpCount() < 1 || part.channels.size() != std::size_t(data.chnCount)) {
        return false;
    }
    selection.chnSelect = part.channels.data();
    selection.posStart = std::int64_t(std::floor(limited(std::min(part.start, part.end))));
    selection.posStart = std::min(selection.posStart, data.smpCount() - 1);
    const auto behind = std::int64_t(std::ceil(limited(std::max(part.start, part.end))));
    selection.posEnd = std::max(behind - 1, selection.posStart);
    return true;
}

/// Transitions of the chosen channels.
std::int64_t edgesOf(const SmpData &data, const DataSelection &selection)
{
    std::int64_t edges = 1;
    for (int chn = 0; chn < data.chnCount; ++chn) {
        if (selection.chnSelect[chn] != 0) {
            edges += std::max<std::int64_t>(data.edgeCount(chn, selection.posStart, selection.posEnd), 0);
        }
    }
    return edges;
}

/// The writers' hook: they tell transitions or samples done, the caller wants a part of the whole.
DataPieceHook hookOf(const CaptureOut &out, const SmpData &data, const DataSelection &selection)
{
    if (!out.hook) {
        return {};
    }
    const bool bySamples = out.kind == CaptureKind::Bin || out.kind == CaptureKind::Sr;
    const std::int64_t total = bySamples ? selection.posEnd - selection.posStart + 1 : edgesOf(data, selection);
    return [&out, total](std::int64_t done) { return out.hook(std::min(double(done) / double(total), 1.0)); };
}

QByteArray textHeader(const SmpData &data, const CaptureOut &out)
{
    QByteArray line = "Time[s]";
    for (int chn = 0; chn < data.chnCount; ++chn) {
        line += out.part.channels[std::size_t(chn)] != 0 ? ", " + out.names.value(chn).toUtf8() : QByteArray();
    }
    return line + '\n';
}

FileOutcome outcomeOf(DataBlocksResult result)
{
    switch (result) {
    case DataBlocksResult::Done:
        return {};
    case DataBlocksResult::Stopped:
        return {FileResult::Cancelled};
    case DataBlocksResult::NoMemory:
        return {FileResult::NoMemory};
    default:
        return {FileResult::Failed};
    }
}

/// Writes any kind but archives.
FileOutcome writeParts(QIODevice &device, const SmpData &data, const CaptureOut &out, const DataSelection &selection)
{
    const DataPieceHook hook = hookOf(out, data, selection);
    switch (out.kind) {
    case CaptureKind::Bin:
        return outcomeOf(writeBinaryExport(device, data, selection, hook));
    case CaptureKind::Csv:
        return outcomeOf(writeCsv(device, data, selection, out.names, hook));
    case CaptureKind::Cxdat: {
        const std::optional<QByteArray> block = out.settings != nullptr ? out.settings->block() : std::nullopt;
        if (!block) {
            return {FileResult::SettingsTooLong};
        }
        return device.write(*block) == block->size() ? outcomeOf(writeDataBlocks(device, data, selection, hook))
                                                     : FileOutcome{FileResult::Failed};
    }
    case CaptureKind::Text:
        return outcomeOf(writeTextExport(device, data, selection, textHeader(data, out), hook));
    case CaptureKind::Vcd:
        return outcomeOf(writeVcd(device, data, selection, out.names, hook));
    case CaptureKind::None:
    case CaptureKind::Sr:
        break;
    }
    return {FileResult::WrongKind};
}

/// Writes to a file that is there.
FileOutcome writePart(const QString &path, const SmpData &data, const CaptureOut &out, const DataSelection &selection)
{
    if (out.kind == CaptureKind::Sr) {
        return {writeSr(path, data, selection, out.names, hookOf(out, data, selection))};
    }
    QFile file(path);
    const bool hasLines = out.kind == CaptureKind::Text;
    const auto mode = QIODevice::WriteOnly | QIODevice::Truncate;
    if (!file.open(hasLines ? mode | QIODevice::Text : mode)) {
        return {fileResultOf(writeFaultOf(file))};
    }
    FileOutcome outcome = writeParts(file, data, out, selection);
    if (!file.flush() || file.error() != QFileDevice::NoError) {
        outcome = {fileResultOf(writeFaultOf(file))};
    }
    return outcome;
}

} // namespace

CaptureKind captureKindNamed(const QString &name)
{
    static const QHash<QString, CaptureKind> kinds{
        {QStringLiteral("bin"), CaptureKind::Bin},  {QStringLiteral("raw"), CaptureKind::Bin},
        {QStringLiteral("csv"), CaptureKind::Csv},  {QStringLiteral("cxdat"), CaptureKind::Cxdat},
        {QStringLiteral("sr"), CaptureKind::Sr},    {QStringLiteral("text"), CaptureKind::Text},
        {QStringLiteral("txt"), CaptureKind::Text}, {QStringLiteral("vcd"), CaptureKind::Vcd}};
    return kinds.value(name.toLower(), CaptureKind::None);
}

CaptureKind captureKindOf(const QString &path)
{
    const QString suffix = QFileInfo(path).suffix();
    const CaptureKind kind = captureKindNamed(suffix);
    // What has it in other letters nobody opens as a data file.
    return kind == CaptureKind::Cxdat && suffix != QLatin1String("cxdat") ? CaptureKind::None : kind;
}

FileOutcome writeCaptureFile(const QString &path, const SmpData &data, const CaptureOut &out)
{
    DataSelection selection;
    const SmpReadLock lock(&data);
    if (!lock || !selectionOf(data, out.part, selection)) {
        return {FileResult::NoCapture};
    }
    FileReplacement target(path);
    const WriteFault begun = target.begin();
    if (begun != WriteFault::None) {
        return {fileResultOf(begun)};
    }
    const FileOutcome outcome = writePart(target.partPath(), data, out, selection);
    return outcome.isDone() ? FileOutcome{fileResultOf(target.finish())} : outcome;
}

FileOutcome writeCaptureTo(QIODevice &device, const SmpData &data, const CaptureOut &out)
{
    DataSelection selection;
    const SmpReadLock lock(&data);
    if (!lock || !selectionOf(data, out.part, selection)) {
        return {FileResult::NoCapture};
    }
    return writeParts(device, data, out, selection);
}
