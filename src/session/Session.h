#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

class DevBase;
class DevControlUsb;
class DevInit;
class RequestQueue;
class UsbPlatform;
class UsbTransport;

/// One running program without its windows: it owns transport, control, device object and bring-up, which the rest of
/// the program reaches as `gUsb`, devControl(), `gDev` and `gDevInit`, and decides who may what.
///
/// One at a time, on the main thread, after the configuration has been read and until all windows have gone. It
/// replaces the device object and tells so; its signals come from the present device object alone, on the main thread:
/// what an earlier one had still on its way is dropped. It knows no window, and shows nothing.
class Session final : public QObject {
    Q_OBJECT
public:
    /// Makes the device object of "devModel", 0 for what is no model. Looks for no instrument yet.
    explicit Session(std::unique_ptr<UsbPlatform> platform);
    /// Makes the device object of this model.
    Session(std::unique_ptr<UsbPlatform> platform, int model);
    /// Stops and joins every thread that uses an instrument, and closes it. A thread may be waiting for the answer to a
    /// request, for seconds: see end().
    ~Session() override;

    /// Asks every thread that uses an instrument to end, and makes the requests that still wait. Nothing may be asked
    /// of the session afterwards. Blocks, without events, for at most about `most`.
    /// @return false when a thread still waits for an instrument that does not answer; a process that is to end now
    ///         then ends without destroying the session
    [[nodiscard]] bool end(std::chrono::milliseconds most);

    [[nodiscard]] UsbTransport &transport() { return *m_transport; }
    [[nodiscard]] DevControlUsb &control() { return *m_control; }
    [[nodiscard]] DevInit &bringUp() { return *m_bringUp; }

    // ---- may I? Cheap, and true only until the next return to the event loop. ---------------------------------------

    /// No capture runs, not even that of a device object which has been replaced, and no file is read or written.
    [[nodiscard]] bool mayStartCapture() const;
    /// No file is read or written: a load fills the device object's store, a save reads it.
    [[nodiscard]] bool mayReplaceDevice() const { return m_fileJobs == 0; }
    /// No other file is read or written.
    [[nodiscard]] bool mayBeginFileJob() const { return m_fileJobs == 0; }

    /// Held while a file is read or written: `gDev` stays meanwhile, and no second job may begin. Main thread.
    class FileJob {
    public:
        explicit FileJob(Session &session) : m_session(session) { ++m_session.m_fileJobs; }
        ~FileJob() { --m_session.m_fileJobs; }
        FileJob(const FileJob &) = delete;
        FileJob &operator=(const FileJob &) = delete;

    private:
        Session &m_session;
    };

    // ---- captures ---------------------------------------------------------------------------------------------------

    /// Starts a capture; returns at once. @return false when it may not
    bool startCapture();
    /// Asks the running capture to end; does not wait. Harmless without one.
    void stopCapture();
    /// Ends the capture, and those of device objects which have been replaced, without publishing their data, and waits
    /// for their threads: for who takes away what they need, such as the source of their data.
    void endCaptures();

    // ---- the device -------------------------------------------------------------------------------------------------

    /// Makes the device object one of this model, and stores "devModel". Nothing when it is one already.
    /// @return true when `gDev` is of the model now; false when it may not be replaced
    bool chooseModel(int model);
    /// The configuration has been replaced: makes the device object anew from it, and goes on with the instrument when
    /// the model stays the same. @return false when it may not be replaced
    bool replaceConfig();
    /// Asks the system to tell when instruments come and go, and looks for one whenever it does.
    /// @param window  the system's id of the main window, which Windows sends such messages to; 0 without one
    /// @return false when the system cannot tell
    bool watchDevices(std::uintptr_t window = 0);
    /// One look for an instrument that has come or gone; later while the device object may not be replaced.
    void lookForDevice();

signals:
    /// The device object is about to go, and its capture with it: who reads either lets go of it now.
    void sigDeviceLeaves();
    /// `gDev` is another object, of the same model or another one.
    void sigDeviceReplaced();
    /// A report of the capture: state, error, value; see SmpHost::sigSmpSta().
    void sigSmpSta(int sta, int err, int n);
    /// The device object's store holds a new capture, or the data of a file.
    void sigSmpDataReady();
    /// Other channels are in use.
    void sigChnEnaChanged();
    /// A report of an instrument's bring-up: state, error, value; see DevInit::sigInitSta().
    void sigInitSta(int sta, int err, int n);

private:
    /// Makes `gDev` and listens to it.
    void makeDevice(int model);
    /// Puts another device object in the place of `gDev`. The old one goes when its capture has ended.
    void replaceDevice(int model);
    /// Destroys the device objects whose captures have ended by now.
    void dropLeaving();

    std::unique_ptr<UsbTransport> m_transport;
    std::unique_ptr<DevControlUsb> m_control;
    std::unique_ptr<RequestQueue> m_requests;
    std::unique_ptr<DevInit> m_bringUp;
    std::vector<std::unique_ptr<DevBase>> m_leaving; ///< replaced, and not waited for
    QTimer m_leavingTimer;
    int m_fileJobs = 0;
    unsigned m_generation = 0; ///< of device objects: tells a queued signal of an earlier one
};
