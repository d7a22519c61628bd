#pragma once

#include "device/BringUpRun.h"
#include "device/ThrDevAttach.h"
#include "device/ThrRenumDone.h"

#include <QByteArray>
#include <QObject>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

class UsbTransport;

/// The hardware version of the last instrument that was looked at; 0 when unknown and after a connected one has gone.
/// Any thread.
extern std::atomic<std::uint16_t> hardwareVersion;

/// The coordinator of bring-up: turns a device that has been plugged in into a connected `gDev`, in two stages, since a
/// device leaves the bus and comes back when its firmware has been sent.
///
/// One for the life of the process (`gDevInit`), on the main thread, made after `gDev` and destroyed before it and
/// after the main window. Both signals are emitted on the main thread, in the order in which things happened; a device
/// that has come back ends the reports of its earlier stage.
///
/// The device object is swapped and initialised in one visit to the main thread, for which the finishing thread stands
/// still: nothing gets between the two, and only the main thread ever touches a device object. The thread's wait ends
/// also when this object is destroyed, so that nobody waits for each other then.
class DevInit : public QObject {
    Q_OBJECT
public:
    /// The transport outlives this object.
    explicit DevInit(UsbTransport &usb, QObject *parent = nullptr);
    /// Stops and joins both threads, whatever they are at: for one transfer at the most.
    ~DevInit() override;

    /// The identity block of the last instrument that was connected, see DevBase::initDevice(); empty before the first.
    [[nodiscard]] const QByteArray &identity() const { return m_identity; }
    /// True while one of the threads works on a device.
    [[nodiscard]] bool isWorking() const { return m_attach.isBusy() || m_renumDone.isBusy(); }

    /// A test's clock, see BringUpRun::Host; called on the threads. Set before the first run.
    std::function<bool(int ms)> skipPause;

public slots:
    /// A device has come or gone, or may be there: the single entry. Main thread; blocks as UsbTransport::refresh().
    void slotDevChange();

signals:
    /// State, error, value. Errors are final, but for those of state 3 when the instrument can be identified all the
    /// same.
    ///
    /// | State | Error 0 | Errors |
    /// |---|---|---|
    /// | 0 | firmware is being sent | 1 there is none for the product |
    /// | 1 | sent; value: ms of waiting for the device's return | 1 not open, 2 transfer failed, 5 it did not return |
    /// | 2 | the device runs its firmware | – |
    /// | 3 | – | EEPROM: 1 not open or unknown identity, 2 transfer failed |
    /// | 4 | value: percent of the FPGA's image | 1 not open or no image, 2, 3 transfer failed; 7 to 9 it does not run;
    ///       or the byte with which the device ends the upload |
    /// | 5 | the FPGA runs | those of DevBase::initDevice(), 11 also when the device object could not be swapped |
    /// | 6 | connected | – |
    /// | 7 | the instrument has gone | – |
    void sigInitSta(int sta, int err, int n);
    /// Asks for `gDev` to be an object of this model when the call returns.
    void sigDevPreConnect(int model);

private:
    std::shared_ptr<BringUpRun> newRun();
    void deviceGone();
    void deviceOpened();
    void connectDevice(BringUpRun &run, int model, const QByteArray &identity);
    [[nodiscard]] int initDevice(const BringUpRun &run, int model, const QByteArray &identity);

    UsbTransport &m_usb;
    ThrDevAttach m_attach;
    ThrRenumDone m_renumDone;
    std::shared_ptr<BringUpRun> m_run; ///< of the last device that came; earlier ones have been stopped
    QByteArray m_identity;
};
