#include "files/CaptureFile.h"

#include "files/DataBlocks.h"
#include "files/DataFile.h"
#include "settings/Config.h"
#include "settings/FileReplacement.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace {

/// A capture of this size, in bytes of memory, is tried whatever the budget: its first blocks never ask for it.
constexpr std::int64_t smallCapture = std::int64_t(8) << 20;

FileResult resultOf(DataBlocksResult result)
{
    switch (result) {
    case DataBlocksResult::Done:
        return FileResult::Done;
    case DataBlocksResult::HeadRefused:
    case DataBlocksResult::Damaged:
        return FileResult::Damaged;
    case DataBlocksResult::OtherModel:
        return FileResult::OtherModel;
    case DataBlocksResult::NoMemory:
        return FileResult::NoMemory;
    case DataBlocksResult::Stopped:
    case DataBlocksResult::StoreKept:
        return FileResult::Cancelled;
    case DataBlocksResult::DeviceError:
        break;
    }
    return FileResult::Failed;
}

FileOutcome outcomeOf(DataBlocksResult result, const DataBlocksFound &found)
{
    FileOutcome outcome{resultOf(result)};
    if (outcome.isDone()) {
        outcome.noChannels = found.blocks == 0;
        outcome.cut = found.cut;
        outcome.missing = found.missing;
    }
    return outcome;
}

/// What freeing a capture gives back, bytes.
std::int64_t bytesOf(const SmpData *capture)
{
    std::int64_t bytes = 0;
    const SmpReadLock lock(capture);
    for (int chn = 0; lock && chn < capture->chnCount; ++chn) {
        const std::int64_t entries = capture->entryCount(chn);
        bytes += entries > 0 ? treeBytes(entries) : 0;
    }
    return bytes;
}

/// @return false when the file cannot be read
bool readFacts(QIODevice &device, const DataBlocksFound &found, CaptureFacts &facts)
{
    facts = {found.head.smpCount, found.head.smpFrequ, found.head.trgPos, {}};
    for (const DataBlockPlace &place : found.places) {
        facts.channels.push_back({place.chn, entriesBelow(device, place, found.head.smpCount)});
    }
    const auto byChannel = [](const auto &a, const auto &b) { return a.chn < b.chn; };
    std::sort(facts.channels.begin(), facts.channels.end(), byChannel);
    return std::none_of(facts.channels.begin(), facts.channels.end(), [](const auto &one) { return one.edges < 0; });
}

FileOutcome tooLong(const ConfigDocument &settings)
{
    constexpr int named = 3;
    return {FileResult::SettingsTooLong, settings.longest(named)};
}

} // namespace

FileResult fileResultOf(WriteFault fault)
{
    switch (fault) {
    case WriteFault::None:
        return FileResult::Done;
    case WriteFault::NoFolder:
        return FileResult::NoFolder;
    case WriteFault::NotPlain:
        return FileResult::NotPlain;
    case WriteFault::NoRights:
        return FileResult::NoRights;
    case WriteFault::DiskFull:
        return FileResult::DiskFull;
    case WriteFault::Other:
        break;
    }
    return FileResult::Failed;
}

CaptureFile::CaptureFile(ChannelCount channelCount, JobDialogFactory dialogs)
    : m_channelCount(std::move(channelCount)), m_dialogs(std::move(dialogs))
{}

FileOutcome CaptureFile::readSettings(QFile &file, Layout &layout, std::optional<ConfigDocument> &settings) const
{
    const QByteArray head = file.read(configHeadLimit);
    if (file.error() != QFileDevice::NoError) {
        return {FileResult::Failed};
    }
    layout.headSize = configHeadSize(head);
    if (layout.headSize == 0) {
        return {head.contains("<settings") ? FileResult::Damaged : FileResult::WrongKind};
    }
    settings = ConfigDocument::parse(head.left(int(layout.headSize)));
    if (!settings) {
        return {FileResult::Damaged};
    }
    layout.chnCount = m_channelCount(*settings);
    return {};
}

OpenedCapture CaptureFile::readHeads(const QString &path, Layout &layout, CaptureFacts *facts) const
{
    OpenedCapture opened;
    const QFileInfo info(path);
    opened.isData = anySuffix || info.suffix() == QLatin1String("cxdat");
    const bool isSettings = info.suffix() == QLatin1String("cxset");
    QFile file(path);
    if (!info.exists()) {
        opened.outcome = {FileResult::NoSuchFile};
    } else if (!info.isFile()) { // opening it may wait for ever
        opened.outcome = {FileResult::NotPlain};
    } else if (!opened.isData && !isSettings) {
        opened.outcome = {FileResult::WrongKind};
    } else if (!file.open(QIODevice::ReadOnly)) {
        opened.outcome = {info.isReadable() ? FileResult::Failed : FileResult::NoRights};
    } else {
        opened.outcome = readSettings(file, layout, opened.settings);
    }
    if (opened.isData && opened.outcome.isDone()) {
        DataBlocksFound found;
        const auto result = file.seek(layout.headSize) ? checkDataBlocks(file, layout.chnCount, false, found)
                                                       : DataBlocksResult::DeviceError;
        opened.outcome = outcomeOf(result, found);
        layout.bytes = found.bytes;
        if (opened.outcome.isDone() && facts != nullptr && !readFacts(file, found, *facts)) {
            opened.outcome = {FileResult::Failed};
        }
    }
    if (!opened.outcome.isDone()) {
        opened.settings.reset();
    }
    return opened;
}

OpenedCapture CaptureFile::check(const QString &path, CaptureFacts *facts) const
{
    Layout layout;
    return readHeads(path, layout, facts);
}

OpenedCapture CaptureFile::open(const QString &path, const SmpData *former) const
{
    Layout layout;
    OpenedCapture opened = readHeads(path, layout);
    if (!opened.outcome.isDone() || !opened.isData) {
        return opened;
    }
    const std::int64_t room = memBudget.load(std::memory_order_relaxed);
    const bool fits = layout.bytes <= room || layout.bytes <= smallCapture;
    if (fits || layout.bytes <= room + bytesOf(former)) {
        load(path, layout, fits, opened);
    } else {
        opened.outcome = {FileResult::NoMemory};
    }
    if (!opened.outcome.isDone()) {
        opened.settings.reset();
        opened.capture.reset();
    }
    return opened;
}

void CaptureFile::load(const QString &path, const Layout &layout, bool keep, OpenedCapture &opened) const
{
    auto capture = std::make_unique<SmpData>(layout.chnCount, 0);
    {
        DataFile job(capture.get(), m_dialogs);
        job.checksOnly = !keep;
        job.mayGoOn = mayGoOn;
        static_cast<void>(job.loadData(path, layout.headSize)); // told by the outcome
        opened.outcome = outcomeOf(job.outcome(), job.found());
    }
    if (keep) {
        opened.capture = std::move(capture);
    }
}

FileOutcome CaptureFile::write(DataFile &job, const QString &path, const CapturePart &part, int mode,
                               const QByteArray &head) const
{
    if (job.smpData->sampleCount() < 1 || part.channels.size() != std::size_t(job.smpData->chnCount)) {
        return {FileResult::NoCapture};
    }
    FileReplacement target(path);
    const WriteFault begun = target.begin();
    if (begun != WriteFault::None) {
        return {fileResultOf(begun)};
    }
    const auto kind = DataFile::Mode(mode);
    job.file.setFileName(target.partPath());
    if (!job.file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text)) {
        return {fileResultOf(writeFaultOf(job.file))};
    }
    const bool headWritten = job.file.write(head) == head.size() && job.file.flush();
    job.file.setTextModeEnabled(kind == DataFile::Mode::ExportText);
    job.chnSelect = part.channels.data();
    job.setRange(part.start, part.end);
    job.syncs = true;
    job.mayGoOn = mayGoOn;
    if (headWritten && job.runJob(kind)) {
        job.file.close();
        return {fileResultOf(target.finish())};
    }
    const WriteFault fault = headWritten ? job.fault() : writeFaultOf(job.file);
    const FileResult result = fault != WriteFault::None ? fileResultOf(fault) : resultOf(job.outcome());
    job.file.close();
    if (keepsPart) {
        target.keepPart();
    }
    return {result};
}

FileOutcome CaptureFile::save(const QString &path, SmpData &data, const CapturePart &part,
                              const ConfigDocument &settings) const
{
    const std::optional<QByteArray> block = settings.block();
    if (!block) {
        return tooLong(settings);
    }
    DataFile job(&data, m_dialogs);
    return write(job, path, part, int(DataFile::Mode::SaveData), *block);
}

FileOutcome CaptureFile::saveSettings(const QString &path, const ConfigDocument &settings)
{
    const std::optional<QByteArray> block = settings.block();
    return block ? FileOutcome{fileResultOf(replaceTextFile(path, *block))} : tooLong(settings);
}

FileOutcome CaptureFile::exportTo(const QString &path, SmpData &data, const CapturePart &part, ExportKind kind) const
{
    DataFile job(&data, m_dialogs);
    const auto mode = kind == ExportKind::Binary ? DataFile::Mode::ExportBinary : DataFile::Mode::ExportText;
    return write(job, path, part, int(mode), {});
}
