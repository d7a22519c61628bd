#pragma once

#include "device/BringUpRun.h"
#include "device/ThrDevAttach.h"
#include "device/ThrRenumDone.h"
#include "device/UsbLookThread.h"

#include <QByteArray>
#include <QObject>
#include <QPointer>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>

class DevBase;
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
/// Only the main thread ever touches a device object. The finishing thread visits it twice, and stands still meanwhile:
/// once to have the device object swapped and to learn what it wants of the instrument, and once, when it has asked all
/// that, to have it connected. What is slow lies between the two, on the thread; a device object that has been replaced
/// by then is connected in one more round. The thread's waits end also when this object is destroyed, so that nobody
/// waits for each other then.
class DevInit : public QObject {
    Q_OBJECT
public:
    /// The transport outlives this object.
    explicit DevInit(UsbTransport &usb, QObject *parent = nullptr);
    /// Stops and joins all threads, whatever they are at: for one transfer at the most, or the opening of a device.
    ~DevInit() override;

    /// The identity block of the last instrument that was connected, see DevBase::initDevice(); empty before the first.
    [[nodiscard]] const QByteArray &identity() const { return m_identity; }
    /// Connects `gDev`, which has taken the place of a connected object of the same model, to the instrument that is
    /// there. It is connected when this returns; the instrument is asked and told behind that, and one that falls
    /// silent is told as gone and as an error of state 5. Nothing when the last identity does not fit.
    void reconnect();
    /// Asks the threads to end, whatever they are at; waits for nobody.
    void stop();
    /// True while a look at the bus is under way, or one of the threads works on a device.
    [[nodiscard]] bool isWorking() const { return m_look.isBusy() || m_attach.isBusy() || m_renumDone.isBusy(); }

    /// Asked before a device that has come or gone is acted on; true lets that wait for a while. Main thread. Set
    /// before the first look.
    void setHeldBack(std::function<bool()> isHeldBack) { m_look.isHeldBack = std::move(isHeldBack); }

    /// A test's clock, see BringUpRun::Host; called on the threads. Set before the first run.
    std::function<bool(int ms)> skipPause;

public slots:
    /// A device has come or gone, or may be there: the single entry. Main thread; does not block: what the look at the
    /// bus finds is acted on behind it, by the event loop.
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
    /// | 5 | the FPGA runs | those of DevConnection::perform(), 11 another model, when the device object could not be
    /// swapped | | 6 | connected | – | | 7 | the instrument has gone | – |
    void sigInitSta(int sta, int err, int n);
    /// Asks for `gDev` to be an object of this model when the call returns.
    void sigDevPreConnect(int model);

private:
    void deviceChanged(int change);
    std::shared_ptr<BringUpRun> newRun();
    void deviceGone();
    void deviceOpened();
    void prepareDevice(BringUpRun &run, int model, const QByteArray &identity);
    [[nodiscard]] int prepareConnection(const BringUpRun &run, int model, const QByteArray &identity,
                                        DevConnection &connection);
    void takeOver(BringUpRun &run, const DevConnection &connection, int result);
    void forgetDevice();

    UsbTransport &m_usb;
    UsbLookThread m_look;
    ThrDevAttach m_attach;
    ThrRenumDone m_renumDone;
    std::shared_ptr<BringUpRun> m_run; ///< of the last device that came; earlier ones have been stopped
    QPointer<DevBase> m_prepared;      ///< the device object that the run's connection was made for
    QByteArray m_identity;
    QByteArray m_uid; ///< of the same instrument
};
