#include "store/Captures.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"

#include <QtTest>

#include <optional>
#include <thread>

class TstSmpReadLock : public QObject {
    Q_OBJECT
private slots:
    void init() { memBudget = std::int64_t(1) << 40; }

    void aClosedCaptureAdmitsReaders();
    void aCaptureThatIsNotClosedAdmitsNone();
    void noStoreAdmitsNone();
    void locksNest();
    void aWaitingWriterRefusesFurtherReaders();
    void aReaderNeverSeesACaptureThatAWriterTouches();
};

void TstSmpReadLock::aClosedCaptureAdmitsReaders()
{
    SmpData data(1, 0);
    captures::close(data, {{5}}, 10);
    const SmpReadLock lock(&data);
    QVERIFY(bool(lock));
}

void TstSmpReadLock::aCaptureThatIsNotClosedAdmitsNone()
{
    SmpData data(1, 0);
    QVERIFY(!SmpReadLock(&data));
    captures::close(data, {{5}}, 10);
    data.open();
    QVERIFY(!SmpReadLock(&data));
    data.finish(10);
    data.clear(); // would wait for ever if a refused reader were still counted
    QVERIFY(!SmpReadLock(&data));
}

void TstSmpReadLock::noStoreAdmitsNone()
{
    QVERIFY(!SmpReadLock(nullptr));
}

void TstSmpReadLock::locksNest()
{
    SmpData data(1, 0);
    captures::close(data, {{5}}, 10);
    {
        const SmpReadLock outer(&data);
        const SmpReadLock inner(&data);
        QVERIFY(bool(outer) && bool(inner));
        QCOMPARE(data.sampleCount(), std::int64_t(10));
    }
    data.clear();
}

void TstSmpReadLock::aWaitingWriterRefusesFurtherReaders()
{
    SmpData data(1, 0);
    captures::close(data, {{5}}, 10);
    auto lock = std::make_unique<SmpReadLock>(&data);
    std::atomic<bool> opened{false};
    std::thread writer([&] {
        data.open();
        opened = true;
    });
    while (data.complete()) {
        std::this_thread::yield();
    }
    QVERIFY(!SmpReadLock(&data));
    QVERIFY(!opened);
    QCOMPARE(data.nextEdge(0, 0), std::int64_t(5)); // the outer lock stays good
    lock.reset();
    writer.join();
    QVERIFY(opened);
}

void TstSmpReadLock::aReaderNeverSeesACaptureThatAWriterTouches()
{
    constexpr int captureCount = 60;
    SmpData data(2, 0);
    std::atomic<bool> done{false};
    std::atomic<int> torn{0};
    std::atomic<int> admitted{0};
    const auto read = [&] {
        while (!done) {
            const SmpReadLock lock(&data);
            if (!lock) {
                std::this_thread::yield();
                continue;
            }
            ++admitted;
            // Each capture holds transitions at n and 2 n and is 3 n long.
            const std::int64_t n = data.smpCount() / 3;
            const bool whole =
                data.nextEdge(0, 0) == n && data.nextEdge(1, n) == 2 * n && data.lastPosition(0) == 3 * n;
            torn += whole ? 0 : 1;
        }
    };
    std::thread first(read);
    std::thread second(read);
    for (int n = 1; n <= captureCount || admitted == 0; ++n) {
        captures::close(data, {{n, 2 * n}, {n, 2 * n}}, 3 * n);
        std::this_thread::yield();
    }
    done = true;
    first.join();
    second.join();
    QCOMPARE(torn.load(), 0);
}

QTEST_APPLESS_MAIN(TstSmpReadLock)
#include "tst_SmpReadLock.moc"
