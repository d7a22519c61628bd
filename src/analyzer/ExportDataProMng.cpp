#include "analyzer/ExportDataProMng.h"

#include "analyzer/DisplayFormat.h"
#include "analyzer/PluginCall.h"

#include <QFile>
#include <QFileInfo>

#include <array>
#include <cerrno>
#include <corvanlux/analyzer/AnalyzerResults.h>
#include <system_error>

namespace {

/// What the decoder says of its last export; empty for nothing.
QString exportError(const AnalyzerResults &results)
{
    std::array<char, 512> text{};
    results.GetExportError(text.data(), text.size());
    return QString::fromLocal8Bit(text.data());
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

/// Decoders tell the kind of a file from the ending of its name: the part has that of the file.
QString partEnding(const QString &fileName)
{
    const QString suffix = QFileInfo(fileName).suffix();
    return suffix.isEmpty() ? QStringLiteral(".part") : QStringLiteral(".part.") + suffix;
}

} // namespace

ExportDataProMng::ExportDataProMng(AnalyzerResults *exported, ResultsGate &gate) : results(exported), m_pass(gate)
{
    connect(this, &ExportDataProMng::sigQuit, this, &ExportDataProMng::slotQuit, Qt::QueuedConnection);
}

ExportDataProMng::~ExportDataProMng()
{
    join();
}

void ExportDataProMng::join()
{
    wait();
    (void)m_left.load(std::memory_order_acquire);
}

void ExportDataProMng::cancel()
{
    m_cancelled.store(true, std::memory_order_relaxed);
    results->CancelExport();
}

void ExportDataProMng::slotQuit()
{
    join();
    emit sigDeleteExportDataProMng();
}

ExportOutcome ExportDataProMng::write()
{
    if (!*m_pass) {
        return {true, WriteFault::None, {}};
    }
    FileReplacement target(fileName, partEnding(fileName));
    WriteFault fault = target.begin();
    if (fault != WriteFault::None) {
        return {false, fault, {}};
    }
    const QByteArray path = QFile::encodeName(target.partPath());
    QString words =
        pluginFault([&] { results->BuildExportFile(path.constData(), displayBaseOf(displayBase), exportType); });
    if (words.isEmpty()) {
        words = exportError(*results);
    }
    m_pass.reset(); // what is left to do needs the disk alone
    if (m_cancelled.load(std::memory_order_relaxed)) {
        return {true, WriteFault::None, {}};
    }
    fault = words.isEmpty() ? target.finish() : faultOf(words);
    return {false, fault, words};
}

void ExportDataProMng::run()
{
    m_outcome = write();
    m_pass.reset();
    emit sigQuit();
    m_left.store(true, std::memory_order_release);
}
