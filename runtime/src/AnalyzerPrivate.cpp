#include "AnalyzerPrivate.h"

#include "ResultsPrivate.h"

#include <exception>

#if defined(__GLIBCXX__) && !defined(_WIN32)
#include <cxxabi.h>
#endif

using lux::detail::Leave;

void Analyzer::Private::runGuarded(const std::function<void()> &decode)
{
    guard(decode);
    if (!ended)
        end();
}

void Analyzer::Private::guard(const std::function<void()> &decode)
{
    try {
        decode();
    } catch (const lux::detail::WorkerEnd &) {
        // the data's end, or the reason that `leave` tells
#if defined(__GLIBCXX__) && !defined(_WIN32)
    } catch (const abi::__forced_unwind &) {
        throw; // the thread itself is being ended
#endif
    } catch (const std::exception &failure) {
        run.addMessage(failure.what());
        run.askToLeave(Leave::Failed);
    } catch (...) {
        run.addMessage("The decoder failed.");
        run.askToLeave(Leave::Failed);
    }
}

void Analyzer::Private::end()
{
    ended = true;
    if (results != nullptr)
        guard([this] { results->internals()->finish(); });
    DecodeStatus status = DecodeStatus::Complete;
    switch (Leave(run.leave.load(std::memory_order_relaxed))) {
    case Leave::Not:
        if (run.progress != nullptr)
            run.progress->SetProgress(1.0);
        break;
    case Leave::Stop:
        status = DecodeStatus::Stopped;
        break;
    case Leave::OutOfMemory:
        run.addMessage("Out of memory, the decode ended early.");
        status = DecodeStatus::OutOfMemory;
        break;
    case Leave::Failed:
        status = DecodeStatus::Failed;
        break;
    }
    run.status.store(status, std::memory_order_release);
    if (run.progress != nullptr)
        run.progress->WorkerEnded();
}
