#include "CanSimulation.h"

#include "CanAnalyzer.h"
#include "CanCheck.h"

#include <vector>

using lux::Simulation;
using lux::SimulationLine;

namespace {

// Of every so many frames one is special.
constexpr std::uint32_t wrongCrcEvery = 41;
constexpr std::uint32_t noAcknowledgeEvery = 29;
constexpr std::uint32_t stuffErrorEvery = 37;
constexpr std::uint32_t formErrorEvery = 53;
constexpr std::uint32_t overloadEvery = 47;
constexpr std::uint32_t fixedStuffErrorEvery = 35; ///< where it is a frame of CAN FD
constexpr std::uint32_t wrongStuffCountEvery = 23; ///< likewise
constexpr std::uint32_t crcDelimiterEvery = 59;
constexpr std::uint32_t ackDelimiterEvery = 61;
constexpr std::uint32_t pauseEvery = 8;

constexpr std::int64_t simulatedRate = 500000;
constexpr std::int64_t dataRateFactor = 4;
constexpr std::int64_t samplesPerBit = 8;     ///< at least, where the rate is ours to choose
constexpr std::int64_t samplesPerDataBit = 4; ///< at least, for a frame that switches the rate

constexpr std::uint32_t standardIds = 1U << 11;
constexpr std::uint32_t extendedIds = 1U << 29;

bool isOneOf(std::uint32_t number, std::uint32_t every)
{
    return number % every == every - 1;
}

/// Different bits for each number, the same in each simulation.
std::uint32_t mixed(std::uint32_t number)
{
    number = (number ^ number >> 16) * 0x7feb352dU;
    number = (number ^ number >> 15) * 0x846ca68bU;
    return number ^ number >> 16;
}

/// The bits of a frame with stuff bits and checks (ISO 11898-1:2015, 10.4, 10.5), and at which rate each is sent.
class CanEncoder {
public:
    struct Bit {
        bool recessive;
        bool fastBefore; ///< the data bit rate, before the sample point
        bool fastBehind;
    };

    CanEncoder(const CanFrame &frame, CanMishap mishap);
    [[nodiscard]] const std::vector<Bit> &bits() const { return m_bits; }

private:
    void arbitrationAndControl(const CanFrame &frame);
    void check(CanMishap mishap);
    void checkOfFd(const CanFrame &frame, CanMishap mishap);
    void tail(CanMishap mishap);
    void flag();

    void plain(bool recessive)
    {
        m_bits.push_back({recessive, m_isFast, m_isFast});
        m_run = recessive == m_last ? m_run + 1 : 1;
        m_last = recessive;
    }
    void stuffBit()
    {
        if (m_run == can::stuffAfter) {
            ++m_stuffBits;
            m_withStuff.add(!m_last);
            plain(!m_last);
        }
    }
    void add(bool recessive)
    {
        stuffBit();
        m_withoutStuff.add(recessive);
        m_withStuff.add(recessive);
        plain(recessive);
    }
    void add(std::uint32_t value, unsigned count)
    {
        while (count > 0) {
            add((value >> --count & 1U) != 0);
        }
    }
    void addFixed(std::uint32_t value, unsigned count)
    {
        while (count > 0) {
            if (m_sinceFixed++ % can::fixedStuffAfter == 0) {
                plain(!m_last);
            }
            plain((value >> --count & 1U) != 0);
        }
    }
    /// The rate changes within the last bit.
    void switchRate()
    {
        m_isFast = !m_isFast;
        m_bits.back().fastBehind = m_isFast;
    }

    std::vector<Bit> m_bits;
    can::BitString m_withoutStuff;
    can::BitString m_withStuff;
    bool m_isFast = false;
    bool m_last = true;
    unsigned m_run = 0;
    unsigned m_stuffBits = 0;
    unsigned m_sinceFixed = 0;
};

CanEncoder::CanEncoder(const CanFrame &frame, CanMishap mishap)
{
    arbitrationAndControl(frame);
    if (mishap == CanMishap::StuffError) {
        flag();
        return;
    }
    for (unsigned i = 0; i < frame.length; ++i) {
        add(frame.data[i], 8);
    }
    if (mishap == CanMishap::FixedStuffError) {
        plain(m_last);
        flag();
        return;
    }
    if (frame.fd) {
        checkOfFd(frame, mishap);
    } else {
        check(mishap);
    }
    tail(mishap);
}

void CanEncoder::arbitrationAndControl(const CanFrame &frame)
{
    constexpr unsigned idBits = 11;
    constexpr unsigned extensionBits = 18;
    add(false); // SOF
    if (frame.extended) {
        add(frame.id >> extensionBits, idBits);
        add(true); // SRR
        add(true); // IDE
        add(frame.id, extensionBits);
    } else {
        add(frame.id, idBits);
    }
    add(frame.remote); // RTR, or RRS
    if (!frame.extended) {
        add(false); // IDE
    }
    add(frame.fd); // FDF
    if (frame.extended || frame.fd) {
        add(false); // r0, or res
    }
    if (frame.fd) {
        add(frame.rateSwitch);
        if (frame.rateSwitch) {
            switchRate();
        }
        add(frame.errorPassive);
    }
    add(frame.dlc, 4);
}

void CanEncoder::check(CanMishap mishap)
{
    const std::uint32_t crc = m_withoutStuff.check<can::crc15>();
    add(crc ^ std::uint32_t(mishap == CanMishap::WrongCrc), can::crc15.width);
    stuffBit();
}

void CanEncoder::checkOfFd(const CanFrame &frame, CanMishap mishap)
{
    const std::uint32_t count = can::stuffCountField(m_stuffBits + unsigned(mishap == CanMishap::WrongStuffCount));
    m_withStuff.add(count, can::stuffCountBits);
    addFixed(count, can::stuffCountBits);
    const bool isShort = frame.length <= can::mostBytesOfCrc17;
    const std::uint32_t crc = isShort ? m_withStuff.check<can::crc17>() : m_withStuff.check<can::crc21>();
    addFixed(crc ^ std::uint32_t(mishap == CanMishap::WrongCrc), isShort ? can::crc17.width : can::crc21.width);
}

/// Delimiters, acknowledgement, end of frame and intermission.
void CanEncoder::tail(CanMishap mishap)
{
    constexpr unsigned intermission = 3;
    plain(mishap != CanMishap::CrcDelimiter);
    if (m_isFast) {
        switchRate();
    }
    if (mishap == CanMishap::CrcDelimiter) {
        flag();
        return;
    }
    plain(mishap == CanMishap::NoAcknowledge);
    if (mishap == CanMishap::AckDelimiter) {
        plain(false);
        flag();
        return;
    }
    plain(true); // ACK delimiter
    const unsigned good = mishap == CanMishap::FormError ? 2 : can::endOfFrameBits;
    for (unsigned i = 0; i < good; ++i) {
        plain(true);
    }
    if (mishap == CanMishap::FormError || mishap == CanMishap::Overload) {
        flag();
        return;
    }
    for (unsigned i = 0; i < intermission; ++i) {
        plain(true);
    }
}

/// Six dominant bits, the delimiter of eight recessive ones, intermission.
void CanEncoder::flag()
{
    m_isFast = false;
    for (unsigned i = 0; i < 6; ++i) {
        plain(false);
    }
    for (unsigned i = 0; i < 8 + 3; ++i) {
        plain(true);
    }
}

} // namespace

CanSimulated CanSimulated::of(std::uint32_t number, bool maySwitchRate)
{
    constexpr std::uint32_t formats = 6; // standard and extended: data, remote, FD
    CanSimulated made;
    CanFrame &frame = made.frame;
    const std::uint32_t random = mixed(number);
    frame.extended = number % 2 != 0;
    frame.remote = number % formats / 2 == 1;
    frame.fd = number % formats / 2 == 2;
    frame.id = mixed(random) % (frame.extended ? extendedIds : standardIds);
    frame.dlc = std::uint8_t(frame.fd ? number / formats % 16 : number / formats % 9);
    frame.length = frame.remote ? std::uint8_t(0) : CanFrame::lengthOf(frame.dlc, frame.fd);
    frame.rateSwitch = frame.fd && maySwitchRate && (random & 3U) != 0;
    frame.errorPassive = frame.fd && (random & 4U) != 0;
    for (unsigned i = 0; i < frame.length; ++i) {
        frame.data[i] = std::uint8_t((random & 8U) != 0 ? mixed(random + i) : number + i);
    }
    made.mishap = isOneOf(number, wrongCrcEvery)                      ? CanMishap::WrongCrc
                  : isOneOf(number, noAcknowledgeEvery)               ? CanMishap::NoAcknowledge
                  : isOneOf(number, stuffErrorEvery)                  ? CanMishap::StuffError
                  : isOneOf(number, formErrorEvery)                   ? CanMishap::FormError
                  : isOneOf(number, overloadEvery)                    ? CanMishap::Overload
                  : isOneOf(number, crcDelimiterEvery)                ? CanMishap::CrcDelimiter
                  : isOneOf(number, ackDelimiterEvery)                ? CanMishap::AckDelimiter
                  : frame.fd && isOneOf(number, fixedStuffErrorEvery) ? CanMishap::FixedStuffError
                  : frame.fd && isOneOf(number, wrongStuffCountEvery) ? CanMishap::WrongStuffCount
                                                                      : CanMishap::None;
    return made;
}

CanRates CanAnalyzer::simulatedRates(std::int64_t sampleRate) const
{
    std::int64_t rate = m_settings.baudrate.value();
    if (rate == 0) {
        rate = simulatedRate;
        while (rate > 1 && rate * samplesPerBit > sampleRate) {
            rate /= 2; // most of these are usual rates too
        }
    }
    const std::int64_t data = m_settings.dataBaudrate.value();
    return {.sample = sampleRate, .nominal = rate, .data = data != 0 ? data : rate * dataRateFactor};
}

/// One frame and, now and then, a pause.
void CanAnalyzer::simulate(Simulation &simulation)
{
    constexpr std::int64_t thousand = 1000;
    constexpr std::int64_t idleBits = 11;
    const CanRates rates = simulatedRates(simulation.sampleRate());
    const bool recessiveLevel = !m_settings.invert;
    SimulationLine &line = simulation.line(m_settings.rx, recessiveLevel);
    if (rates.sample < leastSamplesPerBit * rates.nominal) {
        simulation.hold(rates.sample); // no bit could be told
        return;
    }
    if (m_sent % pauseEvery == 0) {
        simulation.holdTime(idleBits + simulation.random(100), rates.nominal);
    }
    const CanSimulated next = CanSimulated::of(m_sent++, rates.sample >= samplesPerDataBit * rates.data);
    const std::int64_t point = m_settings.samplePointThousandths();
    const CanEncoder encoder(next.frame, next.mishap);
    for (const CanEncoder::Bit &bit : encoder.bits()) {
        line.set(bit.recessive == recessiveLevel);
        simulation.holdTime(point, thousand * (bit.fastBefore ? rates.data : rates.nominal));
        simulation.holdTime(thousand - point, thousand * (bit.fastBehind ? rates.data : rates.nominal));
    }
}
