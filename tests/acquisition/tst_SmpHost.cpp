#include "acquisition/SmpHost.h"

#include <QElapsedTimer>
#include <QtTest>

#include <atomic>
#include <functional>
#include <thread>

class TstSmpHost : public QObject {
    Q_OBJECT
private slots:
    void aStopEndsAWaitAtOnce();
    void anAbortEndsAWaitAtOnce();
    void aWaitWithoutEitherIsWaitedOut();
};

namespace {

constexpr int longWait = 60000; ///< ms: never waited for when all is well
constexpr int rounds = 200;     ///< in which the wake-up meets the wait at any of its points

/// Whether waits of a thread end when `end` is called on this one.
bool endsWaits(SmpHost &host, std::atomic<bool> &abort, const std::function<void(bool)> &end)
{
    QElapsedTimer clock;
    clock.start();
    for (int round = 0; round < rounds && clock.elapsed() < longWait / 2; ++round) {
        end(false);
        std::thread waiter([&] { host.waitForStop(longWait, abort); });
        end(true);
        host.wake();
        waiter.join();
    }
    return clock.elapsed() < longWait / 2;
}

} // namespace

void TstSmpHost::aStopEndsAWaitAtOnce()
{
    SmpHost host;
    std::atomic<bool> abort{false};
    QVERIFY(endsWaits(host, abort, [&host](bool stops) { host.smpStop = stops; }));
}

void TstSmpHost::anAbortEndsAWaitAtOnce()
{
    SmpHost host;
    std::atomic<bool> abort{false};
    QVERIFY(endsWaits(host, abort, [&abort](bool aborts) { abort = aborts; }));
}

void TstSmpHost::aWaitWithoutEitherIsWaitedOut()
{
    SmpHost host;
    QElapsedTimer clock;
    clock.start();
    host.waitForStop(20);
    QVERIFY(clock.elapsed() >= 20);
}

QTEST_GUILESS_MAIN(TstSmpHost)
#include "tst_SmpHost.moc"
