#include "analyzer/AnalyzerRuns.h"

#include "analyzer/AnalyzerMaker.h"
#include "analyzer/AnalyzerProgMng.h"
#include "analyzer/FaultTeller.h"
#include "analyzer/PluginCall.h"
#include "settings/Language.h"
#include "store/SmpData.h"
#include "store/SmpLease.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int patience = 50;      // ms, that the main thread waits for workers and readers together
constexpr int lastPatience = 10;  // ms of these, for readers behind workers
constexpr int mostRestarts = 100; // that a decoder may ask for; one that never has enough would run for ever

QString doesNotStop()
{
    return ::tr("The decoder does not stop. It is out of use until it is started again.");
}

void destroy(AnalyzerItem &item)
{
    item.progMng.reset();
    (void)pluginFault([&item] { item.analyzer.reset(); });
}

} // namespace

AnalyzerRuns::AnalyzerRuns(const Parts &parts)
    : items(parts.items), m_maker(parts.maker), m_faults(parts.faults), m_gate(parts.gate)
{
    connect(&m_lingering, &LingeringWorkers::ended, this, &AnalyzerRuns::lingeringEnded);
    connect(&m_lingering, &LingeringWorkers::overdue, this, &AnalyzerRuns::lingeringOverdue);
    connect(&m_lingering, &LingeringWorkers::leftBehind, this, [this](const QString &decoder) {
        m_faults.tell(decoder, ::tr("The decoder could not be ended. It is left running until the program ends."));
    });
}

void AnalyzerRuns::setCapture(SmpData *capture, std::uint32_t deviceCode)
{
    stopAll();
    m_capture = capture;
    deviceView = std::make_shared<CaptureView>();
    DeviceCollection &device = deviceView->device;
    device.deviceCode = deviceCode;
    const SmpReadLock lock(capture);
    if (lock) {
        const std::span<const SmpEdgeRoot *const> roots = capture->chnRoots();
        deviceView->roots.assign(roots.begin(), roots.end());
        device.chnRoots = deviceView->roots.data();
        device.smpCount = capture->smpCount();
        device.smpFrequ = capture->smpFrequ();
        device.trgPos = capture->trgPos();
        device.chnCount = capture->chnCount;
    }
}

// ---- runs

void AnalyzerRuns::start(AnalyzerItem &item)
{
    item.fault.clear();
    item.lingering = 0;
    item.runsLater = false;
    run(item, false);
}

void AnalyzerRuns::run(AnalyzerItem &item, bool again)
{
    if (item.lingering != 0 || (!item.progMng->isIdle() && !endWorker(item))) {
        item.runsLater = true;
        return;
    }
    const bool isOther = leaveResults(item);
    item.restarts = again ? item.restarts + 1 : 0;
    // A writer of whom nobody told: its thread waits until the workers have left.
    const auto writerCame = [this] { QMetaObject::invokeMethod(this, "leaveToWriter", Qt::QueuedConnection); };
    item.capture = std::make_unique<SmpLease>(m_capture, writerCame);
    if (!*item.capture) {
        item.capture.reset();
        return;
    }
    emit begins();
    item.view = deviceView;
    const QString fault = pluginFault([&] {
        if (!again || isOther) {
            item.analyzer->Init(&item.view->device, nullptr, item.progMng.get());
        }
        item.analyzer->SetupResults();
        item.analyzer->InitialWorkerThread();
        item.analyzer->StartProcessing();
    });
    if (!fault.isEmpty()) {
        m_faults.fail(item, fault);
    }
    if (item.progMng->isIdle()) {
        letGo(item); // it started no worker
        return;
    }
    emit started();
}

void AnalyzerRuns::letGo(AnalyzerItem &item)
{
    item.progMng->letGo();
    item.capture.reset();
    item.view.reset();
}

bool AnalyzerRuns::endWorker(AnalyzerItem &item)
{
    return endWorker(item, workersEnd());
}

QDeadlineTimer AnalyzerRuns::workersEnd() const
{
    return m_gate.isWanted() ? m_changeEnd : QDeadlineTimer(patience - lastPatience);
}

bool AnalyzerRuns::endWorker(AnalyzerItem &item, const QDeadlineTimer &until)
{
    item.progMng->askToStop();
    if (!item.progMng->waitParked(int(until.remainingTime()))) {
        takeOut(item);
        return false;
    }
    letGo(item);
    return true;
}

void AnalyzerRuns::stop(AnalyzerItem &item)
{
    item.runsLater = false;
    endWorker(item);
}

void AnalyzerRuns::stopAll()
{
    for (AnalyzerItem &item : items) {
        item.runsLater = false;
        if (!item.progMng->isIdle()) {
            item.progMng->askToStop(); // all at once
        }
    }
    const QDeadlineTimer until = workersEnd(); // of all
    for (AnalyzerItem &item : items) {
        endWorker(item, until);
    }
}

void AnalyzerRuns::endAll()
{
    for (AnalyzerItem &item : items) {
        item.progMng->askToStop(); // all at once
    }
    const QDeadlineTimer until = workersEnd(); // of all
    for (AnalyzerItem &item : items) {
        if (item.progMng->waitParked(int(until.remainingTime()))) {
            drop(item);
        } else {
            m_lingering.add(QString(), std::move(item));
        }
    }
    items.clear(); // none of them waits for one of those
    m_lingering.endAll();
    for (AnalyzerItem &item : m_read) {
        if (item.isRead()) {
            keepForEver(std::move(item));
        }
    }
    m_read.clear();
}

void AnalyzerRuns::leaveToWriter()
{
    const QDeadlineTimer until = workersEnd(); // of all
    for (AnalyzerItem &item : items) {
        if (item.capture && item.capture->writerWaits()) {
            endWorker(item, until);
        }
    }
}

AnalyzerItem *AnalyzerRuns::itemOf(const AnalyzerProgMng *progMng)
{
    const auto same = [progMng](const AnalyzerItem &item) { return item.progMng.get() == progMng; };
    const auto found = std::find_if(items.begin(), items.end(), same);
    return found != items.end() ? &*found : nullptr;
}

void AnalyzerRuns::slotStopWorkThread(AnalyzerProgMng *progMng, Analyzer *anly)
{
    AnalyzerItem *item = itemOf(progMng);
    if (item == nullptr || item->analyzer.get() != anly || !progMng->isParked()) {
        return; // stopped, replaced or run anew since it was sent
    }
    letGo(*item);
    if (anly->GetDecodeStatus() == DecodeStatus::Failed) {
        m_faults.tell(item->name(), item->message()); // the next capture may be to its liking
    }
    bool again = false;
    const QString fault = pluginFault([&] { again = anly->NeedsRestart(); });
    if (!fault.isEmpty()) {
        m_faults.fail(*item, fault);
    } else if (again && item->restarts >= mostRestarts) {
        m_faults.fail(*item, doesNotStop());
    } else if (again) {
        const ResultsChange change = prepareModify();
        run(*item, true);
    }
    emit ended();
}

// ---- workers that do not leave

void AnalyzerRuns::takeOut(AnalyzerItem &item)
{
    // Its results go some time after the item has others.
    const ResultsChange change = prepareModify(std::chrono::milliseconds(lastPatience));
    const QString name = item.name();
    AnalyzerItem old = m_maker.exchange(item);
    item.lingering = m_lingering.add(name, std::move(old));
}

AnalyzerItem *AnalyzerRuns::waitingFor(quint64 lingering)
{
    const auto found = std::find_if(items.begin(), items.end(),
                                    [lingering](const AnalyzerItem &item) { return item.lingering == lingering; });
    return found != items.end() ? &*found : nullptr;
}

void AnalyzerRuns::lingeringEnded(quint64 number)
{
    AnalyzerItem *item = waitingFor(number);
    if (item == nullptr) {
        return;
    }
    item->lingering = 0;
    if (std::exchange(item->runsLater, false) && item->fault.isEmpty()) {
        const ResultsChange change = prepareModify();
        run(*item, false);
        emit ended();
    }
}

void AnalyzerRuns::lingeringOverdue(quint64 number, const QString &name)
{
    if (AnalyzerItem *item = waitingFor(number)) {
        item->lingering = 0;
        item->runsLater = false;
        m_faults.fail(*item, doesNotStop());
    } else {
        m_faults.tell(name, doesNotStop());
    }
}

// ---- results

ResultsChange AnalyzerRuns::prepareModify(std::chrono::milliseconds readers)
{
    emit modifyPrepared();
    if (!m_gate.isWanted()) { // none is under way
        m_changeEnd.setRemainingTime(patience);
    }
    return {m_gate, readers};
}

bool AnalyzerRuns::leaveResults(AnalyzerItem &item)
{
    std::erase_if(item.readers, [](const LostReader &lost) { return !lost.reader->isStuck(); });
    const bool isRead = item.isRead();
    if (isRead) {
        m_read.push_back(m_maker.exchange(item));
    }
    return isRead;
}

void AnalyzerRuns::drop(AnalyzerItem &item)
{
    if (!endWorker(item)) {
        return; // what is in the item now was never used
    }
    if (item.isRead()) {
        m_read.push_back(std::move(item));
        return;
    }
    destroy(item);
}

void AnalyzerRuns::dropUnread()
{
    for (AnalyzerItem &item : m_read) {
        if (!item.isRead()) {
            destroy(item);
        }
    }
    std::erase_if(m_read, [](const AnalyzerItem &item) { return !item.analyzer; });
}

void AnalyzerRuns::retire(AnalyzerItem &item)
{
    const ResultsChange change = prepareModify();
    if (endWorker(item)) {
        AnalyzerItem old = m_maker.exchange(item); // what it has now would hold the next reader fast
        drop(old);
    }
    item.readers.clear();
    m_faults.fail(item, doesNotStop());
}
