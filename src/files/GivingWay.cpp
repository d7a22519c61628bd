#include "files/GivingWay.h"

#include "settings/FileReplacement.h"

#include <QFile>

#include <utility>

std::shared_ptr<GivingWay> GivingWay::on(const SmpData *data)
{
    // Not make_shared(): the constructor is private.
    std::shared_ptr<GivingWay> way(new GivingWay(data));
    // Who is called may outlive the owner's hold on this, and keeps it for that long.
    way->m_lease = std::make_unique<SmpLease>(data, [weak = std::weak_ptr<GivingWay>(way)] {
        if (const auto called = weak.lock()) {
            called->writerCame();
        }
    });
    if (*way->m_lease) {
        way->leave(); // a writer may have come since the lease was granted
    } else {
        way->m_state = State::Gone;
    }
    return way;
}

bool GivingWay::enter()
{
    auto away = State::Away;
    return m_state.compare_exchange_strong(away, State::Reading);
}

bool GivingWay::leave()
{
    auto reading = State::Reading;
    if (m_state.compare_exchange_strong(reading, State::Away)) {
        return true;
    }
    if (reading == State::Called) {
        m_state = State::Gone;
        m_lease->release();
    }
    return false;
}

void GivingWay::release()
{
    auto away = State::Away;
    if (m_state.compare_exchange_strong(away, State::Gone)) {
        m_lease->release();
    }
}

void GivingWay::writerCame()
{
    if (m_stays.load(std::memory_order_relaxed)) {
        return;
    }
    for (;;) {
        auto away = State::Away;
        if (m_state.compare_exchange_strong(away, State::Gone)) {
            m_lease->release();
            return;
        }
        auto reading = State::Reading;
        if (away != State::Reading || m_state.compare_exchange_strong(reading, State::Called)) {
            return;
        }
    }
}

GivingWayFile::GivingWayFile(QFile &file, GivingWay &way, std::function<bool()> mayGoOn)
    : m_file(file), m_way(way), m_mayGoOn(std::move(mayGoOn))
{}

qint64 GivingWayFile::readData(char * /*bytes*/, qint64 /*size*/)
{
    return -1;
}

qint64 GivingWayFile::writeData(const char *bytes, qint64 size)
{
    if (!m_way.leave() || !m_mayGoOn()) {
        return -1;
    }
    m_good = writeWhole(m_file, bytes, size);
    return m_good && m_way.enter() ? size : -1;
}
