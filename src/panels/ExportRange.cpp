#include "panels/ExportRange.h"

#include "controls/NumberField.h"
#include "store/SmpData.h"
#include "wave/MainView.h"

#include <utility>

namespace {

constexpr int significantDigits = 6;

QString numberText(double value)
{
    return QString::number(value, 'g', significantDigits);
}

} // namespace

ExportCapture ExportCapture::of(const SmpData &data)
{
    const SmpReadLock lock(&data);
    return lock ? ExportCapture{data.smpCount(), data.smpFrequ(), data.trgPos()} : ExportCapture{};
}

ExportMarkers ExportMarkers::of(const QVector<ShownPair> &pairs)
{
    ExportMarkers markers;
    for (const ShownPair &pair : pairs) {
        markers.names.append(pair.firstName + QStringLiteral(" - ") + pair.secondName);
        markers.positions.append(numberText(pair.firstSample));
        markers.positions.append(numberText(pair.secondSample));
    }
    return markers;
}

QStringList exportIntervalTexts(const ExportCapture &capture)
{
    if (capture.smpFrequ < 1) {
        return {QStringLiteral("0"), QStringLiteral("0")};
    }
    const double start = double(-capture.trgPos) / double(capture.smpFrequ);
    return {numberText(start), numberText(double(capture.smpCount) / double(capture.smpFrequ) + start)};
}

ExportRange exportWholeRange(const ExportCapture &capture)
{
    return {0.0, double(capture.smpCount)};
}

ExportRange exportMarkerRange(const ExportMarkers &markers, int pair)
{
    if (pair < 0 || pair >= markers.names.size()) {
        return {};
    }
    ExportRange range{markers.positions[2 * pair].toDouble(), markers.positions[2 * pair + 1].toDouble()};
    if (range.start > range.end) {
        std::swap(range.start, range.end);
    }
    return range;
}

ExportRange exportInterval(const QString &start, const QString &end, const ExportCapture &capture)
{
    const auto position = [&capture](const QString &seconds) {
        return typedNumber(seconds).value_or(0.0) * double(capture.smpFrequ) + double(capture.trgPos);
    };
    return {position(start), position(end)};
}
