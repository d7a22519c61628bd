#pragma once

#include <QObject>

#include <chrono>
#include <functional>
#include <optional>

class Session;

/// Captures of a program without a window: brings the instrument up, captures, and waits for the end of both.
///
/// Each operation processes events until it is through, and looks every 20 ms at what nobody tells. On the main thread,
/// for the life of a session or less; one operation at a time. It shows nothing and stores nothing.
class CaptureRun final : public QObject {
    Q_OBJECT
public:
    using Milliseconds = std::chrono::milliseconds;

    enum class End {
        Done,         ///< connected, or a whole capture is in the store of `gDev`
        Stopped,      ///< mayGoOn() wanted it; what had been captured is in the store
        StoppedEmpty, ///< the same, and nothing had been captured
        NoInstrument, ///< none came in time, or none that could be opened
        Unplugged,    ///< while it captured
        NoTrigger,    ///< it did not come in time
        Failed,       ///< with the last report's state and error
    };
    struct Outcome {
        End end = End::Done;
        int sta = 0; ///< of DevInit::sigInitSta() or SmpHost::sigSmpSta()
        int err = 0;
    };

    explicit CaptureRun(Session &session);

    /// Asked every 20 ms; false ends what is under way: a capture keeps what it has. May be empty.
    std::function<bool()> mayGoOn;
    /// Told each report without an error, of bring-up or capture. May be empty.
    std::function<void(int sta, int value)> told;

    /// Looks for an instrument and connects it. Done at once when one is connected.
    /// @return Done, Stopped, NoInstrument, Failed
    [[nodiscard]] Outcome bringUp(Milliseconds most);
    /// One capture with the present settings of `gDev`; simulated when no instrument is connected.
    /// @param trigger  how long to wait for the trigger; without it for ever
    /// @return all but NoInstrument. Only after Done and Stopped the store holds this capture.
    [[nodiscard]] Outcome capture(std::optional<Milliseconds> trigger);

private:
    void takeInitReport(int sta, int err, int value);
    void takeReport(int sta, int err, int value);
    /// Runs the event loop until `hasEnded`, asked every 20 ms.
    void runUntil(const std::function<bool()> &hasEnded);
    /// Looks whether the instrument is still there, and waits for the answer.
    void awaitLook();
    [[nodiscard]] bool isWanted() const { return !mayGoOn || mayGoOn(); }

    Session &m_session;
    const bool m_isTold; ///< the system tells when instruments come and go
    Outcome m_last;      ///< the last report
    bool m_isCapturing = false;
    bool m_published = false;
};
