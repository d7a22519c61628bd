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

constexpr std::chrono::milliseconds grace{2000};    ///< to leave by itself
constexpr std::chrono::milliseconds graceStep{200}; ///< of it, at most, between two looks

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
    item.capture.reset();
    if (item.isRead()) {
        keepForEver(std::move(item)); // what a reader has not come out of
    } else {
        item.progMng.reset();
        (void)pluginFault([this] { item.analyzer.reset(); });
    }
    return true;
}

LingeringWorker::State LingeringWorker::look()
{
    m_time.look();
    if (hasLeft()) {
        return State::Ended;
    }
    if (!isOverdue()) {
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
    keepForEver(std::move(item));
}

void keepForEver(AnalyzerItem item)
{
    static auto &kept = *new std::vector<AnalyzerItem>;
    kept.push_back(std::move(item));
}
