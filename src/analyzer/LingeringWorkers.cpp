#include "analyzer/LingeringWorkers.h"

#include "store/SmpLease.h"

#include <QThread>

#include <algorithm>
#include <functional>
#include <utility>

namespace {

constexpr int lookStep = 50;           // ms, between two looks
constexpr unsigned long lastStep = 10; // ms, the same when there is no event loop any more

} // namespace

LingeringWorkers::LingeringWorkers()
{
    m_timer.setInterval(lookStep);
    connect(&m_timer, &QTimer::timeout, this, &LingeringWorkers::look);
}

LingeringWorkers::~LingeringWorkers() = default;

quint64 LingeringWorkers::add(const QString &decoder, AnalyzerItem item)
{
    if (item.capture) {
        item.capture->resign();
    }
    m_workers.push_back({++m_lastNumber, std::make_unique<LingeringWorker>(decoder, std::move(item))});
    m_timer.start();
    return m_lastNumber;
}

void LingeringWorkers::look()
{
    using State = LingeringWorker::State;
    std::vector<std::function<void()>> tellings; // behind the walk: who is told may add another one
    for (auto entry = m_workers.begin(); entry != m_workers.end();) {
        const State state = entry->worker->look();
        const QString name = entry->worker->name;
        const quint64 number = entry->number;
        if (state != State::Ended && !entry->isOverdue && entry->worker->isOverdue()) {
            entry->isOverdue = true;
            tellings.emplace_back([this, number, name] { emit overdue(number, name); });
        }
        if (state == State::Waiting) {
            ++entry;
            continue;
        }
        if (state == State::LeftBehind) {
            tellings.emplace_back([this, name] { emit leftBehind(name); });
        } else if (!entry->isOverdue) {
            tellings.emplace_back([this, number] { emit ended(number); });
        }
        entry = m_workers.erase(entry);
    }
    if (m_workers.empty()) {
        m_timer.stop();
    }
    for (const std::function<void()> &telling : tellings) {
        telling();
    }
}

void LingeringWorkers::endAll()
{
    for (look(); !m_workers.empty(); look()) {
        QThread::msleep(lastStep);
    }
}
