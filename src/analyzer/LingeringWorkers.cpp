#include "analyzer/LingeringWorkers.h"

#include "store/SmpData.h"
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
    m_workers.push_back({++m_lastNumber, std::make_unique<LingeringWorker>(decoder, std::move(item))});
    m_timer.start();
    return m_lastNumber;
}

void LingeringWorkers::hold(LingeringWorker &worker)
{
    if (worker.item.capture) {
        m_heldForEver.push_back(std::move(worker.item.capture));
    }
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
            hold(*entry->worker);
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

void LingeringWorkers::giveUp(SmpData &capture)
{
    const bool isHeld = std::any_of(m_workers.begin(), m_workers.end(),
                                    [](const Entry &entry) { return entry.worker->item.capture != nullptr; });
    if (!isHeld && m_heldForEver.empty()) {
        return; // also where all of them were given the last one: the next one may be filled by now
    }
    const std::shared_ptr<const void> trees = capture.leaveBehind();
    if (!m_heldForEver.empty()) {
        AnalyzerItem holder;
        holder.givenUp = trees;
        keepForEver(std::move(holder));
        m_heldForEver.clear();
    }
    for (const Entry &entry : m_workers) {
        AnalyzerItem &item = entry.worker->item;
        if (item.capture) {
            item.givenUp = trees; // until it leaves
            item.capture.reset();
        }
    }
}
