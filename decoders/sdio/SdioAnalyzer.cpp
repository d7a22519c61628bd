#include "SdioAnalyzer.h"

#include <algorithm>

using lux::ChannelReader;
using lux::Sample;

LUX_PLUGIN(SdioAnalyzer)

/// SD Physical Layer Simplified Specification 6.00, 3.6 and 4: tokens on CMD, and the data that they announce.
void SdioAnalyzer::decode()
{
    const auto width = m_settings.usedLines();
    ChannelReader *lines[] = {&reader(m_settings.d0), &reader(m_settings.d1), &reader(m_settings.d2),
                              &reader(m_settings.d3)};
    SdioCommandLine commands(reader(m_settings.clk), reader(m_settings.cmd));
    SdioDataLines data(reader(m_settings.clk), std::span(lines).first(width), width, m_settings.ddr);
    SdioTransfer transfer;
    SdioToken token;
    for (;;) {
        const bool hasToken = commands.next(token, transfer.responseLength());
        if (data.exists()) {
            const bool isStop = hasToken && token.fromHost && token.crcRight && token.isWhole() &&
                                token.index == sdio::stopTransmission;
            readData(data, transfer, hasToken ? token.first : sampleCount(), isStop ? token.last : INT64_MAX);
        }
        if (!hasToken) {
            return;
        }
        addToken(token, transfer);
    }
}

void SdioAnalyzer::addToken(const SdioToken &token, SdioTransfer &transfer)
{
    if (token.fromHost && token.isWhole() && token.crcRight) {
        transfer.command(token);
    }
    const bool isOwn = token.fromHost;
    const bool isApplication = transfer.isApplication() && (!isOwn || token.crcRight);
    const unsigned flags = (isApplication ? unsigned(SdioResults::Application) : 0U) |
                           (transfer.hasCommand() ? unsigned(SdioResults::HasCommand) : 0U);
    results().addToken(token, isOwn ? token.index : transfer.lastCommand(), std::uint16_t(flags));
    const bool isWrong = token.isWhole() && !(token.endRight && (token.crcRight || token.hasNoCheck()));
    results().mark(m_settings.cmd, token.first, MarkerType::Start);
    results().mark(m_settings.cmd, token.last, isWrong ? MarkerType::ErrorX : MarkerType::Stop);
    if (!isOwn && token.isWhole()) {
        transfer.response(token);
    }
}

/// What is on the data lines before the next token. @param stop  the end of that token when it stops a transfer
void SdioAnalyzer::readData(SdioDataLines &lines, SdioTransfer &transfer, Sample until, Sample stop)
{
    while (transfer.direction() != SdioTransfer::Direction::None) {
        lines.useDat0(false);
        if (!lines.findStart(until)) {
            return;
        }
        const bool isWrite = transfer.direction() == SdioTransfer::Direction::Write;
        if (!readBlock(lines, transfer, stop)) {
            return;
        }
        if (isWrite) {
            answerToWrite(lines, until);
        }
    }
    lines.useDat0(true);
    if (transfer.mayBeBusy() && lines.findStart(until)) {
        addBusy(lines, until);
        transfer.busyDone();
    }
    lines.skipTo(until);
}

bool SdioAnalyzer::readBlock(SdioDataLines &lines, SdioTransfer &transfer, Sample stop)
{
    SdioBlock block;
    const Sample start = lines.taken();
    lines.readBlock(block, transfer.blockLength(), stop);
    if (!block.isWhole && stop == INT64_MAX) {
        // The capture's end; or the blocks are shorter than is known, and others follow.
        lines.returnTo(start);
        transfer.giveUp();
        return false;
    }
    results().mark(m_settings.d0, block.first, MarkerType::Start);
    const bool isRight = block.isWhole && block.endRight && block.crcRight;
    results().mark(m_settings.d0, block.last, isRight ? MarkerType::Stop : MarkerType::ErrorX);
    block.last = std::max(block.first, block.last);
    results().addBlock(block, m_settings.usedLines() != 1);
    transfer.blockDone();
    return block.isWhole;
}

/// The card tells whether the check was right, and is busy while it writes (4.3.4).
void SdioAnalyzer::answerToWrite(SdioDataLines &lines, Sample until)
{
    lines.useDat0(true);
    if (!lines.findStart(until)) {
        return;
    }
    const Sample first = lines.taken();
    std::uint8_t status = 0;
    Sample last = 0;
    if (!lines.readStatus(status, last)) {
        return;
    }
    results().add({.firstSample = first, .lastSample = last, .data = status, .kind = SdioResults::Status, .line = 1});
    if (lines.isBusy()) {
        addBusy(lines, until);
    }
}

void SdioAnalyzer::addBusy(SdioDataLines &lines, Sample until)
{
    const Sample first = lines.taken();
    Sample release = 0;
    if (lines.release(until, release)) {
        results().add(
            {.firstSample = first, .lastSample = std::max(first, release - 1), .kind = SdioResults::Busy, .line = 1});
    }
}
