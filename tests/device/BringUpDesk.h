#pragma once

#include "device/DevBase.h"
#include "device/DevControlUsb.h"
#include "device/DevInit.h"
#include "device/DeviceGlobals.h"
#include "device/UsbTransport.h"
#include "platform/UsbPlatformEmulated.h"
#include "session/Session.h"
#include "settings/Config.h"
#include "support/TestImages.h"

#include <QtTest>

#include <memory>
#include <string>

using Report = QVector<int>; ///< state, error, value

/// Emulated instruments on a bus in the process, and a session over it. Without a main window it looks for devices when
/// the bus tells of them. Pauses of the program are over at once, but for the wait for a device's return, and the
/// instruments' time passes faster than the real one. One at a time: the globals are its own. Main thread.
struct BringUpDesk {
    enum Window { WithoutWindow, WithWindow };
    static constexpr int longWait = 30000; ///< ms: never waited for when all is well

    explicit BringUpDesk(int model = 0, Window window = WithoutWindow)
    {
        configLoad();
        bus = std::make_unique<EmulatedBus>(20.0);
        auto made = std::make_unique<UsbPlatformEmulated>(*bus);
        platform = made.get();
        session = std::make_unique<Session>(std::move(made), model);
        transport = &session->transport();
        init = &session->bringUp();
        session->control().sleep = [](int) {};
        constexpr int returnStep = 200;
        init->skipPause = [](int ms) { return ms != returnStep; };
        QObject::connect(session.get(), &Session::sigInitSta, [this](int sta, int err, int n) {
            reports.append({sta, err, n});
        });
        QObject::connect(init, &DevInit::sigDevPreConnect, [this](int wanted) { asked.append(wanted); });
        if (window == WithoutWindow) {
            session->watchDevices();
        }
    }
    BringUpDesk(const BringUpDesk &) = delete;
    BringUpDesk &operator=(const BringUpDesk &) = delete;

    /// Adds an instrument that accepts only the tests' images. @return its index
    int add(const emulator::InstrumentOptions &options)
    {
        const int index = bus->add(options);
        bus->with(index, [](emulator::Instrument &instrument) {
            const std::string firmware = "fw" + testImages::hexDigits(productOf(instrument), 4);
            instrument.firmware().expect(testImages::firmwareMemory(firmware));
            const std::string image = fpgaNameOf(instrument);
            if (!image.empty()) {
                instrument.fpga().expect(testImages::fpga(image));
            }
        });
        return index;
    }
    static std::uint16_t productOf(const emulator::Instrument &instrument)
    {
        const emulator::InstrumentOptions &o = instrument.options();
        return o.product != 0 ? o.product : instrument.model().product;
    }
    /// The FPGA image of an instrument as its model's hardware wants it.
    static std::string fpgaNameOf(const emulator::Instrument &instrument)
    {
        switch (instrument.model().code) {
        case 1:
            return {};
        case 2:
        case 3:
        case 4:
            return instrument.model().name;
        case 5:
            return "RV2310A_0";
        case 65:
            return "RV2520A";
        case 97:
            return "RV2720";
        default:
            return std::string(instrument.model().name) + "A";
        }
    }

    /// Waits until the instrument has been told all that it was to be told.
    static void settle()
    {
        bool isThrough = false;
        gDev->request([](DevControl &) { return 0; }, [&isThrough](int) { isThrough = true; });
        (void)QTest::qWaitFor([&isThrough] { return isThrough; }, longWait);
    }
    /// True when a report of this state and error has come.
    [[nodiscard]] bool has(int sta, int err = 0) const
    {
        return std::any_of(reports.cbegin(), reports.cend(),
                           [sta, err](const Report &r) { return r.at(0) == sta && r.at(1) == err; });
    }
    /// The first error that was reported, {0, 0} for none.
    [[nodiscard]] Report firstError() const
    {
        const auto found = std::find_if(reports.cbegin(), reports.cend(), [](const Report &r) { return r.at(1) != 0; });
        return found != reports.cend() ? Report{found->at(0), found->at(1)} : Report{0, 0};
    }
    [[nodiscard]] bool hasEnded() const { return has(6) || firstError() != Report{0, 0}; }

    std::unique_ptr<EmulatedBus> bus;
    UsbPlatformEmulated *platform = nullptr;
    std::unique_ptr<Session> session;
    UsbTransport *transport = nullptr; ///< the session's
    DevInit *init = nullptr;           ///< the session's
    QVector<Report> reports;
    QVector<int> asked; ///< models that the device object was to become
};

inline emulator::InstrumentOptions instrumentOf(int model)
{
    emulator::InstrumentOptions options;
    options.model = model;
    return options;
}

/// One that comes with its firmware running.
inline emulator::InstrumentOptions runningInstrument(int model)
{
    emulator::InstrumentOptions options = instrumentOf(model);
    options.firmwareInside = true;
    return options;
}
