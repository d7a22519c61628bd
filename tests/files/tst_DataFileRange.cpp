#include "files/DataBlocks.h"
#include "files/DataFile.h"
#include "files/DataFileBytes.h"
#include "files/DataFileSaved.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"
#include "store/SmpWriter.h"

#include <QTest>

#include <limits>

/// The range of a save, and the entries in it.
class TstDataFileRange : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void theRangeIsSwappedLimitedAndNeverEmpty_data();
    void theRangeIsSwappedLimitedAndNeverEmpty();
    void aRangeWithoutACaptureIsTheFirstSample();
    void theEntriesOfASaveAreCountedWithOneEndMarkAChannel();
    void nothingIsCountedWithoutASelectionOrACapture();
};

void TstDataFileRange::initTestCase()
{
    memBudget = std::int64_t(4) << 30;
}

void TstDataFileRange::theRangeIsSwappedLimitedAndNeverEmpty_data()
{
    constexpr double inf = std::numeric_limits<double>::infinity();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("end");
    QTest::addColumn<qint64>("first");
    QTest::addColumn<qint64>("last");
    QTest::newRow("all") << 0.0 << 1000.0 << qint64(0) << qint64(999);
    QTest::newRow("reversed") << 1000.0 << 0.0 << qint64(0) << qint64(999);
    QTest::newRow("outside on both sides") << -5.0 << 2000.0 << qint64(0) << qint64(999);
    QTest::newRow("fractions widen") << 9.9 << 20.1 << qint64(9) << qint64(20);
    QTest::newRow("whole end is exclusive") << 9.0 << 20.0 << qint64(9) << qint64(19);
    QTest::newRow("empty holds one") << 7.0 << 7.0 << qint64(7) << qint64(7);
    QTest::newRow("empty between two samples") << 7.5 << 7.5 << qint64(7) << qint64(7);
    QTest::newRow("empty at zero") << 0.0 << 0.0 << qint64(0) << qint64(0);
    QTest::newRow("empty at the end") << 1000.0 << 1000.0 << qint64(1000) << qint64(1000);
    QTest::newRow("wholly before") << -9.0 << -3.0 << qint64(0) << qint64(0);
    QTest::newRow("wholly behind") << 5000.0 << 6000.0 << qint64(1000) << qint64(1000);
    QTest::newRow("infinite") << -inf << inf << qint64(0) << qint64(999);
    QTest::newRow("infinite reversed") << inf << -inf << qint64(0) << qint64(999);
    QTest::newRow("huge") << -1e300 << 1e300 << qint64(0) << qint64(999);
    QTest::newRow("no number at the start") << nan << 10.0 << qint64(0) << qint64(9);
    QTest::newRow("no number at the end") << 10.0 << nan << qint64(0) << qint64(9);
    QTest::newRow("no numbers") << nan << nan << qint64(0) << qint64(0);
}

void TstDataFileRange::theRangeIsSwappedLimitedAndNeverEmpty()
{
    QFETCH(double, start);
    QFETCH(double, end);
    QFETCH(qint64, first);
    QFETCH(qint64, last);
    const auto data = CaptureBuilder(8).samples(1000).build();
    DataFile file(data.get());
    file.setRange(start, end);
    QCOMPARE(qint64(file.posStart), first);
    QCOMPARE(qint64(file.posEnd), last);
    QCOMPARE(qint64(file.smpTotal), last - first + 1);
}

void TstDataFileRange::aRangeWithoutACaptureIsTheFirstSample()
{
    SmpData data(8, 0);
    SmpWriter(data).setSmpCount(500); // a capture that fills
    DataFile file(&data);
    file.setRange(0, 500);
    QCOMPARE(file.posStart, 0);
    QCOMPARE(file.posEnd, 0);
}

void TstDataFileRange::theEntriesOfASaveAreCountedWithOneEndMarkAChannel()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {10, 20, 30}).channel(1, 0, {20}).channel(2, 0).build();
    DataFile file(data.get());
    auto select = all(8);
    file.chnSelect = select.data();
    file.setRange(0, 1000);
    QCOMPARE(file.edgeTotal(), 4 + 2 + 1);
    QCOMPARE(file.workTotal, 7);
    file.setRange(10, 30); // the edge at 10 is part of the level, that at 30 lies behind
    QCOMPARE(file.edgeTotal(), 2 + 2 + 1);
    select[0] = 0;
    QCOMPARE(file.edgeTotal(), 2 + 1);
}

void TstDataFileRange::nothingIsCountedWithoutASelectionOrACapture()
{
    const auto data = CaptureBuilder(8).channel(0, 0, {10}).build();
    DataFile file(data.get());
    file.workTotal = 9;
    file.setRange(0, 1000);
    QCOMPARE(file.edgeTotal(), 0);
    QCOMPARE(file.workTotal, 0);
    const auto select = all(8);
    file.chnSelect = select.data();
    QCOMPARE(file.edgeTotal(), 2);
    data->open();
    QCOMPARE(file.edgeTotal(), 0);
}

QTEST_GUILESS_MAIN(TstDataFileRange)
#include "tst_DataFileRange.moc"
