#pragma once

#include "AnalyzerResults.h"
#include "ExportWriter.h"
#include "FrameText.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace lux {

/// The results of a decoder: what its frames mean is told by describe() and values(), and all else is made from them.
///
/// describe(), values() and exportFile() run on any thread, also several at once and while the worker adds: they look
/// at the frame, its payload and the settings, and change nothing.
class LUX_ANALYZER_API Results : public AnalyzerResults {
public:
    Results();
    ~Results() override;

    // ---- adding; the worker only. See AnalyzerResults ---------------------------------------------------------------

    void add(const FrameData &frame) { AddFrame(frame); }
    /// For a frame that encloses the ones that follow: keeps its place before them.
    [[nodiscard]] std::uint64_t open(std::int64_t firstSample) { return OpenFrame(firstSample); }
    void fill(std::uint64_t place, const FrameData &frame) { FillFrame(place, frame); }
    void drop(std::uint64_t place) { DropFrame(place); }
    void mark(const Channel &channel, std::int64_t sample, MarkerType type) { AddMarker(channel, sample, type); }
    /// All looks of an element at once, which is cheaper.
    void mark(const Channel &channel, std::span<const std::int64_t> samples, MarkerType type)
    {
        AddMarkers(channel, samples.data(), samples.size(), type);
    }
    /// Keeps bytes; the word goes into FrameData::data or data2.
    [[nodiscard]] std::uint64_t keep(std::span<const std::uint8_t> bytes)
    {
        return AddPayload(bytes.data(), bytes.size());
    }
    void showBubblesOn(const Channel &channel) { ShowBubblesOn(channel); }

    // ---- reading
    // Any thread.

    [[nodiscard]] std::span<const std::uint8_t> bytes(std::uint64_t payload) const
    {
        std::size_t size = 0;
        const std::uint8_t *first = GetPayload(payload, &size);
        return {first, size};
    }
    [[nodiscard]] std::uint64_t frameCount() const { return GetNumFrames(); }
    /// The frame without the cost of the class around it. @param index  below frameCount()
    [[nodiscard]] FrameData frame(std::uint64_t index) const;

    // ---- made from describe() and values() -------------------------------------------------------------------------

    void BuildBubbleText(std::uint64_t frame, Channel &channel, DisplayBase base) final;
    void BuildTabularText(std::uint64_t frame, DisplayBase base) final;
    void BuildExportFile(const char *path, DisplayBase base, std::uint32_t optionId) final;
    void BuildFrameValues(std::uint64_t frame) final;
    void BuildMessageText(std::uint64_t message, DisplayBase base) final;
    void BuildGroupText(std::uint64_t group, DisplayBase base) final;

protected:
    /// Tells the frame's texts, from short to long. None on a channel where it says nothing.
    virtual void describe(const FrameData &frame, FrameText &out) const = 0;
    /// Tells the frame's kind and values by their stable names.
    virtual void values(const FrameData &frame, FrameValues &out) const = 0;
    /// The names of values that have a column of their own in the CSV export, in this order; what is
    /// returned outlives the call.
    [[nodiscard]] virtual std::span<const char *const> columns() const;
    /// Writes an export option. By default all of them are exportFrames().
    virtual void exportFile(ExportWriter &out, std::uint32_t optionId) const;
    /// One line a frame. Text: time, tab, tabular text. CSV: time, first and last sample, kind, columns(), text.
    void exportFrames(ExportWriter &out) const;

private:
    struct Private;
    Private *m_private; ///< kept for later versions; null
};

} // namespace lux
