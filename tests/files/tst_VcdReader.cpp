#include "files/CaptureFiller.h"
#include "files/ForeignBytes.h"
#include "files/VcdReader.h"
#include "store/MemBudget.h"

#include <QtTest>

using Edges = std::vector<std::int64_t>;

namespace {

const QByteArray twoWires = "$timescale 1 us $end $scope module top $end\n"
                            "$var wire 1 ! clk $end $var wire 1 \" data $end\n"
                            "$upscope $end $enddefinitions $end\n";

ForeignCapture vcd(const QByteArray &bytes, const QStringList &channels = {})
{
    ForeignOptions options;
    options.channels = channels;
    return foreign(bytes, ForeignKind::Vcd, options);
}

/// Two wires on a time scale of one's own.
QByteArray scaled(const QByteArray &scale, const QByteArray &values)
{
    return QByteArray(twoWires).replace("1 us", scale) + values;
}

} // namespace

/// Value change dumps that are good.
class TstVcdReader : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { memBudget = std::int64_t(4) << 30; }
    void changesStandWhereTheirTimesAre();
    void theLastOfSeveralValuesAtATimeCounts();
    void aTimeWithoutValuesAtTheEndIsTheLength();
    void bitsOfAVectorBecomeChannels();
    void aShortVectorIsFilledUp_data();
    void aShortVectorIsFilledUp();
    void unknownValuesAreLowAndCounted();
    void codesMayBeLongAndShared();
    void otherKindsOfVariablesArePassedOver();
    void everyTimeScaleIsARate_data();
    void everyTimeScaleIsARate();
    void aFineScaleTakesTheLeastCommonRate();
    void lateTimesTakeTheLeastCommonRate();
    void aToldRateGivesItsSamples();
    void aToldRateGoesUpToTheLongestCapture();
    void aWrongToldRateIsPassedOver();
    void someOfThousandsOfSignalsArePicked();
    void namesAreCutAndTellChannelsApart();
    void aModelIsChosenThatHasTheChannels();
    void aLongCommentTakesNoMemory();
    void aHookIsAskedAndCancels();
};

void TstVcdReader::changesStandWhereTheirTimesAre()
{
    const ForeignCapture read = vcd(twoWires + "#0 $dumpvars 1! 0\" $end\n#5\n0!\n#7 1! 1\"\n#7 0\"\n#9 1\"\n#20\n");
    QVERIFY2(read.isDone(), qPrintable(read.detail));
    QCOMPARE(read.capture->smpFrequ(), 1'000'000);
    QCOMPARE(read.capture->smpCount(), 20);
    QCOMPARE(read.names, (QStringList{QStringLiteral("clk"), QStringLiteral("data")}));
    QCOMPARE(edgesOf(*read.capture, 0), (Edges{5, 7}));
    QCOMPARE(edgesOf(*read.capture, 1), (Edges{9}));
    QCOMPARE(levelsAt(*read.capture, 0), 1);
    QCOMPARE(levelsAt(*read.capture, 8), 1);
    QVERIFY(read.notes.isEmpty());
}

void TstVcdReader::theLastOfSeveralValuesAtATimeCounts()
{
    const ForeignCapture read = vcd(twoWires + "#0 0! 0\" #3 1! 0! #4 1! 0! 1! #9");
    QVERIFY(read.isDone());
    QCOMPARE(edgesOf(*read.capture, 0), (Edges{4}));
}

void TstVcdReader::aTimeWithoutValuesAtTheEndIsTheLength()
{
    QCOMPARE(vcd(twoWires + "#0 0! #8 1! #9").capture->smpCount(), 9);
    QCOMPARE(vcd(twoWires + "#0 0! #8 1!").capture->smpCount(), 9);
    QCOMPARE(vcd(twoWires + "1!").capture->smpCount(), 1);
}

void TstVcdReader::bitsOfAVectorBecomeChannels()
{
    const QByteArray head = "$timescale 1ns $end $scope module a $end $var reg 4 # bus [7:4] $end\n"
                            "$var wire 1 $ we $end $var wire 2 % up [0:1] $end $upscope $end $enddefinitions $end\n";
    const ForeignCapture read = vcd(head + "#0 b0000 # 0$ b10 %\n#1 b1010 #\n#2 b1 # 1$\n#5");
    QVERIFY2(read.isDone(), qPrintable(read.detail));
    QCOMPARE(read.names.join(QLatin1Char(' ')), QStringLiteral("bus[4] bus[5] bus[6] bus[7] we up[1] up[0]"));
    QCOMPARE(levelsAt(*read.capture, 0), 0b1000000);
    QCOMPARE(levelsAt(*read.capture, 1), 0b1001010);
    QCOMPARE(levelsAt(*read.capture, 2), 0b1010001);
}

void TstVcdReader::aShortVectorIsFilledUp_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<int>("levels");
    QTest::addColumn<int>("notes");
    QTest::newRow("zero") << QByteArray("b0") << 0 << 0;
    QTest::newRow("one") << QByteArray("B1") << 1 << 0;
    QTest::newRow("unknown") << QByteArray("bx1") << 1 << 1;
    QTest::newRow("open") << QByteArray("bZ") << 0 << 1;
    QTest::newRow("whole") << QByteArray("b1111") << 15 << 0;
}

void TstVcdReader::aShortVectorIsFilledUp()
{
    QFETCH(QByteArray, value);
    QFETCH(int, levels);
    QFETCH(int, notes);
    const ForeignCapture read =
        vcd("$timescale 1ns $end $var reg 4 # bus [3:0] $end $enddefinitions $end #0 b0000 # #3 " + value + " # #4");
    QVERIFY(read.isDone());
    QCOMPARE(levelsAt(*read.capture, 3), levels);
    QCOMPARE(read.notes.size(), notes);
}

void TstVcdReader::unknownValuesAreLowAndCounted()
{
    const ForeignCapture read = vcd(twoWires + "#0 x! z\" #1 1! #2 X! #3 1! #4 Z! #9");
    QVERIFY(read.isDone());
    QCOMPARE(edgesOf(*read.capture, 0), (Edges{1, 2, 3, 4}));
    QCOMPARE(read.notes, QStringList(QStringLiteral("4 values x or z are taken for 0")));
}

void TstVcdReader::codesMayBeLongAndShared()
{
    QByteArray head = "$timescale 1 us $end\n";
    for (const char *code : {"ab", "abc", "abcd", "abcde", "ab"}) {
        head += QByteArray("$var wire 1 ") + code + " n" + code + " $end\n";
    }
    const ForeignCapture read =
        vcd(head + "$enddefinitions $end #0 0ab 0abc 0abcd 0abcde #1 1abcd #2 1ab #3 1abcde #4");
    QVERIFY2(read.isDone(), qPrintable(read.detail));
    QCOMPARE(edgesOf(*read.capture, 0), (Edges{2}));
    QCOMPARE(edgesOf(*read.capture, 1), Edges());
    QCOMPARE(edgesOf(*read.capture, 2), (Edges{1}));
    QCOMPARE(edgesOf(*read.capture, 3), (Edges{3}));
    QCOMPARE(edgesOf(*read.capture, 4), (Edges{2}));
}

void TstVcdReader::otherKindsOfVariablesArePassedOver()
{
    const ForeignCapture read = vcd("$timescale 1us $end $var real 64 r temp $end $var wire 1 ! clk $end "
                                    "$var event 1 e tick $end $enddefinitions $end #0 r1.5e3 r 0! #2 1! 1e r-7 r #4");
    QVERIFY2(read.isDone(), qPrintable(read.detail));
    QCOMPARE(read.names, QStringList(QStringLiteral("clk")));
    QCOMPARE(edgesOf(*read.capture, 0), (Edges{2}));
    QCOMPARE(read.notes, QStringList(QStringLiteral("2 variables are no bits and are passed over")));
}

void TstVcdReader::everyTimeScaleIsARate_data()
{
    QTest::addColumn<QByteArray>("scale");
    QTest::addColumn<qlonglong>("rate");
    QTest::addColumn<qlonglong>("edge");
    const char *units[] = {"s", "ms", "us", "ns", "ps"};
    qlonglong rate = 1;
    for (const char *unit : units) {
        for (const int count : {1, 10, 100}) {
            const bool isSlow = rate == 1;
            QTest::addRow("%d %s", count, unit)
                << QByteArray::number(count) + unit << (isSlow ? 1 : rate / count) << (isSlow ? 3LL * count : 3LL);
        }
        rate *= 1000;
    }
    QTest::newRow("blanks") << QByteArray(" 10\n ns ") << 100'000'000LL << 3LL;
}

void TstVcdReader::everyTimeScaleIsARate()
{
    QFETCH(QByteArray, scale);
    QFETCH(qlonglong, rate);
    QFETCH(qlonglong, edge);
    const ForeignCapture read = vcd(scaled(scale, "#0 0! #3 1! #5"));
    QVERIFY2(read.isDone(), qPrintable(read.detail));
    QCOMPARE(qlonglong(read.capture->smpFrequ()), rate);
    QCOMPARE(edgesOf(*read.capture, 0), (Edges{edge}));
    QCOMPARE(qlonglong(read.capture->smpCount()), edge / 3 * 5);
}

void TstVcdReader::aFineScaleTakesTheLeastCommonRate()
{
    const ForeignCapture read = vcd(scaled("1 fs", "#0 0! #5000000 1! #7500000 0! #20000000"));
    QVERIFY2(read.isDone(), qPrintable(read.detail));
    QCOMPARE(read.capture->smpFrequ(), 400'000'000);
    QCOMPARE(edgesOf(*read.capture, 0), (Edges{2, 3}));
    QCOMPARE(read.capture->smpCount(), 8);
}

void TstVcdReader::lateTimesTakeTheLeastCommonRate()
{
    // 4000 seconds in picoseconds, on a grid of 10 ns; the grid first looks like one of 40 ns.
    const ForeignCapture read =
        vcd(scaled("1 ps", "#0 0! #40000 1! #80000 0! #4000000000000000 1! #4000000000010000 0! #4000000000020000"));
    QVERIFY2(read.isDone(), qPrintable(read.detail));
    QCOMPARE(read.capture->smpFrequ(), 100'000'000);
    QCOMPARE(edgesOf(*read.capture, 0), (Edges{4, 8, 400'000'000'000, 400'000'000'001}));
    QCOMPARE(read.capture->smpCount(), 400'000'000'002);
}

void TstVcdReader::aToldRateGivesItsSamples()
{
    const QByteArray values = "#0 0! #41667 1! #83333 0! #125000 1! #1000000";
    const ForeignCapture read = vcd("$comment Sample rate: 24000000 Hz; trigger: 2 $end " + scaled("1 ps", values));
    QVERIFY2(read.isDone(), qPrintable(read.detail));
    QCOMPARE(read.capture->smpFrequ(), 24'000'000);
    QCOMPARE(read.capture->smpCount(), 24);
    QCOMPARE(read.capture->trgPos(), 2);
    QCOMPARE(edgesOf(*read.capture, 0), (Edges{1, 2, 3}));
    QCOMPARE(vcd("$comment Acquisition with 2/2 channels at 24 MHz $end " + scaled("1 ps", values)).capture->smpFrequ(),
             24'000'000);
}

void TstVcdReader::aToldRateGoesUpToTheLongestCapture()
{
    const QByteArray told = "$comment Sample rate: 1000000000 Hz $end ";
    const ForeignCapture read = vcd(told + scaled("1 ns", "#0 0! #1099511627774 1! #1099511627775"));
    QVERIFY2(read.isDone(), qPrintable(read.detail));
    QCOMPARE(read.capture->smpCount(), CaptureFiller::positionMax);
    QCOMPARE(edgesOf(*read.capture, 0), (Edges{CaptureFiller::positionMax - 1}));
    QVERIFY(vcd(told + scaled("1 ns", "#0 0! #1099511627775 1!")).detail.contains(QStringLiteral("2^40")));
    QVERIFY(vcd(told + scaled("1 ns", "#0 0! #1099511627776")).detail.contains(QStringLiteral("2^40")));
}

void TstVcdReader::aWrongToldRateIsPassedOver()
{
    const ForeignCapture read =
        vcd("$comment Sample rate: 24000000 Hz $end " + scaled("1 ps", "#0 0! #41667 1! #50000 0! #100000"));
    QVERIFY2(read.isDone(), qPrintable(read.detail));
    QCOMPARE(read.capture->smpFrequ(), 1'000'000'000'000);
    QCOMPARE(edgesOf(*read.capture, 0), (Edges{41667, 50000}));
    // A tick beside the nearest one to a sample.
    const ForeignCapture close =
        vcd("$comment Sample rate: 24000000 Hz $end " + scaled("1 ps", "#0 0! #41666 1! #83333"));
    QVERIFY2(close.isDone(), qPrintable(close.detail));
    QCOMPARE(close.capture->smpFrequ(), 1'000'000'000'000);
}

void TstVcdReader::someOfThousandsOfSignalsArePicked()
{
    QByteArray head = "$timescale 1us $end\n";
    for (int i = 0; i < 5000; ++i) {
        const QByteArray number = QByteArray::number(i);
        head += "$scope module m" + number + " $end $var wire 1 c" + number + " s" + QByteArray::number(i / 2) +
                " $end $upscope $end\n";
    }
    head += "$var wire 64 v wide [63:0] $end $enddefinitions $end #0 0c3 #1 1c3 #2 1c4999 b1000 v #3";
    const ForeignCapture all = vcd(head);
    QCOMPARE(all.result, FileResult::Damaged);
    QVERIFY2(all.detail.startsWith(
                 QStringLiteral("5064 channels are more than 32; \"luxcli convert --channels\" picks some")),
             qPrintable(all.detail));
    const ForeignCapture some =
        vcd(head, {QStringLiteral("m4999.s2499"), QStringLiteral("3"), QStringLiteral("wide[3]")});
    QVERIFY2(some.isDone(), qPrintable(some.detail));
    QCOMPARE(some.names, (QStringList{QStringLiteral("s2499"), QStringLiteral("s1"), QStringLiteral("wide[3]")}));
    QCOMPARE(edgesOf(*some.capture, 0), (Edges{2}));
    QCOMPARE(edgesOf(*some.capture, 1), (Edges{1}));
    QCOMPARE(edgesOf(*some.capture, 2), (Edges{2}));
    QVERIFY(vcd(head, {QStringLiteral("s7")}).detail.contains(QStringLiteral("several channels")));
    QVERIFY(vcd(head, {QStringLiteral("nothing")}).detail.contains(QStringLiteral("no channel \"nothing\"")));
    QVERIFY(vcd(head, {QStringLiteral("5064")}).detail.contains(QStringLiteral("no channel 5064")));
    QVERIFY(vcd(head, {QStringLiteral("wide")}).detail.contains(QStringLiteral("more than 32")));
    QVERIFY(vcd(head, {QStringLiteral("0-31")}).isDone());
}

void TstVcdReader::namesAreCutAndTellChannelsApart()
{
    const QByteArray name(300, 'n');
    const ForeignCapture read =
        vcd("$timescale 1us $end $var wire 1 ! " + name +
            " $end $scope module a $end $var wire 1 # x $end $upscope $end "
            "$scope module b $end $var wire 1 $ x $end $upscope $end $enddefinitions $end #0 0!");
    QVERIFY(read.isDone());
    QCOMPARE(read.names[0], QString(foreignNameMax, QLatin1Char('n')));
    QCOMPARE(read.names[1], QStringLiteral("a.x"));
    QCOMPARE(read.names[2], QStringLiteral("b.x"));
}

void TstVcdReader::aModelIsChosenThatHasTheChannels()
{
    for (const auto &[width, channels] : {std::pair(8, 8), {9, 16}, {16, 16}, {17, 32}, {32, 32}}) {
        const ForeignCapture read = vcd("$timescale 1us $end $var reg " + QByteArray::number(width) +
                                        " ! bus $end $enddefinitions $end #0 b1 ! #1");
        QVERIFY(read.isDone());
        QCOMPARE(read.capture->chnCount, channels);
        QCOMPARE(read.names.size(), width);
    }
}

void TstVcdReader::aLongCommentTakesNoMemory()
{
    // As long as its reader would notice if it kept it: without blanks and line ends.
    EndlessText file(twoWires + "#0 0! #1 1! $comment ", "no end; $en $endless ", qint64(1) << 26);
    memBudget = std::int64_t(4) << 30;
    const ForeignCapture read = readVcd(file, {}, {});
    QCOMPARE(read.result, FileResult::Damaged);
    QCOMPARE(read.detail, QStringLiteral("line 4: the file ends before $end"));
    const ForeignCapture closed = vcd(twoWires + "#0 0! #1 1! $comment " + QByteArray(3'000'000, '-') + " $end #4");
    QVERIFY2(closed.isDone(), qPrintable(closed.detail));
    QCOMPARE(closed.capture->smpCount(), 4);
}

void TstVcdReader::aHookIsAskedAndCancels()
{
    QByteArray values;
    for (int i = 1; i < 400'000; ++i) {
        values += '#' + QByteArray::number(i) + (i % 2 == 0 ? " 0!\n" : " 1!\n");
    }
    double last = 0;
    int asked = 0;
    const auto all = foreign(twoWires + values, ForeignKind::Vcd, {}, [&](double share) {
        const bool grows = share >= last && share <= 1;
        last = share;
        ++asked;
        return grows;
    });
    QVERIFY(all.isDone());
    QVERIFY(asked > 2);
    QCOMPARE(edgesOf(*all.capture, 0).size(), std::size_t(399'999));
    QCOMPARE(foreign(twoWires + values, ForeignKind::Vcd, {}, [](double) { return false; }).result,
             FileResult::Cancelled);
}

QTEST_GUILESS_MAIN(TstVcdReader)
#include "tst_VcdReader.moc"
