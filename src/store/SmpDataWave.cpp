#include "store/SmpDataBlocks.h"
#include "store/SmpDataSeek.h"
#include "store/SmpEdgeReader.h"

#include <cmath>
#include <limits>

using namespace smpBlocks;

namespace {

/// The integer part of a position, held between 0 and what no capture reaches.
std::int64_t wholePosition(double value)
{
    constexpr double limit = 4.0e18; // below 2^63, so that it converts
    return static_cast<std::int64_t>(std::clamp(value, 0.0, limit));
}

/// Collects the runs of one line; silently full at `width`, which a sound line never passes.
class RunWriter {
public:
    RunWriter(SmpWaveRun *out, int width) : m_out(out), m_width(width) {}
    void add(int x, int width, int kind)
    {
        if (m_count < m_width) {
            m_out[m_count++] = {x, width, kind};
        }
    }
    [[nodiscard]] int count() const { return m_count; }

private:
    SmpWaveRun *m_out;
    int m_width;
    int m_count = 0;
};

} // namespace

int SmpData::waveRuns(int chn, double start, double step, int width, SmpWaveRun *out) const
{
    const SmpEdgeRoot *root = tree(chn);
    if (root == nullptr || !(step > 0.0) || !std::isfinite(step) || !std::isfinite(start)) {
        return -1;
    }
    constexpr int denseEntries = 64; // in a column, from which on the cache lines of the next ones are fetched early
    constexpr int scoutColumns = 4;  // how early
    const double firstColumn = start < 0.0 ? std::trunc(-start / step) : 0.0;
    SmpEdgeReader reader(*this, chn, start < 0.0 ? 0 : wholePosition(start));
    if (!reader.hasData()) {
        return -1;
    }
    if (!(firstColumn <= width - 1)) {
        return 0;
    }
    RunWriter runs(out, width);
    int column = int(firstColumn);
    smpSeek::Scout scout;
    for (;;) {
        // Compared before it becomes an int: at a small step an entry far to the right has no column that fits one.
        const double entryColumn = std::trunc((double(reader.next()) - start) / step);
        if (entryColumn > width - 1) {
            break;
        }
        const int x = int(entryColumn);
        if (x > column) {
            runs.add(column, x - column, reader.level());
        }
        if (reader.atEnd()) {
            return runs.count();
        }
        runs.add(x, 1, 2);
        column = x + 1;
        reader.advance();
        const SmpEdgeCursor before = reader.cursor();
        const bool inside = reader.skipTo(wholePosition(column * step + start));
        if (globalIndex(reader.cursor()) - globalIndex(before) > denseEntries) {
            scout.lookAhead(*root, reader.cursor(), (column + scoutColumns) * step + start);
        }
        if (!inside || column > width - 1) {
            return runs.count();
        }
    }
    runs.add(column, width - 1 - column, reader.level());
    return runs.count();
}

int SmpData::aChnPoints(int aChn, double start, double step, int width, SmpAChnPoint *out) const
{
    const SmpAChnBuffer *buffer = aChn < 0 || aChn >= aChnCount ? nullptr : m_aChnBufs[std::size_t(aChn)];
    if (buffer == nullptr || buffer->count < 1 || !(step > 0.0) || !std::isfinite(step) || !std::isfinite(start)) {
        return 0;
    }
    constexpr double farRight = std::numeric_limits<std::int32_t>::max();
    const double count = std::min<std::int32_t>(buffer->count, SmpAChnBuffer::capacity);
    const double firstColumn = start < 0.0 ? -start / step : 0.0;
    const double samplesPerPoint = step <= 1.0 ? 1.0 : step;
    double sample = start < 0.0 ? 0.0 : start;
    int n = 0;
    while (n < width && sample < count) {
        const double x = std::trunc(step <= 1.0 ? n / step + firstColumn : n + firstColumn);
        const double raw = buffer->samples[int(sample)];
        out[n] = {x < farRight ? std::int32_t(x) : std::numeric_limits<std::int32_t>::max(),
                  (raw + 128) * buffer->voltDiv * 10.0 / 255.0 - buffer->voltDiv * 5.0};
        ++n;
        if (x >= width - 1) {
            break;
        }
        sample += samplesPerPoint;
    }
    return n;
}
