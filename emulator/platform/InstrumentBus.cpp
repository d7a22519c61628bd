#include "platform/InstrumentBus.h"

#include <algorithm>

using namespace std::chrono_literals;

namespace {

constexpr auto tickWhileBusy = 1ms; // the pump's grain of time
constexpr auto tickWhileIdle = 5ms;

} // namespace

InstrumentBus::~InstrumentBus() = default;

void InstrumentBus::start()
{
    m_pump = std::thread([this] { run(); });
}

void InstrumentBus::stop()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stop = true;
    }
    m_wake.notify_one();
    m_pump.join();
}

int InstrumentBus::add(const emulator::InstrumentOptions &options, std::shared_ptr<emulator::LogicSignal> signal)
{
    auto port = std::make_unique<Port>();
    port->instrument = std::make_unique<emulator::Instrument>(options, std::move(signal));
    port->urbs = std::make_unique<emulator::UrbQueue>(*port->instrument);
    const Turn turn(*this);
    m_ports.push_back(std::move(port));
    return int(m_ports.size()) - 1;
}

void InstrumentBus::plug(int index)
{
    with(index, [](emulator::Instrument &instrument) { instrument.attach(); });
}

void InstrumentBus::unplug(int index)
{
    with(index, [](emulator::Instrument &instrument) { instrument.detach(); });
}

int InstrumentBus::fewestReadsLeft(int index)
{
    const Turn turn(*this);
    return m_ports[std::size_t(index)]->urbs->fewestReadsLeft();
}

bool InstrumentBus::isPresent(int port, unsigned generation) const
{
    const emulator::Instrument &instrument = *m_ports[std::size_t(port)]->instrument;
    return instrument.attached() && instrument.generation() == generation;
}

void InstrumentBus::passTime()
{
    constexpr Clock::duration moment = 100ms;
    const Clock::time_point now = Clock::now();
    const Clock::duration step = std::min(now - m_lastTick, moment);
    m_lastTick = now;
    m_time += step;
    const double elapsed = std::chrono::duration<double, std::nano>(step).count() * m_timeScale;
    for (const auto &port : m_ports) {
        port->instrument->tick(std::uint64_t(std::max(elapsed, 0.0)));
    }
}

bool InstrumentBus::pumpOnce()
{
    bool more = false;
    for (std::size_t i = 0; i < m_ports.size(); ++i) {
        for (const emulator::Urb &urb : m_ports[i]->urbs->pump()) {
            completed(int(i), urb);
        }
        more = more || m_ports[i]->urbs->wantsMore();
    }
    afterPump();
    return more;
}

void InstrumentBus::forgetChanges()
{
    for (const auto &port : m_ports) {
        port->toldAttached = port->instrument->attached();
        port->toldGeneration = port->instrument->generation();
    }
}

bool InstrumentBus::tellChanges(std::unique_lock<std::mutex> &lock)
{
    bool any = false;
    for (std::size_t i = 0; i < m_ports.size(); ++i) {
        Port &port = *m_ports[i];
        const bool attached = port.instrument->attached();
        const unsigned generation = port.instrument->generation();
        const bool another = generation != port.toldGeneration;
        const bool left = port.toldAttached && (!attached || another);
        const bool came = attached && (!port.toldAttached || another);
        const unsigned leftGeneration = port.toldGeneration;
        port.toldAttached = attached;
        port.toldGeneration = generation;
        if (!left && !came) {
            continue;
        }
        any = true;
        lock.unlock();
        if (left) {
            changed(int(i), false, leftGeneration);
        }
        for (int n = 0; came && n < m_announcements; ++n) {
            changed(int(i), true, generation);
        }
        lock.lock();
    }
    return any;
}

bool InstrumentBus::hasWork() const
{
    return std::any_of(m_ports.begin(), m_ports.end(), [](const auto &port) { return !port->urbs->empty(); });
}

void InstrumentBus::run()
{
    std::unique_lock lock(m_mutex);
    while (!m_stop) {
        passTime();
        const bool more = pumpOnce();
        if (tellChanges(lock)) {
            continue;
        }
        if (more) {
            lock.unlock();
            do {
                std::this_thread::yield();
            } while (m_callers.load(std::memory_order_relaxed) > 0);
            lock.lock();
        } else {
            m_wake.wait_for(lock, hasWork() ? tickWhileBusy : tickWhileIdle);
        }
    }
}
