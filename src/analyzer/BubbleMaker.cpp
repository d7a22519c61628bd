#include "analyzer/BubbleMaker.h"

#include "analyzer/AnalyzerManager.h"
#include "analyzer/LeftBehind.h"
#include "analyzer/PluginCall.h"
#include "settings/PostedCall.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <corvanlux/analyzer/AnalyzerResults.h>
#include <mutex>
#include <optional>
#include <utility>

namespace {

constexpr std::uint64_t framesAtFirst = 4;  ///< whose texts are made at once
constexpr std::uint64_t framesInARow = 256; ///< the same, at most, when one frame after the other is asked for
constexpr std::uint64_t rowGrowth = 8;      ///< from the former to the latter
constexpr auto batchTime = std::chrono::milliseconds(8); ///< a slow decoder makes fewer at once
constexpr std::size_t mostOfRow = 4096; ///< frames whose texts are kept; more than a screen has room for
constexpr std::size_t mostRows = 256;

BubbleMaker::Texts textsOf(const BubbleMaker::Key &key, std::uint64_t frame)
{
    BubbleMaker::Texts texts;
    const QString fault = pluginFault([&] {
        Channel channel(0, key.channel);
        key.results->BuildBubbleText(frame, channel, key.base);
        const char *const *strings = nullptr;
        std::uint32_t count = 0;
        key.results->GetResultStrings(&strings, &count);
        texts.assign(strings, strings + count);
    });
    if (!fault.isEmpty()) {
        key.results->KeepTextFault(fault.toUtf8().constData());
        texts.clear();
    }
    return texts;
}

} // namespace

/// What the thread and who asks it share.
class BubbleMaker::Desk {
public:
    struct Job {
        Key key;
        std::uint64_t count = 0; ///< frames
    };

    Desk(ResultsGate &gate, std::function<void()> late) : m_gate(gate), m_late(std::move(late)) {}

    const std::shared_ptr<ResultsReader> reader = std::make_shared<ResultsReader>();

    void run()
    {
        std::unique_lock lock(m_mutex);
        for (;;) {
            m_asked.wait(lock, [this] { return m_job || m_isOver; });
            if (m_isOver) {
                m_hasEnded = true;
                m_answered.notify_all();
                return;
            }
            const Job job = *m_job;
            lock.unlock();
            std::vector<Texts> made;
            const bool isAnswered = make(job, made);
            if (reader->isLost()) {
                return; // whoever asked has gone on without this thread
            }
            lock.lock();
            m_job.reset();
            m_made = std::move(made);
            m_answered.notify_all();
            if (std::exchange(m_isLate, false) || !isAnswered) {
                m_late();
            }
        }
    }
    void ask(const Job &job)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_job = job;
            m_isGone = false;
        }
        m_asked.notify_one();
    }
    /// The results of the job are about to be replaced. A thread that has a pass by now is waited for.
    void forget()
    {
        const std::lock_guard lock(m_mutex);
        m_isGone = true;
    }
    /// @return false when there is none at the end of the patience: m_late will be called
    [[nodiscard]] bool waitForAnswer(std::chrono::milliseconds most)
    {
        std::unique_lock lock(m_mutex);
        if (most.count() > 0) { // a wait for no time takes the system almost 0.1 ms
            m_answered.wait_for(lock, most, [this] { return !m_job; });
        }
        m_isLate = m_job.has_value();
        return !m_isLate;
    }
    [[nodiscard]] std::vector<Texts> take()
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_made, {});
    }
    void askToEnd()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_isOver = true;
        }
        m_asked.notify_one();
    }
    [[nodiscard]] bool waitForEnd(std::chrono::milliseconds most)
    {
        std::unique_lock lock(m_mutex);
        return m_answered.wait_for(lock, most, [this] { return m_hasEnded; });
    }

private:
    /// @return false when results are being replaced, so that none can be made
    [[nodiscard]] bool make(const Job &job, std::vector<Texts> &made)
    {
        const ResultsPass pass(m_gate, reader);
        if (!pass || isGone()) {
            return false;
        }
        const std::uint64_t frames = job.key.results->GetNumFrames();
        const std::uint64_t end = std::min(job.key.frame + job.count, frames);
        const auto until = std::chrono::steady_clock::now() + batchTime;
        for (std::uint64_t frame = job.key.frame; frame < end && !m_gate.isWanted(); ++frame) {
            if (!made.empty() && std::chrono::steady_clock::now() > until) {
                break;
            }
            if (!reader->inside(job.key.results, [&] { made.push_back(textsOf(job.key, frame)); })) {
                return false;
            }
        }
        return true;
    }
    /// With a pass: the answer holds as long as that.
    [[nodiscard]] bool isGone()
    {
        const std::lock_guard lock(m_mutex);
        return m_isGone;
    }

    ResultsGate &m_gate;
    const std::function<void()> m_late;
    std::mutex m_mutex; ///< of what follows
    std::condition_variable m_asked;
    std::condition_variable m_answered;
    std::optional<Job> m_job; ///< until it is answered
    std::vector<Texts> m_made;
    bool m_isGone = false; ///< what the job is about
    bool m_isLate = false; ///< who asked has gone on
    bool m_isOver = false;
    bool m_hasEnded = false;
};

BubbleMaker::BubbleMaker(AnalyzerManager &manager, std::function<void()> arrived, std::chrono::milliseconds most)
    : m_gate(manager.gate()), m_arrived(std::move(arrived)), m_most(most)
{
    QObject::connect(
        &manager, &AnalyzerManager::modifyPrepared, &m_context, [this] { forget(); }, Qt::DirectConnection);
    startThread();
}

BubbleMaker::~BubbleMaker()
{
    m_desk->askToEnd();
    m_gate.endThread(m_thread, m_desk->reader,
                     [this](std::chrono::milliseconds most) { return m_desk->waitForEnd(most); });
}

void BubbleMaker::startThread()
{
    const auto late = [this] {
        postCall(&m_context, [this] {
            if (m_arrived) {
                m_arrived();
            }
        });
    };
    m_desk = std::make_shared<Desk>(m_gate, late);
    m_thread = std::thread([desk = m_desk] { desk->run(); });
}

void BubbleMaker::forget()
{
    m_rows.clear();
    m_asked = {};
    m_desk->forget();
}

BubbleMaker::Row &BubbleMaker::rowOf(const Key &key)
{
    const std::tuple row(key.results, key.channel, key.base);
    const auto found = m_rows.find(row);
    if (found != m_rows.end()) {
        return found->second;
    }
    if (m_rows.size() >= mostRows) {
        m_rows.clear();
    }
    return m_rows[row];
}

void BubbleMaker::keep(std::vector<Texts> made)
{
    if (m_asked.results == nullptr) {
        return; // its results have been replaced meanwhile
    }
    Row &row = rowOf(m_asked);
    if (row.texts.size() + made.size() > mostOfRow) {
        row.texts.clear();
    }
    for (std::size_t i = 0; i < made.size(); ++i) {
        row.texts.insert_or_assign(m_asked.frame + i, std::move(made[i]));
    }
}

const BubbleMaker::Texts *BubbleMaker::madeFor(const Key &key)
{
    const Row &row = rowOf(key);
    const auto found = row.texts.find(key.frame);
    return found == row.texts.end() ? nullptr : &found->second;
}

const BubbleMaker::Texts *BubbleMaker::texts(const Key &key)
{
    if (m_desk->reader->isLost()) {
        LeftBehind::leave(m_thread);
        m_isLate = false;
        startThread();
    }
    if (m_isLate && m_desk->waitForAnswer(std::chrono::milliseconds(0))) {
        m_isLate = false;
        keep(m_desk->take());
    }
    if (const Texts *made = madeFor(key); made != nullptr || m_isLate) {
        return made;
    }
    Row &row = rowOf(key);
    row.batch = row.batch > 0 && key.frame == row.end ? std::min(row.batch * rowGrowth, framesInARow) : framesAtFirst;
    row.end = key.frame + row.batch;
    m_asked = key;
    m_desk->ask({key, row.batch});
    if (!m_desk->waitForAnswer(m_most)) {
        m_isLate = true;
        return nullptr;
    }
    keep(m_desk->take());
    return madeFor(key);
}
