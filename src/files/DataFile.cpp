#include "files/DataFile.h"

#include "files/DataBlocks.h"
#include "files/DataExport.h"
#include "store/SmpData.h"

#include <QEventLoop>
#include <QFileInfo>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr std::int64_t loadProgressUnit = 5'000'000;   ///< bytes
constexpr std::int64_t saveProgressUnit = 1'000'000;   ///< entries
constexpr std::int64_t binaryProgressUnit = 2'000'000; ///< samples
constexpr std::int64_t textProgressUnit = 20'000;      ///< entries

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
    m_outcome = DataBlocksResult::DeviceError;
    bool loaded = false;
    if (openForLoad(path, headSize)) {
        const std::int64_t size = file.size();
        // Who holds a lease may be long in leaving: the window does not stand still for it.
        const bool aside = size >= backgroundLoadSize / asidePart || smpData->leaseCount() > 0;
        loaded = aside ? runOnThread(Mode::Load, size >= backgroundLoadSize) : loadBlocks();
    }
    file.close();

    if (loaded && !checksOnly) {
        smpData->finish(smpData->smpCount());
    } else if (m_storeTouched || !smpData->complete()) {
        smpData->clear();
    }
    smpData->readmit();
    result.store(loaded, std::memory_order_release);
    return loaded;
}

bool DataFile::afterPiece(int percent)
{
    if (mayGoOn && !mayGoOn()) {
        return false;
    }
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
    const DataPieceHook afterEach = [this, size](std::int64_t position) {
        return afterPiece(percentOf(position, size, loadProgressUnit));
    };
    m_found = {};
    m_outcome = checksOnly ? checkDataBlocks(file, smpData->chnCount, true, m_found, afterEach)
                           : readDataBlocks(file, *smpData, afterEach, &m_found);
    m_storeTouched = m_outcome != DataBlocksResult::HeadRefused && m_outcome != DataBlocksResult::OtherModel &&
                     m_outcome != DataBlocksResult::StoreKept;
    if (m_outcome != DataBlocksResult::Stopped && m_outcome != DataBlocksResult::StoreKept) {
        emit sigReportProgress(100);
    }
    return m_outcome == DataBlocksResult::Done;
}

template<class Write>
bool DataFile::writeJob(std::int64_t total, std::int64_t unit, const Write &write)
{
    progress = 0;
    m_outcome = DataBlocksResult::DeviceError;
    m_fault = WriteFault::None;
    const SmpReadLock lock(smpData);
    if (lock && file.isWritable()) {
        m_outcome = write(DataPieceHook([this, total, unit](std::int64_t done) {
            // What does not reach the system shows at the end, as the file's error.
            return file.flush() && afterPiece(percentOf(done, total, unit));
        }));
        // What came without a piece, such as the head of a file without blocks, may still be in the buffer.
        if (!file.flush() || file.error() != QFileDevice::NoError) {
            m_fault = writeFaultOf(file);
        } else if (m_outcome == DataBlocksResult::Done && syncs) {
            m_fault = syncToDisk(file);
        }
        m_outcome = m_fault == WriteFault::None ? m_outcome : DataBlocksResult::DeviceError;
    }
    if (m_outcome != DataBlocksResult::Stopped) {
        emit sigReportProgress(100);
    }
    return m_outcome == DataBlocksResult::Done;
}

bool DataFile::saveData()
{
    return writeJob(workTotal, saveProgressUnit, [this](const DataPieceHook &afterEach) {
        return writeDataBlocks(file, *smpData, {chnSelect, posStart, posEnd}, afterEach);
    });
}

bool DataFile::exportBinary()
{
    return writeJob(smpTotal, binaryProgressUnit, [this](const DataPieceHook &afterEach) {
        return writeBinaryExport(file, *smpData, {chnSelect, posStart, posEnd}, afterEach);
    });
}

bool DataFile::exportText()
{
    m_header = textExportHeader(chnSelect, smpData->chnCount);
    return writeText();
}

bool DataFile::writeText()
{
    return writeJob(workTotal, textProgressUnit, [this](const DataPieceHook &afterEach) {
        return writeTextExport(file, *smpData, {chnSelect, posStart, posEnd}, m_header, afterEach);
    });
}

std::int64_t DataFile::sizeOf(Mode job, std::int64_t &limit)
{
    limit = job == Mode::ExportBinary ? backgroundBinarySamples
            : job == Mode::ExportText ? backgroundTextEntries
                                      : backgroundSaveEntries;
    const std::int64_t entries = edgeTotal(); // which the progress needs as well
    return job == Mode::ExportBinary ? smpTotal : entries;
}

bool DataFile::runJob(Mode job)
{
    if (job != Mode::SaveData && job != Mode::ExportBinary && job != Mode::ExportText) {
        return false;
    }
    std::int64_t limit = 0;
    const std::int64_t size = sizeOf(job, limit);
    // A dump of few samples can still hold a change at each of them.
    if (size >= limit / asidePart || workTotal >= backgroundSaveEntries / asidePart) {
        return runOnThread(job, size >= limit);
    }
    return job == Mode::ExportBinary ? exportBinary() : job == Mode::ExportText ? exportText() : saveData();
}

bool DataFile::runWithDialog(Mode job)
{
    return runOnThread(job, true);
}

std::unique_ptr<JobDialog> DataFile::makeDialog() const
{
    if (!m_dialogs) {
        return {};
    }
    return makeJobDialog(m_dialogs, mode == Mode::Load);
}

bool DataFile::runOnThread(Mode job, bool dialogAtOnce)
{
    mode = job;
    background = true;
    cancelled.store(0, std::memory_order_relaxed);
    if (job == Mode::ExportText) {
        m_header = textExportHeader(chnSelect, smpData->chnCount);
    }

    // The reports arrive queued, and none any more once `receiver` is gone.
    QObject receiver;
    int reached = 0;
    std::unique_ptr<JobDialog> dialog;
    if (dialogAtOnce) {
        dialog = makeDialog();
    }
    const auto showProgress = [&dialog, &reached](int percent) {
        reached = percent;
        if (dialog) {
            dialog->setProgress(percent);
        }
    };
    connect(this, &DataFile::sigReportProgress, &receiver, showProgress, Qt::QueuedConnection);

    const bool waitsQuietly = !dialogAtOnce && m_dialogs;
    QEventLoop quiet;
    if (waitsQuietly) {
        // The thread's last report arrives before its end does. A short job may end before the loop runs.
        connect(this, &DataFile::sigJobEnded, &quiet, &QEventLoop::quit, Qt::QueuedConnection);
    }
    start();
    if (waitsQuietly) {
        QTimer::singleShot(dialogDelay, &quiet, &QEventLoop::quit);
        quiet.exec(QEventLoop::ExcludeUserInputEvents);
        if (reached < 100) {
            dialog = makeDialog();
        }
        if (dialog) {
            dialog->setProgress(reached);
        }
    }
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
    case Mode::ExportBinary:
        done = exportBinary();
        break;
    case Mode::ExportText:
        done = writeText();
        break;
    default:
        emit sigReportProgress(100); // so that the dialog closes
        break;
    }
    emit sigJobEnded();
    result.store(done, std::memory_order_release);
}
