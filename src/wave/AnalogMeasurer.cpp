#include "wave/AnalogMeasurer.h"

#include "analysis/AnalogParameters.h"

#include <utility>

namespace {

QStringList textsOf(const AnalogMeasurer::Job &job)
{
    QStringList texts;
    for (const AnalogMeasurer::Channel &channel : job.channels) {
        texts << analogParameters(channel.samples, job.rate, channel.probe);
    }
    return texts;
}

} // namespace

AnalogMeasurer::AnalogMeasurer(QObject *parent) : QThread(parent) {}

AnalogMeasurer::~AnalogMeasurer()
{
    {
        const Lock lock(m_mutex);
        m_quitting = true;
    }
    m_wake.notify_all();
    wait();
    const Lock lock(m_mutex); // orders the thread's last writes before the members' end
}

void AnalogMeasurer::measure(Job job)
{
    {
        const Lock lock(m_mutex);
        ++m_newest;
        m_texts.reset();
        m_job = std::move(job);
    }
    if (isRunning()) {
        m_wake.notify_all();
    } else {
        start(QThread::InheritPriority);
    }
}

void AnalogMeasurer::cancel()
{
    const Lock lock(m_mutex);
    ++m_newest;
    m_texts.reset();
    m_job.reset();
}

std::optional<QStringList> AnalogMeasurer::takeTexts()
{
    const Lock lock(m_mutex);
    return std::exchange(m_texts, std::nullopt);
}

void AnalogMeasurer::run()
{
    Lock lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [this] { return m_quitting || m_job.has_value(); });
        if (m_quitting) {
            return;
        }
        const std::uint64_t number = m_newest;
        const Job job = std::exchange(m_job, std::nullopt).value_or(Job());
        lock.unlock();
        QStringList texts = textsOf(job);
        lock.lock();
        if (number == m_newest) {
            m_texts = std::move(texts);
            lock.unlock();
            emit measured(QPrivateSignal());
            lock.lock();
        }
    }
}
