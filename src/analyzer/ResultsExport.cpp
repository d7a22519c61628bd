#include "analyzer/ResultsExport.h"

#include "analyzer/DisplayFormat.h"
#include "analyzer/PluginCall.h"

#include <QFile>
#include <QFileInfo>

#include <array>
#include <cerrno>
#include <corvanlux/analyzer/AnalyzerResults.h>
#include <system_error>
#include <utility>

namespace {

/// What the decoder says of its last export; empty for nothing.
QString exportError(const AnalyzerResults &results)
{
    std::array<char, 512> text{};
    results.GetExportError(text.data(), text.size());
#ifdef Q_OS_WIN
    return QString::fromUtf8(text.data()); // it names the file
#else
    return QString::fromLocal8Bit(text.data());
#endif
}

/// A path as decoders take it.
QByteArray exportPath(const QString &path)
{
#ifdef Q_OS_WIN
    return path.toUtf8();
#else
    return QFile::encodeName(path);
#endif
}

/// The words end with the system's own for what went wrong.
WriteFault faultOf(const QString &words)
{
    const auto endsWith = [&words](int code) {
        return words.endsWith(QString::fromStdString(std::generic_category().message(code)));
    };
    if (endsWith(ENOSPC) || endsWith(EFBIG)) {
        return WriteFault::DiskFull;
    }
#ifdef EDQUOT
    if (endsWith(EDQUOT)) {
        return WriteFault::DiskFull;
    }
#endif
    return endsWith(EACCES) || endsWith(EPERM) || endsWith(EROFS) ? WriteFault::NoRights : WriteFault::Other;
}

/// Decoders tell the kind of a file from the ending of its name: the part has that of the file. No two exports have the
/// same part: one that was left behind removes its own whenever it comes back.
QString partEnding(const QString &fileName)
{
    static std::atomic<unsigned> exports{0};
    const QString suffix = QFileInfo(fileName).suffix();
    const QString ending = QStringLiteral("-%1.part").arg(exports.fetch_add(1, std::memory_order_relaxed));
    return suffix.isEmpty() ? ending : ending + QLatin1Char('.') + suffix;
}

} // namespace

ResultsExport::ResultsExport(AnalyzerResults *results, ResultsGate &gate, Task task, std::function<void()> over)
    : m_task(std::move(task)), m_gate(gate), m_results(results), m_over(std::move(over))
{
    m_reader->setLong(true);
}

void ResultsExport::cancel()
{
    m_cancelled.store(true, std::memory_order_relaxed);
    m_reader->setLong(false);
    const std::lock_guard lock(m_mutex);
    if (m_results != nullptr) {
        m_results->CancelExport();
    }
    if (!m_pass) {
        m_results = nullptr; // nobody waits for this one before they go
    }
}

double ResultsExport::progress()
{
    const std::lock_guard lock(m_mutex);
    return m_results != nullptr ? m_results->GetProgress() : 1.0;
}

bool ResultsExport::waitForEnd(std::chrono::milliseconds most)
{
    std::unique_lock lock(m_mutex);
    return m_ended.wait_for(lock, most, [this] { return m_isOver; });
}

void ResultsExport::abandon()
{
    cancel();
    const std::lock_guard lock(m_mutex);
    m_over = nullptr;
    if (!m_partPath.isEmpty()) {
        QFile::remove(m_partPath); // its thread may never come to it
    }
}

bool ResultsExport::enterResults()
{
    const std::lock_guard lock(m_mutex);
    if (m_results != nullptr) {
        m_pass.emplace(m_gate, m_reader);
        if (!*m_pass) {
            m_results = nullptr;
        }
    }
    return m_results != nullptr;
}

void ResultsExport::leaveResults()
{
    const std::lock_guard lock(m_mutex);
    m_results = nullptr;
    m_partPath.clear();
    m_pass.reset();
}

QString ResultsExport::build(const QString &partPath)
{
    AnalyzerResults *results = nullptr;
    {
        const std::lock_guard lock(m_mutex);
        results = m_results;
        m_partPath = partPath;
    }
    const QByteArray path = exportPath(partPath);
    QString words;
    const bool hasPass = m_reader->inside(results, [&] {
        words = pluginFault(
            [&] { results->BuildExportFile(path.constData(), displayBaseOf(m_task.displayBase), m_task.exportType); });
        if (words.isEmpty()) {
            words = exportError(*results);
        }
    });
    if (!hasPass) {
        m_cancelled.store(true, std::memory_order_relaxed); // its results are being replaced
    }
    return words;
}

ExportOutcome ResultsExport::write()
{
    FileReplacement target(m_task.fileName, partEnding(m_task.fileName));
    WriteFault fault = target.begin();
    if (fault != WriteFault::None) {
        return {false, fault, {}};
    }
    if (!enterResults()) {
        return {true, WriteFault::None, {}};
    }
    const QString words = build(target.partPath());
    leaveResults(); // what is left to do needs the disk alone
    if (m_cancelled.load(std::memory_order_relaxed)) {
        return {true, WriteFault::None, {}};
    }
    fault = words.isEmpty() ? target.finish() : faultOf(words);
    return {false, fault, words};
}

void ResultsExport::run()
{
    const ExportOutcome outcome = write();
    leaveResults();
    const std::lock_guard lock(m_mutex);
    m_outcome = outcome;
    m_isOver = true;
    m_ended.notify_all();
    if (m_over) {
        m_over();
    }
}
