#include "analyzer/LingeringWorker.h"

#include "analyzer/AnalyzerProgMng.h"
#include "analyzer/LeftBehind.h"
#include "analyzer/PluginCall.h"
#include "store/SmpLease.h"

#include <chrono>
#include <memory>
#include <utility>
#include <vector>

namespace {

constexpr std::chrono::milliseconds grace{2000};     ///< to leave by itself
constexpr std::chrono::milliseconds afterForce{500}; ///< to be gone when ended by force
constexpr std::chrono::milliseconds graceStep{200};  ///< of those, at most, between two looks

// Windows ends a thread wherever it is, also within the allocator, whose lock would then be taken for ever.
#ifdef Q_OS_WIN
constexpr bool endsByForce = false;
#else
constexpr bool endsByForce = true;
#endif

} // namespace

LingeringWorker::LingeringWorker(QString decoder, AnalyzerItem taken)
    : name(std::move(decoder)), item(std::move(taken)), m_time(graceStep)
{}

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
    m_time.look();
    if (hasLeft()) {
        return State::Ended;
    }
    if (endsByForce && !m_terminated && isOverdue()) {
        m_terminated = true;
        item.progMng->terminate();
    }
    if (m_time.passed() < grace + afterForce) {
        return State::Waiting;
    }
    leaveBehind();
    return State::LeftBehind;
}

bool LingeringWorker::isOverdue() const
{
    return m_time.passed() >= grace;
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
