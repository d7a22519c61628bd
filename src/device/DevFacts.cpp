#include "device/DevFacts.h"

#include <algorithm>

namespace {

/// A number in the units of `unit` with `suffix`.
QString inUnits(std::int64_t value, double unit, const QString &suffix)
{
    return QString::number(double(value) / unit, 'g', 6) + suffix;
}

} // namespace

void DevFacts::fillRateLimits(int mode, int channels)
{
    transferMode = mode;
    chnRateLimits.clear();
    if (transferMode != devTransfer::streaming) {
        const std::int64_t fastest = smpFrequs.isEmpty() ? 0 : smpFrequs.first();
        for (int count = 4; count <= channels; count *= 2) {
            chnRateLimits.append({count, fastest});
        }
    } else if (model == devModel::bytes8) {
        chnRateLimits = {{4, 24000000}, {8, 24000000}};
    } else if (model == devModel::slices16) {
        chnRateLimits = {{3, 100000000}, {6, 50000000}, {9, 32000000}, {12, 25000000}, {16, 16000000}};
    } else {
        chnRateLimits = {{3, 100000000}, {6, 50000000}, {16, 20000000}, {32, 10000000}};
    }
}

int DevFacts::maxChnForFrequ(std::int64_t rate) const
{
    const auto limit = std::find_if(chnRateLimits.crbegin(), chnRateLimits.crend(),
                                    [rate](const ChnRateLimit &entry) { return entry.maxFrequ >= rate; });
    return limit != chnRateLimits.crend() ? limit->chnCount : 0;
}

std::int64_t DevFacts::maxFrequForChn(int channels) const
{
    const auto limit = std::find_if(chnRateLimits.cbegin(), chnRateLimits.cend(),
                                    [channels](const ChnRateLimit &entry) { return entry.chnCount >= channels; });
    return limit != chnRateLimits.cend() ? limit->maxFrequ : 0;
}

int DevFacts::frequIndexForChn(int channels) const
{
    return std::max(0, int(smpFrequs.indexOf(maxFrequForChn(channels))));
}

QStringList DevFacts::smpFrequTexts() const
{
    QStringList texts;
    for (const std::int64_t rate : smpFrequs) {
        if (rate >= 1000000000) {
            texts.append(inUnits(rate, 1e9, QStringLiteral(" GHz")));
        } else if (rate >= 1000000) {
            texts.append(inUnits(rate, 1e6, QStringLiteral(" MHz")));
        } else if (rate >= 1000) {
            texts.append(inUnits(rate, 1e3, QStringLiteral(" KHz")));
        } else {
            break;
        }
    }
    return texts;
}

QStringList DevFacts::smpDepthTexts() const
{
    QStringList texts;
    for (const std::int64_t depth : smpDepths) {
        if (depth > depthMax || depth < 1000) {
            break;
        }
        if (depth >= 1000000000) {
            texts.append(inUnits(depth, 1e9, QStringLiteral(" G* Samples")));
        } else if (depth >= 1000000) {
            const bool star = depth > depthStarAbove;
            texts.append(inUnits(depth, 1e6, star ? QStringLiteral(" M* Samples") : QStringLiteral(" M Samples")));
        } else {
            texts.append(inUnits(depth, 1e3, QStringLiteral(" K Samples")));
        }
    }
    return texts;
}
