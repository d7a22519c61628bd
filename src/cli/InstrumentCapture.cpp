#include "cli/InstrumentCapture.h"

#include "acquisition/SmpState.h"
#include "analyzer/AnalyzerManager.h"
#include "analyzer/ChannelUsage.h"
#include "cli/AnalyzerSetup.h"
#include "cli/Decoding.h"
#include "cli/Quantity.h"
#include "cli/Terminal.h"
#include "device/DevBase.h"
#include "device/DevModels.h"
#include "device/DeviceGlobals.h"
#include "device/UsbPlatformNone.h"
#include "files/CaptureFile.h"
#include "session/InitStatus.h"
#include "session/RunStatus.h"
#include "session/Session.h"
#include "settings/Config.h"

#include <QFileInfo>

#include <algorithm>
#include <corvanlux/analyzer/AnalyzerTypes.h>
#include <cstdio>
#include <cstdlib>

using CaptureEnd = CaptureRun::End;

namespace {

/// The code of the newest model that a user names; -1 for none.
int codeNamed(const QString &named)
{
    constexpr int lastCode = 255;
    int found = -1;
    for (int code = 1; code <= lastCode; ++code) {
        const std::unique_ptr<const DevBase> device = createModel(code);
        if (device->model == code && CaptureCommand::isModel(named, device->name, code)) {
            found = code;
        }
    }
    return found;
}

/// Why an instrument could not be brought up.
QString bringUpFailure(const CaptureRun::Outcome &outcome)
{
    constexpr int sendingFirmware = 0; // states of DevInit::sigInitSta()
    constexpr int sendingFpga = 4;
    if (outcome.end == CaptureEnd::NoInstrument) {
        return QStringLiteral("no instrument came into use in time");
    }
    QString code = InitStatus::errorText(outcome.sta, outcome.err);
    if ((outcome.sta == sendingFirmware || outcome.sta == sendingFpga) && outcome.err == 1) {
        return code + QStringLiteral(" (this build may lack the images of the instrument)");
    }
    return code;
}

QString captureFailure(const CaptureRun::Outcome &outcome, const std::optional<int> &timeoutMs)
{
    constexpr double msPerSecond = 1000;
    switch (outcome.end) {
    case CaptureEnd::Unplugged:
        return QStringLiteral("the instrument was unplugged while it captured");
    case CaptureEnd::NoTrigger:
        return QStringLiteral("the trigger did not come within %1")
            .arg(Quantity::text(timeoutMs.value_or(0) / msPerSecond, QStringLiteral("s")));
    default:
        break;
    }
    const RunStatus::ErrorText error = RunStatus::errorText(outcome.sta, outcome.err, gDev->transferMode);
    return RunStatus::dialogErrorText(outcome.err, error).simplified();
}

/// What a decoder needs and the capture will not have, for the user; empty for nothing.
QString channelNotCaptured(const AnalyzerManager &manager)
{
    for (int i = 0; i < manager.count(); ++i) {
        for (const auto &[channel, use] : ChannelUsage::ofAnalyzer(*manager.analyzerAt(i), manager.analyzerTitle(i))) {
            const Channel needed(0, channel.toUInt());
            if (needed.isDefined() && !gDev->chnEnable.value(int(needed.channelIndex))) {
                return QStringLiteral("channel %1 (%2) is not captured").arg(channel, use);
            }
        }
    }
    return {};
}

/// Nothing of the user's own settings goes into a capture, so that a command does the same everywhere.
void takeNoSettings()
{
    (void)configReplace(QByteArrayLiteral("<settings><global/><devices/><analyzers/></settings>\n"));
}

} // namespace

InstrumentCapture::InstrumentCapture(const CaptureCommand::Job &job, const CaptureCommand::Host &host)
    : m_job(job), m_host(host), m_writer(FrameWriter::make(job.format, m_out, job.repeat > 1))
{}

InstrumentCapture::~InstrumentCapture() = default;

bool InstrumentCapture::mayGoOn()
{
    m_isStopped = m_isStopped || m_host.takeInterrupt();
    return !m_isStopped;
}

int InstrumentCapture::run()
{
    int code = prepare();
    if (code == Terminal::good) {
        code = captureAll();
    }
    if (code == Terminal::good || code == Terminal::interrupted) {
        const int written = m_out.finish(code);
        code = written;
    } else {
        m_out.handOver();
    }
    close(code);
    return code;
}

int InstrumentCapture::prepare()
{
    takeNoSettings();
    int code = m_job.simulates ? openSimulation() : openInstrument();
    if (code == Terminal::good && m_job.model && !CaptureCommand::isModel(*m_job.model, gDev->name, gDev->model)) {
        Terminal::say(QStringLiteral("the instrument is a %1 (model %2), and no %3")
                          .arg(gDev->name, QString::number(gDev->model), *m_job.model));
        code = Terminal::badInput;
    }
    if (code != Terminal::good) {
        return code;
    }
    // Another model has other settings and another store: nothing that was prepared is its.
    QObject::connect(m_session.get(), &Session::sigDeviceLeaves, [this] {
        m_isReplaced = true;
        if (m_manager) {
            m_manager->setCapture(nullptr, 0);
        }
    });
    const QString error = m_job.choice.applyTo(*gDev);
    if (!error.isEmpty()) {
        Terminal::say(error);
        return Terminal::wrongUsage;
    }
    return m_job.requests.isEmpty() ? int(Terminal::good) : addDecoders();
}

int InstrumentCapture::openSimulation()
{
    const int model = m_job.model ? codeNamed(*m_job.model) : int(devModel::none);
    if (model < 0) {
        Terminal::say(QStringLiteral("there is no model %1").arg(*m_job.model));
        return Terminal::wrongUsage;
    }
    m_session = std::make_unique<Session>(std::make_unique<UsbPlatformNone>(), model);
    m_run = std::make_unique<CaptureRun>(*m_session);
    m_run->mayGoOn = [this] { return mayGoOn(); };
    return Terminal::good;
}

int InstrumentCapture::openInstrument()
{
    std::unique_ptr<UsbPlatform> platform = m_host.platform();
    const std::vector<FoundInstrument> found = surveyInstruments(*platform);
    const bool isUsable = std::any_of(
        found.begin(), found.end(), [](const FoundInstrument &instrument) { return obstacleOf(instrument).isEmpty(); });
    if (!isUsable) {
        for (const FoundInstrument &instrument : found) {
            Terminal::say(QStringLiteral("%1: %2").arg(instrument.port, obstacleOf(instrument)));
        }
        if (found.empty()) {
            Terminal::say(QStringLiteral("no instrument is plugged in"));
        }
        return Terminal::badInput;
    }
    m_session = std::make_unique<Session>(std::move(platform), int(devModel::none));
    if (m_host.made) {
        m_host.made(*m_session);
    }
    m_run = std::make_unique<CaptureRun>(*m_session);
    m_run->mayGoOn = [this] { return mayGoOn(); };
    return bringUp();
}

int InstrumentCapture::bringUp()
{
    constexpr CaptureRun::Milliseconds most(30'000); // the device's return with its firmware takes 10 s at most
    Terminal::Progress line(InitStatus::connectingText());
    m_run->told = [&line](int sta, int value) { line.show(InitStatus::progress(sta, value) / 100.0); };
    const CaptureRun::Outcome outcome = m_run->bringUp(most);
    m_run->told = {};
    if (outcome.end == CaptureEnd::Done) {
        return Terminal::good;
    }
    if (outcome.end == CaptureEnd::Stopped) {
        return Terminal::interrupted;
    }
    Terminal::say(bringUpFailure(outcome));
    return Terminal::badInput;
}

int InstrumentCapture::addDecoders()
{
    AnalyzerHost host;
    host.model = [] { return gDev->model; };
    host.channelCount = [] { return int(gDev->chnEnable.size()); };
    host.isChannelEnabled = [](int channel) { return gDev->chnEnable.value(channel); };
    m_manager = std::make_unique<AnalyzerManager>(host);
    m_faults = std::make_unique<PluginFaults>(*m_manager);
    for (const Arguments::Request &request : m_job.requests) {
        const AnalyzerSetup::Refusal refusal = AnalyzerSetup::add(*m_manager, request);
        if (!refusal.error.isEmpty()) {
            m_faults->say();
            Terminal::say(refusal.error);
            return refusal.code;
        }
    }
    if (const QString missing = channelNotCaptured(*m_manager); !missing.isEmpty()) {
        Terminal::say(missing);
        return Terminal::wrongUsage;
    }
    m_manager->setCapture(gDev->smpData.get(), std::uint32_t(gDev->model));
    gSimulationSource = &m_manager->simulation();
    QObject::connect(gDev, &DevBase::sigCaptureStarts, m_manager.get(), &AnalyzerManager::captureStarts);
    return Terminal::good;
}

int InstrumentCapture::captureAll()
{
    for (int number = 1; number <= m_job.repeat; ++number) {
        const int code = captureOne(number);
        if (code != Terminal::good) {
            return code;
        }
        if (!mayGoOn()) {
            return Terminal::interrupted;
        }
    }
    return Terminal::good;
}

int InstrumentCapture::captureOne(int number)
{
    std::optional<CaptureRun::Milliseconds> limit;
    if (m_job.timeoutMs) {
        limit.emplace(*m_job.timeoutMs);
    }
    CaptureRun::Outcome outcome;
    if (!m_job.simulates) {
        outcome = m_run->bringUp(CaptureRun::Milliseconds(0)); // it may have gone since the last capture
    }
    if (!mayGoOn()) {
        return Terminal::interrupted;
    }
    if (outcome.end == CaptureEnd::Done && m_isReplaced) {
        outcome.end = CaptureEnd::Unplugged; // a capture of another one is none that was asked for
    }
    if (outcome.end == CaptureEnd::Done) {
        Terminal::Progress line(RunStatus::stateText(smpState::starting));
        m_run->told = [&line](int sta, int percent) {
            line.show(RunStatus::stateText(sta), sta == smpState::starting ? -1 : percent / 100.0);
        };
        outcome = m_run->capture(limit);
        m_run->told = {};
    } else if (outcome.end == CaptureEnd::NoInstrument) {
        outcome.end = CaptureEnd::Unplugged;
    }
    if (outcome.end == CaptureEnd::StoppedEmpty ||
        (outcome.end == CaptureEnd::Stopped && gDev->smpData->sampleCount() < 1)) {
        return Terminal::interrupted;
    }
    if (outcome.end != CaptureEnd::Done && outcome.end != CaptureEnd::Stopped) {
        Terminal::say(captureFailure(outcome, m_job.timeoutMs));
        return Terminal::badInput;
    }
    return keep(number);
}

/// Saves and decodes what has been captured, also where the user has stopped it: an interrupt from here on is another.
int InstrumentCapture::keep(int number)
{
    const QString path = CaptureCommand::numberedPath(m_job.path, number, m_job.repeat);
    const Session::FileJob holdsDevice(*m_session); // and with it the capture, whatever is plugged in meanwhile
    int code = m_job.path.isEmpty() ? int(Terminal::good) : save(path);
    if (code == Terminal::good && m_manager) {
        code = decode(path);
    }
    return code;
}

int InstrumentCapture::save(const QString &path) const
{
    CaptureFile file(digitalChannelsOf);
    file.keepsPart = false;
    file.mayGoOn = [] { return !Terminal::wasInterrupted(); };
    SmpData &data = *gDev->smpData;
    const CapturePart whole{std::vector<std::uint8_t>(std::size_t(data.chnCount), 1), 0, double(data.sampleCount())};
    const FileOutcome outcome = file.save(path, data, whole, configCopy());
    if (outcome.isDone()) {
        return Terminal::good;
    }
    if (outcome.result == FileResult::Cancelled) {
        return Terminal::interrupted;
    }
    Terminal::say(QStringLiteral("%1: %2").arg(path, fileReason(outcome)));
    return Terminal::badInput;
}

int InstrumentCapture::decode(const QString &path)
{
    m_manager->captureReady();
    const QString name = path.isEmpty() ? QStringLiteral("capture") : QFileInfo(path).completeBaseName();
    const int code = Decoding::write(*m_manager, *m_faults, *gDev->smpData, name, *m_writer, m_out, {});
    m_out.handOver();
    if (!m_out.isGood()) {
        return m_out.finish(code);
    }
    return code;
}

/// Lets go of the instrument as a window does when it is closed.
void InstrumentCapture::close(int code)
{
    constexpr CaptureRun::Milliseconds toSwitchOff(300);
    gSimulationSource = nullptr;
    if (m_manager) {
        m_manager->setCapture(nullptr, 0);
    }
    if (!m_session) {
        return;
    }
    gDev->shutDown();
    if (!m_session->end(toSwitchOff)) {
        std::fflush(nullptr);
        std::_Exit(code); // all is stored; only an instrument that does not answer is still waited for
    }
    m_run.reset();
    m_session.reset();
}
