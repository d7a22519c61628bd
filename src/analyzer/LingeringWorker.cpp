#include "analyzer/LingeringWorker.h"

#include "analyzer/AnalyzerProgMng.h"
#include "analyzer/LeftBehind.h"
#include "analyzer/PluginCall.h"
#include "store/SmpLease.h"

#include <memory>
#include <utility>
#include <vector>

namespace {

constexpr qint64 grace = 2000;     // ms, to leave by itself
constexpr qint64 afterForce = 500; // ms, to be gone when ended by force

// Windows ends a thread wherever it is, also within the allocator, whose lock would then be taken for ever.
#ifdef Q_OS_WIN
constexpr bool endsByForce = false;
#else
constexpr bool endsByForce = true;
#endif

} // namespace

LingeringWorker::LingeringWorker(QString decoder, AnalyzerItem taken) : name(std::move(decoder)), item(std::move(taken))
{
    m_clock.start();
}

LingeringWorker::~LingeringWorker()
{
    if (!m_gone) {
        leaveBehind();
    }
}

bool LingeringWorker::hasLeft()
{
    if (item.progMng->waitParked(0)) {
        item.progMng->letGo();
    }
    if (!item.progMng->isIdle() && !item.progMng->isFinished()) {
        return false;
    }
    m_gone = true;
    if (m_terminated || item.isRead()) {
        // Its stack was torn off: what the decoder holds may be in any state and is not touched again. Nor is what a
        // reader has not come out of.
        keepForEver();
    } else {
        item.progMng.reset();
        (void)pluginFault([this] { item.analyzer.reset(); });
    }
    item.capture.reset();
    return true;
}

LingeringWorker::State LingeringWorker::look()
{
    if (hasLeft()) {
        return State::Ended;
    }
    if (endsByForce && !m_terminated && isOverdue()) {
        m_terminated = true;
        item.progMng->terminate();
    }
    if (m_clock.elapsed() < grace + afterForce) {
        return State::Waiting;
    }
    leaveBehind();
    return State::LeftBehind;
}

bool LingeringWorker::isOverdue() const
{
    return m_clock.elapsed() >= grace;
}

void LingeringWorker::leaveBehind()
{
    m_gone = true;
    LeftBehind::note();
    keepForEver();
}

void LingeringWorker::keepForEver()
{
    std::unique_ptr<SmpLease> capture = std::move(item.capture);
    ::keepForEver(std::move(item));
    item = AnalyzerItem();
    item.capture = std::move(capture);
}

void keepForEver(AnalyzerItem item)
{
    static auto &kept = *new std::vector<AnalyzerItem>;
    kept.push_back(std::move(item));
}
