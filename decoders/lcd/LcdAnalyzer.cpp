#include "LcdAnalyzer.h"

#include <algorithm>
#include <cstddef>

using lux::BusLines;
using lux::ChannelReader;
using lux::Sample;

LUX_PLUGIN(LcdAnalyzer)

namespace {

constexpr unsigned ofNibble = 4;
/// The upper halves of Function set, for eight lines and for four.
constexpr std::uint8_t eightLines = 0x3;
constexpr std::uint8_t fourLines = 0x2;
/// HD44780U data sheet (ADE-207-272), figure 24: the start-up is looked for in so many accesses at the capture's begin.
constexpr std::size_t startUpWithin = 16;
/// Which half of a byte is the first of a capture is told from so many accesses at most.
constexpr std::size_t mostOfBegin = 64;

} // namespace

/// The accesses of the bus: figures 25 and 26, data is taken where E falls, as it is right before.
class LcdAnalyzer::Bus {
public:
    Bus(LcdAnalyzer &owner, const LcdSettings &settings)
        : m_enable(owner.reader(settings.e)),
          m_rs(owner.reader(settings.rs)),
          m_rw(owner.reader(settings.rw)),
          m_cs1(owner.reader(settings.cs1)),
          m_cs2(owner.reader(settings.cs2))
    {
        for (const Channel &line : settings.bus()) {
            m_lines.add(owner.reader(line));
        }
        // A pulse that the capture's begin cuts counts, as its value is known.
        m_wasHigh = m_enable.level();
    }
    /// @return false when there is no further one
    bool next(Access &access)
    {
        if (!m_wasHigh) {
            if (!m_enable.hasEdge()) {
                return false;
            }
            access.first = m_enable.nextEdge();
        } else {
            access.first = m_enable.position();
        }
        m_wasHigh = false;
        if (!m_enable.hasEdge()) {
            return false;
        }
        access.last = m_enable.nextEdge();
        const Sample taken = access.last - 1;
        access.value = std::uint8_t(m_lines.at(taken));
        access.isData = m_rs.levelAt(taken);
        access.isRead = m_rw.levelAt(taken);
        access.halves = std::uint8_t(unsigned(m_cs1.levelAt(taken)) | unsigned(m_cs2.levelAt(taken)) << 1);
        return true;
    }

private:
    ChannelReader m_enable;
    ChannelReader m_rs;
    ChannelReader m_rw;
    ChannelReader m_cs1;
    ChannelReader m_cs2;
    BusLines m_lines;
    bool m_wasHigh;
};

void LcdAnalyzer::decode()
{
    m_memory = LcdMemory(m_settings.controller);
    Bus bus(*this, m_settings);
    if (m_settings.bus().size() == ofNibble) {
        readNibbles(bus);
    } else {
        readBytes(bus);
    }
}

void LcdAnalyzer::readBytes(Bus &bus)
{
    for (Access access; bus.next(access);) {
        addByte(access, access, access.value);
    }
}

/// Four lines: a controller that has just got its power reads each access as one of eight lines, the lower four of
/// which are not there, until it is told that there are four. From then on the upper half of a byte comes before the
/// lower. A capture that begins later begins anywhere in a byte: where a start-up follows soon the halves are counted
/// back from it, else registers and pauses tell. A half whose other half is of another kind stands alone.
void LcdAnalyzer::readNibbles(Bus &bus)
{
    std::vector<Access> begin;
    for (Access access; begin.size() < mostOfBegin && bus.next(access);) {
        begin.push_back(access);
    }
    const std::size_t startUp = startUpIn(begin);
    const bool isLate = startUp < begin.size() ? startUp % 2 != 0 : beginsWithLowerHalf(begin);
    bool isStarting = startUp == 0;
    bool hasUpper = false;
    Access upper;
    for (std::size_t i = 0;; ++i) {
        Access access;
        if (i < begin.size()) {
            access = begin[i];
        } else if (!bus.next(access)) {
            break;
        }
        if (i == startUp && i < begin.size()) {
            isStarting = true;
            if (hasUpper) {
                addNibble(upper);
                hasUpper = false;
            }
        }
        if (i == 0 && isLate) {
            addNibble(access);
        } else if (isStarting) {
            addByte(access, access, std::uint8_t(access.value << ofNibble));
            isStarting = !access.isInstruction(fourLines);
        } else if (!hasUpper) {
            upper = access;
            hasUpper = true;
        } else if (upper.isData != access.isData || upper.isRead != access.isRead) {
            addNibble(upper);
            upper = access;
        } else {
            addByte(upper, access, std::uint8_t(upper.value << ofNibble | access.value));
            hasUpper = false;
        }
    }
}

/// The place of a start-up: 3 3 3 2 anywhere, or at the begin what only a start-up begins with: 3 up to a 2, or 2 2.
/// The number of accesses where there is none. A 3 at the begin may be the lower half of a byte, which the pauses tell.
std::size_t LcdAnalyzer::startUpIn(const std::vector<Access> &accesses)
{
    const std::size_t count = accesses.size();
    for (std::size_t i = 0; i + 3 < std::min(count, startUpWithin); ++i) {
        if (accesses[i].isInstruction(eightLines) && accesses[i + 1].isInstruction(eightLines) &&
            accesses[i + 2].isInstruction(eightLines) && accesses[i + 3].isInstruction(fourLines)) {
            return i;
        }
    }
    std::size_t first = 0; // that is no 3
    while (first < count && accesses[first].isInstruction(eightLines)) {
        ++first;
    }
    const bool begins =
        first > 0 ? (first == count || accesses[first].isInstruction(fourLines)) && !pausesTellLowerHalf(accesses)
                  : count > 1 && accesses[0].isInstruction(fourLines) && accesses[1].isInstruction(fourLines);
    return begins ? 0 : count;
}

/// Both halves of a byte go to the same register in the same direction. Where all do so however they are paired, the
/// pauses tell.
bool LcdAnalyzer::beginsWithLowerHalf(const std::vector<Access> &accesses)
{
    std::size_t changes[] = {0, 0}; // before accesses at even places, and at odd ones
    for (std::size_t i = 1; i < accesses.size(); ++i) {
        const bool isSame =
            accesses[i].isData == accesses[i - 1].isData && accesses[i].isRead == accesses[i - 1].isRead;
        changes[i % 2] += isSame ? 0 : 1;
    }
    // Within bytes nothing changes; a single change may come of a half that is lost.
    if (std::min(changes[0], changes[1]) == 0 && std::max(changes[0], changes[1]) > 1) {
        return changes[0] == 0;
    }
    return pausesTellLowerHalf(accesses);
}

/// The halves of a byte are nearer to each other than bytes, between which the controller works for 37 us (table 6).
bool LcdAnalyzer::pausesTellLowerHalf(const std::vector<Access> &accesses)
{
    constexpr std::size_t least = 4;
    Sample within = 0;
    Sample between = INT64_MAX;
    for (std::size_t i = 1; i < std::min(accesses.size(), startUpWithin); ++i) {
        const Sample distance = accesses[i].last - accesses[i - 1].last;
        within = i % 2 == 0 ? std::max(within, distance) : within;
        between = i % 2 != 0 ? std::min(between, distance) : between;
    }
    return accesses.size() >= least && within < between;
}

void LcdAnalyzer::addNibble(const Access &access)
{
    results().mark(m_settings.e, access.last, MarkerType::ErrorX);
    results().add(
        {.firstSample = access.first, .lastSample = access.last, .data = access.value, .kind = LcdResults::Nibble});
}

void LcdAnalyzer::addByte(const Access &first, const Access &last, std::uint8_t value)
{
    const LcdResults::Kind kind = first.isData ? (first.isRead ? LcdResults::Read : LcdResults::Data)
                                               : (first.isRead ? LcdResults::Status : LcdResults::Command);
    results().mark(m_settings.e, first.last, MarkerType::DownArrow);
    if (last.last != first.last) {
        results().mark(m_settings.e, last.last, MarkerType::DownArrow);
    }
    results().add({.firstSample = first.first,
                   .lastSample = last.last,
                   .data = value,
                   .data2 = m_memory.address(),
                   .kind = kind,
                   .line = std::uint8_t(m_memory.ram()),
                   .flags = std::uint16_t(m_memory.isExtended() ? LcdResults::Extended : 0),
                   .extra = first.halves});
    if (kind == LcdResults::Command) {
        m_memory.instruct(value);
    } else if (kind != LcdResults::Status) {
        m_memory.step();
    }
}
