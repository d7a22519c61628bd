#include "CopyText.h"
#include "ResultsPrivate.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <exception>
#include <new>

#if defined(__GLIBCXX__) && !defined(_WIN32)
#include <cxxabi.h>
#endif

using lux::detail::Leave;
using lux::detail::MarkerStore;

namespace {

/// Whether the samples are in order and lie from 0 to below `end`. Without a branch for each.
bool areRising(const std::int64_t *samples, std::size_t count, std::int64_t end)
{
    if (count == 0 || samples[count - 1] >= end)
        return false;
    auto signs = std::uint64_t(samples[0]);
    for (std::size_t i = 1; i < count; ++i) {
        const auto sample = std::uint64_t(samples[i]);
        signs |= sample | (sample - std::uint64_t(samples[i - 1]));
    }
    return std::int64_t(signs) >= 0;
}

} // namespace

// ---- what the runtime keeps -----------------------------------------------------------------------------------------

AnalyzerResults::Private::Private() = default;

AnalyzerResults::Private::~Private()
{
    joinExport();
    for (auto &list : markers)
        delete list.load(std::memory_order_relaxed);
}

void AnalyzerResults::Private::attach(lux::detail::Run *newRun)
{
    run = newRun;
    sampleCount = std::max<std::int64_t>(newRun->sampleCount, 1);
    sampleRate = std::max<std::int64_t>(newRun->sampleRate, 1);
    triggerSample = newRun->triggerSample;
}

void AnalyzerResults::Private::finish()
{
    frames.dropAll();
    publishMarkers();
    if (run == nullptr)
        return;
    for (const auto &list : markers) {
        if (const MarkerStore *of = list.load(std::memory_order_relaxed); of != nullptr)
            disordered += of->disordered();
    }
    if (outside > 0)
        run->addMessage(std::to_string(outside) + " frames or markers reached out of the capture and were cut.");
    if (disordered > 0)
        run->addMessage(std::to_string(disordered) + " frames or markers were not in the order of time.");
}

std::int64_t AnalyzerResults::Private::inside(std::int64_t sample)
{
    if (sample >= 0 && sample < sampleCount) [[likely]]
        return sample;
    ++outside;
    return std::clamp<std::int64_t>(sample, 0, sampleCount - 1);
}

bool AnalyzerResults::Private::isTidy(const FrameData &frame) const
{
    return frame.firstSample >= frames.newestFirst() && frame.lastSample >= frame.firstSample &&
           frame.lastSample < sampleCount;
}

FrameData AnalyzerResults::Private::tidied(const FrameData &frame)
{
    FrameData tidy = frame;
    tidy.firstSample = inside(frame.firstSample);
    tidy.lastSample = inside(frame.lastSample);
    if (tidy.firstSample < frames.newestFirst()) [[unlikely]] {
        ++disordered;
        tidy.firstSample = frames.newestFirst();
    }
    tidy.lastSample = std::max(tidy.firstSample, tidy.lastSample);
    return tidy;
}

void AnalyzerResults::Private::outOfMemory()
{
    if (run != nullptr)
        run->askToLeave(Leave::OutOfMemory);
    throw lux::detail::WorkerEnd();
}

void AnalyzerResults::Private::leaveWhenAsked() const
{
    if (run != nullptr && run->leave.load(std::memory_order_relaxed) != 0) [[unlikely]]
        lux::detail::leaveDecode(*run);
}

void AnalyzerResults::Private::publishMarkers()
{
    while (markersHeld != 0) {
        const int channel = std::countr_zero(markersHeld);
        markersHeld &= markersHeld - 1;
        if (!markers[std::size_t(channel)].load(std::memory_order_relaxed)->publish())
            outOfMemory();
    }
}

MarkerStore &AnalyzerResults::Private::markersFor(std::uint32_t channel)
{
    auto &slot = markers[channel];
    MarkerStore *list = slot.load(std::memory_order_relaxed);
    if (list == nullptr) [[unlikely]] {
        list = new MarkerStore(budget);
        slot.store(list, std::memory_order_release);
    }
    markersHeld |= std::uint64_t(1) << channel;
    return *list;
}

const MarkerStore *AnalyzerResults::Private::markersOf(const Channel &channel) const
{
    return channel.channelIndex < channels ? markers[channel.channelIndex].load(std::memory_order_acquire) : nullptr;
}

void AnalyzerResults::Private::joinExport()
{
    if (!exportThread.joinable())
        return;
    exportCancelled.store(true, std::memory_order_relaxed);
    exportThread.join();
}

void AnalyzerResults::Private::failExport(const char *text)
{
    setExportError(text);
    exportProgress.store(exportFailed, std::memory_order_release);
}

void AnalyzerResults::Private::setExportError(const std::string &text)
{
    const std::lock_guard lock(exportMutex);
    exportError = text;
}

// ---- life -----------------------------------------------------------------------------------------------------------

AnalyzerResults::AnalyzerResults() : m_private(new Private) {}

AnalyzerResults::~AnalyzerResults()
{
    delete m_private;
}

void AnalyzerResults::BuildFrameValues(std::uint64_t /*frame*/) {}

// ---- reading --------------------------------------------------------------------------------------------------------

std::uint64_t AnalyzerResults::GetNumFrames() const
{
    return m_private->frames.count();
}

Frame AnalyzerResults::GetFrame(std::uint64_t index) const
{
    return index < GetNumFrames() ? Frame(m_private->frames[index]) : Frame();
}

bool AnalyzerResults::GetFramesInRange(std::int64_t first, std::int64_t last, std::uint64_t *firstFrame,
                                       std::uint64_t *lastFrame) const
{
    return m_private->frames.range(first, last, *firstFrame, *lastFrame);
}

std::uint64_t AnalyzerResults::GetNumMarkers(const Channel &channel) const
{
    const MarkerStore *list = m_private->markersOf(channel);
    return list == nullptr ? 0 : list->count();
}

Marker AnalyzerResults::GetMarker(const Channel &channel, std::uint64_t index) const
{
    const MarkerStore *list = m_private->markersOf(channel);
    return list == nullptr || index >= list->count() ? Marker() : list->at(index);
}

bool AnalyzerResults::GetMarkersInRange(const Channel &channel, std::int64_t first, std::int64_t last,
                                        std::uint64_t *firstMarker, std::uint64_t *lastMarker) const
{
    const MarkerStore *list = m_private->markersOf(channel);
    if (list == nullptr || last < 0 || first > last)
        return false;
    const std::uint64_t all = list->count();
    const std::uint64_t from = list->countBefore(std::uint64_t(std::max<std::int64_t>(first, 0)), all);
    const std::uint64_t to = list->countBefore(std::uint64_t(last) + 1, all);
    if (from >= to)
        return false;
    *firstMarker = from;
    *lastMarker = to - 1;
    return true;
}

bool AnalyzerResults::DoMarkersAppearOnChannel(const Channel &channel) const
{
    return GetNumMarkers(channel) > 0;
}

bool AnalyzerResults::DoBubblesAppearOnChannel(const Channel &channel) const
{
    return channel.channelIndex < Private::channels &&
           (m_private->bubbleChannels.load(std::memory_order_relaxed) >> channel.channelIndex & 1U) != 0;
}

const std::uint8_t *AnalyzerResults::GetPayload(std::uint64_t payload, std::size_t *size) const
{
    return m_private->payloads.find(payload, *size);
}

std::int64_t AnalyzerResults::GetSampleCount() const
{
    return m_private->sampleCount;
}

std::int64_t AnalyzerResults::GetSampleRate() const
{
    return m_private->sampleRate;
}

std::int64_t AnalyzerResults::GetTriggerSample() const
{
    return m_private->triggerSample;
}

// ---- the second halves of the pairs ---------------------------------------------------------------------------------

std::string AnalyzerResults::GetTabularTextString() const
{
    return std::string(m_private->tabularText.last());
}

void AnalyzerResults::GetResultStrings(const char *const **strings, std::uint32_t *count) const
{
    m_private->bubbleText.strings(strings, count);
}

const char *AnalyzerResults::GetFrameKind() const
{
    return m_private->values.frameKind();
}

void AnalyzerResults::GetFrameValues(const FrameValue **values, std::uint32_t *count) const
{
    const std::span<const FrameValue> list = m_private->values.list();
    *values = list.data();
    *count = std::uint32_t(list.size());
}

void AnalyzerResults::KeepTextFault(const char *what)
{
    const std::lock_guard lock(m_private->exportMutex);
    if (m_private->hasTextFault.load(std::memory_order_relaxed))
        return;
    m_private->textFault = what != nullptr && *what != '\0' ? what : "an exception";
    m_private->hasTextFault.store(true, std::memory_order_release);
}

std::size_t AnalyzerResults::GetTextFault(char *text, std::size_t size) const
{
    const bool hasFault = m_private->hasTextFault.load(std::memory_order_acquire);
    return lux::detail::copyText(hasFault ? m_private->textFault : std::string(), text, size);
}

// ---- adding ---------------------------------------------------------------------------------------------------------

void AnalyzerResults::AddFrame(const FrameData &frame)
{
    m_private->leaveWhenAsked();
    try {
        lux::detail::FrameStore &frames = m_private->frames;
        if (!(m_private->isTidy(frame) ? frames.add(frame) : frames.add(m_private->tidied(frame))))
            m_private->outOfMemory();
    } catch (const std::bad_alloc &) {
        m_private->outOfMemory();
    }
    if (m_private->markersHeld != 0)
        m_private->publishMarkers();
}

std::uint64_t AnalyzerResults::OpenFrame(std::int64_t firstSample)
{
    m_private->leaveWhenAsked();
    FrameData frame;
    frame.firstSample = frame.lastSample = firstSample;
    const std::uint64_t place = m_private->frames.open(m_private->tidied(frame).firstSample);
    if (place == 0)
        m_private->outOfMemory();
    return place;
}

void AnalyzerResults::FillFrame(std::uint64_t place, const FrameData &frame)
{
    m_private->leaveWhenAsked();
    FrameData tidy = frame;
    tidy.lastSample = m_private->inside(frame.lastSample);
    try {
        m_private->frames.fill(place, tidy);
    } catch (const std::bad_alloc &) {
        m_private->outOfMemory();
    }
    m_private->publishMarkers();
}

void AnalyzerResults::DropFrame(std::uint64_t place)
{
    m_private->leaveWhenAsked();
    try {
        m_private->frames.drop(place);
    } catch (const std::bad_alloc &) {
        m_private->outOfMemory();
    }
}

void AnalyzerResults::AddMarker(const Channel &channel, std::int64_t sample, MarkerType type)
{
    AddMarkers(channel, &sample, 1, type);
}

void AnalyzerResults::AddMarkers(const Channel &channel, const std::int64_t *samples, std::size_t count,
                                 MarkerType type)
{
    m_private->leaveWhenAsked();
    if (channel.channelIndex >= Private::channels)
        return; // of a line that is not connected
    MarkerStore &list = m_private->markersFor(channel.channelIndex);
    bool isDone = true;
    if (areRising(samples, count, m_private->sampleCount)) [[likely]] {
        isDone = list.addRising(samples, count, type);
    } else {
        for (std::size_t i = 0; i < count && isDone; ++i)
            isDone = list.add(m_private->inside(samples[i]), type);
    }
    if (!isDone)
        m_private->outOfMemory();
}

std::uint64_t AnalyzerResults::AddPayload(const std::uint8_t *bytes, std::size_t size)
{
    m_private->leaveWhenAsked();
    std::uint64_t word = 0;
    if (!m_private->payloads.add(bytes, size, word))
        m_private->outOfMemory();
    return word;
}

void AnalyzerResults::ShowBubblesOn(const Channel &channel)
{
    if (channel.channelIndex < Private::channels)
        m_private->bubbleChannels.fetch_or(std::uint64_t(1) << channel.channelIndex, std::memory_order_relaxed);
}

// ---- export ---------------------------------------------------------------------------------------------------------

#if defined(_WIN32)
// What refers to a constant of an imported class looks for it in the library, which has it only if it is defined there.
constexpr double AnalyzerResults::exportFailed;
#endif

void AnalyzerResults::StartExportThread(const char *path, DisplayBase base, std::uint32_t optionId)
{
    m_private->joinExport();
    m_private->exportProgress.store(0.0, std::memory_order_relaxed);
    m_private->exportCancelled.store(false, std::memory_order_relaxed);
    m_private->setExportError({});
    if (path == nullptr)
        return;
    m_private->exportThread = std::thread([this, path = std::string(path), base, optionId] {
        try {
            BuildExportFile(path.c_str(), base, optionId);
            if (GetProgress() < 1.0)
                m_private->exportProgress.store(1.0, std::memory_order_release);
#if defined(__GLIBCXX__) && !defined(_WIN32)
        } catch (const abi::__forced_unwind &) {
            throw; // the thread itself is being ended
#endif
        } catch (const std::exception &failure) {
            m_private->failExport(failure.what());
        } catch (...) {
            m_private->failExport("The decoder failed.");
        }
    });
}

double AnalyzerResults::GetProgress() const
{
    return m_private->exportProgress.load(std::memory_order_acquire);
}

void AnalyzerResults::CancelExport()
{
    m_private->exportCancelled.store(true, std::memory_order_relaxed);
}

std::size_t AnalyzerResults::GetExportError(char *text, std::size_t size) const
{
    const std::lock_guard lock(m_private->exportMutex);
    return lux::detail::copyText(m_private->exportError, text, size);
}
