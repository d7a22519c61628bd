#include "corvanlux/analyzer/Analyzer.h"

#include "AnalyzerPrivate.h"
#include "CopyText.h"
#include "ResultsPrivate.h"
#include "corvanlux/analyzer/DeviceCollection.h"

using lux::ChannelReader;
using lux::detail::Leave;

Analyzer::Analyzer() : m_private(new Private) {}

Analyzer::~Analyzer()
{
    SetAnalyzerResults(nullptr);
    delete m_private;
}

const char *Analyzer::GetAnalyzerVersion() const
{
    return "1.0";
}

void Analyzer::SetupResults()
{
    SetAnalyzerResults(nullptr);
}

void Analyzer::Init(DeviceCollection *device, ConditionManager *condition, ProgressManager *progress)
{
    m_private->device = device;
    m_private->simulationRate = device == nullptr ? reinterpret_cast<const std::int64_t *>(condition) : nullptr;
    m_private->run.progress = progress;
}

AnalyzerSettings *Analyzer::GetAnalyzerSettings() const
{
    return m_private->settings;
}

bool Analyzer::GetAnalyzerResults(AnalyzerResults **results) const
{
    *results = m_private->results.get();
    return *results != nullptr;
}

void Analyzer::InitialWorkerThread()
{
    lux::detail::Run &run = m_private->run;
    const DeviceCollection none;
    const DeviceCollection &device = m_private->device == nullptr ? none : *m_private->device;
    run.sampleCount = device.smpCount;
    run.sampleRate = device.smpFrequ;
    run.triggerSample = device.trgPos;
    run.nextReport = 0;
    run.message.clear();
    run.leave.store(0, std::memory_order_relaxed);
    run.status.store(DecodeStatus::Running, std::memory_order_release);
    m_private->readers.clear();
    m_private->ended = false;
    if (m_private->results != nullptr)
        m_private->results->internals()->attach(&run);
}

void Analyzer::StartProcessing()
{
    if (m_private->run.progress != nullptr)
        m_private->run.progress->StartWorker();
}

void Analyzer::StopWorkerThread()
{
    m_private->run.askToLeave(Leave::Stop);
}

void Analyzer::DecodeToEnd()
{
    m_private->runGuarded([this] { RunWorker(); });
}

DecodeStatus Analyzer::GetDecodeStatus() const
{
    return m_private->run.status.load(std::memory_order_acquire);
}

std::size_t Analyzer::GetDecodeMessage(char *text, std::size_t size) const
{
    const DecodeStatus status = GetDecodeStatus();
    const bool over = status != DecodeStatus::Running && status != DecodeStatus::Idle;
    return lux::detail::copyText(over ? m_private->run.message : std::string(), text, size);
}

void Analyzer::SetAnalyzerSettings(AnalyzerSettings *settings)
{
    m_private->settings = settings;
}

void Analyzer::SetAnalyzerResults(AnalyzerResults *results)
{
    if (m_private->results != nullptr)
        m_private->results->internals()->joinExport(); // while the decoder's own class is still there
    m_private->results.reset(results);
}

ChannelReader &Analyzer::GetChannelReader(const Channel &channel)
{
    lux::detail::Run &run = m_private->run;
    const auto known = m_private->readers.find(channel.channelIndex);
    if (known != m_private->readers.end())
        return *known->second;
    const SmpEdgeRoot *root = nullptr;
    if (channel.isDefined()) {
        const DeviceCollection *device = m_private->device;
        if (device != nullptr && device->chnRoots != nullptr && channel.channelIndex < std::uint32_t(device->chnCount))
            root = device->chnRoots[channel.channelIndex];
        if (root == nullptr || root->midCount < 1)
            FailDecode(("Channel " + std::to_string(channel.channelIndex) + " is not in this capture.").c_str());
    }
    auto reader = std::make_unique<ChannelReader>(root, run, run.sampleCount);
    return *m_private->readers.emplace(channel.channelIndex, std::move(reader)).first->second;
}

std::int64_t Analyzer::GetSampleCount() const
{
    return m_private->run.sampleCount;
}

std::int64_t Analyzer::GetSampleRate() const
{
    return m_private->simulationRate != nullptr ? *m_private->simulationRate : m_private->run.sampleRate;
}

std::int64_t Analyzer::GetTriggerSample() const
{
    return m_private->run.triggerSample;
}

void Analyzer::FailDecode(const char *message)
{
    m_private->run.addMessage(lux::detail::orEmpty(message));
    m_private->run.askToLeave(Leave::Failed);
    lux::detail::leaveDecode(m_private->run);
}

void Analyzer::TellAboutDecode(const char *message)
{
    m_private->run.addMessage(lux::detail::orEmpty(message));
}
