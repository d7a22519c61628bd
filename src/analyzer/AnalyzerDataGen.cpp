#include "analyzer/AnalyzerDataGen.h"

#include "analyzer/AnalyzerManager.h"
#include "analyzer/DisplayFormat.h"
#include "analyzer/ResultsGate.h"

#include <algorithm>
#include <climits>
#include <utility>

namespace {

constexpr auto reportEvery = std::chrono::milliseconds(50);
constexpr auto gatePatience = std::chrono::milliseconds(2); // between two tries while results are being replaced

std::vector<ResultSource> shownSources(const AnalyzerManager &manager)
{
    std::vector<ResultSource> sources;
    for (Analyzer *analyzer : manager.shownAnalyzers()) {
        ResultSource source;
        source.analyzer = analyzer;
        analyzer->GetAnalyzerResults(&source.results);
        source.format = displayBaseOf(manager.formatOfAnalyzer(analyzer));
        sources.push_back(source);
    }
    return sources;
}

} // namespace

AnalyzerDataGen::AnalyzerDataGen(ResultsGate &gate, Sources sources, QObject *parent)
    : QThread(parent), m_gate(gate), m_sources(std::move(sources))
{
    connect(this, &AnalyzerDataGen::pageReady, this, &AnalyzerDataGen::takePage, Qt::QueuedConnection);
    start();
}

AnalyzerDataGen::AnalyzerDataGen(AnalyzerManager &manager, QObject *parent)
    : AnalyzerDataGen(
          manager.gate(), [&manager] { return shownSources(manager); }, parent)
{
    connect(&manager, &AnalyzerManager::modifyPrepared, this, &AnalyzerDataGen::slotModifyPrepare,
            Qt::DirectConnection);
}

AnalyzerDataGen::~AnalyzerDataGen()
{
    {
        const std::lock_guard lock(m_mutex);
        exitFlag = true;
        m_called.store(true, std::memory_order_release);
    }
    m_wakeUp.notify_one();
    wait();
    (void)m_left.load(std::memory_order_acquire);
}

// ---- main thread

void AnalyzerDataGen::request(const std::function<void(Requests &)> &write)
{
    {
        const std::lock_guard lock(m_mutex);
        write(m_requests);
        m_hasRequests = true;
        m_called.store(true, std::memory_order_release);
    }
    m_wakeUp.notify_one();
}

void AnalyzerDataGen::reset(const ResultList::Query &query, Clicked clicked)
{
    if (clicked == Clicked::Forget) {
        m_mark.reset();
        isSelected = false;
    }
    std::vector<ResultSource> sources = m_sources();
    ++m_lastReset;
    request([&](Requests &requests) {
        requests.resetRequest = true;
        requests.scrollRequest = false;
        requests.query = query;
        requests.sources = std::move(sources);
        requests.sourcesOf = m_generation;
        requests.resetNumber = m_lastReset;
    });
}

void AnalyzerDataGen::begFrameChanged(qlonglong index)
{
    if (index > m_shown.totalRows) {
        return;
    }
    request([index](Requests &requests) {
        requests.scrollRequest = true;
        requests.begRow = index;
    });
}

void AnalyzerDataGen::slotRowNumChanged(int rowNum)
{
    isSelected = false;
    m_rowNum = std::max(rowNum, 0);
    request([this](Requests &requests) {
        requests.rowNumRequest = true;
        requests.rowNum = m_rowNum;
    });
}

void AnalyzerDataGen::slotModifyPrepare()
{
    const std::lock_guard lock(m_mutex);
    ++m_generation;
    m_called.store(true, std::memory_order_release);
}

void AnalyzerDataGen::dropPages()
{
    m_droppedReset = m_lastReset;
    m_shown = {};
    m_mark.reset();
    isSelected = false;
}

void AnalyzerDataGen::markRow(qint64 listRow)
{
    const ResultList::Row *frame = frameAt(listRow - m_shown.topRow);
    m_mark = Mark{listRow, m_shown.resetNumber, {}};
    if (frame != nullptr) {
        m_mark->frame = *frame;
    }
    isSelected = true;
}

qint64 AnalyzerDataGen::selectedRow() const
{
    return isRowMarked() ? m_mark->listRow - m_shown.topRow : -1;
}

const ResultList::Row *AnalyzerDataGen::frameAt(qint64 pageRow) const
{
    const bool there = pageRow >= 0 && pageRow < qint64(m_shown.rowRanges.size());
    return there ? &m_shown.rowRanges[std::size_t(pageRow)] : nullptr;
}

void AnalyzerDataGen::findMark()
{
    if (!m_mark) {
        return;
    }
    if (m_mark->resetNumber == m_shown.resetNumber) {
        if (!m_mark->frame && frameAt(selectedRow()) != nullptr) {
            m_mark->frame = *frameAt(selectedRow());
        }
        return;
    }
    if (!m_mark->frame) {
        m_mark->resetNumber = m_shown.resetNumber; // its row was asked for while this list was on its way
        return;
    }
    const auto same = [this](const ResultList::Row &row) {
        return row.analyzer == m_mark->frame->analyzer && row.first == m_mark->frame->first &&
               row.last == m_mark->frame->last && row.frame == m_mark->frame->frame;
    };
    const auto found = std::find_if(m_shown.rowRanges.begin(), m_shown.rowRanges.end(), same);
    if (found != m_shown.rowRanges.end()) {
        m_mark->resetNumber = m_shown.resetNumber;
        m_mark->listRow = m_shown.topRow + qint64(found - m_shown.rowRanges.begin());
    }
}

void AnalyzerDataGen::takePage()
{
    const std::uint64_t before = m_shown.version;
    {
        const std::lock_guard lock(m_mutex);
        m_pageDue = false;
        if (m_ready.resetNumber <= m_droppedReset && m_droppedReset > 0) {
            return;
        }
        m_shown = m_ready;
    }
    findMark();
    emit listTotalChanged(m_shown.topRow, m_shown.totalRows, m_shown.rowNum);
    if (m_shown.version != before) {
        emit listChanged(m_shown.rows, isSelected, int(std::clamp<qint64>(selectedRow(), INT_MIN, INT_MAX)));
    }
}

// ---- the thread

bool AnalyzerDataGen::isCalled() const
{
    return m_called.load(std::memory_order_acquire) || m_gate.isWanted();
}

bool AnalyzerDataGen::waitForRequests()
{
    std::unique_lock lock(m_mutex);
    m_wakeUp.wait(lock, [this] { return m_hasRequests || exitFlag; });
    return !exitFlag;
}

void AnalyzerDataGen::waitForGate()
{
    std::unique_lock lock(m_mutex);
    m_wakeUp.wait_for(lock, gatePatience, [this] { return exitFlag; });
}

void AnalyzerDataGen::run()
{
    Work work;
    while (waitForRequests()) {
        const ResultsPass pass(m_gate);
        if (pass) {
            serve(work);
        } else {
            waitForGate();
        }
    }
    m_left.store(true, std::memory_order_release);
}

bool AnalyzerDataGen::takeRequests(Requests &requests)
{
    const std::lock_guard lock(m_mutex);
    if (exitFlag) {
        return false;
    }
    requests = std::exchange(m_requests, {});
    requests.generation = m_generation;
    m_hasRequests = false;
    m_called.store(false, std::memory_order_relaxed);
    return true;
}

void AnalyzerDataGen::serve(Work &work)
{
    Requests requests;
    do {
        if (m_gate.isWanted()) {
            lose(work);
            return;
        }
        if (!takeRequests(requests)) {
            return;
        }
        if (work.generation != requests.generation) {
            work.generation = requests.generation;
            if (!requests.resetRequest) {
                lose(work);
            }
        }
        obey(requests, work);
        makePage(work);
    } while (isCalled());
}

void AnalyzerDataGen::lose(Work &work)
{
    if (!work.state.pageCursors.empty()) {
        ResultList::dropCursors(work.state);
        emit resetWanted(); // queued: its receiver lives on the main thread, which does not wait for this one there
    }
}

void AnalyzerDataGen::obey(const Requests &requests, Work &work)
{
    const bool rebuild = requests.rowNumRequest && requests.rowNum != work.state.rowNum;
    if (rebuild) {
        ResultList::setRowNum(work.state, requests.rowNum);
    }
    if (requests.resetRequest && requests.sourcesOf != requests.generation) {
        ResultList::dropCursors(work.state);
        emit resetWanted(); // the results are other ones by now
    } else if (requests.resetRequest) {
        ResultList::reset(work.state, requests.sources, requests.query);
        work.resetNumber = requests.resetNumber;
        work.isNew = true;
    }
    if (requests.scrollRequest) {
        ResultList::scrollTo(work.state, requests.begRow, [this] { return isCalled(); });
    }
    work.isNew = work.isNew || rebuild || requests.scrollRequest;
}

void AnalyzerDataGen::makePage(Work &work)
{
    constexpr int framesBetweenLooks = 64; // at the clock
    work.told = Clock::now();
    for (int frames = 1; !isCalled(); ++frames) {
        switch (ResultList::step(work.state)) {
        case ResultList::Step::PageFull:
            publish(work, true, false);
            break;
        case ResultList::Step::Idle:
            publish(work, work.isNew, true);
            return;
        case ResultList::Step::More:
            if (frames % framesBetweenLooks == 0) {
                report(work);
            }
        }
    }
}

void AnalyzerDataGen::report(Work &work)
{
    const ResultList::State &state = work.state;
    const bool rowsToo = work.isNew && !state.rows.isEmpty();
    if (!rowsToo && state.totalRows == work.totalTold) {
        return;
    }
    if (Clock::now() - work.told >= reportEvery) {
        publish(work, rowsToo, false);
        work.isNew = work.isNew || rowsToo; // the page is not whole yet
    }
}

void AnalyzerDataGen::publish(Work &work, bool rowsToo, bool isWhole)
{
    work.told = Clock::now();
    work.totalTold = work.state.totalRows;
    if (rowsToo) {
        ++work.version;
        work.isNew = false;
    }
    bool tell = false;
    {
        const std::lock_guard lock(m_mutex);
        if (rowsToo) {
            m_ready.rows = work.state.rows;
            m_ready.rowRanges = work.state.rowRanges;
            m_ready.topRow = work.state.topRow;
            m_ready.version = work.version;
            m_ready.resetNumber = work.resetNumber;
        }
        m_ready.totalRows = work.state.totalRows;
        m_ready.rowNum = work.state.rowNum;
        m_ready.isWhole = isWhole;
        tell = !std::exchange(m_pageDue, true);
    }
    if (tell) {
        emit pageReady({});
    }
}
