// A capture, a load or another device while somebody reads the last capture for long. The holder of the lease is always
// the main thread itself: whatever waited for it there would never return.

#include "device/DevModels.h"
#include "settings/Config.h"
#include "store/MemBudget.h"
#include "store/SmpLease.h"
#include "support/FakeDevControl.h"

#include <QtTest>

class TstDevBaseLease : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        configLoad();
        memBudget = ample;
    }
    void aStartReturnsAndTheCaptureBeginsWhenTheHolderHasLeft();
    void aHolderThatLeavesWhenCalledHoldsUpNothing();
    void aStopWhileTheHolderStaysKeepsTheLastCapture();
    void endingTheCaptureWhileTheHolderStaysReturns();
    void aDeviceMayGoWhileItsCaptureIsRead();

private:
    static constexpr std::int64_t ample = std::int64_t(1) << 40;

    /// A device without an instrument, with a capture.
    static std::unique_ptr<DevBase> captured();
};

std::unique_ptr<DevBase> TstDevBaseLease::captured()
{
    std::unique_ptr<DevBase> device = createDevice(0);
    device->setSmpFrequIndex(0);
    device->setSmpDepthIndex(0);
    device->startCapture();
    const auto isOver = [&] { return !device->isCapturing() && !device->hasThreads(); };
    if (!QTest::qWaitFor(isOver, 30000)) {
        return nullptr;
    }
    QCoreApplication::processEvents(); // the last words of its thread, which are none of the next capture's
    return device;
}

void TstDevBaseLease::aStartReturnsAndTheCaptureBeginsWhenTheHolderHasLeft()
{
    const auto device = captured();
    QVERIFY(device);
    device->setSmpDepthIndex(1);
    auto lease = std::make_unique<SmpLease>(device->smpData.get());
    QVERIFY(bool(*lease));
    int published = 0;
    connect(device.get(), &DevBase::sigSmpDataReady, this, [&] { ++published; });
    device->startCapture();
    QVERIFY(device->isCapturing());
    QVERIFY(lease->writerWaits());
    QVERIFY(!SmpReadLock(device->smpData.get()));
    QCOMPARE(device->smpData->lastPosition(0), device->smpDepths[0]); // untouched as long as it is held
    lease.reset();
    QTRY_COMPARE(published, 1);
    QCOMPARE(device->smpData->sampleCount(), device->smpDepths[1]);
}

void TstDevBaseLease::aHolderThatLeavesWhenCalledHoldsUpNothing()
{
    const auto device = captured();
    QVERIFY(device);
    std::unique_ptr<SmpLease> lease;
    lease = std::make_unique<SmpLease>(device->smpData.get(), [&lease] { lease->release(); });
    device->startCapture();
    QVERIFY(!*lease); // told before the start returned
    QTRY_VERIFY(!device->isCapturing());
}

void TstDevBaseLease::aStopWhileTheHolderStaysKeepsTheLastCapture()
{
    const auto device = captured();
    QVERIFY(device);
    const SmpLease lease(device->smpData.get());
    int published = 0;
    QVector<QPair<int, int>> states;
    connect(device.get(), &DevBase::sigSmpDataReady, this, [&] { ++published; });
    connect(device.get(), &DevBase::sigSmpSta, this, [&](int sta, int err, int) { states.append({sta, err}); });
    device->startCapture();
    device->stopCapture();
    QTRY_COMPARE(published, 1);
    QCOMPARE(states, (QVector<QPair<int, int>>{{0, 0}, {5, 0}}));
    QVERIFY(!device->isCapturing());
    QVERIFY(!lease.writerWaits());
    QCOMPARE(device->smpData->sampleCount(), device->smpDepths[0]);
}

void TstDevBaseLease::endingTheCaptureWhileTheHolderStaysReturns()
{
    const auto device = captured();
    QVERIFY(device);
    const SmpLease lease(device->smpData.get());
    device->startCapture();
    device->endCapture();
    QVERIFY(!device->isCapturing());
    QCOMPARE(device->smpData->sampleCount(), device->smpDepths[0]);
}

void TstDevBaseLease::aDeviceMayGoWhileItsCaptureIsRead()
{
    auto device = captured();
    QVERIFY(device);
    SmpData &data = *device->smpData;
    const std::int64_t length = data.sampleCount();
    bool told = false;
    auto lease = std::make_unique<SmpLease>(&data, [&told] { told = true; });
    device.reset();
    QVERIFY(told);
    QVERIFY(lease->writerWaits());
    QCOMPARE(data.lastPosition(0), length);
    lease.reset();
    QTRY_COMPARE(memBudget.load(), ample);
}

QTEST_GUILESS_MAIN(TstDevBaseLease)
#include "tst_DevBaseLease.moc"
