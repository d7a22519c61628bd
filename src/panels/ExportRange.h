#pragma once

#include <QStringList>
#include <QVector>

#include <cstdint>

class SmpData;
struct ShownPair;

/// The time range of an export, from what the user has chosen. Free functions over plain values; no widget.

/// The capture of which a range is taken. All 0 as long as it is not complete.
struct ExportCapture {
    std::int64_t smpCount = 0; ///< samples
    std::int64_t smpFrequ = 0; ///< Hz
    std::int64_t trgPos = 0;   ///< sample
    /// Reads it from a store; takes and releases the read lock. Any thread.
    [[nodiscard]] static ExportCapture of(const SmpData &data);
};

/// A range in samples. The bounds may be reversed, lie outside the capture or be no numbers: who takes it limits it.
struct ExportRange {
    double start = 0;
    double end = 0;
    bool operator==(const ExportRange &) const = default;
};

/// What of the timing markers a choice needs, as texts.
struct ExportMarkers {
    QStringList names;     ///< one for each pair, such as "A1 - A2"
    QStringList positions; ///< two for each pair: samples with 6 significant digits, which a range of them then has
    [[nodiscard]] static ExportMarkers of(const QVector<ShownPair> &pairs);
};

/// The two texts that an interval begins with: the whole capture, in seconds from the trigger, 6 significant digits.
/// "0" for a capture without a rate.
[[nodiscard]] QStringList exportIntervalTexts(const ExportCapture &capture);

/// All samples.
[[nodiscard]] ExportRange exportWholeRange(const ExportCapture &capture);
/// The range between the markers of pair number `pair`, the smaller one first. Empty for a pair that there is not.
[[nodiscard]] ExportRange exportMarkerRange(const ExportMarkers &markers, int pair);
/// The range between two texts in seconds from the trigger, in this order. A text that is no number is 0.
[[nodiscard]] ExportRange exportInterval(const QString &start, const QString &end, const ExportCapture &capture);
