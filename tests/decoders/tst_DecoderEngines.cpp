#include "common/BitGrid.h"
#include "common/BitOrder.h"
#include "common/BusLines.h"
#include "common/Crc.h"
#include "common/Duration.h"
#include "common/FilteredLine.h"
#include "common/LinePair.h"
#include "common/Parity.h"
#include "common/SelectSpans.h"
#include "common/StrobedBus.h"
#include "support/DecodeDesk.h"

#include <QtTest>

#include <array>
#include <cstdint>
#include <vector>

using lux::BitGrid;
using lux::ChannelReader;
using lux::Crc;
using lux::Parity;

namespace {

/// "123456789", on which the check values of CRC catalogues are given.
constexpr std::array<std::uint8_t, 9> checkText = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};

/// By the table, and bit by bit. @return 0 when the two differ
template<lux::CrcModel model>
std::uint32_t check()
{
    Crc<model> bits;
    for (const std::uint8_t byte : checkText) {
        for (unsigned i = 0; i < 8; ++i) {
            bits.addBit((byte >> (model.lsbFirst ? i : 7 - i) & 1U) != 0);
        }
    }
    const std::uint32_t value = Crc<model>::of(checkText);
    return bits.value() == value ? value : 0;
}

} // namespace

class TstDecoderEngines : public QObject {
    Q_OBJECT
private slots:
    void bitPositionsAreExactFractions();
    void parityBitsMakeTheNumberOfOnes();
    void bitsAreCollectedInBothOrders();
    void crcsHaveTheirCheckValues();
    void timesBecomeSamplesWithoutOverflow();
    void pairsOfLinesGoFromChangeToChange();
    void selectSpansTellWhatTheCaptureCuts();
    void theFilteredLineHasNoShortPulses();
    void busLinesAreReadAsANumber();
    void aStrobeTellsWhereItBeginsAndEnds();
};

void TstDecoderEngines::bitPositionsAreExactFractions()
{
    const BitGrid grid(1000000, 115200); // 8.6805 samples a bit
    QCOMPARE(grid.middleOf(0), std::int64_t(4));
    QCOMPARE(grid.middleOf(9), std::int64_t(82)); // 82.46
    QCOMPARE(grid.endOf(1), std::int64_t(9));
    QCOMPARE(grid.endOf(10), std::int64_t(87));          // 86.81
    QCOMPARE(grid.endOf(115200), std::int64_t(1000000)); // nothing adds up
    QCOMPARE(grid.endOfQuarters(6), std::int64_t(13));   // 13.02
    QCOMPARE(grid.bitsIn(87), std::int64_t(11));
    for (unsigned bit = 0; bit < 31; ++bit) {
        QCOMPARE(grid.bitAt(grid.middleOf(bit)), bit);
        QCOMPARE(BitGrid(10000000000, 1).bitAt(bit * 10000000000 + 5000000000), bit);
    }
    QVERIFY(grid.isCoarserThan(9));
    QVERIFY(!grid.isCoarserThan(8));
    QCOMPARE(BitGrid(10000000000, 1).middleOf(31), std::int64_t(315000000000));
}

void TstDecoderEngines::parityBitsMakeTheNumberOfOnes()
{
    for (std::uint64_t data : {0x00ULL, 0x01ULL, 0x43ULL, 0x1ffULL}) {
        QVERIFY(lux::isOdd(data << 1 | std::uint64_t(parityBit(data, Parity::Odd))));
        QVERIFY(!lux::isOdd(data << 1 | std::uint64_t(parityBit(data, Parity::Even))));
        QVERIFY(parityBit(data, Parity::Mark));
        QVERIFY(!parityBit(data, Parity::Space));
    }
}

void TstDecoderEngines::bitsAreCollectedInBothOrders()
{
    lux::BitCollector low(lux::BitOrder::LsbFirst);
    lux::BitCollector high(lux::BitOrder::MsbFirst);
    for (int i = 0; i < 64; ++i) {
        low.add(i < 2 || i == 63);
        high.add(i < 2 || i == 63);
    }
    QCOMPARE(low.value(), std::uint64_t(0x8000000000000003));
    QCOMPARE(high.value(), std::uint64_t(0xc000000000000001));
    QCOMPARE(lux::reversed(low.value(), 64), high.value());
    QCOMPARE(lux::reversed(0x16, 5), std::uint64_t(0x0d));
    low.clear();
    QCOMPARE(low.count(), 0U);
}

void TstDecoderEngines::crcsHaveTheirCheckValues()
{
    // The check values are those of the standards that define them.
    QCOMPARE((check<{.width = 16, .polynomial = 0x1021}>()), 0x31c3U);                                      // XMODEM
    QCOMPARE((check<{.width = 16, .polynomial = 0x8005, .initial = 0xffff, .lsbFirst = true}>()), 0x4b37U); // Modbus
    QCOMPARE((check<{.width = 8, .polynomial = 0x31, .lsbFirst = true}>()), 0xa1U);                         // 1-Wire
    QCOMPARE((check<{.width = 8, .polynomial = 0x07}>()), 0xf4U);                                           // SMBus
    QCOMPARE((check<{.width = 7, .polynomial = 0x09}>()), 0x75U);                                           // SD
    QCOMPARE((check<{.width = 15, .polynomial = 0x4599}>()), 0x059eU);                                      // CAN
    QCOMPARE((check<{.width = 17, .polynomial = 0x1685b}>()), 0x04f03U);                                    // CAN FD
    QCOMPARE((check<{.width = 21, .polynomial = 0x102899}>()), 0x0ed841U);
    QCOMPARE((check<{.width = 5, .polynomial = 0x05, .initial = 0x1f, .lsbFirst = true, .finalXor = 0x1f}>()),
             0x19U); // USB token
    QCOMPARE((check<{.width = 16, .polynomial = 0x8005, .initial = 0xffff, .lsbFirst = true, .finalXor = 0xffff}>()),
             0xb4c8U); // USB data
    QCOMPARE((check<{.width = 32,
                     .polynomial = 0x04c11db7,
                     .initial = 0xffffffff,
                     .lsbFirst = true,
                     .finalXor = 0xffffffff}>()),
             0xcbf43926U); // Ethernet
}

void TstDecoderEngines::timesBecomeSamplesWithoutOverflow()
{
    QCOMPARE(lux::samplesIn(50, 100000000), std::int64_t(5));
    QCOMPARE(lux::samplesIn(49, 100000000), std::int64_t(4));
    QCOMPARE(lux::samplesIn(2000000000, 10000000000), std::int64_t(20000000000));
}

void TstDecoderEngines::pairsOfLinesGoFromChangeToChange()
{
    TestCapture capture(1000, 100);
    capture.channel(0, false, {10, 30, 60}).channel(1, true, {20, 30});
    lux::detail::RunControl control;
    lux::LinePair pair(ChannelReader(capture.root(0), control, 100), ChannelReader(capture.root(1), control, 100));
    QCOMPARE(pair.begin(), std::int64_t(0));
    QCOMPARE(pair.levels(), 2U);
    const std::pair<std::int64_t, unsigned> changes[] = {{10, 3}, {20, 1}, {30, 2}, {60, 3}};
    for (const auto &[at, levels] : changes) {
        QVERIFY(pair.hasChange());
        QCOMPARE(pair.peekChange(), at);
        pair.next();
        QCOMPARE(pair.begin(), at);
        QCOMPARE(pair.levels(), levels);
    }
    QVERIFY(!pair.hasChange());
    QCOMPARE(pair.peekChange(), pair.sampleCount());
}

void TstDecoderEngines::selectSpansTellWhatTheCaptureCuts()
{
    TestCapture capture(1000000, 100);
    capture.channel(0, false, {10, 20, 30, 40, 50});
    lux::detail::RunControl control;
    const ChannelReader line(capture.root(0), control, 100);
    struct Expected {
        bool activeHigh;
        std::vector<std::array<std::int64_t, 4>> spans;
    };
    const Expected cases[] = {{false, {{0, 10, 0, 1}, {20, 30, 1, 1}, {40, 50, 1, 1}}},
                              {true, {{10, 20, 1, 1}, {30, 40, 1, 1}, {50, 100, 1, 0}}}};
    for (const Expected &expected : cases) {
        lux::SelectSpans spans(line, expected.activeHigh);
        lux::SelectSpan span;
        for (const auto &[begin, end, hasBegin, hasEnd] : expected.spans) {
            QVERIFY(spans.next(span));
            QCOMPARE(span.begin, begin);
            QCOMPARE(span.end, end);
            QCOMPARE(span.hasBegin, hasBegin != 0);
            QCOMPARE(span.hasEnd, hasEnd != 0);
        }
        QVERIFY(!spans.next(span));
    }
    lux::SelectSpans all(ChannelReader(control, 100), true);
    lux::SelectSpan span;
    QVERIFY(all.next(span));
    QCOMPARE(span.end, std::int64_t(100));
    QVERIFY(!all.next(span));
}

void TstDecoderEngines::theFilteredLineHasNoShortPulses()
{
    TestCapture capture(1000000, 100);
    // A pulse of 4, a gap of 4 within a pulse, pulses of 5, an edge 3 samples before the end.
    capture.channel(0, false, {10, 14, 20, 26, 30, 40, 50, 55, 97});
    lux::detail::RunControl control;
    lux::FilteredLine line(ChannelReader(capture.root(0), control, 100), 5);
    std::vector<std::int64_t> edges;
    while (line.hasEdge()) {
        edges.push_back(line.nextEdge());
    }
    QCOMPARE(edges, (std::vector<std::int64_t>{20, 40, 50, 55, 97}));
    lux::FilteredLine again(ChannelReader(capture.root(0), control, 100), 5);
    QVERIFY(!again.levelAt(12));
    QVERIFY(again.levelAt(28));
    QVERIFY(again.hasEdgeBefore(41));
    QVERIFY(!again.hasEdgeBefore(40));
    lux::ChannelReader reader(ChannelReader(capture.root(0), control, 100));
    QCOMPARE(lux::nextSteadyEdge(reader, 5), std::int64_t(20));
    QCOMPARE(reader.peekEdge(), std::int64_t(26)); // it is not ahead
    QCOMPARE(lux::nextSteadyEdge(reader, 5), std::int64_t(40));
    QCOMPARE(lux::nextSteadyEdge(reader, 1), std::int64_t(50));
}

void TstDecoderEngines::busLinesAreReadAsANumber()
{
    TestCapture capture(1000000, 100);
    capture.channel(0, false, {10, 20, 30}).channel(1, true, {15}).channel(2, false, {40});
    lux::detail::RunControl control;
    lux::BusLines lines;
    for (const std::uint32_t channel : {0U, 1U, 5U, 2U}) { // the third one is not there
        lines.add(ChannelReader(capture.root(channel), control, 100));
    }
    const std::array<unsigned, 9> expected = {2, 2, 3, 3, 1, 0, 1, 1, 9};
    const std::array<std::int64_t, 9> at = {0, 9, 10, 14, 15, 20, 30, 39, 40};
    for (std::size_t i = 0; i < at.size(); ++i) {
        QCOMPARE(lines.at(at[i]), std::uint64_t(expected[i]));
        QCOMPARE(lines.at(at[i]), std::uint64_t(expected[i])); // again at the same place
    }
    QCOMPARE(lines.at(99), std::uint64_t(9));
    QCOMPARE(lines.at(12), std::uint64_t(3)); // behind where it stands
}

void TstDecoderEngines::aStrobeTellsWhereItBeginsAndEnds()
{
    TestCapture capture(1000000, 100);
    capture.channel(0, false, {10, 20, 30, 40});
    lux::detail::RunControl control;
    lux::Strobe low(ChannelReader(capture.root(0), control, 100), lux::ActiveLevel::Low);
    QVERIFY(low.isActive()); // since the capture's begin
    QVERIFY(low.advance());
    QCOMPARE(low.first(), std::int64_t(0));
    QCOMPARE(low.end(), std::int64_t(10));
    QVERIFY(!low.advance());
    QVERIFY(low.advance());
    QCOMPARE(low.first(), std::int64_t(20));
    QCOMPARE(low.end(), std::int64_t(30));
    QVERIFY(!low.advance());
    QVERIFY(!low.hasEdge());
    QCOMPARE(low.peekEdge(), INT64_MAX);
    // A line that is not there is never active.
    const lux::Strobe none(ChannelReader(control, 100), lux::ActiveLevel::Low);
    QVERIFY(!none.isActive() && !none.hasEdge());
    QCOMPARE(none.end(), std::int64_t(-1));
}

QTEST_GUILESS_MAIN(TstDecoderEngines)
#include "tst_DecoderEngines.moc"
