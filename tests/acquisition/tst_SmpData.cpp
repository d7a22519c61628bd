#include "acquisition/MemBudget.h"
#include "acquisition/SmpData.h"

#include <QtTest>

#include <vector>

class TstSmpData : public QObject {
    Q_OBJECT
private slots:
    void init() { memBudget = std::int64_t(1) << 40; }
    void aChannelWithoutTransitionsClosesWithExactlyTheEndMark();
};

void TstSmpData::aChannelWithoutTransitionsClosesWithExactlyTheEndMark()
{
    SmpData data(2, 0);
    const std::uint8_t enable[] = {1, 0};
    data.begin(0, 1000000, enable);
    QVERIFY(!SmpReadLock(&data));
    data.smpCount = 1000;
    data.finish(1000);
    const SmpReadLock lock(&data);
    QVERIFY(bool(lock));
    QCOMPARE(data.entryCount(0), std::int64_t(1));
    QCOMPARE(data.nextEdge(0, 0), std::int64_t(1000));
    QCOMPARE(data.nextEdge(0, 999), std::int64_t(1000));
    QCOMPARE(data.prevEdge(0, 999), std::int64_t(-1));
    QCOMPARE(data.edgeCount(0, 0, 999), std::int64_t(0));
    QCOMPARE(data.nextEdge(1, 5), std::int64_t(-1));
}

QTEST_APPLESS_MAIN(TstSmpData)
#include "tst_SmpData.moc"
