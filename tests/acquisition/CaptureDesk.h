#pragma once

#include "acquisition/SmpCnvtStorage.h"
#include "acquisition/SmpCnvtTransfer.h"
#include "acquisition/SmpCtrlStorage.h"
#include "acquisition/SmpCtrlTransfer.h"
#include "acquisition/SmpHost.h"
#include "support/FakeCapture.h"

#include <QtTest>

/// What the main thread hears of a capture.
struct State {
    int sta;
    int err;
    int value;
    bool operator==(const State &) const = default;
};

/// A host with a store, both pairs of threads, a fake instrument, and an ear on the main thread.
class CaptureDesk : public SmpHost {
public:
    static constexpr std::int64_t ampleMemory = std::int64_t(1) << 40;

    explicit CaptureDesk(int chnCount, int aChnCount = 0)
    {
        memBudget = ampleMemory;
        smpData = std::make_unique<SmpData>(chnCount, aChnCount);
        settings.frequency = 10000000;
        settings.depth = 2000;
        settings.trgPosition = 5;
        settings.enable.assign(std::size_t(chnCount), 1);
        settings.trig.assign(std::size_t(chnCount), 0);
        bulk.device = &device;
        connect(this, &SmpHost::sigSmpSta, &m_ear, [this](int sta, int err, int value) {
            states.append({sta, err, value});
            if (onState) {
                onState(states.last());
            }
        });
        connect(this, &SmpHost::sigSmpDataReady, &m_ear, [this] { ++published; });
    }
    ~CaptureDesk() override
    {
        smpStop = true;
        smpAbort = true;
        wake();
        device.stopDevice();
        join();
    }

    void startStreaming()
    {
        begin();
        bulk.setCallback(&ctrlTransfer);
        ctrlTransfer.startRun(settings, device, bulk);
    }
    void startStorage()
    {
        begin();
        bulk.setCallback(&ctrlStorage);
        ctrlStorage.startRun(settings, device, bulk);
    }
    void stop()
    {
        smpStop = true;
        wake();
        device.stopDevice();
    }
    /// Stops a streamed run before it hands out that buffer.
    void stopAtBuffer(int number)
    {
        bulk.beforeBuffer = [this, number](int buffer) {
            if (buffer == number) {
                stop();
            }
        };
    }
    /// Waits for the run's end and hears all that it tells. @return true when it left nothing behind
    [[nodiscard]] bool runToEnd()
    {
        join();
        QCoreApplication::processEvents();
        return !smpBusy && smpBufs.count() == 0 && smpSem.available() == 0;
    }
    void join()
    {
        ctrlTransfer.join();
        cnvtTransfer.join();
        ctrlStorage.join();
        cnvtStorage.join();
    }

    /// The last report, which tells how the run ended.
    [[nodiscard]] State last() const { return states.isEmpty() ? State{-1, -1, -1} : states.last(); }
    /// The states in order, each once.
    [[nodiscard]] QVector<int> course() const
    {
        QVector<int> passed;
        for (const State &state : states) {
            if (passed.isEmpty() || passed.last() != state.sta) {
                passed.append(state.sta);
            }
        }
        return passed;
    }
    /// What the run keeps of the budget once its data is cleared: 0.
    [[nodiscard]] std::int64_t leak()
    {
        smpData->clear();
        return ampleMemory - memBudget;
    }

    SmpRunSettings settings;
    FakeDevice device;
    FakeBulk bulk;
    SmpCnvtTransfer cnvtTransfer{*this};
    SmpCtrlTransfer ctrlTransfer{*this, cnvtTransfer};
    SmpCnvtStorage cnvtStorage{*this};
    SmpCtrlStorage ctrlStorage{*this, cnvtStorage};
    QVector<State> states;
    std::function<void(const State &)> onState; ///< on the main thread
    int published = 0;

private:
    void begin()
    {
        QVERIFY(!smpBusy); // only then the store is free for the next one
        states.clear();
        published = 0;
        smpStop = false;
        smpAbort = false;
    }

    QObject m_ear;
};
