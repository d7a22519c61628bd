#pragma once

#include "acquisition/SmpHost.h"
#include "device/DevFacts.h"
#include "device/DevOutputs.h"

#include <QByteArray>
#include <QString>
#include <QVector>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

class DevControl;
class DevRun;
class SimulationSource;
struct DevConnection;
struct DevOrder;
struct SmpConfig;

/// The analyzer, plugged in or not: what the model can do (DevFacts), what the user has chosen (DevChoices), its
/// outputs (DevOutputs), the store of the last capture and, hidden in DevRun, the threads that fill it.
///
/// Reached through `gDev`; made and deleted on the main thread, never held across events. Without an instrument
/// `connected` is false, the settings still work and a capture runs simulated. Settings operations run on the main
/// thread, and save their value in the model's configuration node at once; a value out of range falls back silently and
/// returns false. A capture takes its settings when it starts. What goes to an instrument passes through devControl().
class DevBase : public SmpHost, public DevFacts, public DevChoices, public DevOutputs {
    Q_OBJECT
public:
    DevBase();
    ~DevBase() override;

    // ---- the connection: what is known of the instrument
    QByteArray devUid; ///< 8 bytes of identity, all zero when not connected
    bool connected = false;
    std::int64_t clockFrequ = 0; ///< base clock of the sample divider, Hz
    std::int64_t pwmClock = 0;   ///< base clock of the PWM outputs, Hz

    // ---- the user's choice
    // Each is saved at once. A channel that the model does not have is ignored.

    /// Takes a rate, and turns off enabled channels that it does not allow, with their triggers.
    /// @return false for an index out of range: the model's default is taken
    bool setSmpFrequIndex(int index);
    /// @return false for an index out of range: the model's default is taken
    bool setSmpDepthIndex(int index);
    /// @return false outside 0 to 99: 5 is taken
    bool setTrgPosition(int percent);
    /// Takes the channels in use and clears the triggers of the others. Brings the rate down to what all channels of
    /// the model could sustain, however few are in use. Channels beyond the end of `list` stay as they are.
    void setChnEnable(const QVector<bool> &list);
    void setAChnEnable(const QVector<bool> &list);
    /// An edge (3, 4) clears every other edge, digital or analog. A code outside 0 to 4 is taken as 0.
    void setChnTrig(int chn, int code);
    void setAChnTrig(int chn, int code);
    void setAChnProbe(int chn, int value);
    void setAChnReverse(int chn, bool value);
    void setAChnCouple(int chn, int value);
    void setAChnVoltDiv(int chn, int value); ///< millivolts

    [[nodiscard]] std::int64_t smpFrequ() const; ///< Hz; 0 without a model
    [[nodiscard]] std::int64_t smpDepth() const; ///< samples; 0 without a model
    [[nodiscard]] int chnEnableCount() const;    ///< digital channels in use
    /// The samples to keep before the trigger: 0 when no digital channel has one.
    [[nodiscard]] std::int64_t preTrigSamples() const;
    /// The settings as an instrument wants them for its next capture.
    [[nodiscard]] SmpConfig smpConfig() const;

    // ---- run control; main thread ----------------------------------------------------------------------------------
    /// Starts one capture, unless one is running. Returns at once; sigSmpSta and sigSmpDataReady tell the rest. A
    /// simulated capture admits no reader from here on, and its thread waits for those who still read the last one.
    /// That of an instrument keeps the last one until its data comes.
    void startCapture();
    /// True from startCapture() until the store is closed; the capture's last signals may still be on their way.
    [[nodiscard]] bool isCapturing() const;
    /// Asks the running capture to end; what has been captured is kept. Does not wait.
    void stopCapture();
    /// True until the last thread of a capture has ended, some moments behind isCapturing().
    [[nodiscard]] bool hasThreads() const;
    /// The object is to go: asks a capture to end without publishing its data, and receives nothing any more. Does not
    /// wait: that is for waitForThreads(), behind which the destructor waits for nobody.
    void leave();
    /// @return false when a thread of a capture still runs after `most`
    [[nodiscard]] bool waitForThreads(std::chrono::milliseconds most);
    /// Ends a capture without publishing its data, and waits for its threads. For who takes away what the run needs,
    /// such as the source of its data. Harmless without a capture.
    void endCapture();

    // ---- outputs and thresholds; main thread. They reach an instrument only while one is connected, by way of the
    // requests that wait for it. They never block, and nothing is reported.
    void setPwmEnable(bool on0, bool on1);
    /// Limits `frequ` to 0.1 to 2e7 Hz and `duty` to 0 to 100 percent. Ignored for an output other than 0 and 1.
    void setPwm(int output, double frequ, double duty);
    /// Runs output 0 at 1 kHz and output 1 at 100 kHz, both at half duty.
    void resetPwm();
    /// The input threshold. Index 1: all channels, or 0 to 15 of 32; index 2: 16 to 31; others are ignored.
    void setVth(double volts, int index);
    /// Sends the stored threshold of each group of channels that the model has; 1.65 V where none is stored.
    void loadVth();
    /// The stored threshold in volts, indices as of setVth(); 1.65 if none is stored.
    [[nodiscard]] double storedVth(int index) const;
    /// Tells a connected instrument that the program goes away.
    void shutDown();

    /// Loads the model's settings from the configuration. What it holds may be wrong in any way.
    void loadConfig();

    // ---- the connection; main thread

    /// Takes the clocks from the identity block, whose missing bytes count as 0, and tells what the instrument is to be
    /// asked and told before takeConnection(). Never blocks.
    /// @return 0; 1 this model never connects; 11 the block names another model
    [[nodiscard]] int prepareConnection(const QByteArray &identity, DevConnection &connection);
    /// The instrument has been asked: `connected` from now on.
    void takeConnection(const DevConnection &connection);
    /// The instrument has gone: requests that wait for it are forgotten.
    void loseConnection();
    /// All of it at once, but for what is stored, for who may wait: blocks for some control transfers.
    /// @return 0 connected; 1, 2 no answer; 7 to 10, 13 bad status word; 11 another model; 12 not ready
    int initDevice(const QByteArray &identity);
    /// Has requests made behind those that wait already, see RequestQueue::post(). `done` comes on the main thread, and
    /// not after this object's end.
    void request(std::function<int(DevControl &)> job, std::function<void(int result)> done);

signals:
    void sigChnEnaChanged();
    /// The rate was lowered by a change of channels.
    void sigSmpFrequToLower();
    /// A capture is about to start. Emitted on the main thread, direct. Who reads the last one is told by the store, as
    /// by a load and a change of device: see SmpLease.
    void sigCaptureStarts();

protected:
    /// Fills `chnRateLimits` and sets `transferMode`. After `model`, `smpFrequs` and `chnEnable` are filled.
    void initRateLimits(int mode);

    /// Takes what an identity block tells, and sets what must be asked. @return as prepareConnection()
    [[nodiscard]] virtual int readIdentity(const QByteArray &identity, DevConnection &connection);

    // The steps of readIdentity(), for models that differ in one of them.
    [[nodiscard]] static std::uint8_t identityByte(const QByteArray &identity, int index);
    [[nodiscard]] bool namesThisModel(const QByteArray &identity) const;
    void readClocks(const QByteArray &identity);
    /// Streaming models: tells the transport the present rate of data.
    void tuneChunkSize();
    /// Makes the capture threads of this model the receiver of what the transport reads, if there is a transport.
    void receiveBulk();

private:
    /// Has the instrument told, while one is connected.
    void tell(const DevOrder &order);
    void tell(const std::vector<DevOrder> &orders);
    [[nodiscard]] std::vector<DevOrder> storedThresholds() const;
    void loadAnalogConfig();
    void saveChnEnable();
    void saveChnTrig();
    void saveAChnTrig();

    void receiveNothing();

    std::unique_ptr<DevRun> m_run;
    bool m_receives = false; ///< what the transport reads; false also once that may be another object's
};

/// Who drives channels in simulated captures; null for nobody. Not owned; set on the main thread, while no simulated
/// capture runs: DevBase::endCapture() sees to that.
extern SimulationSource *gSimulationSource;
