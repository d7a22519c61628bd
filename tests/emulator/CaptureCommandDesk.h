#pragma once

#include "WaveSignal.h"
#include "cli/CaptureCommand.h"
#include "cli/CaptureSource.h"
#include "device/DevControlUsb.h"
#include "device/DevInit.h"
#include "emulator/InstrumentDesk.h"
#include "files/DataFileBytes.h"
#include "session/Session.h"

#include <QFileInfo>

/// "luxcli capture" in the process of the test, on instruments of its own.
class CaptureCommandDesk {
public:
    static constexpr int triggerChn = 1; ///< rises once
    static constexpr int lowChn = 3;     ///< never anything else
    static constexpr std::int64_t triggerAt = 61234;

    explicit CaptureCommandDesk(std::unique_ptr<InstrumentRoad> road_) : road(std::move(road_))
    {
        memBudget = std::int64_t(1) << 32;
        configLoad();
    }

    [[nodiscard]] static std::shared_ptr<emulator::WaveSignal> makeSignal()
    {
        using Wave = emulator::WaveSignal::Wave;
        std::vector<Wave> waves;
        for (int i = 0; i < 32; ++i) {
            waves.push_back(Wave::square(777 * (i + 1), i % 3 == 0, i));
        }
        waves[triggerChn] = Wave::pulse(triggerAt, 5000);
        waves[lowChn] = Wave::constant(false);
        return std::make_shared<emulator::WaveSignal>(1, waves);
    }
    /// Plugs in an instrument that is as fast as the host asks, and waits until the bus shows it.
    [[nodiscard]] bool add(int model, bool hasFirmware = true)
    {
        emulator::InstrumentOptions options;
        options.model = model;
        options.pace = 0;
        options.direct = true;
        options.firmwareInside = hasFirmware;
        options.leaveAfter = emulator::nanosecondsPerMillisecond;
        options.returnAfter = emulator::nanosecondsPerMillisecond;
        road->bus().plug(road->bus().add(options, makeSignal()));
        const std::unique_ptr<UsbPlatform> platform = road->makePlatform();
        return QTest::qWaitFor([&platform] {
            const UsbList list = platform->openList();
            const bool isThere = list != UsbList::None && platform->listHas(list, 0);
            platform->freeList(list);
            return isThere;
        });
    }

    /// @param arguments  parted by blanks; OUT stands for path()
    [[nodiscard]] int capture(const QString &arguments)
    {
        QStringList list = arguments.split(QLatin1Char(' '));
        list.replaceInStrings(QStringLiteral("OUT"), path());
        CaptureCommand::Host host;
        host.platform = [this] { return road->makePlatform(); };
        host.made = [this](Session &session) {
            session.control().sleep = [](int) {};
            constexpr int returnStep = 200;
            session.bringUp().skipPause = [](int ms) { return ms != returnStep; };
            if (made) {
                made(session);
            }
        };
        host.takeInterrupt = [this] { return wantsEnd && wantsEnd(); };
        return CaptureCommand::run(list, host);
    }

    [[nodiscard]] QString path(const QString &name = QStringLiteral("out.cxdat")) const { return folder.path(name); }
    [[nodiscard]] bool hasFile() const { return QFileInfo::exists(path()); }

    FileFolder folder;
    std::unique_ptr<InstrumentRoad> road;
    std::function<void(Session &)> made;
    std::function<bool()> wantsEnd;
};
