#pragma once

#include <QObject>
#include <QPointer>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <thread>

class DevControl;

/// The requests that the main thread makes of a running instrument, on a thread of their own: an instrument that does
/// not answer holds up nobody but those who come behind.
///
/// One for the life of the transport, which outlives it, as the instrument side does. Requests are made in the order in
/// which they were posted. It lives on the main thread, and all operations are for that thread.
class RequestQueue final : public QObject {
    Q_OBJECT
public:
    /// Makes requests, on the queue's thread. @return 0, or an error of the kind that `Done` wants
    using Job = std::function<int(DevControl &control)>;
    /// Takes what the job has returned, on the main thread, by its event loop.
    using Done = std::function<void(int result)>;

    /// @param control  not owned, outlives this
    explicit RequestQueue(DevControl &control);
    /// Makes the requests that still wait, so that a last one is sent, and joins the thread.
    ~RequestQueue() override;

    /// Has a job done; returns at once.
    /// @param context  `done` is dropped when this object has gone by then
    void post(Job job, QObject *context, Done done);
    /// Has a job done of which only the last one matters, such as a value under a slider: it takes the place of the one
    /// that was posted last, when that has the same key and still waits.
    /// @param key  above 0
    void postLatest(int key, Job job);
    /// Forgets what waits: the instrument has gone. Their `done` get SmpDevice::notOpen, now.
    void drop();
    /// No request is made, and none waits.
    [[nodiscard]] bool isIdle();

private:
    struct Entry {
        std::uint64_t number = 0; ///< of its `done`; 0 for none
        int key = 0;
        Job job;
    };
    struct Answer {
        QPointer<QObject> context;
        Done done;
    };

    void push(Entry entry);
    void run();
    void answer(std::uint64_t number, int result);

    DevControl &m_control;
    std::map<std::uint64_t, Answer> m_answers; ///< main thread
    std::uint64_t m_lastNumber = 0;            ///< main thread
    std::mutex m_mutex;                        ///< of the next three; not held during a request
    std::deque<Entry> m_waiting;
    bool m_works = false; ///< a request is being made
    bool m_ends = false;
    std::condition_variable m_changed;
    std::thread m_thread; ///< begins with the first request
};
