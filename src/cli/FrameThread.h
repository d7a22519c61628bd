#pragma once

#include "analyzer/ResultsGate.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

class AnalyzerResults;
class FrameWriter;
class Output;

/// What the thread does that writes what decoders found, in the order of time. The thread owns it together with who
/// started it, who can go on without a thread that is held fast in the text of a decoder.
class FrameThread {
public:
    /// What is written: the frames that touch these samples.
    struct Task {
        std::vector<AnalyzerResults *> results; ///< of the analyzers in their order, null for none; not owned
        double from = 0;                        ///< samples
        double to = 0;
    };

    /// All that is handed in outlives the thread, unless its pass is taken. `writer` has written the head, and writes
    /// to `out`: both are the thread's until it has ended, or has lost its pass.
    FrameThread(ResultsGate &gate, Task task, FrameWriter &writer, const Output &out);
    FrameThread(const FrameThread &) = delete;
    FrameThread &operator=(const FrameThread &) = delete;

    /// The thread's body. Ends early when the user wants the program to end, and when the output is no good.
    void run();

    // ---- main thread -----------------------------------------------------------------------------------------------

    /// Waits at most that long for the end of run(). @return whether it has come
    [[nodiscard]] bool waitForEnd(std::chrono::milliseconds most);
    /// It has ended, and every frame is written.
    [[nodiscard]] bool isWhole();
    [[nodiscard]] const std::shared_ptr<ResultsReader> &reader() const { return m_reader; }

private:
    /// The results of one analyzer, and how far they are written.
    struct Stream {
        AnalyzerResults *results;
        std::uint64_t next;
        std::uint64_t end;
        std::int64_t first; ///< sample of the next frame
    };

    [[nodiscard]] bool writeAll();
    [[nodiscard]] std::vector<Stream> streams() const;

    ResultsGate &m_gate;
    const Task m_task;
    FrameWriter &m_writer;
    const Output &m_out;
    const std::shared_ptr<ResultsReader> m_reader = std::make_shared<ResultsReader>();
    std::mutex m_mutex; ///< of what follows
    std::condition_variable m_ended;
    bool m_hasEnded = false;
    bool m_isWhole = false;
};
