#include "ModbusAnalyzer.h"

#include "common/AsyncMarks.h"
#include "common/BitRateFinder.h"

#include <algorithm>
#include <string>

using lux::BitGrid;

LUX_PLUGIN(ModbusAnalyzer)

std::uint32_t ModbusAnalyzer::NeededSampleRate()
{
    return std::uint32_t(leastSamplesPerBit * m_settings.baudrate.value());
}

void ModbusAnalyzer::decode()
{
    const std::int64_t rate = m_settings.baudrate.value() != 0 ? m_settings.baudrate.value() : findBitRate();
    const BitGrid grid(sampleRate(), rate);
    if (grid.isCoarserThan(leastSamplesPerBit)) {
        fail(lux::tooFewSamples(rate, leastSamplesPerBit));
    }
    std::vector<Direction> lines;
    addDirection(lines, ModbusResults::Rx, grid);
    addDirection(lines, ModbusResults::Tx, grid);
    Request request;
    for (;;) {
        const auto first = std::min_element(lines.begin(), lines.end(), [](const Direction &a, const Direction &b) {
            return a.isOver != b.isOver ? b.isOver : a.next.first < b.next.first;
        });
        if (first == lines.end() || first->isOver) {
            return;
        }
        addNext(*first, request);
        findNext(*first);
    }
}

std::int64_t ModbusAnalyzer::findBitRate()
{
    const std::pair<Channel, bool> lines[] = {{m_settings.rx, m_settings.invertRx},
                                              {m_settings.tx, m_settings.invertTx}};
    for (const auto &[channel, inverted] : lines) {
        if (!channel.isDefined()) {
            continue;
        }
        const lux::BitRateFinder finder(reader(channel), sampleRate(), m_settings.format(inverted));
        if (const std::int64_t found = finder.find(); found > 0) {
            tell("Bit rate found: " + std::to_string(found) + " bits/s");
            return found;
        }
    }
    fail("No bit rate can be found: the lines have too few edges");
}

void ModbusAnalyzer::addDirection(std::vector<Direction> &all, ModbusResults::Line number, const BitGrid &grid)
{
    const bool isRx = number == ModbusResults::Rx;
    const Channel channel = isRx ? m_settings.rx : m_settings.tx;
    if (!channel.isDefined()) {
        return;
    }
    const lux::AsyncFormat format = m_settings.format(isRx ? m_settings.invertRx : m_settings.invertTx);
    all.push_back({.receiver = ModbusReceiver(reader(channel), grid, format, m_settings.mode, sampleRate()),
                   .channel = channel,
                   .number = number,
                   .next = {}});
    findNext(all.back());
}

/// Error crosses stand behind a silence within a frame, and at the end of what has no right check or is no frame.
void ModbusAnalyzer::findNext(Direction &direction)
{
    const auto mark = [&](const lux::AsyncLine &line, const lux::AsyncCharacter &character) {
        if (character.first == direction.next.pauseEnd) {
            results().mark(direction.channel, character.first, MarkerType::ErrorX);
        }
        lux::markCharacter(results(), direction.channel, line, character);
        direction.lastLook = line.lookOf(line.stopBit());
    };
    direction.isOver = !direction.receiver.next(direction.next, mark);
    if (!direction.isOver && !direction.next.isCheckRight) {
        const lux::Sample last = std::max(direction.next.last, direction.lastLook);
        results().mark(direction.channel, last, MarkerType::ErrorX);
    }
}

void ModbusAnalyzer::addNext(const Direction &direction, Request &request)
{
    const ModbusReceiver::Received &received = direction.next;
    if (!received.isFrame) {
        results().addReceived(received, direction.number, 0, 0);
        return;
    }
    const std::size_t check = m_settings.mode == ModbusMode::Rtu ? 2 : 1;
    const ModbusFrame frame(std::span(received.bytes).first(received.bytes.size() - check));
    if (!isResponse(frame, direction.number, request)) {
        results().addReceived(received, direction.number, 0, 0);
        if (received.isCheckRight) {
            request = {.isOpen = frame.unit() != ModbusFrame::broadcast,
                       .unit = frame.unit(),
                       .function = frame.function(),
                       .words = std::uint32_t(frame.word(0)) << 16 | frame.word(2),
                       .line = direction.number};
        }
        return;
    }
    const bool isAnswer = request.isOpen && request.unit == frame.unit() && request.function == frame.function();
    results().addReceived(received, direction.number,
                          ModbusResults::Response | (isAnswer ? unsigned(ModbusResults::HasRequest) : 0U),
                          isAnswer ? request.words : 0);
    request.isOpen = false;
}

/// A read of three bytes is as long as its request, which is sent again when nobody answers: its count tells them
/// apart.
std::uint32_t ModbusAnalyzer::bytesAsked(const ModbusFrame &frame, const Request &request)
{
    const std::uint32_t count = request.words & 0xffffU;
    return frame.isReadOfBits() ? (count + 7) / 8 : 2 * count;
}

/// By the line where its sender is set; else by the request that waits for an answer, and by the form.
bool ModbusAnalyzer::isResponse(const ModbusFrame &frame, ModbusResults::Line line, const Request &request) const
{
    if (m_settings.role != ModbusRole::Auto) {
        return (line == ModbusResults::Rx) == (m_settings.role == ModbusRole::Slave);
    }
    if (frame.isException() || !frame.mayBeRequest()) {
        return true;
    }
    const bool hasBoth = m_settings.rx.isDefined() && m_settings.tx.isDefined();
    const bool isExpected = request.isOpen && request.unit == frame.unit() && request.function == frame.function() &&
                            !(hasBoth && request.line == line);
    return isExpected && frame.mayBeResponse() && (!frame.isRead() || frame.data()[0] == bytesAsked(frame, request));
}
