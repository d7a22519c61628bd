#pragma once

#include <QDateTime>
#include <QObject>

#include <functional>

class CaptureHistory;
class Session;

/// Has the captures of a session kept in a history, as the stored options say: those of an instrument, or simulated
/// ones too. What a file holds is none. Of the model with analog channels the digital ones are kept: no file holds
/// others.
///
/// Lives on the main thread, beside the session, and shows nothing.
class HistoryKeeper final : public QObject {
public:
    /// Neither is owned; both outlive this.
    HistoryKeeper(Session &session, CaptureHistory &history);

    /// The time of a capture; a test answers instead.
    std::function<QDateTime()> now;

private:
    void captureStarts();
    void dataReady();

    CaptureHistory &m_history;
    /// What runs.
    enum class Run { None, Simulated, OnInstrument };
    Run m_run = Run::None;
};
