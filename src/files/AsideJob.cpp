#include "files/AsideJob.h"

#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <memory>
#include <thread>
#include <utility>

AsideJob::AsideJob(JobDialogFactory dialogs, Kind kind) : m_dialogs(std::move(dialogs)), m_kind(kind) {}

void AsideJob::run(const std::function<void(const GoesOn &goesOn)> &work)
{
    constexpr int all = 100;
    std::atomic<bool> cancelled{false};
    QObject receiver; // of the reports: none arrives any more once it is gone
    int reached = 0;
    std::unique_ptr<JobDialog> dialog;
    const auto showProgress = [&](int percent) {
        reached = percent;
        if (dialog) {
            dialog->setProgress(percent);
        }
    };
    connect(this, &AsideJob::sigProgress, &receiver, showProgress, Qt::QueuedConnection);
    QEventLoop quiet;
    connect(this, &AsideJob::sigEnded, &quiet, &QEventLoop::quit, Qt::QueuedConnection);
    std::thread thread([&] {
        int told = 0;
        work([&](double share) {
            const int percent = std::clamp(int(share * all), 0, all - 1);
            if (percent != std::exchange(told, percent)) {
                emit sigProgress(percent);
            }
            return !cancelled.load(std::memory_order_relaxed);
        });
        emit sigProgress(all);
        emit sigEnded();
    });
    if (m_dialogs) {
        QTimer::singleShot(dialogDelay, &quiet, &QEventLoop::quit);
        quiet.exec(QEventLoop::ExcludeUserInputEvents);
        if (reached < all) {
            dialog = makeJobDialog(m_dialogs, m_kind == Kind::Load);
            dialog->setProgress(reached);
            cancelled.store(!dialog->exec(), std::memory_order_relaxed);
        }
    }
    thread.join();
}
