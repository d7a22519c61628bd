#pragma once

#include "AnalyzerTypes.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace lux::detail {
struct RunControl;
}

/// What one run of a decoder found. Made by the decoder for each run, and owned by it.
///
/// One thread, the worker, adds; any thread may read meanwhile, without a lock, and sees a consistent prefix that only
/// grows. Each pair of Build... and Get... is used by one thread at a time. The order of the virtual operations is
/// binding; further ones only ever follow the last. Decoders derive from lux::Results (DecoderResults.h).
/// Memory: 40.5 bytes a frame, 8 a marker, charged block by block to the budget of SetAnalyzerMemoryBudget().
class LUX_ANALYZER_API AnalyzerResults {
public:
    AnalyzerResults();
    AnalyzerResults(const AnalyzerResults &) = delete;
    AnalyzerResults &operator=(const AnalyzerResults &) = delete;
    virtual ~AnalyzerResults();
    /// Makes the texts of a frame's bubble on a channel, from the shortest to the longest; see GetResultStrings(). None
    /// when the frame does not exist or says nothing on that channel.
    virtual void BuildBubbleText(std::uint64_t frame, Channel &channel, DisplayBase base) = 0;
    /// Writes all frames into a file, on the calling thread; see GetProgress().
    /// @param path  UTF-8 on Windows; elsewhere as the system has it
    virtual void BuildExportFile(const char *path, DisplayBase base, std::uint32_t optionId) = 0;
    /// Makes a frame's line of the results list; see GetTabularTextString(). Empty when the frame does not exist.
    virtual void BuildTabularText(std::uint64_t frame, DisplayBase base) = 0;
    /// Kept for texts of several frames; nobody calls them.
    virtual void BuildMessageText(std::uint64_t message, DisplayBase base) = 0;
    virtual void BuildGroupText(std::uint64_t group, DisplayBase base) = 0;
    /// Makes the structured values of a frame; see GetFrameKind() and GetFrameValues().
    virtual void BuildFrameValues(std::uint64_t frame);

    // ---- reading; any thread ---------------------------------------------------------------------------------------

    [[nodiscard]] std::uint64_t GetNumFrames() const;
    /// @param index  below GetNumFrames(); an empty frame otherwise
    [[nodiscard]] Frame GetFrame(std::uint64_t index) const;
    /// The frames whose last sample is past `first` and whose first is at or before `last`: the first and the last of
    /// them. Frames lie in the order of their first samples. Cost: logarithmic, well below a microsecond.
    /// @return false when there is none; the out values are not touched
    bool GetFramesInRange(std::int64_t first, std::int64_t last, std::uint64_t *firstFrame,
                          std::uint64_t *lastFrame) const;
    [[nodiscard]] std::uint64_t GetNumMarkers(const Channel &channel) const;
    [[nodiscard]] Marker GetMarker(const Channel &channel, std::uint64_t index) const;
    /// The markers from `first` to `last`, both included. Cost: logarithmic.
    bool GetMarkersInRange(const Channel &channel, std::int64_t first, std::int64_t last, std::uint64_t *firstMarker,
                           std::uint64_t *lastMarker) const;
    [[nodiscard]] bool DoMarkersAppearOnChannel(const Channel &channel) const;
    [[nodiscard]] bool DoBubblesAppearOnChannel(const Channel &channel) const;
    /// The bytes of a payload, which stay in place as long as the results live. Null and 0 for what is none.
    [[nodiscard]] const std::uint8_t *GetPayload(std::uint64_t payload, std::size_t *size) const;
    /// The length of the capture that was decoded, its rate in Hz and its trigger.
    [[nodiscard]] std::int64_t GetSampleCount() const;
    [[nodiscard]] std::int64_t GetSampleRate() const;
    [[nodiscard]] std::int64_t GetTriggerSample() const;

    // ---- the second halves of the pairs; good until the next first half -------------------------------------------

    [[nodiscard]] std::string GetTabularTextString() const;
    void GetResultStrings(const char *const **strings, std::uint32_t *count) const;
    [[nodiscard]] const char *GetFrameKind() const; ///< stable ASCII name; empty for a frame that is none
    void GetFrameValues(const FrameValue **values, std::uint32_t *count) const;

    /// Notes what the making of a text or of values threw, for GetTextFault(); the first only. Any thread.
    void KeepTextFault(const char *what);
    /// What the making of a text or of values threw first; empty while nothing did. Copied into `text`, which is always
    /// ended; @return the length of the whole message. Any thread; a moment's work while there is none.
    std::size_t GetTextFault(char *text, std::size_t size) const;

    // ---- export ----------------------------------------------------------------------------------------------------

    /// Makes ready for an export: progress 0, not cancelled, no error. With a path it is written on a thread of the
    /// library's own, which the next export and the destructor wait for; with null the caller writes it by
    /// BuildExportFile on a thread of its own.
    void StartExportThread(const char *path, DisplayBase base, std::uint32_t optionId);
    static constexpr double exportFailed = 2.0;
    /// 0.0 to 1.0; 1.0 when the file is whole, or was removed after a cancel; exportFailed when it could not be
    /// written, and what there was of it is removed.
    [[nodiscard]] double GetProgress() const;
    /// Asks the export to stop: it does within 100 ms, and removes its file.
    void CancelExport();
    /// Why the last export failed; empty when it is whole or was cancelled. Copied into `text`, which is always
    /// ended; @return the length of the whole message.
    std::size_t GetExportError(char *text, std::size_t size) const;

    // ---- adding; the worker only -----------------------------------------------------------------------------------
    // Each may leave the decode by unwinding: when it was asked to stop, and when the memory budget is spent.

    /// Adds a frame. What lies outside the capture is cut to it, a first sample before the last frame's is raised to
    /// it.
    void AddFrame(const FrameData &frame);
    /// Keeps the place of a frame whose end is not known yet, before those that follow: readers see none of these until
    /// it is filled or dropped. What is open at the end of the decode is dropped. May nest.
    /// @return the place's number for FillFrame() or DropFrame(); changes with no other operation
    std::uint64_t OpenFrame(std::int64_t firstSample);
    void FillFrame(std::uint64_t place, const FrameData &frame); ///< its first sample is that of OpenFrame()
    void DropFrame(std::uint64_t place);
    /// Adds a marker. Readers see it with the next frame. In the order of samples, channel by channel; small disorder
    /// since the last frame is put right.
    void AddMarker(const Channel &channel, std::int64_t sample, MarkerType type);
    /// The same for `count` samples: cheaper than one by one.
    void AddMarkers(const Channel &channel, const std::int64_t *samples, std::size_t count, MarkerType type);
    /// Keeps bytes with the results. @return the word to store in a frame; at most 16 MiB - 1 are kept
    [[nodiscard]] std::uint64_t AddPayload(const std::uint8_t *bytes, std::size_t size);
    /// Bubbles are drawn on this channel's row.
    void ShowBubblesOn(const Channel &channel);

    // ---- for the runtime -------------------------------------------------------------------------------------------

    struct Private;
    [[nodiscard]] Private *internals() const { return m_private; }

private:
    Private *m_private;
};
static_assert(sizeof(AnalyzerResults) == 2 * sizeof(void *));
