#pragma once

#include "FrameStore.h"
#include "Hidden.h"
#include "MarkerStore.h"
#include "PayloadStore.h"
#include "Run.h"
#include "corvanlux/analyzer/AnalyzerResults.h"
#include "corvanlux/analyzer/FrameText.h"

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

struct LUX_HIDDEN AnalyzerResults::Private {
    static constexpr std::uint32_t channels = 64;

    Private();
    ~Private();

    // ---- the worker ------------------------------------------------------------------------------------------------

    /// Before the run: what limits frames, and what a spent budget stops. Main thread.
    void attach(lux::detail::Run *newRun);
    /// After it: nothing stays open or held back.
    void finish();
    /// In the order of time and within the capture, as it is.
    [[nodiscard]] bool isTidy(const FrameData &frame) const;
    [[nodiscard]] FrameData tidied(const FrameData &frame);
    [[nodiscard]] std::int64_t inside(std::int64_t sample);
    [[noreturn]] void outOfMemory();
    void leaveWhenAsked() const;
    void publishMarkers();
    /// The channel's markers, of which some are now to be published.
    [[nodiscard]] lux::detail::MarkerStore &markersFor(std::uint32_t channel);
    [[nodiscard]] const lux::detail::MarkerStore *markersOf(const Channel &channel) const;

    // ---- export ----------------------------------------------------------------------------------------------------

    void joinExport();
    void setExportError(const std::string &text);
    /// It ended without a file, and why. The export's thread.
    void failExport(const char *text);

    lux::detail::MemoryBudget budget;
    lux::detail::FrameStore frames{budget};
    lux::detail::PayloadStore payloads{budget};
    std::array<std::atomic<lux::detail::MarkerStore *>, channels> markers{};
    std::uint64_t markersHeld = 0; ///< channels with markers to publish
    std::atomic<std::uint64_t> bubbleChannels{0};
    lux::detail::Run *run = nullptr;
    std::int64_t sampleCount = std::int64_t(1) << 40;
    std::int64_t sampleRate = 1;
    std::int64_t triggerSample = 0;
    std::uint64_t outside = 0;    ///< frames and markers that reached out of the capture
    std::uint64_t disordered = 0; ///< frames and markers that came too late

    // What the first half of a pair made for its second; each is used by one thread at a time.
    lux::FrameText tabularText;
    lux::FrameText bubbleText;
    lux::FrameValues values;

    std::atomic<bool> hasTextFault{false};
    std::string textFault; ///< written once, before the flag

    std::atomic<double> exportProgress{0.0};
    std::atomic<bool> exportCancelled{false};
    std::mutex exportMutex; ///< guards exportError, and the writing of textFault
    std::string exportError;
    std::thread exportThread; ///< main thread
};
