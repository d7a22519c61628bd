#pragma once

#include "cli/CaptureCommand.h"
#include "cli/FrameWriter.h"
#include "cli/Output.h"
#include "cli/PluginFaults.h"
#include "session/CaptureRun.h"

#include <memory>

class AnalyzerManager;
class Session;

/// One run of "luxcli capture": from the look at the bus to the last file. Used once; main thread.
class InstrumentCapture {
public:
    InstrumentCapture(const CaptureCommand::Job &job, const CaptureCommand::Host &host);
    ~InstrumentCapture();

    /// @return the exit code
    [[nodiscard]] int run();

private:
    [[nodiscard]] int prepare();
    [[nodiscard]] int openSimulation();
    [[nodiscard]] int openInstrument();
    [[nodiscard]] int bringUp();
    [[nodiscard]] int addDecoders();
    [[nodiscard]] int captureAll();
    [[nodiscard]] int captureOne(int number);
    [[nodiscard]] int keep(int number);
    [[nodiscard]] int save(const QString &path) const;
    [[nodiscard]] int decode(const QString &path);
    void close(int code);
    [[nodiscard]] bool mayGoOn();

    const CaptureCommand::Job &m_job;
    const CaptureCommand::Host &m_host;
    Output m_out{QString()};
    std::unique_ptr<FrameWriter> m_writer;
    std::unique_ptr<Session> m_session;
    std::unique_ptr<CaptureRun> m_run;
    std::unique_ptr<AnalyzerManager> m_manager; ///< null without decoders
    std::unique_ptr<PluginFaults> m_faults;     ///< of the manager
    bool m_isStopped = false;                   ///< the user has ended it
    bool m_isReplaced = false;                  ///< `gDev` is another one than was prepared
};
