#include "analyzer/ListWorker.h"

#include <optional>
#include <utility>

namespace {

constexpr auto reportEvery = std::chrono::milliseconds(50);
constexpr auto gatePatience = std::chrono::milliseconds(2); // between two tries while results are being replaced

/// The two list the same from the same place on.
bool isSame(const ResultList::Query &one, const ResultList::Query &other)
{
    return one.searchText == other.searchText && !(one.begSample < other.begSample) &&
           !(other.begSample < one.begSample);
}

} // namespace

ListWorker::ListWorker(ResultsGate &gate, Listener listener, std::uint64_t version)
    : m_gate(gate), m_listener(std::move(listener)), m_firstVersion(version)
{}

// ---- any thread

void ListWorker::request(const std::function<void(Requests &)> &write)
{
    {
        const std::lock_guard lock(m_mutex);
        m_requests.generation = m_generation;
        write(m_requests);
        m_hasRequests = true;
        m_called.store(true, std::memory_order_release);
    }
    m_wakeUp.notify_one();
}

void ListWorker::raiseGeneration()
{
    const std::lock_guard lock(m_mutex);
    ++m_generation;
    m_called.store(true, std::memory_order_release);
}

std::optional<ListWorker::Page> ListWorker::takePage()
{
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_pageDue, false) ? std::optional(m_ready) : std::nullopt;
}

void ListWorker::askToEnd()
{
    {
        const std::lock_guard lock(m_mutex);
        exitFlag = true;
        m_called.store(true, std::memory_order_release);
    }
    m_wakeUp.notify_one();
}

bool ListWorker::waitForEnd(std::chrono::milliseconds most)
{
    std::unique_lock lock(m_mutex);
    return m_ended.wait_for(lock, most, [this] { return m_hasEnded; });
}

// ---- the thread

bool ListWorker::isCalled() const
{
    return m_called.load(std::memory_order_acquire) || m_gate.isWanted();
}

bool ListWorker::waitForRequests()
{
    std::unique_lock lock(m_mutex);
    m_wakeUp.wait(lock, [this] { return m_hasRequests || exitFlag; });
    return !exitFlag;
}

void ListWorker::waitForGate()
{
    std::unique_lock lock(m_mutex);
    m_wakeUp.wait_for(lock, gatePatience, [this] { return exitFlag; });
}

void ListWorker::run()
{
    try {
        work();
    } catch (const ResultMerge::PassTaken &) {
        return; // whoever asked has gone on without this thread
    }
    const std::lock_guard lock(m_mutex);
    m_hasEnded = true;
    m_ended.notify_all(); // under the lock: orders what the thread did for who waits
}

void ListWorker::work()
{
    Work work;
    work.version = m_firstVersion;
    work.state.reader = m_reader.get();
    while (waitForRequests()) {
        const ResultsPass pass(m_gate, m_reader);
        if (pass) {
            serve(work);
        } else {
            waitForGate();
        }
    }
}

bool ListWorker::takeRequests(Requests &requests)
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

void ListWorker::serve(Work &work)
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
        if (!work.lost) { // else the page on show stays until the reset that is wanted
            makePage(work);
        }
    } while (isCalled());
}

void ListWorker::lose(Work &work)
{
    if (!work.state.pageCursors.empty()) {
        ResultList::dropCursors(work.state);
        work.lost = work.query;
        m_listener.resetWanted();
    }
}

void ListWorker::obeyReset(const Requests &requests, Work &work)
{
    const bool again = requests.keepsPlace && requests.query.searchText == work.searchTold;
    work.leastRows = again ? work.rowsTold : 0;
    const std::optional<ResultList::Query> lost = std::exchange(work.lost, {});
    if (!lost || !requests.keepsPlace || !isSame(*lost, requests.query)) {
        work.begRow.reset();
    }
    if (requests.sourcesOf != requests.generation) {
        ResultList::dropCursors(work.state);
        work.lost = requests.query;
        m_listener.resetWanted(); // the results are other ones by now
        return;
    }
    ResultList::reset(work.state, requests.sources, requests.query);
    work.resetNumber = requests.resetNumber;
    work.query = requests.query;
    work.isNew = true;
}

void ListWorker::obey(const Requests &requests, Work &work)
{
    const bool rebuild = requests.rowNumRequest && requests.rowNum != work.state.rowNum;
    if (rebuild) {
        ResultList::setRowNum(work.state, requests.rowNum);
    }
    work.leastRows = 0;
    if (requests.resetRequest) {
        obeyReset(requests, work);
    }
    if (requests.scrollRequest) {
        work.begRow = requests.begRow;
    }
    if (work.begRow) { // also one that another request has held up
        ResultList::scrollTo(work.state, *work.begRow, [this] { return isCalled(); });
    }
    work.isNew = work.isNew || rebuild || requests.scrollRequest;
}

void ListWorker::makePage(Work &work)
{
    constexpr int framesBetweenLooks = 64; // at the clock
    work.told = Clock::now();
    for (int frames = 1; !isCalled(); ++frames) {
        switch (ResultList::step(work.state)) {
        case ResultList::Step::PageFull:
            work.begRow.reset();
            publish(work, true, false);
            break;
        case ResultList::Step::Idle:
            work.begRow.reset();
            publish(work, work.isNew, true);
            return;
        case ResultList::Step::More:
            if (frames % framesBetweenLooks == 0) {
                report(work);
            }
        }
    }
}

void ListWorker::report(Work &work)
{
    const ResultList::State &state = work.state;
    if (work.isNew && state.rows.size() < work.leastRows) {
        return; // rows that are there again in a moment do not vanish meanwhile
    }
    const bool rowsToo = work.isNew && !state.rows.isEmpty();
    if (!rowsToo && state.totalRows == work.totalTold) {
        return;
    }
    if (Clock::now() - work.told >= reportEvery) {
        publish(work, rowsToo, false);
        work.isNew = work.isNew || rowsToo; // the page is not whole yet
    }
}

void ListWorker::publish(Work &work, bool rowsToo, bool isWhole)
{
    work.told = Clock::now();
    work.totalTold = work.state.totalRows;
    if (rowsToo) {
        ++work.version;
        work.isNew = false;
        work.rowsTold = work.state.rows.size();
        work.searchTold = work.query.searchText;
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
        m_listener.pageReady();
    }
}
