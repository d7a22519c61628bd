#pragma once

#include "acquisition/SmpCnvtStorage.h"
#include "acquisition/SmpCnvtTransfer.h"
#include "acquisition/SmpCtrlStorage.h"
#include "acquisition/SmpCtrlTransfer.h"
#include "acquisition/SmpRunSettings.h"
#include "acquisition/SmpSimulate.h"

#include <chrono>
#include <cstdint>

class DevBase;

/// The captures of a device object: starts and ends them, and owns their threads, of which at most one pair of the
/// instrument's or the simulation runs. Nobody else's business than DevBase's, which owns it. Main thread.
class DevRun {
public:
    explicit DevRun(DevBase &device);

    // See DevBase's operations of these names.

    void start();
    void stop();
    void end();
    void leave();
    [[nodiscard]] bool waitForThreads(std::chrono::milliseconds most);
    [[nodiscard]] bool isCapturing() const;
    [[nodiscard]] bool hasThreads() const;
    /// Makes the threads of this model the receiver of what the transport reads, if there is a transport.
    void receiveBulk();

private:
    void startHardware();
    /// The instrument has been set up for the capture of that number, or could not be.
    void beginRun(std::uint32_t capture, const SmpRunSettings &settings, int error);
    void abortSimulation();
    void endSimulation();
    /// A capture is to end, wherever it is; what it was to become does not matter any more.
    /// @return whether an instrument ran, which is to be stopped
    bool abortHardware();
    void endHardware();
    void setStop();
    void cutReadBack();
    void breakOffSilentStream(std::uint32_t capture);
    [[nodiscard]] SmpRunSettings runSettings() const;

    DevBase &m_device;
    SmpSimulate m_simulate;
    SmpCnvtStorage m_cnvtStorage;
    SmpCtrlStorage m_ctrlStorage;
    SmpCnvtTransfer m_cnvtTransfer;
    SmpCtrlTransfer m_ctrlTransfer;

    std::uint32_t m_captures = 0; ///< of an instrument, started so far
    bool m_setsUp = false;        ///< a capture waits for the requests that set the instrument up
    bool m_stopWanted = false;    ///< ... and is to end before it begins
};
