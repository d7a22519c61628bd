#include "cli/FrameThread.h"

#include "analyzer/ResultCursor.h"
#include "cli/FrameWriter.h"
#include "cli/Output.h"
#include "cli/Terminal.h"

#include <corvanlux/analyzer/AnalyzerResults.h>
#include <utility>

FrameThread::FrameThread(ResultsGate &gate, Task task, FrameWriter &writer, const Output &out)
    : m_gate(gate), m_task(std::move(task)), m_writer(writer), m_out(out)
{}

bool FrameThread::waitForEnd(std::chrono::milliseconds most)
{
    std::unique_lock lock(m_mutex);
    return m_ended.wait_for(lock, most, [this] { return m_hasEnded; });
}

bool FrameThread::isWhole()
{
    const std::lock_guard lock(m_mutex);
    return m_isWhole;
}

void FrameThread::run()
{
    bool isWhole = false;
    try {
        const ResultsPass pass(m_gate, m_reader);
        isWhole = pass && writeAll();
    } catch (const ResultMerge::PassTaken &) {
        return; // whoever started it has gone on without this thread
    }
    const std::lock_guard lock(m_mutex);
    m_isWhole = isWhole;
    m_hasEnded = true;
    m_ended.notify_all();
}

std::vector<FrameThread::Stream> FrameThread::streams() const
{
    std::vector<Stream> all;
    for (AnalyzerResults *results : m_task.results) {
        const std::uint64_t count = results != nullptr ? results->GetNumFrames() : 0;
        all.push_back({results, 0, count, count > 0 ? results->GetFrame(0).firstSample : 0});
    }
    return all;
}

bool FrameThread::writeAll()
{
    std::vector<Stream> all = streams();
    for (;;) {
        Stream *nearest = nullptr; // of equal ones the first
        for (Stream &stream : all) {
            if (stream.next < stream.end && (nearest == nullptr || stream.first < nearest->first)) {
                nearest = &stream;
            }
        }
        if (nearest == nullptr) {
            return true;
        }
        if (Terminal::wasInterrupted() || !m_out.isGood()) {
            return false;
        }
        const std::uint64_t index = nearest->next++;
        const Frame frame = nearest->results->GetFrame(index);
        if (nearest->next < nearest->end) {
            nearest->first = nearest->results->GetFrame(nearest->next).firstSample;
        }
        if (double(frame.lastSample) >= m_task.from && double(frame.firstSample) <= m_task.to) {
            m_writer.frame(*nearest->results, index, std::size_t(nearest - all.data()), *m_reader);
        }
    }
}
