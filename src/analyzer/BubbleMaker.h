#pragma once

#include "analyzer/ResultsGate.h"

#include <QObject>

#include <corvanlux/analyzer/AnalyzerTypes.h>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <tuple>
#include <unordered_map>
#include <vector>

class AnalyzerManager;

/// Has decoders make the texts of bubbles, on a thread of its own: a decoder that does not come back holds up nobody.
///
/// Main thread. Who asks waits for the texts, which are there within microseconds, and waits no longer than the
/// patience in all until late ones have come: those are there when what is drawn is drawn again. The thread makes the
/// texts of the frames that follow along with those that are asked for, since they mostly are what is asked for next;
/// what has been made is kept until results are replaced, so that drawing the same again asks for nothing. It holds a
/// ResultsPass while it works.
class BubbleMaker {
public:
    static constexpr std::chrono::milliseconds patience{40};
    using Texts = std::vector<std::string>; ///< of one frame, in the order of their lengths, as UTF-8

    struct Key {
        AnalyzerResults *results = nullptr;
        std::uint64_t frame = 0;
        std::uint32_t channel = 0;
        DisplayBase base = DisplayBase::Hexadecimal;
    };

    /// @param arrived  called when texts are there that were asked for in vain; on the main thread
    /// @param most  how long who asks waits for texts
    BubbleMaker(AnalyzerManager &manager, std::function<void()> arrived, std::chrono::milliseconds most = patience);
    ~BubbleMaker();
    BubbleMaker(const BubbleMaker &) = delete;
    BubbleMaker &operator=(const BubbleMaker &) = delete;

    /// @return good until the next call; null when they are not there, for a frame that does not exist too
    [[nodiscard]] const Texts *texts(const Key &key);

private:
    class Desk;

    /// What is made for one row of one decoder. It holds as long as the results do.
    struct Row {
        std::unordered_map<std::uint64_t, Texts> texts; ///< by frame
        std::uint64_t end = 0;                          ///< behind the frames that were asked for last
        std::uint64_t batch = 0;                        ///< how many that were
    };

    void startThread();
    /// No results are what they were.
    void forget();
    [[nodiscard]] Row &rowOf(const Key &key);
    void keep(std::vector<Texts> made);
    [[nodiscard]] const Texts *madeFor(const Key &key);

    ResultsGate &m_gate;
    const std::function<void()> m_arrived;
    const std::chrono::milliseconds m_most;
    std::shared_ptr<Desk> m_desk; ///< the thread's too
    std::thread m_thread;
    bool m_isLate = false; ///< texts are under way for which nobody waits
    Key m_asked;           ///< of the first frame that was asked for last; without results when they have been replaced
    std::map<std::tuple<AnalyzerResults *, std::uint32_t, DisplayBase>, Row> m_rows;
    QObject m_context; ///< of what is told: goes first
};
