#include "files/DataFile.h"

#include "acquisition/SmpData.h"
#include "app/Language.h"
#include "files/DataBlocks.h"

#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr std::int64_t loadProgressUnit = 5'000'000; ///< bytes
constexpr std::int64_t saveProgressUnit = 1'000'000; ///< entries

/// Within 0 to `limit`; anything that is no number is 0.
double limited(double pos, double limit)
{
    return std::isnan(pos) ? 0.0 : std::clamp(pos, 0.0, limit);
}

} // namespace

DataFile::DataFile(SmpData *data, JobDialogFactory dialogs) : smpData(data), m_dialogs(std::move(dialogs)) {}

DataFile::~DataFile()
{
    cancelled.store(1, std::memory_order_relaxed);
    static_cast<void>(joined());
}

bool DataFile::joined()
{
    wait();
    return result.load(std::memory_order_acquire);
}

int DataFile::percentOf(std::int64_t done, std::int64_t total, std::int64_t unit)
{
    const std::int64_t units = total / unit;
    if (units < 1) {
        return 0;
    }
    return int(std::min<std::int64_t>(done / unit * 100 / units, 99));
}

void DataFile::setRange(double start, double end)
{
    const std::int64_t samples = smpData->sampleCount();
    const double first = limited(start, double(samples));
    const double last = limited(end, double(samples));
    posStart = std::int64_t(std::floor(std::min(first, last)));
    posEnd = std::max(std::int64_t(std::ceil(std::max(first, last))) - 1, posStart);
    smpTotal = posEnd - posStart + 1;
}

std::int64_t DataFile::edgeTotal()
{
    workTotal = 0;
    const SmpReadLock lock(smpData);
    for (int chn = 0; lock && chnSelect != nullptr && chn < smpData->chnCount; ++chn) {
        if (chnSelect[chn] == 0) {
            continue;
        }
        const std::int64_t transitions = smpData->edgeCount(chn, posStart, posEnd);
        if (transitions >= 0) {
            workTotal += transitions + 1;
        }
    }
    return workTotal;
}

bool DataFile::openForLoad(const QString &path, std::int64_t headSize)
{
    file.setFileName(path);
    // Opening what is no plain file may block or read without an end.
    return QFileInfo(path).isFile() && file.open(QIODevice::ReadOnly) && file.seek(headSize);
}

bool DataFile::loadData(const QString &path, std::int64_t headSize)
{
    m_storeTouched = false;
    bool loaded = false;
    if (openForLoad(path, headSize)) {
        background = file.size() >= backgroundLoadSize;
        loaded = background ? runWithDialog(Mode::Load) : loadBlocks();
    }
    file.close();

    if (loaded) {
        smpData->finish(smpData->smpCount);
    } else if (m_storeTouched || !smpData->complete.load(std::memory_order_acquire)) {
        smpData->clear();
    }
    smpData->complete.store(true, std::memory_order_release);
    result.store(loaded, std::memory_order_release);
    return loaded;
}

bool DataFile::afterPiece(int percent)
{
    if (!background) {
        return true;
    }
    if (percent != progress) {
        progress = percent;
        emit sigReportProgress(percent);
    }
    return cancelled.load(std::memory_order_relaxed) == 0;
}

bool DataFile::loadBlocks()
{
    progress = 0;
    const std::int64_t size = file.size();
    const auto outcome = readDataBlocks(file, *smpData, [this, size](std::int64_t position) {
        return afterPiece(percentOf(position, size, loadProgressUnit));
    });
    m_storeTouched = outcome != DataBlocksResult::HeadRefused;
    if (outcome != DataBlocksResult::Stopped) {
        emit sigReportProgress(100);
    }
    return outcome == DataBlocksResult::Done;
}

bool DataFile::saveData()
{
    progress = 0;
    auto outcome = DataBlocksResult::Failed;
    const SmpReadLock lock(smpData);
    if (lock && file.isWritable()) {
        outcome = writeDataBlocks(file, *smpData, {chnSelect, posStart, posEnd}, [this](std::int64_t entries) {
            // What does not reach the system shows at the end, as the file's error.
            return file.flush() && afterPiece(percentOf(entries, workTotal, saveProgressUnit));
        });
        // The head of a file without blocks may still be in the buffer.
        if (!file.flush() || file.error() != QFileDevice::NoError) {
            outcome = DataBlocksResult::Failed;
        }
    }
    if (outcome != DataBlocksResult::Stopped) {
        emit sigReportProgress(100);
    }
    return outcome == DataBlocksResult::Done;
}

bool DataFile::runWithDialog(Mode job)
{
    const bool load = job == Mode::Load;
    mode = job;
    background = true;
    cancelled.store(0, std::memory_order_relaxed);

    // The reports arrive queued, and none any more once `receiver` is gone.
    QObject receiver;
    std::unique_ptr<JobDialog> dialog;
    if (m_dialogs) {
        dialog = m_dialogs(load ? ::tr("Open File") : ::tr("Save File"),
                           (load ? ::tr("Loading file, please wait") : ::tr("Saving file, please wait")) +
                               QStringLiteral("..."),
                           ::tr("Cancel"));
    }
    if (dialog) {
        connect(
            this, &DataFile::sigReportProgress, &receiver, [&dialog](int percent) { dialog->setProgress(percent); },
            Qt::QueuedConnection);
    }

    start();
    if (dialog && !dialog->exec() && isRunning()) {
        cancelled.store(1, std::memory_order_relaxed);
    }
    const bool done = joined();
    background = false;
    return done;
}

void DataFile::run()
{
    bool done = false;
    switch (mode) {
    case Mode::Load:
        done = loadBlocks();
        break;
    case Mode::SaveData:
        done = saveData();
        break;
    default:
        emit sigReportProgress(100); // so that the dialog closes
        break;
    }
    result.store(done, std::memory_order_release);
}
