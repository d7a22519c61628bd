#include "QspiAnalyzer.h"

#include "common/FilteredLine.h"

#include <algorithm>

using lux::Sample;

LUX_PLUGIN(QspiAnalyzer)

namespace {

constexpr unsigned byteBits = 8;
constexpr unsigned allLines = 4;

} // namespace

/// A transfer each time that the chip is selected; the data sheets are named where the commands are.
void QspiAnalyzer::decode()
{
    m_chip = {};
    m_chip.isQpi = m_settings.qpi;
    const std::array<Channel, 4> channels = m_settings.lines();
    QspiWire wire(reader(m_settings.clk),
                  {&reader(channels[0]), &reader(channels[1]), &reader(channels[2]), &reader(channels[3])},
                  m_settings.clockEdge.value() != 0);
    lux::FilteredLine select(reader(m_settings.cs), std::max(1, m_settings.glitch.value()));
    bool isBegin = !select.level() && beginsWithTransfer(wire, std::min(select.peekEdge(), sampleCount() - 1));
    if (!select.level() && !isBegin && select.hasEdge()) {
        select.nextEdge(); // a transfer that the capture's begin cuts
    }
    QspiResults::Content content;
    while (isBegin || select.hasEdge()) {
        const Sample begin = isBegin ? 0 : select.nextEdge();
        isBegin = false;
        const Sample end = select.peekEdge();
        const bool isWhole = select.hasEdge();
        const std::uint64_t place = results().open(begin);
        wire.select(begin, std::min(end, sampleCount() - 1));
        content = {};
        const bool hasCommand = readTransfer(wire, content);
        if (!isWhole) {
            return; // what is open at the end is no frame
        }
        if (hasCommand) {
            results().fill(place, results().transferFrame(content, begin, end - 1));
        } else if (wire.clocks() > 0) {
            results().mark(m_settings.cs, end - 1, MarkerType::ErrorX);
            results().fill(
                place,
                {.firstSample = begin, .lastSample = end - 1, .data = wire.clocks(), .kind = QspiResults::Short});
        } else {
            results().drop(place);
        }
        select.nextEdge();
    }
}

/// A capture that the select itself has triggered begins with a whole transfer: the clock stands still for longer than
/// a period before it runs, and a command comes that there is.
bool QspiAnalyzer::beginsWithTransfer(const QspiWire &wire, Sample end) const
{
    QspiWire clock(wire);
    clock.select(0, end);
    QspiBits first;
    QspiBits second;
    if (!clock.take(1, 1, false, false, first) || !clock.take(1, 1, false, false, second)) {
        return false;
    }
    if (first.first <= second.first - first.first + 1) {
        return false;
    }
    QspiWire code(wire);
    code.select(0, end);
    QspiBits bits;
    return m_settings.mode == QspiMode::M444 ||
           (code.take(byteBits, m_chip.isQpi ? allLines : 1, false, false, bits) &&
            findCommand(m_settings.set, std::uint8_t(bits.value), m_chip.isQpi) != nullptr);
}

/// @return false when there is not even a command
bool QspiAnalyzer::readTransfer(QspiWire &wire, QspiResults::Content &content)
{
    m_keepsReading = false;
    if (m_settings.mode == QspiMode::M444) {
        readRaw(wire, content);
        return !content.data.empty();
    }
    QspiCommand command;
    if (!readCommand(wire, content, command)) {
        return false;
    }
    const bool isSingle = !m_chip.isQpi && !command.isDouble && command.addressLines == 1 && command.dataLines == 1;
    if (isSingle && (content.flags & QspiResults::Continued) == 0) {
        QspiWire copy(wire);
        readSingle(copy, content);
    }
    if (readHead(wire, content, command)) {
        readData(wire, content, command);
    }
    obey(command, content);
    return true;
}

/// The code of the command, unless the transfer goes on with that of the one before.
bool QspiAnalyzer::readCommand(QspiWire &wire, QspiResults::Content &content, QspiCommand &command)
{
    const unsigned qpi = m_chip.isQpi ? unsigned(QspiResults::Qpi) : 0U;
    content.flags = QspiResults::HasCommand | qpi;
    QspiBits bits;
    if (m_chip.ongoing != nullptr) {
        command = *m_chip.ongoing;
        content.command = command.code;
        content.flags |= QspiResults::Continued;
    } else {
        if (!wire.take(byteBits, m_chip.isQpi ? allLines : 1, false, false, bits)) {
            return false;
        }
        content.command = std::uint8_t(bits.value);
        const QspiCommand *known = findCommand(m_settings.set, content.command, m_chip.isQpi);
        command = known != nullptr ? *known : unknownCommand(content.command);
        addPhase(QspiResults::Command, bits, qpi, content.command);
    }
    if (m_chip.isQpi) {
        command.addressLines = allLines;
        command.dataLines = allLines;
    }
    QspiWire ahead(wire);
    return m_chip.ongoing == nullptr || ahead.take(byteBits, command.addressLines, false, command.isDouble, bits);
}

QspiCommand QspiAnalyzer::unknownCommand(std::uint8_t code) const
{
    QspiCommand command;
    command.code = code;
    command.data = QspiCommand::Data::Read;
    if (m_settings.mode == QspiMode::Auto || m_chip.isQpi) {
        return command;
    }
    const QspiMode mode = m_settings.mode;
    command.addressBytes = QspiCommand::addressAsSet;
    command.addressLines = mode == QspiMode::M122 ? 2 : mode == QspiMode::M144 ? 4 : 1;
    command.dataLines = mode == QspiMode::M112 || mode == QspiMode::M122 ? 2 : 4;
    return command;
}

/// Address, mode and dummy clocks. @return false when the select ends before the data
bool QspiAnalyzer::readHead(QspiWire &wire, QspiResults::Content &content, const QspiCommand &command)
{
    QspiBits bits;
    if (command.addressBytes != 0) {
        const bool follows = command.addressBytes == QspiCommand::addressAsSet;
        const auto set = unsigned(m_settings.address.value());
        const unsigned count = !follows ? command.addressBytes : set != 0 ? set : m_chip.hasFourBytes ? 4U : 3U;
        if (!wire.take(byteBits * count, command.addressLines, false, command.isDouble, bits)) {
            return false;
        }
        content.address = bits.value;
        const unsigned flags = count == 4 ? unsigned(QspiResults::FourBytes) : 0U;
        content.flags |= QspiResults::HasAddress | flags;
        addPhase(QspiResults::Address, bits, flags);
    }
    if (command.hasMode) {
        if (!wire.take(byteBits, command.addressLines, false, command.isDouble, bits)) {
            return false;
        }
        content.mode = std::uint8_t(bits.value);
        content.flags |= QspiResults::HasMode;
        m_keepsReading = continues(content.mode);
        addPhase(QspiResults::Mode, bits);
    }
    wire.finishDouble();
    bool firstBit = true;
    if (!readDummy(wire, dummyClocks(command), firstBit)) {
        return false;
    }
    m_keepsReading = m_keepsReading || (m_chip.mayGoOn && command.isFastRead() && !firstBit);
    return true;
}

/// Behind the head of a read; in QPI the chip was told how many there are, the mode's two included.
unsigned QspiAnalyzer::dummyClocks(const QspiCommand &command) const
{
    constexpr unsigned clocksOfMode = 2;
    const unsigned ofBytes = command.dummyBytes * byteBits / command.dataLines;
    if (!command.isFastRead()) {
        return ofBytes + command.dummyClocks;
    }
    if (m_settings.dummy.value() != QspiSettings::dummyOfCommand) {
        return unsigned(m_settings.dummy.value());
    }
    if (m_chip.isQpi && m_settings.set == QspiSet::Winbond && !command.isDouble &&
        command.addressBytes == QspiCommand::addressAsSet) {
        return command.hasMode ? m_chip.qpiClocks - clocksOfMode : m_chip.qpiClocks;
    }
    return m_chip.configuredClocks != 0 ? m_chip.configuredClocks : command.dummyClocks;
}

/// @param firstBit  out: IO0 at the first clock
bool QspiAnalyzer::readDummy(QspiWire &wire, unsigned clocks, bool &firstBit)
{
    if (clocks == 0) {
        return true;
    }
    QspiBits bits;
    QspiBits all;
    for (unsigned i = 0; i < clocks; ++i) {
        if (!wire.take(1, 1, false, false, bits)) {
            return false;
        }
        if (i == 0) {
            all.first = bits.first;
            firstBit = bits.value != 0;
        }
        all.last = bits.last;
    }
    all.value = clocks;
    addPhase(QspiResults::Dummy, all);
    return true;
}

void QspiAnalyzer::readData(QspiWire &wire, QspiResults::Content &content, const QspiCommand &command)
{
    if (command.data == QspiCommand::Data::None) {
        return;
    }
    const bool isRead = command.data == QspiCommand::Data::Read;
    const unsigned flags = isRead ? 0U : unsigned(QspiResults::Write);
    content.flags |= flags;
    content.lines = command.dataLines;
    QspiBits bits;
    while (wire.take(byteBits, command.dataLines, isRead, command.isDouble, bits)) {
        content.data.push_back(std::uint8_t(bits.value));
        addPhase(QspiResults::Data, bits, flags);
    }
}

/// Words on four lines without a command; their parts come in the order of the settings.
void QspiAnalyzer::readRaw(QspiWire &wire, QspiResults::Content &content)
{
    const auto clocks = unsigned(m_settings.word.value());
    const bool isLittle = m_settings.wordOrder == QspiOrder::Little;
    content.flags = QspiResults::Raw;
    content.lines = allLines;
    std::vector<std::uint8_t> parts;
    std::vector<std::uint8_t> all;
    std::vector<QspiBits> places;
    QspiBits bits;
    while (wire.take(allLines, allLines, true, false, bits)) {
        places.push_back(bits);
        parts.push_back(std::uint8_t(bits.value));
        if (parts.size() == clocks) {
            if (isLittle) {
                std::reverse(parts.begin(), parts.end());
            }
            all.insert(all.end(), parts.begin(), parts.end());
            parts.clear();
        }
    }
    for (std::size_t i = 0; i + 1 < all.size(); i += 2) {
        const auto byte = std::uint8_t(all[i] << 4 | all[i + 1]);
        content.data.push_back(byte);
        addPhase(QspiResults::Data, {.value = byte, .first = places[i].first, .last = places[i + 1].last},
                 QspiResults::Raw);
    }
}

/// What both single lines had behind the command, from the controller and from the chip.
void QspiAnalyzer::readSingle(QspiWire &wire, QspiResults::Content &content)
{
    unsigned count = 0;
    std::uint32_t out = 0;
    std::uint32_t in = 0;
    QspiBits bit;
    while (content.out.size() < QspiResults::mostShown && wire.take(1, 1, false, false, bit)) {
        const unsigned both = wire.singleLines();
        out = out << 1 | (both & 1U);
        in = in << 1 | both >> 1;
        if (++count % byteBits == 0) {
            content.out.push_back(std::uint8_t(out));
            content.in.push_back(std::uint8_t(in));
        }
    }
}

/// A mode that keeps the chip reading: M5-4 of 10 (W25Q128JV, 8.2.12), for MX25 halves that are each other's inverse.
bool QspiAnalyzer::continues(std::uint8_t mode) const
{
    if (m_settings.set == QspiSet::Macronix) {
        return ((mode ^ mode >> 4) & 15U) == 15U;
    }
    return (mode & 0x30U) == 0x20U;
}

void QspiAnalyzer::obey(const QspiCommand &command, const QspiResults::Content &content)
{
    using Effect = QspiCommand::Effect;
    const bool wasContinued = (content.flags & QspiResults::Continued) != 0;
    if (m_keepsReading) {
        if (!wasContinued) {
            m_chip.ongoing = findCommand(m_settings.set, command.code, m_chip.isQpi);
        }
        return;
    }
    m_chip.ongoing = nullptr;
    switch (command.effect) {
    case Effect::FourBytes:
        m_chip.hasFourBytes = true;
        break;
    case Effect::ThreeBytes:
        m_chip.hasFourBytes = false;
        break;
    case Effect::EnterQpi:
        m_chip.isQpi = true;
        break;
    case Effect::ExitQpi:
        m_chip.isQpi = false;
        break;
    case Effect::Reset:
        m_chip = {};
        break;
    case Effect::ReadParameters: // P5-4 (W25Q128JV, 8.2.44)
        if (!content.data.empty()) {
            m_chip.qpiClocks = 2 + 2 * (content.data[0] >> 4 & 3U);
        }
        break;
    case Effect::Configuration: // bits 7 to 4, 15 is as from the factory; bit 3 (MT25QL128ABA rev. F, table 10)
        if (!content.data.empty()) {
            const unsigned clocks = content.data[0] >> 4;
            m_chip.configuredClocks = clocks == 15 ? 0 : clocks;
            m_chip.mayGoOn = (content.data[0] & 8U) == 0;
        }
        break;
    case Effect::None:
        break;
    }
}

void QspiAnalyzer::addPhase(QspiResults::Kind kind, const QspiBits &bits, unsigned flags, std::uint32_t code)
{
    results().add({.firstSample = bits.first,
                   .lastSample = bits.last,
                   .data = bits.value,
                   .kind = std::uint8_t(kind),
                   .flags = std::uint16_t(flags),
                   .extra = code});
    const bool atRise = m_settings.clockEdge.value() != 0;
    results().mark(m_settings.clk, bits.first, atRise ? MarkerType::UpArrow : MarkerType::DownArrow);
}
