#include "analyzer/AnalyzerDataGen.h"

#include "analyzer/AnalyzerManager.h"
#include "analyzer/DisplayFormat.h"
#include "analyzer/LeftBehind.h"
#include "analyzer/ResultsGate.h"
#include "settings/PostedCall.h"

#include <algorithm>
#include <climits>
#include <utility>

namespace {

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
    : QObject(parent), m_gate(gate), m_sources(std::move(sources))
{
    startWorker();
}

AnalyzerDataGen::AnalyzerDataGen(AnalyzerManager &manager, QObject *parent)
    : AnalyzerDataGen(
          manager.gate(), [&manager] { return shownSources(manager); }, parent)
{
    connect(&manager, &AnalyzerManager::modifyPrepared, this, &AnalyzerDataGen::slotModifyPrepare,
            Qt::DirectConnection);
    connect(&manager, &AnalyzerManager::readersLost, this, &AnalyzerDataGen::slotReadersLost);
}

AnalyzerDataGen::~AnalyzerDataGen()
{
    m_worker->askToEnd();
    m_gate.endThread(m_thread, m_worker->reader(),
                     [this](std::chrono::milliseconds most) { return m_worker->waitForEnd(most); });
}

void AnalyzerDataGen::startWorker()
{
    ListWorker::Listener listener;
    listener.pageReady = [this] { postCall(this, [this] { takePage(); }); };
    listener.resetWanted = [this] { postCall(this, [this] { emit resetWanted(); }); };
    m_worker = std::make_shared<ListWorker>(m_gate, listener, m_shown.version);
    m_thread = std::thread([worker = m_worker] { worker->run(); });
}

// ---- main thread

void AnalyzerDataGen::request(const std::function<void(ListWorker::Requests &)> &write)
{
    if (m_worker->reader()->isLost()) {
        LeftBehind::leave(m_thread);
        startWorker();
        m_worker->request([this](ListWorker::Requests &requests) {
            requests.rowNumRequest = true;
            requests.rowNum = m_rowNum;
        });
    }
    m_worker->request(write);
}

void AnalyzerDataGen::slotReadersLost()
{
    if (m_worker->reader()->isLost()) {
        emit resetWanted();
    }
}

void AnalyzerDataGen::reset(const ResultList::Query &query, Clicked clicked)
{
    if (clicked == Clicked::Forget) {
        m_mark.reset();
        isSelected = false;
    }
    std::vector<ResultSource> sources = m_sources();
    ++m_lastReset;
    request([&](ListWorker::Requests &requests) {
        requests.resetRequest = true;
        requests.keepsPlace = clicked == Clicked::Keep;
        requests.scrollRequest = false;
        requests.query = query;
        requests.sources = std::move(sources);
        requests.sourcesOf = requests.generation;
        requests.resetNumber = m_lastReset;
    });
}

void AnalyzerDataGen::begFrameChanged(qlonglong index)
{
    if (index > m_shown.totalRows) {
        return;
    }
    request([index](ListWorker::Requests &requests) {
        requests.scrollRequest = true;
        requests.begRow = index;
    });
}

void AnalyzerDataGen::slotRowNumChanged(int rowNum)
{
    isSelected = false;
    m_rowNum = std::max(rowNum, 0);
    request([this](ListWorker::Requests &requests) {
        requests.rowNumRequest = true;
        requests.rowNum = m_rowNum;
    });
}

void AnalyzerDataGen::slotModifyPrepare()
{
    m_worker->raiseGeneration();
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
    const bool isOfThisList = m_mark->resetNumber == m_shown.resetNumber;
    if (!m_mark->frame) {
        m_mark->resetNumber = m_shown.resetNumber; // its row was perhaps asked for while this list was on its way
        if (isOfThisList && frameAt(selectedRow()) != nullptr) {
            m_mark->frame = *frameAt(selectedRow());
        }
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
    } else if (isOfThisList && frameAt(selectedRow()) != nullptr) {
        m_mark->resetNumber = 0; // another frame stands there, now that the page is in order: this one's row is unknown
    }
}

void AnalyzerDataGen::takePage()
{
    const std::uint64_t before = m_shown.version;
    std::optional<ListWorker::Page> page = m_worker->takePage();
    if (!page || (page->resetNumber <= m_droppedReset && m_droppedReset > 0)) {
        return;
    }
    m_shown = *std::move(page);
    findMark();
    emit listTotalChanged(m_shown.topRow, m_shown.totalRows, m_shown.rowNum);
    if (m_shown.version != before) {
        emit listChanged(m_shown.rows, isSelected, int(std::clamp<qint64>(selectedRow(), INT_MIN, INT_MAX)));
    }
}
