#pragma once

#include "analyzer/ResultList.h"
#include "analyzer/ResultsGate.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

/// What the thread of the results list does. The thread owns it together with whoever asks it, who may have to go on
/// without a thread that is held fast in a plug-in: then another one is made.
///
/// Requests go to the thread under a lock; the newest of each kind is what it does next, also in the middle of what it
/// does. A scroll that another height of the view holds up is gone on with behind it. The thread holds a ResultsPass
/// while it works.
class ListWorker {
public:
    /// What is asked of the thread; each is given once.
    struct Requests {
        bool resetRequest = false;
        bool scrollRequest = false;
        bool rowNumRequest = false;
        bool keepsPlace = false; ///< the reset brings more of what is on show
        ResultList::Query query;
        std::vector<ResultSource> sources;
        std::uint64_t sourcesOf = 0; ///< the generation of the results in `sources`
        std::uint64_t resetNumber = 0;
        std::uint64_t generation = 0; ///< of the results when the requests are written, and again when they are taken
        qint64 begRow = 0;
        int rowNum = 0;
    };
    struct Page {
        QStringList rows;
        std::vector<ResultList::Row> rowRanges;
        qint64 topRow = 0;
        qint64 totalRows = 0;
        int rowNum = 0;
        bool isWhole = false; ///< nothing is left to do for it
        std::uint64_t resetNumber = 0;
        std::uint64_t version = 0; ///< another one for other rows
    };
    /// Who hears of it, on the thread; not when its pass was taken.
    struct Listener {
        std::function<void()> pageReady;   ///< once until the page is taken
        std::function<void()> resetWanted; ///< results were replaced while the list still needed them
    };

    /// @param gate  outlives the thread, unless its pass is taken  @param version  of the last page before the first
    ListWorker(ResultsGate &gate, Listener listener, std::uint64_t version);
    ListWorker(const ListWorker &) = delete;
    ListWorker &operator=(const ListWorker &) = delete;

    /// The thread's body.
    void run();

    // ---- any thread ------------------------------------------------------------------------------------------------

    void request(const std::function<void(Requests &)> &write);
    /// Results are about to be replaced: those that are at hand now are not looked at again.
    void raiseGeneration();
    /// The newest page; none if it was taken.
    [[nodiscard]] std::optional<Page> takePage();
    void askToEnd();
    /// Waits at most that long for the end of run(). @return whether it has come
    [[nodiscard]] bool waitForEnd(std::chrono::milliseconds most);
    [[nodiscard]] const std::shared_ptr<ResultsReader> &reader() const { return m_reader; }

private:
    using Clock = std::chrono::steady_clock;

    /// What the thread works on; its own.
    struct Work {
        ResultList::State state;
        std::uint64_t generation = 0; ///< of the results under its cursors
        std::uint64_t resetNumber = 0;
        std::uint64_t version = 0;
        bool isNew = false;           ///< the page has not been handed over since it was begun
        std::optional<qint64> begRow; ///< the row that the page is on its way to, until it is full there
        qint64 totalTold = 0;
        int rowsTold = 0;        ///< of the page that is on show
        QString searchTold;      ///< the search that found it
        ResultList::Query query; ///< the one under way
        /// What was listed when its results were replaced: a list of the same goes on where this one was to.
        std::optional<ResultList::Query> lost;
        int leastRows = 0; ///< nothing is told of a page with fewer, unless it is whole
        Clock::time_point told;
    };

    void work();
    [[nodiscard]] bool waitForRequests();
    void waitForGate();
    /// @return false when the thread is to end
    [[nodiscard]] bool takeRequests(Requests &requests);
    void serve(Work &work);
    void lose(Work &work);
    void obey(const Requests &requests, Work &work);
    void obeyReset(const Requests &requests, Work &work);
    void makePage(Work &work);
    void report(Work &work);
    void publish(Work &work, bool rowsToo, bool isWhole);
    /// Something else is to be done than what is under way.
    [[nodiscard]] bool isCalled() const;

    ResultsGate &m_gate;
    const std::shared_ptr<ResultsReader> m_reader = std::make_shared<ResultsReader>();
    const Listener m_listener;
    const std::uint64_t m_firstVersion;
    std::atomic<bool> m_called{false}; ///< there are requests, or the results' generation is another one
    std::mutex m_mutex;                ///< of what follows; never held while working or calling out
    std::condition_variable m_wakeUp;
    std::condition_variable m_ended;
    bool exitFlag = false;
    bool m_hasEnded = false;
    bool m_hasRequests = false;
    Requests m_requests;
    std::uint64_t m_generation = 1; ///< of the results: raised before any are replaced
    Page m_ready;
    bool m_pageDue = false; ///< told, and not taken yet
};
