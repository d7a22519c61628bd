#include "SmbusAnalyzer.h"

#include "SmbusProtocol.h"
#include "common/Duration.h"
#include "common/FilteredLine.h"

#include <algorithm>

using lux::BusEvent;
using lux::Sample;

LUX_PLUGIN(SmbusAnalyzer)

namespace {

constexpr unsigned bitsOfByte = 8;
constexpr std::int64_t spike = 50;              ///< ns, SMBus 3.1, table 13, t_SPIKE
constexpr std::int64_t leastTimeout = 25000000; ///< ns, t_TIMEOUT: a device may let go
constexpr std::int64_t mostTimeout = 35000000;  ///< ns: each device has let go
constexpr std::int64_t mostByTarget = 25000000; ///< ns, t_LOW:SEXT: a target holds the clock in a transaction
constexpr std::int64_t mostInByte = 10000000;   ///< ns, t_LOW:MEXT: a controller holds it in a byte
constexpr std::int64_t slowestPeriod = 100000;  ///< ns, of the clock, by the least of f_SMB
constexpr std::size_t mostWaiting = 64;         ///< conditions before a transaction takes its place

} // namespace

/// SMBus 3.1, 4.3: conditions, bytes and acknowledgements are those of I2C.
void SmbusAnalyzer::decode()
{
    m_byte = {};
    m_transaction = {};
    m_bytes.clear();
    m_isHeld = false;
    m_late.clear();
    m_conditions.clear();
    const Sample shortest = lux::samplesIn(spike, sampleRate());
    if (shortest > 1) {
        decodeBus(lux::FilteredLine(reader(m_settings.scl), shortest),
                  lux::FilteredLine(reader(m_settings.sda), shortest));
    } else {
        decodeBus(reader(m_settings.scl), reader(m_settings.sda));
    }
    addHeldByte(false);
    addConditions();
}

template<class Line>
void SmbusAnalyzer::decodeBus(const Line &scl, const Line &sda)
{
    const Sample timeout = lux::samplesIn(leastTimeout, sampleRate());
    lux::StartStopBus<Line> bus(scl, sda);
    Sample lastRise = -1;
    BusEvent event;
    while (bus.next(event)) {
        if (m_transaction.isOpen && bus.rise() != lastRise) {
            if (bus.lowTime() >= timeout) {
                takeTimeout(bus.rise(), bus.lowTime());
            } else {
                takeLow(bus.rise(), bus.lowTime());
            }
        }
        lastRise = bus.rise(); // several conditions may follow one rise
        if (event.kind == BusEvent::Kind::Bit) {
            takeBit(event);
        } else {
            takeCondition(event, bus.rise());
        }
    }
}

void SmbusAnalyzer::takeBit(const BusEvent &event)
{
    if (!m_transaction.isOpen) {
        return; // the capture begins within a transaction, or somebody clocks a free bus
    }
    if (m_byte.count == 0) {
        m_byte = {.first = event.at};
    }
    results().mark(m_settings.scl, event.at, MarkerType::UpArrow);
    if (m_byte.count == bitsOfByte) {
        results().mark(m_settings.sda, event.at, event.bit ? MarkerType::X : MarkerType::Dot);
        addByte(!event.bit, event.end - 1);
        return;
    }
    m_byte.bits = m_byte.bits << 1 | std::uint32_t(event.bit);
    ++m_byte.count;
}

void SmbusAnalyzer::takeCondition(const BusEvent &event, Sample sclRise)
{
    const bool isStart = event.kind == BusEvent::Kind::Start;
    if (m_byte.count == bitsOfByte) {
        results().mark(m_settings.sda, sclRise, event.bit ? MarkerType::X : MarkerType::Dot);
        addByte(!event.bit, event.at - 1); // some devices need no further clock for the condition
    } else if (m_byte.count > 0) {
        cutByte(event.at - 1);
    }
    results().mark(m_settings.sda, event.at, isStart ? MarkerType::Start : MarkerType::Stop);
    if (!isStart && !m_transaction.isOpen) {
        return; // the lines of a free bus are let go
    }
    addHeldByte(!isStart);
    const bool isRestart = isStart && m_transaction.isOpen;
    if (isStart && !isRestart) {
        m_bytes.clear();
        m_transaction = {.isOpen = true, .first = event.at};
    }
    m_conditions.push_back({.firstSample = event.at,
                            .lastSample = event.at,
                            .kind = std::uint8_t(!isStart    ? SmbusResults::Stop
                                                 : isRestart ? SmbusResults::Restart
                                                             : SmbusResults::Start)});
    if (m_transaction.isPlaced || !isStart) {
        addConditions();
    } else if (m_conditions.size() > mostWaiting) {
        placeTransaction();
    }
    m_transaction.hasAddress = false;
    m_transaction.extendedInByte = 0;
    if (!isStart) {
        endTransaction(event.at);
    }
}

void SmbusAnalyzer::addByte(bool acknowledge, Sample last)
{
    placeTransaction();
    addHeldByte(false);
    FrameData frame{.firstSample = m_byte.first, .lastSample = last, .data = m_byte.bits, .kind = SmbusResults::Data};
    const bool isAddress = !m_transaction.hasAddress;
    if (isAddress) {
        frame.kind = SmbusResults::Address;
        m_transaction.hasAddress = true;
        m_transaction.direction = (m_byte.bits & 1U) != 0 ? SmbusResults::Read : 0;
        if (!m_bytes.empty() && m_transaction.secondAddress == 0) {
            m_transaction.secondAddress = std::uint32_t(m_bytes.size());
        }
    }
    m_transaction.isNack = !acknowledge;
    m_transaction.extendedInByte = 0;
    frame.flags = std::uint16_t(m_transaction.direction | (acknowledge ? 0 : SmbusResults::Nack));
    m_bytes.push_back(std::uint8_t(m_byte.bits));
    if (!isAddress && m_bytes.size() == 2 && m_transaction.direction == 0) {
        frame.line = SmbusResults::Command;
    }
    if (isAddress) {
        addWithLate(frame);
    } else {
        m_held = frame;
        m_isHeld = true;
    }
    m_byte = {};
}

/// Conditions without a byte between them make no transaction: its place is taken by what comes first in it.
void SmbusAnalyzer::placeTransaction()
{
    if (m_transaction.isOpen && !m_transaction.isPlaced) {
        m_transaction.isPlaced = true;
        m_transaction.place = results().open(m_transaction.first);
        addConditions();
    }
}

void SmbusAnalyzer::addConditions()
{
    for (const FrameData &condition : m_conditions) {
        results().add(condition);
    }
    m_conditions.clear();
}

/// @param isLast  a stop follows: the byte may be the packet error code
void SmbusAnalyzer::addHeldByte(bool isLast)
{
    if (!m_isHeld) {
        return;
    }
    if (isLast && m_bytes.size() > 2 && smbus::Pec::of(m_bytes) == 0) {
        m_held.line = SmbusResults::Pec;
    }
    addWithLate(m_held);
    m_isHeld = false;
}

/// Frames come in the order of their begins: time-outs within a byte behind it.
void SmbusAnalyzer::addWithLate(const FrameData &byte)
{
    results().add(byte);
    for (const FrameData &timeout : m_late) {
        results().add(timeout);
    }
    m_late.clear();
}

/// A condition or a time-out ends a byte that is not complete.
void SmbusAnalyzer::cutByte(Sample last)
{
    placeTransaction();
    addHeldByte(false);
    results().mark(m_settings.sda, last, MarkerType::ErrorX);
    addWithLate({.firstSample = m_byte.first,
                 .lastSample = last,
                 .data = m_byte.bits,
                 .kind = SmbusResults::Cut,
                 .extra = m_byte.count});
    m_transaction.isBroken = true;
    m_byte = {};
}

/// SMBus 3.1, 4.2.5: a device lets go of the bus when the clock is low for 25 ms, and must have after 35 ms.
void SmbusAnalyzer::takeTimeout(Sample rise, Sample lowTime)
{
    const Sample fall = rise - lowTime;
    const bool isOver = lowTime >= lux::samplesIn(mostTimeout, sampleRate());
    placeTransaction();
    if (isOver && m_byte.count > 0) {
        cutByte(fall - 1);
    }
    addHeldByte(false);
    results().mark(m_settings.scl, fall, MarkerType::ErrorX);
    const FrameData timeout{.firstSample = fall, .lastSample = rise - 1, .kind = SmbusResults::Timeout};
    if (m_byte.count > 0) {
        m_late.push_back(timeout);
    } else {
        results().add(timeout);
    }
    if (isOver) {
        m_transaction.isBroken = true;
        endTransaction(fall - 1);
    }
}

/// SMBus 3.1, 4.2.5: a target may hold the clock for 25 ms in all of a transaction, a controller for 10 ms between two
/// acknowledgements. Who holds it cannot be seen, so that both limits are those of all together. A low counts as held
/// beyond a period of the slowest clock, on a bus that is slower still beyond twice its shortest one.
void SmbusAnalyzer::takeLow(Sample rise, Sample lowTime)
{
    Transaction &now = m_transaction;
    now.shortestLow = std::min(now.shortestLow, lowTime);
    const Sample held = lowTime - std::max(lux::samplesIn(slowestPeriod, sampleRate()), 2 * now.shortestLow);
    if (held <= 0) {
        return;
    }
    now.extended += held;
    now.extendedInByte += held;
    const std::uint16_t before = now.limits;
    if (now.extended > lux::samplesIn(mostByTarget, sampleRate())) {
        now.limits |= SmbusResults::HeldByTarget;
    }
    const bool isByteSlow = now.extendedInByte > lux::samplesIn(mostInByte, sampleRate());
    if (isByteSlow) {
        now.limits |= SmbusResults::HeldInByte;
    }
    if (now.limits != before || isByteSlow) {
        results().mark(m_settings.scl, rise - lowTime, MarkerType::ErrorDot);
    }
}

void SmbusAnalyzer::endTransaction(Sample last)
{
    if (m_bytes.empty() && m_transaction.isPlaced) {
        results().drop(m_transaction.place);
    } else if (!m_bytes.empty()) {
        const bool hasPec = m_bytes.size() > 2 && !m_transaction.isBroken && smbus::Pec::of(m_bytes) == 0;
        results().fill(m_transaction.place,
                       {.firstSample = m_transaction.first,
                        .lastSample = last,
                        .data = results().keep(m_bytes),
                        .kind = SmbusResults::Transaction,
                        .flags = std::uint16_t(
                            (hasPec ? SmbusResults::RightPec : 0) | (m_transaction.isNack ? SmbusResults::Nack : 0) |
                            (m_transaction.isBroken ? SmbusResults::Broken : 0) | m_transaction.limits),
                        .extra = m_transaction.secondAddress});
    }
    m_transaction = {};
    m_bytes.clear();
}
