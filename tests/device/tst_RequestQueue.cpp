// Requests that wait for an instrument: their order, which of them matter, and who is told.

#include "device/DevControl.h"
#include "device/RequestQueue.h"

#include <QSemaphore>
#include <QtTest>

#include <memory>

namespace {

/// A queue whose jobs write down their names, on its thread; read behind the queue's end.
struct QueueDesk {
    DevControlNone control;
    QStringList made;
    std::unique_ptr<RequestQueue> queue = std::make_unique<RequestQueue>(control);
    QSemaphore reached;
    QSemaphore go;

    RequestQueue::Job job(const QString &name)
    {
        return [this, name](DevControl &) {
            made.append(name);
            return int(name.size());
        };
    }
    /// Keeps the thread in a job until release().
    void hold()
    {
        queue->post(
            [this](DevControl &) {
                reached.release();
                go.acquire();
                return 0;
            },
            queue.get(), [](int) {});
        reached.acquire();
    }
    void release() { go.release(); }
    QStringList end()
    {
        queue.reset();
        return made;
    }
};

QString name(const char *text)
{
    return QString::fromLatin1(text);
}

} // namespace

class TstRequestQueue : public QObject {
    Q_OBJECT
private slots:
    void requestsAreMadeInTheirOrder();
    void theResultComesOnTheMainThread();
    void aResultForNobodyIsDropped();
    void theLatestValueReplacesTheOneThatWaits();
    void aValueBehindAnotherRequestKeepsItsPlace();
    void whatWaitsIsMadeBeforeTheEnd();
    void whatIsDroppedIsNotMadeAndTellsSo();
    void aQueueWithoutRequestsEnds();
};

void TstRequestQueue::requestsAreMadeInTheirOrder()
{
    QueueDesk desk;
    desk.hold();
    QStringList posted;
    for (int i = 0; i < 20; ++i) {
        posted.append(QString::number(i));
        desk.queue->post(desk.job(posted.last()), this, [](int) {});
    }
    desk.release();
    QCOMPARE(desk.end(), posted);
}

void TstRequestQueue::theResultComesOnTheMainThread()
{
    QueueDesk desk;
    QVector<int> results;
    QThread *thread = nullptr;
    desk.queue->post(desk.job(name("three")), this, [&](int result) {
        results.append(result);
        thread = QThread::currentThread();
    });
    desk.queue->post(desk.job(name("two")), this, [&](int result) { results.append(result); });
    QVERIFY(results.isEmpty());
    QTRY_COMPARE(results, (QVector<int>{5, 3}));
    QCOMPARE(thread, QThread::currentThread());
}

void TstRequestQueue::aResultForNobodyIsDropped()
{
    QueueDesk desk;
    int told = 0;
    auto context = std::make_unique<QObject>();
    desk.hold();
    desk.queue->post(desk.job(name("a")), context.get(), [&](int) { ++told; });
    desk.queue->post(desk.job(name("b")), this, [&](int) { told += 10; });
    context.reset();
    desk.release();
    QTRY_COMPARE(told, 10);
}

void TstRequestQueue::theLatestValueReplacesTheOneThatWaits()
{
    QueueDesk desk;
    desk.hold();
    for (const char *value : {"1", "2", "3"}) {
        desk.queue->postLatest(7, desk.job(name(value)));
    }
    desk.release();
    QCOMPARE(desk.end(), QStringList{name("3")});
}

void TstRequestQueue::aValueBehindAnotherRequestKeepsItsPlace()
{
    QueueDesk desk;
    desk.hold();
    desk.queue->postLatest(7, desk.job(name("off")));
    desk.queue->postLatest(8, desk.job(name("value")));
    desk.queue->postLatest(7, desk.job(name("on")));
    desk.release();
    QCOMPARE(desk.end(), (QStringList{name("off"), name("value"), name("on")}));
}

void TstRequestQueue::whatWaitsIsMadeBeforeTheEnd()
{
    QueueDesk desk;
    desk.queue->post(desk.job(name("last")), this, [](int) { QFAIL("told behind the end"); });
    QCOMPARE(desk.end(), QStringList{name("last")});
    QCoreApplication::processEvents();
}

void TstRequestQueue::whatIsDroppedIsNotMadeAndTellsSo()
{
    QueueDesk desk;
    desk.hold();
    int result = 0;
    desk.queue->post(desk.job(name("a")), this, [&](int told) { result = told; });
    desk.queue->postLatest(1, desk.job(name("b")));
    desk.queue->drop();
    QCOMPARE(result, int(SmpDevice::notOpen));
    desk.release();
    QCOMPARE(desk.end(), QStringList());
}

void TstRequestQueue::aQueueWithoutRequestsEnds()
{
    QCOMPARE(QueueDesk().end(), QStringList());
}

QTEST_GUILESS_MAIN(TstRequestQueue)
#include "tst_RequestQueue.moc"
