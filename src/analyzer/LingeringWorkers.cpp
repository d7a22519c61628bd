#include "analyzer/LingeringWorkers.h"

#include "store/SmpData.h"
#include "store/SmpLease.h"

#include <QDeadlineTimer>
#include <QThread>

#include <algorithm>
#include <functional>
#include <utility>

namespace {

constexpr int lookStep = 50;            // ms, between two looks
constexpr unsigned long lastStep = 10;  // ms, the same when there is no event loop any more
constexpr int othersPatience = 10;      // ms, with others who hold a lease and are told to leave
constexpr unsigned long othersStep = 1; // ms

} // namespace

LingeringWorkers::LingeringWorkers()
{
    m_timer.setInterval(lookStep);
    connect(&m_timer, &QTimer::timeout, this, &LingeringWorkers::look);
}

LingeringWorkers::~LingeringWorkers()
{
    for (std::unique_ptr<SmpLease> &lease : m_heldForEver) { // of a store that others still read
        AnalyzerItem holder;
        holder.capture = std::move(lease);
        keepForEver(std::move(holder));
    }
}

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

std::vector<std::unique_ptr<SmpLease> *> LingeringWorkers::leasesOf(const SmpData &capture)
{
    std::vector<std::unique_ptr<SmpLease> *> leases;
    const auto addIfOf = [&](std::unique_ptr<SmpLease> &lease) {
        if (lease && lease->isOf(capture)) {
            leases.push_back(&lease);
        }
    };
    for (const Entry &entry : m_workers) {
        addIfOf(entry.worker->item.capture);
    }
    for (std::unique_ptr<SmpLease> &lease : m_heldForEver) {
        addIfOf(lease);
    }
    return leases;
}

void LingeringWorkers::giveUp(SmpData &capture)
{
    const auto leases = leasesOf(capture);
    if (leases.empty()) {
        return; // also where all of them were given the last one: the next one may be filled by now
    }
    capture.closeToReaders();
    const QDeadlineTimer until(othersPatience);
    while (capture.leaseCount() > int(leases.size())) {
        if (until.hasExpired()) {
            return; // others still read it: who writes waits for them, and for these
        }
        QThread::msleep(othersStep);
    }
    const std::shared_ptr<const void> trees = capture.leaveBehind();
    for (const Entry &entry : m_workers) {
        AnalyzerItem &item = entry.worker->item;
        if (item.capture && item.capture->isOf(capture)) {
            item.givenUp = trees; // until it leaves
        }
    }
    for (std::unique_ptr<SmpLease> *lease : leases) {
        lease->reset();
    }
    if (std::erase(m_heldForEver, nullptr) > 0) {
        AnalyzerItem holder;
        holder.givenUp = trees;
        keepForEver(std::move(holder));
    }
}
