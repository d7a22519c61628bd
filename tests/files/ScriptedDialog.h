#pragma once

#include "files/DataFile.h"
#include "files/DataFileBytes.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QStringList>

#include <functional>
#include <memory>
#include <thread>
#include <vector>

/// What the scripted dialogs of one test have seen. Main thread.
struct DialogLog {
    QStringList texts;        ///< title, label and button of each
    std::vector<int> reports; ///< all percentages, in the order of their arrival
    bool wrongThread = false; ///< a report that did not arrive on the main thread
    int open = 0;             ///< dialogs that live
};

/// A dialog that does in exec() what the test says.
class ScriptedDialog : public JobDialog {
public:
    using Script = std::function<bool(ScriptedDialog &)>;

    ScriptedDialog(DialogLog &log, Script script) : m_log(log), m_script(std::move(script)) { ++m_log.open; }
    ~ScriptedDialog() override { --m_log.open; }
    ScriptedDialog(const ScriptedDialog &) = delete;
    ScriptedDialog &operator=(const ScriptedDialog &) = delete;

    void setProgress(int percent) override
    {
        m_log.wrongThread |= QThread::currentThread() != QCoreApplication::instance()->thread();
        m_log.reports.push_back(percent);
        if (percent == 100) {
            m_loop.exit();
        }
    }
    bool exec() override { return m_script(*this); }
    /// Processes events until 100 has arrived.
    bool runToTheEnd()
    {
        m_loop.exec();
        return true;
    }

private:
    DialogLog &m_log;
    Script m_script;
    QEventLoop m_loop;
};

inline JobDialogFactory scripted(DialogLog &log, ScriptedDialog::Script script)
{
    return [&log, script](const QString &title, const QString &label, const QString &button) {
        log.texts << title << label << button;
        return std::make_unique<ScriptedDialog>(log, script);
    };
}

inline const ScriptedDialog::Script acceptAtTheEnd = [](ScriptedDialog &dialog) { return dialog.runToTheEnd(); };

/// Brings the dialog's rejection and a certain report of the job together.
class Crossing {
public:
    /// A dialog that is rejected as soon as the job stands in its report.
    [[nodiscard]] ScriptedDialog::Script script()
    {
        return [this](ScriptedDialog &) {
            while (!m_inReport) {
                std::this_thread::yield();
            }
            return false;
        };
    }
    /// On the job's thread, within a report: goes on only when the main thread has cancelled the job.
    void holdUntilCancelled(const DataFile &file)
    {
        m_inReport = true;
        while (file.cancelled.load() == 0) {
            std::this_thread::yield();
        }
    }

private:
    std::atomic<bool> m_inReport{false};
};

/// A small data file's binary part.
inline QByteArray smallPart()
{
    return DataFileBytes(8).block(0, 0, {5, 1000}).bytes();
}

/// A capture of `entries` entries in channel 0, the end mark included.
inline std::unique_ptr<SmpData> captureOf(int entries)
{
    return CaptureBuilder(8).samples(2 * std::int64_t(entries)).channel(0, 0, stairs(1, 2, entries - 1)).build();
}

/// Collects the reports on the thread that makes them; `then` runs there after each.
inline void collect(DataFile &file, std::vector<int> &reports, std::function<void(int)> then = {})
{
    QObject::connect(&file, &DataFile::sigReportProgress, [&reports, then](int percent) {
        reports.push_back(percent);
        if (then) {
            then(percent);
        }
    });
}

/// A file that loads behind the dialog, a little above the limit, and its folder.
class BigFile {
public:
    static constexpr int entries = 10'000'000; ///< all of channel 0, the one at the end included

    BigFile()
        : path(folder.write(
              DataFileBytes(8).samples(2 * std::int64_t(entries)).block(0, 0, stairs(1, 2, entries)).bytes(),
              QStringLiteral("big.cxdat")))
    {}

    FileFolder folder;
    const QString path;
};
