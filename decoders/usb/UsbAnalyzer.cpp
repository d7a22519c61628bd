#include "UsbAnalyzer.h"

#include "UsbSpeedFinder.h"

#include <algorithm>
#include <string>

using lux::Sample;

LUX_PLUGIN(UsbAnalyzer)

namespace {

// Universal Serial Bus Specification 2.0, 7.1.7.
constexpr std::int64_t leastSuspend = 3000; ///< us of idle (7.1.7.6)
constexpr std::int64_t leastResume = 900;   ///< us of K; a device drives it for 1 ms at least (7.1.7.7)
constexpr std::int64_t partsOfReset = 2;    ///< of a time in whole microseconds
constexpr std::int64_t microsecondsOfParts = 5;
constexpr std::int64_t bitsOfKeepAlive = 4; ///< at most; it is two bits of SE0
constexpr std::int64_t bitsOfTimeout = 30;  ///< 18 bits, and the delay of hubs and cables (7.1.19)
constexpr std::int64_t lowBit = 8;          ///< of a full-speed bus: a bit of low speed
constexpr std::int64_t bitsOfIdle = 8;      ///< no packet has so many without an edge

} // namespace

std::uint32_t UsbAnalyzer::NeededSampleRate()
{
    const std::int64_t rate = m_settings.speed == UsbSpeed::Low ? UsbReceiver::lowRate : UsbReceiver::fullRate;
    return std::uint32_t(leastSamplesPerBit * rate);
}

/// SE0 for 2.5 us resets a device, whatever was before (7.1.7.5).
bool UsbAnalyzer::isReset(Sample length) const
{
    return partsOfReset * length >= m_times.resetParts;
}

Sample UsbAnalyzer::microseconds(std::int64_t count) const
{
    constexpr std::int64_t perSecond = 1000000;
    return std::max<Sample>(1, sampleRate() / perSecond * count + sampleRate() % perSecond * count / perSecond);
}

void UsbAnalyzer::decode()
{
    if (!findSpeed()) {
        return;
    }
    const UsbReceiver receiver(sampleRate(), m_fullSpeed);
    m_times = {.suspend = microseconds(leastSuspend),
               .resume = microseconds(leastResume),
               .resetParts = microseconds(microsecondsOfParts)};
    UsbLine line(reader(m_settings.dp), reader(m_settings.dm), m_fullSpeed);
    const Sample timeout = receiver.samplesOf(bitsOfTimeout);
    UsbTransactions transactions(results(), timeout,
                                 m_fullSpeed ? receiver.samplesOf(bitsOfTimeout * lowBit) : timeout);
    waitForIdle(line, receiver, true);
    while (line.hasChange()) {
        switch (line.state()) {
        case UsbState::J:
            idle(line, transactions);
            break;
        case UsbState::Se0:
            singleEndedZero(line, receiver, transactions);
            break;
        case UsbState::K:
            activity(line, receiver, transactions);
            break;
        default:
            line.next();
            break;
        }
    }
    transactions.timePasses(sampleCount());
    transactions.finish();
}

bool UsbAnalyzer::findSpeed()
{
    UsbSpeed speed = m_settings.speed;
    const auto found = UsbSpeedFinder::find(reader(m_settings.dp), reader(m_settings.dm));
    const auto other = speed == UsbSpeed::Low ? UsbSpeedFinder::Found::Full : UsbSpeedFinder::Found::Low;
    if (speed == UsbSpeed::Auto) {
        if (found == UsbSpeedFinder::Found::Nothing) {
            return false; // neither line is ever high
        }
        speed = found == UsbSpeedFinder::Found::Full ? UsbSpeed::Full : UsbSpeed::Low;
        tell(speed == UsbSpeed::Full ? "Speed found: full speed" : "Speed found: low speed");
    } else if (found == other) {
        tell(speed == UsbSpeed::Low ? "The idle level of the bus is that of full speed"
                                    : "The idle level of the bus is that of low speed");
    }
    m_fullSpeed = speed == UsbSpeed::Full;
    const std::int64_t rate = m_fullSpeed ? UsbReceiver::fullRate : UsbReceiver::lowRate;
    if (sampleRate() < leastSamplesPerBit * rate) {
        fail("The sample rate is too low: this speed needs at least " + std::to_string(leastSamplesPerBit * rate) +
             " Hz");
    }
    return true;
}

/// A capture may begin within a packet, and an error may end one early: what comes before the first J is passed over
/// that lasts, or ends a packet. A capture that begins with J and goes to SE0 is taken to begin with an idle bus.
void UsbAnalyzer::waitForIdle(UsbLine &line, const UsbReceiver &receiver, bool isBegin) const
{
    const Sample enough = receiver.samplesOf(bitsOfIdle);
    bool wasEnd = false;
    while (line.hasChange()) {
        const Sample length = line.peekChange() - line.begin();
        if (line.state() == UsbState::J) {
            UsbLine ahead(line);
            ahead.next();
            const bool isEdgeToSe0 = ahead.state() == UsbState::Se0 && ahead.hasChange() &&
                                     receiver.isEndOfPacket(ahead.peekChange() - ahead.begin());
            if (length >= enough || wasEnd || (isBegin && isEdgeToSe0)) {
                return;
            }
        }
        const bool isSe0 = line.state() == UsbState::Se0;
        if (isSe0 && line.begin() > 0 && isReset(length)) {
            return;
        }
        wasEnd = isSe0 && receiver.isEndOfPacket(length);
        isBegin = false;
        line.next();
    }
}

/// J, which after 3 ms is a suspend. Stays at what ends it.
void UsbAnalyzer::idle(UsbLine &line, UsbTransactions &transactions)
{
    const Sample first = line.begin();
    transactions.timePasses(line.peekChange());
    line.next();
    if (line.begin() - first >= m_times.suspend) {
        transactions.add(FrameData{.firstSample = first, .lastSample = line.begin() - 1, .kind = UsbResults::Suspend});
    }
}

/// SE0 outside a packet: two bits keep a low-speed device awake (7.1.7.1), more is a reset.
void UsbAnalyzer::singleEndedZero(UsbLine &line, const UsbReceiver &receiver, UsbTransactions &transactions) const
{
    const Sample first = line.begin();
    if (!receiver.isEndOfPacket(line.peekChange() - first)) {
        line.next(); // the skew of an edge
        return;
    }
    line.next();
    const Sample length = line.begin() - first;
    FrameData frame = {.firstSample = first, .lastSample = line.begin() - 1, .kind = UsbResults::Reset};
    if (isReset(length)) {
        transactions.reset();
        transactions.add(frame);
    } else if (!m_fullSpeed && length <= receiver.samplesOf(bitsOfKeepAlive)) {
        frame.kind = UsbResults::KeepAlive;
        transactions.add(frame);
    }
}

/// Without a sync pattern there is no packet, unless all that is behind it looks like one: noise is none.
bool UsbAnalyzer::isPacket(const UsbPacket &packet)
{
    constexpr unsigned syncBits = 8;
    const bool hasSync = packet.bits >= syncBits && packet.sync == usb::sync;
    return hasSync || (packet.kind() != usb::Kind::Unknown && packet.end == UsbEnd::EndOfPacket);
}

void UsbAnalyzer::addError(const UsbPacket &packet, const UsbReceiver &receiver, UsbTransactions &transactions)
{
    const Sample bits = receiver.samplesOf(packet.end == UsbEnd::StuffError ? 7 : 1);
    transactions.add(FrameData{.firstSample = std::max(packet.first, packet.last - bits + 1),
                               .lastSample = packet.last,
                               .kind = UsbResults::Error,
                               .extra = std::uint32_t(packet.end)});
}

/// K: a packet begins, or the bus resumes.
void UsbAnalyzer::activity(UsbLine &line, const UsbReceiver &receiver, UsbTransactions &transactions)
{
    const Sample length = line.peekChange() - line.begin();
    if (length >= m_times.resume) {
        const Sample first = line.begin();
        line.next();
        transactions.add(FrameData{.firstSample = first, .lastSample = line.begin() - 1, .kind = UsbResults::Resume});
        if (line.state() == UsbState::Se0 && line.hasChange() && !isReset(line.peekChange() - line.begin())) {
            line.next(); // ends the resume, and is no keep-alive (7.1.7.7)
        }
        return;
    }
    if (2 * length < receiver.samplesOf(1)) {
        line.next(); // a glitch
        return;
    }
    UsbPacket &packet = m_packet;
    receiver.receive(line, packet);
    if (packet.end == UsbEnd::CaptureEnd) {
        transactions.finish();
        while (line.hasChange()) {
            line.next();
        }
        return;
    }
    if (isPacket(packet)) {
        mark(packet, transactions.add(packet));
    }
    if (packet.end == UsbEnd::StuffError || packet.end == UsbEnd::Babble) {
        if (isPacket(packet)) {
            addError(packet, receiver, transactions);
        }
        waitForIdle(line, receiver, false);
    } else if (line.state() == UsbState::K && line.hasChange()) {
        line.next();
    }
}

/// An error cross at a wrong sync pattern, and at the end of what is broken or wrong.
void UsbAnalyzer::mark(const UsbPacket &packet, bool isRight)
{
    const bool isWhole = packet.end == UsbEnd::EndOfPacket || packet.end == UsbEnd::Preamble;
    const bool isSyncRight = isRight || packet.sync == usb::sync;
    results().mark(m_settings.dp, packet.first, isSyncRight ? MarkerType::Start : MarkerType::ErrorX);
    results().mark(m_settings.dp, packet.last, isWhole && isRight ? MarkerType::Stop : MarkerType::ErrorX);
}
