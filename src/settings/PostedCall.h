#pragma once

#include <QObject>

#include <atomic>
#include <utility>

/// A call on its way to another thread.
///
/// Qt hands events over in a way that ThreadSanitizer does not see, and would have every captured value reported as a
/// race. So each copy is published by a release, the last one before the event is posted, and the call begins with an
/// acquire of the same word. The thread that posts may be the one that lets go of the last copy, after the call: in the
/// same way the call ends with a release, and a copy with an acquire.
template<class Function>
class PostedCall {
public:
    explicit PostedCall(Function function) : m_function(std::move(function)) {}
    PostedCall(const PostedCall &other) : m_function(other.m_function)
    {
        published().fetch_add(1, std::memory_order_release);
    }
    PostedCall(PostedCall &&other) noexcept : m_function(std::move(other.m_function))
    {
        published().fetch_add(1, std::memory_order_release);
    }
    PostedCall &operator=(const PostedCall &) = delete;
    PostedCall &operator=(PostedCall &&) = delete;
    ~PostedCall() { (void)published().load(std::memory_order_acquire); }

    void operator()()
    {
        (void)published().load(std::memory_order_acquire);
        m_function();
        published().fetch_add(1, std::memory_order_release);
    }

private:
    static std::atomic<unsigned> &published()
    {
        static std::atomic<unsigned> count{0};
        return count;
    }

    Function m_function;
};

/// Has `function` called on the receiver's thread, by its event loop, unless the receiver is gone by then. Any thread
/// on which the receiver is known to live; returns at once.
template<class Function>
void postCall(QObject *receiver, Function function)
{
    QMetaObject::invokeMethod(receiver, PostedCall<Function>(std::move(function)), Qt::QueuedConnection);
}
