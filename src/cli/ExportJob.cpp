#include "cli/ExportJob.h"

#include "cli/Arguments.h"
#include "cli/CaptureJob.h"
#include "cli/Quantity.h"
#include "store/SmpData.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace {

constexpr int sideMin = 200; // pixels
constexpr int sideMax = 16384;
constexpr int dpiMin = 96;
constexpr int dpiMax = 960;

ExportJob::Picture pictureNamed(const QString &name)
{
    const QString lower = name.toLower();
    return lower == QLatin1String("png")   ? ExportJob::Picture::Png
           : lower == QLatin1String("svg") ? ExportJob::Picture::Svg
                                           : ExportJob::Picture::None;
}

/// @return empty, or what is wrong
QString readTimes(const Arguments::Parsed &parsed, ExportJob &job)
{
    for (const auto &[name, time] :
         {std::pair(QStringLiteral("--from"), &job.from), {QStringLiteral("--to"), &job.to}}) {
        const auto text = parsed.value(name);
        const auto value = text ? Quantity::time(*text) : std::nullopt;
        if (text && !value) {
            return QStringLiteral("\"%1\" is no time").arg(*text);
        }
        *time = value ? value->toDouble() : *time;
    }
    return {};
}

/// @return empty, or what is wrong
QString readPicture(const Arguments::Parsed &parsed, ExportJob &job)
{
    static const QRegularExpression form(QStringLiteral("^([0-9]{1,6})x([0-9]{1,6})$"));
    const auto size = parsed.value(QStringLiteral("--size"));
    const auto dpi = parsed.value(QStringLiteral("--dpi"));
    if (job.picture == ExportJob::Picture::None) {
        return size || dpi ? QStringLiteral("--size and --dpi are for png and svg") : QString();
    }
    if (size) {
        const QRegularExpressionMatch match = form.match(*size);
        job.size = {match.captured(1).toInt(), match.captured(2).toInt()};
        if (std::min(job.size.width(), job.size.height()) < sideMin ||
            std::max(job.size.width(), job.size.height()) > sideMax) {
            return QStringLiteral("\"%1\" is no size such as 1600x900, of %2 to %3 pixels")
                .arg(*size)
                .arg(sideMin)
                .arg(sideMax);
        }
    }
    job.dpi = dpi ? dpi->toInt() : dpiMin;
    if (job.dpi < dpiMin || job.dpi > dpiMax) {
        return QStringLiteral("\"%1\" is no number of dots per inch from %2 to %3").arg(*dpi).arg(dpiMin).arg(dpiMax);
    }
    return job.out == QLatin1String("-") ? QStringLiteral("a picture needs a file (-o)") : QString();
}

} // namespace

QString ExportJob::read(const QStringList &arguments)
{
    const Arguments::Parsed parsed =
        Arguments::parse(arguments, {{QStringLiteral("--format"), QStringLiteral("-f"), true},
                                     {QStringLiteral("--channels"), QStringLiteral("-c"), true},
                                     {QStringLiteral("--from"), {}, true},
                                     {QStringLiteral("--to"), {}, true},
                                     {QStringLiteral("--size"), {}, true},
                                     {QStringLiteral("--dpi"), {}, true},
                                     {QStringLiteral("--output"), QStringLiteral("-o"), true},
                                     {QStringLiteral("--help"), QStringLiteral("-h"), false}});
    help = parsed.error.isEmpty() && parsed.has(QStringLiteral("--help"));
    if (help) {
        return {};
    }
    if (!parsed.error.isEmpty() || parsed.operands.size() != 1) {
        return !parsed.error.isEmpty()     ? parsed.error
               : parsed.operands.isEmpty() ? QStringLiteral("no file is named")
                                           : QStringLiteral("more than one file");
    }
    path = parsed.operands.constFirst();
    out = parsed.value(QStringLiteral("--output")).value_or(QStringLiteral("-"));
    const auto format = parsed.value(QStringLiteral("--format"));
    picture = pictureNamed(format ? *format : QFileInfo(out).suffix());
    kind = format ? captureKindNamed(*format) : captureKindOf(out);
    if (picture == Picture::None && (kind == CaptureKind::None || kind == CaptureKind::Cxdat)) {
        return format ? QStringLiteral("there is no format \"%1\"").arg(*format)
                      : QStringLiteral("no format is told (-f)");
    }
    QString wrong = CaptureJob::overwritten(path, out);
    if (wrong.isEmpty()) {
        wrong = CaptureJob::readChannels(parsed, channels);
    }
    if (wrong.isEmpty()) {
        wrong = readTimes(parsed, *this);
    }
    return wrong.isEmpty() ? readPicture(parsed, *this) : wrong;
}

QString ExportJob::pick(const SmpData &data, CapturePart &part) const
{
    const QString refusal = CaptureJob::pick(data, channels, part.channels);
    const auto rate = double(data.smpFrequ());
    part.start = Quantity::samplesWithParts(from, rate);
    part.end = std::isinf(to) ? double(data.smpCount()) : Quantity::samplesWithParts(to, rate);
    const bool isOutside = part.start >= double(data.smpCount()) || to < from;
    return refusal.isEmpty() && isOutside ? QStringLiteral("there is nothing between these times") : refusal;
}
