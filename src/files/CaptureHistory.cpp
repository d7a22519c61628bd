#include "files/CaptureHistory.h"

#include "files/DataBlocks.h"
#include "files/GivingWay.h"
#include "settings/ConfigDocument.h"
#include "settings/FileReplacement.h"
#include "settings/Language.h"
#include "store/SmpData.h"

#include <QFile>
#include <QStorageInfo>

#include <utility>

namespace {

/// What is left free on a disk, bytes: the history is the last that may fill it.
constexpr std::int64_t roomToSpare = std::int64_t(64) << 20;

/// What the file of a capture takes beside its settings, bytes; a little more than that.
std::int64_t fileBytes(const SmpData &data)
{
    std::int64_t bytes = DataFileHead::size;
    for (int chn = 0; chn < data.chnCount; ++chn) {
        bytes += DataBlockHead::size + data.entryCount(chn) * dataEntrySize;
    }
    return bytes;
}

} // namespace

/// One thing that the thread is asked to do: to write a capture, or without one to look into the folder.
struct CaptureHistory::Job {
    unsigned number = 0; ///< of the capture
    std::shared_ptr<GivingWay> way;
    QByteArray settings;
    QString model;
    QDateTime time;
    HistoryLimits limits;
    QVector<PictureRow> picture{};
};

CaptureHistory::CaptureHistory(const HistoryFolder &folder, QObject *parent)
    : QObject(parent),
      roomLeft([](const QString &path) { return std::int64_t(QStorageInfo(path).bytesAvailable()); }),
      m_folder(folder)
{}

CaptureHistory::~CaptureHistory()
{
    m_ending = true;
    {
        const std::lock_guard lock(m_mutex);
        m_changed.notify_all();
    }
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void CaptureHistory::keep(const Capture &capture, const ConfigDocument &settings)
{
    const std::optional<QByteArray> block = settings.block();
    if (!block) {
        {
            const std::lock_guard lock(m_mutex);
            m_lastNumber = ++m_number;
            m_last = {KeptState::Failed, FileResult::SettingsTooLong};
        }
        emit sigChanged();
        return;
    }
    const std::int64_t samples = capture.data == nullptr ? 0 : capture.data->sampleCount();
    if (samples > 0) {
        post(std::make_unique<Job>(
            Job{++m_number, GivingWay::on(capture.data), *block, capture.model, capture.time, capture.limits}));
    }
}

void CaptureHistory::stayWith(const SmpData *data)
{
    const std::lock_guard lock(m_mutex);
    for (const auto &job : m_jobs) {
        if (job->way && job->way->data() == data) {
            job->way->stay();
        }
    }
}

void CaptureHistory::refresh()
{
    post(std::make_unique<Job>());
}

bool CaptureHistory::finish(std::chrono::milliseconds most)
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, most, [this] { return m_jobs.empty(); });
}

QVector<HistoryEntry> CaptureHistory::entries() const
{
    const std::lock_guard lock(m_mutex);
    return m_entries;
}

CaptureHistory::Told CaptureHistory::last() const
{
    const std::lock_guard lock(m_mutex);
    return m_last;
}

void CaptureHistory::post(std::unique_ptr<Job> job)
{
    const std::lock_guard lock(m_mutex);
    m_jobs.push_back(std::move(job));
    m_changed.notify_all();
    if (!m_thread.joinable()) {
        m_thread = std::thread([this] { run(); });
    }
}

void CaptureHistory::run()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_ending || !m_jobs.empty(); });
        if (m_ending) {
            return;
        }
        Job &job = *m_jobs.front(); // others are only added behind it
        Told told;
        lock.unlock();
        if (job.way) {
            told = write(job);
            m_folder.tidy(job.limits);
        }
        QVector<HistoryEntry> entries = m_folder.list();
        lock.lock();
        m_entries = std::move(entries);
        if (job.number > m_lastNumber) { // a later one may have failed without waiting for its turn
            m_lastNumber = job.number;
            m_last = told;
        }
        std::unique_ptr<Job> done = std::move(m_jobs.front());
        m_jobs.pop_front();
        m_changed.notify_all();
        lock.unlock();
        done.reset();
        emit sigChanged(); // queued for all on the main thread
        lock.lock();
    }
}

CaptureHistory::Told CaptureHistory::write(Job &job)
{
    if (!m_folder.make()) {
        job.way->release();
        return {KeptState::Failed, FileResult::NoRights};
    }
    const QString path = m_folder.newPath(job.time, job.model);
    FileReplacement target(path, QStringLiteral(".part"));
    const WriteFault begun = target.begin();
    Told told{begun == WriteFault::None ? KeptState::Kept : KeptState::Failed, fileResultOf(begun)};
    if (told.state == KeptState::Kept) {
        told = writeTo(target.partPath(), job);
    }
    job.way->release(); // the disk may take its time from here on
    if (told.state == KeptState::Kept) {
        const WriteFault fault = target.finish();
        told = {fault == WriteFault::None ? KeptState::Kept : KeptState::Failed, fileResultOf(fault)};
    }
    if (told.state == KeptState::Kept) {
        m_folder.putPicture(path, job.picture);
    }
    return told;
}

CaptureHistory::Told CaptureHistory::writeTo(const QString &path, Job &job)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text | QIODevice::Unbuffered)) {
        return {KeptState::Failed, fileResultOf(writeFaultOf(file))};
    }
    const bool headWritten = file.write(job.settings) == job.settings.size();
    file.setTextModeEnabled(false);
    const std::int64_t room = roomLeft(m_folder.path());
    if (!headWritten || !job.way->enter()) {
        return headWritten ? Told{KeptState::GaveWay} : Told{KeptState::Failed, fileResultOf(writeFaultOf(file))};
    }
    const SmpData &data = *job.way->data();
    const std::int64_t bytes = fileBytes(data);
    if (bytes > job.limits.bytes || room < bytes + roomToSpare) {
        job.way->leave();
        return bytes > job.limits.bytes ? Told{KeptState::TooLarge} : Told{KeptState::Failed, FileResult::DiskFull};
    }
    job.picture = pictureOf(data);
    const std::vector<std::uint8_t> all(std::size_t(data.chnCount), 1);
    GivingWayFile out(file, *job.way, [this] { return !m_ending; });
    static_cast<void>(out.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    const DataBlocksResult result = writeDataBlocks(out, data, {all.data(), 0, data.smpCount() - 1});
    job.way->leave(); // unless the file has not come back to the capture
    if (result == DataBlocksResult::DeviceError) {
        return out.isGood() ? Told{KeptState::GaveWay} : Told{KeptState::Failed, fileResultOf(writeFaultOf(file))};
    }
    return result == DataBlocksResult::Done ? Told{} : Told{KeptState::Failed, FileResult::NoMemory};
}

QString historyReason(const CaptureHistory::Told &told)
{
    switch (told.state) {
    case KeptState::Kept:
        return {};
    case KeptState::GaveWay:
        return ::tr("The next capture began before it was written.");
    case KeptState::TooLarge:
        return ::tr("It is larger than the history may be.");
    case KeptState::Failed:
        break;
    }
    return fileReason({told.result});
}
