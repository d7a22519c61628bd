#pragma once

#include "LogicSignal.h"
#include "device/DevBase.h"
#include "device/DevControlUsb.h"
#include "device/DevInit.h"
#include "device/DeviceGlobals.h"
#include "device/UsbTransport.h"
#include "platform/InstrumentBus.h"
#include "session/Session.h"
#include "settings/Config.h"

#include <QtTest>

#include <algorithm>
#include <memory>

/// What lies between instruments and program in a test: a bus with instruments, and a platform that shows them.
class InstrumentRoad {
public:
    virtual ~InstrumentRoad() = default;
    [[nodiscard]] virtual InstrumentBus &bus() = 0;
    /// Once.
    [[nodiscard]] virtual std::unique_ptr<UsbPlatform> makePlatform() = 0;
};

/// A session over instruments, and what it tells. The pauses of a bring-up are over at once. Main thread.
class InstrumentDesk : public QObject {
public:
    explicit InstrumentDesk(std::unique_ptr<InstrumentRoad> road_) : road(std::move(road_))
    {
        configLoad();
        memBudget = budget;
        session = std::make_unique<Session>(road->makePlatform(), 0);
        transport = &session->transport();
        init = &session->bringUp();
        session->control().sleep = [](int) {};
        constexpr int returnStep = 200;
        init->skipPause = [](int ms) { return ms != returnStep; };
        connect(session.get(), &Session::sigInitSta, this, [this](int sta, int err, int) {
            initStates.append({sta, err});
        });
        connect(session.get(), &Session::sigSmpSta, this, [this](int sta, int err, int) { states.append({sta, err}); });
        connect(session.get(), &Session::sigSmpDataReady, this, [this] { ++published; });
        isGood = session->watchDevices();
    }

    /// Plugs the instrument in and waits until it is connected.
    [[nodiscard]] bool plug(int index = 0)
    {
        initStates.clear();
        road->bus().plug(index);
        (void)QTest::qWaitFor([this] { return hasEnded(); }, longWait);
        return gDev->connected;
    }
    /// Pulls the plug and waits until the program has noticed.
    [[nodiscard]] bool unplug(int index = 0)
    {
        road->bus().unplug(index);
        return QTest::qWaitFor([] { return !gDev->connected; }, longWait);
    }
    void startCapture()
    {
        states.clear();
        published = 0;
        (void)session->startCapture();
    }
    [[nodiscard]] bool awaitEnd()
    {
        return QTest::qWaitFor([] { return !gDev->isCapturing(); }, longWait) &&
               QTest::qWaitFor([this] { return !states.isEmpty() && (lastError() != 0 || states.last().first == 5); });
    }
    /// A capture from start to end.
    [[nodiscard]] bool capture()
    {
        startCapture();
        return awaitEnd() && QTest::qWaitFor([this] { return published > 0; });
    }
    [[nodiscard]] bool has(int sta) const
    {
        return std::any_of(states.cbegin(), states.cend(), [sta](const auto &state) { return state.first == sta; });
    }
    /// The error of the last report, 0 for none.
    [[nodiscard]] int lastError() const { return states.isEmpty() ? 0 : states.last().second; }

    static constexpr std::int64_t budget = std::int64_t(1) << 32;
    static constexpr int longWait = 30000; // ms: never waited for when all is well

    std::unique_ptr<InstrumentRoad> road;
    std::unique_ptr<Session> session;
    UsbTransport *transport = nullptr;   ///< the session's
    DevInit *init = nullptr;             ///< the session's
    QVector<QPair<int, int>> initStates; ///< state, error
    QVector<QPair<int, int>> states;     ///< state, error
    int published = 0;
    bool isGood = false;

private:
    [[nodiscard]] bool hasEnded() const
    {
        return std::any_of(initStates.cbegin(), initStates.cend(),
                           [](const auto &state) { return state.first == 6 || state.second != 0; });
    }
};

/// Where the analog channels of a capture differ from the signal from its sample `from` on; empty if nowhere. The
/// instrument takes one sample of the signal for each sample.
inline QString analogDifferenceOf(const SmpData &data, emulator::LogicSignal &signal, std::int64_t from)
{
    for (int chn = 0; chn < data.aChnCount; ++chn) {
        const SmpAChnBuffer *buffer = data.aChnBufs()[std::size_t(chn)];
        if (buffer == nullptr || buffer->count < data.smpCount()) {
            return QStringLiteral("analog channel %1 has too few samples").arg(chn);
        }
        for (std::int32_t i = 0; i < buffer->count; ++i) {
            const int wanted = signal.analogAt(chn, {.index = from + i, .position = from + i});
            if (buffer->samples[i] != wanted) {
                return QStringLiteral("analog channel %1 at %2: %3 instead of %4")
                    .arg(chn)
                    .arg(i)
                    .arg(buffer->samples[i])
                    .arg(wanted);
            }
        }
    }
    return {};
}

/// Where a capture differs from the signal from its sample `from` on; empty if nowhere.
inline QString differenceOf(const SmpData &data, emulator::LogicSignal &signal, std::int64_t from)
{
    for (int chn = 0; chn < data.chnCount; ++chn) {
        const std::uint32_t bit = 1U << chn;
        for (std::int64_t pos = 0; pos < data.smpCount();) {
            const emulator::SignalRun run = signal.at(from + pos, bit);
            SmpEdgeCursor cursor;
            const int level = data.locate(chn, pos, cursor);
            const std::int64_t next = data.nextEdge(chn, pos);
            // A run of the signal may end without a change of level.
            std::int64_t wanted =
                std::min(run.end == emulator::never ? data.smpCount() : run.end - from, data.smpCount());
            while (wanted < data.smpCount() && signal.at(from + wanted, bit).levels == run.levels) {
                const std::int64_t end = signal.at(from + wanted, bit).end;
                wanted = std::min(end == emulator::never ? data.smpCount() : end - from, data.smpCount());
            }
            if (level != int(run.levels >> chn) || next != wanted) {
                return QStringLiteral("channel %1 at %2: level %3 to %4 instead of %5 to %6")
                    .arg(chn)
                    .arg(pos)
                    .arg(level)
                    .arg(next)
                    .arg(run.levels >> chn)
                    .arg(wanted);
            }
            pos = wanted;
        }
    }
    return analogDifferenceOf(data, signal, from);
}
