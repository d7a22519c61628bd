#include "store/Captures.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"

#include <QtTest>

#include <algorithm>
#include <vector>

using namespace captures;

/// The search that everything else rests on, against a plain list of the same positions.
class TstSmpSeek : public QObject {
    Q_OBJECT
private slots:
    void init() { memBudget = std::int64_t(1) << 40; }
    void aSearchAgreesWithAPlainList_data();
    void aSearchAgreesWithAPlainList();
};

void TstSmpSeek::aSearchAgreesWithAPlainList_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("largest");
    QTest::addColumn<qint64>("step");
    QTest::newRow("dense, by small steps") << 100000 << 1 << qint64(3);
    QTest::newRow("dense, by large steps") << 100000 << 1 << qint64(5003);
    QTest::newRow("irregular, each position") << 50000 << 7 << qint64(1);
    QTest::newRow("irregular, beyond a leaf") << 100000 << 1000 << qint64(15000017);
    QTest::newRow("a leaf across 2^32") << 30000 << 300000 << qint64(70001);
    QTest::newRow("several high bytes in a leaf") << 15000 << 8000000 << qint64(2000003);
    QTest::newRow("one entry") << 1 << 100 << qint64(1);
}

void TstSmpSeek::aSearchAgreesWithAPlainList()
{
    QFETCH(int, count);
    QFETCH(int, largest);
    QFETCH(qint64, step);
    const std::vector<std::int32_t> widths = irregular(std::size_t(count), std::uint32_t(largest));
    const std::vector<std::int64_t> positions = positionsOf(widths);
    const auto data = channelOf(widths);
    QCOMPARE(data->entryCount(0), std::int64_t(count));

    SmpEdgeCursor hint;
    auto expected = positions.begin();
    for (std::int64_t pos = 0; pos < positions.back(); pos += step) {
        expected = std::upper_bound(expected, positions.end(), pos);
        SmpEdgeCursor fresh;
        const int level = data->locate(0, pos, hint);
        QCOMPARE(level, int((expected - positions.begin()) % 2));
        QCOMPARE(data->entryAt(0, hint), *expected);
        QCOMPARE(data->locate(0, pos, fresh), level);
        QVERIFY(fresh == hint);
    }
    QVERIFY(data->locate(0, positions.back(), hint) >= 0);
    QCOMPARE(data->entryAt(0, hint), positions.back());
    QCOMPARE(data->locate(0, positions.back() + 1, hint), -1);
}

QTEST_APPLESS_MAIN(TstSmpSeek)
#include "tst_SmpSeek.moc"
