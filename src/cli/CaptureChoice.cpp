#include "cli/CaptureChoice.h"

#include "cli/Quantity.h"
#include "device/DevBase.h"
#include "settings/Config.h"
#include "store/SmpTrigCode.h"

#include <algorithm>

namespace {

constexpr double mostVolts = 4.0;
constexpr int channelsOfAThreshold = 16;

struct TriggerName {
    const char *name;
    int code;
};
constexpr TriggerName triggerNames[] = {{"low", smpTrigCode::lowLevel},
                                        {"high", smpTrigCode::highLevel},
                                        {"rising", smpTrigCode::risingEdge},
                                        {"falling", smpTrigCode::fallingEdge}};

/// The place of `value` in `offered`, which is ordered either way; -1 for none.
int indexOf(const QVector<std::int64_t> &offered, std::int64_t value)
{
    return int(offered.indexOf(value));
}

/// "; the nearest are 25M and 50M".
QString nearestText(QVector<std::int64_t> offered, std::int64_t value)
{
    std::sort(offered.begin(), offered.end());
    const auto above = std::lower_bound(offered.cbegin(), offered.cend(), value);
    QStringList nearest;
    if (above != offered.cbegin()) {
        nearest.append(Quantity::countText(*(above - 1)));
    }
    if (above != offered.cend()) {
        nearest.append(Quantity::countText(*above));
    }
    return nearest.size() == 1 ? QStringLiteral("; the nearest is ") + nearest.first()
                               : QStringLiteral("; the nearest are ") + nearest.join(QStringLiteral(" and "));
}

QVector<std::int64_t> offeredDepths(const DevBase &device)
{
    QVector<std::int64_t> offered;
    std::copy_if(device.smpDepths.cbegin(), device.smpDepths.cend(), std::back_inserter(offered),
                 [&device](std::int64_t depth) { return depth <= device.depthMax; });
    return offered;
}

} // namespace

QVector<Arguments::Option> CaptureChoice::options()
{
    return {{QStringLiteral("--channels"), QStringLiteral("-c"), true},
            {QStringLiteral("--depth"), {}, true},
            {QStringLiteral("--position"), {}, true},
            {QStringLiteral("--rate"), {}, true},
            {QStringLiteral("--threshold"), {}, true},
            {QStringLiteral("--trigger"), QStringLiteral("-t"), true}};
}

QString CaptureChoice::read(const Arguments::Parsed &parsed)
{
    const QString error = readNumbers(parsed);
    return error.isEmpty() ? readTriggers(parsed) : error;
}

QString CaptureChoice::readNumbers(const Arguments::Parsed &parsed)
{
    if (const auto text = parsed.value(QStringLiteral("--rate"))) {
        rate = Quantity::frequency(*text);
        if (!rate) {
            return QStringLiteral("--rate takes a rate such as 100M or 62.5MHz");
        }
    }
    if (const auto text = parsed.value(QStringLiteral("--depth"))) {
        depth = Quantity::count(*text);
        if (!depth) {
            return QStringLiteral("--depth takes samples, such as 10M");
        }
    }
    if (const auto text = parsed.value(QStringLiteral("--channels"))) {
        channels = Quantity::channels(*text);
        if (!channels) {
            return QStringLiteral("\"%1\" is no list of channels such as 0-2,7").arg(*text);
        }
    }
    if (const auto text = parsed.value(QStringLiteral("--position"))) {
        bool isNumber = false;
        position = (text->endsWith(QLatin1Char('%')) ? text->chopped(1) : *text).toInt(&isNumber);
        if (!isNumber || *position < 0 || *position > 99) {
            return QStringLiteral("--position takes percent of the depth, 0 to 99");
        }
    }
    if (const auto text = parsed.value(QStringLiteral("--threshold"))) {
        bool isNumber = false;
        threshold = (text->endsWith(QLatin1Char('V')) ? text->chopped(1) : *text).toDouble(&isNumber);
        if (!isNumber || !(*threshold >= -mostVolts && *threshold <= mostVolts)) {
            return QStringLiteral("--threshold takes volts, -4 to 4");
        }
    }
    return {};
}

QString CaptureChoice::readTriggers(const Arguments::Parsed &parsed)
{
    const QString wrong = QStringLiteral("\"%1\" is no trigger such as 2:rising or 0:high,3:falling");
    int edges = 0;
    for (const QString &text : parsed.values(QStringLiteral("--trigger"))) {
        for (const QString &part : text.split(QLatin1Char(','))) {
            const auto chn = Quantity::channels(part.section(QLatin1Char(':'), 0, 0));
            const QString name = part.section(QLatin1Char(':'), 1).trimmed();
            const auto *const known =
                std::find_if(std::begin(triggerNames), std::end(triggerNames),
                             [&name](const TriggerName &trigger) { return name == QLatin1String(trigger.name); });
            if (!chn || chn->size() != 1 || known == std::end(triggerNames)) {
                return wrong.arg(part);
            }
            const int channel = chn->first();
            if (std::any_of(triggers.cbegin(), triggers.cend(),
                            [channel](const Trigger &t) { return t.chn == channel; })) {
                return QStringLiteral("channel %1 has two triggers").arg(channel);
            }
            triggers.append({channel, known->code});
            edges += smpTrigCode::isEdge(known->code) ? 1 : 0;
        }
    }
    return edges > 1 ? QStringLiteral("one channel alone may trigger by an edge") : QString();
}

QString CaptureChoice::applyTo(DevBase &device) const
{
    if (QString error = applyChannels(device); !error.isEmpty()) {
        return error;
    }
    if (depth) {
        const QVector<std::int64_t> offered = offeredDepths(device);
        if (indexOf(offered, *depth) < 0) {
            return QStringLiteral("the %1 has no depth of %2").arg(device.name, Quantity::countText(*depth)) +
                   nearestText(offered, *depth);
        }
        (void)device.setSmpDepthIndex(indexOf(device.smpDepths, *depth));
    }
    if (position) {
        (void)device.setTrgPosition(*position);
    }
    QString error = applyTriggers(device);
    return error.isEmpty() ? applyThreshold(device) : error;
}

QString CaptureChoice::applyChannels(DevBase &device) const
{
    const int count = int(device.chnEnable.size());
    if (channels) {
        QVector<bool> enable(count, false);
        for (const int chn : *channels) {
            if (chn >= count) {
                return QStringLiteral("the %1 has no channel %2: its last is %3")
                    .arg(device.name, QString::number(chn), QString::number(count - 1));
            }
            enable[chn] = true;
        }
        device.setChnEnable(enable);
    }
    if (!rate) {
        return {};
    }
    const int index = indexOf(device.smpFrequs, *rate);
    if (index < 0) {
        return QStringLiteral("the %1 has no rate of %2").arg(device.name, Quantity::countText(*rate)) +
               nearestText(device.smpFrequs, *rate);
    }
    const int most = device.maxChnForFrequ(*rate);
    if (channels && channels->size() > most) {
        return QStringLiteral("at a rate of %1 the %2 captures %3 channels at most; the fastest rate of %4 is %5")
            .arg(Quantity::countText(*rate), device.name)
            .arg(most)
            .arg(channels->size())
            .arg(Quantity::countText(device.maxFrequForChn(int(channels->size()))));
    }
    (void)device.setSmpFrequIndex(index); // turns off what is too many
    return {};
}

QString CaptureChoice::applyTriggers(DevBase &device) const
{
    for (const Trigger &trigger : triggers) {
        if (!device.chnEnable.value(trigger.chn)) {
            return QStringLiteral("channel %1 cannot trigger: it is not captured").arg(trigger.chn);
        }
        device.setChnTrig(trigger.chn, trigger.code);
    }
    return {};
}

QString CaptureChoice::applyThreshold(DevBase &device) const
{
    if (!threshold) {
        return {};
    }
    if (!device.hasFeature(devFeature::thresholds)) {
        return QStringLiteral("the %1 has no threshold that can be set").arg(device.name);
    }
    struct Group {
        int index;
        const char *level;
        const char *volts;
    };
    // What a window shows of it when it opens the file.
    for (const Group &group : {Group{1, "chnLevel", "chnVth"}, Group{2, "chnLevel2", "chnVth2"}}) {
        if (group.index == 2 && device.chnEnable.size() <= channelsOfAThreshold) {
            continue;
        }
        device.setVth(*threshold, group.index);
        deviceSet(device.name, QLatin1String(group.level), QStringLiteral("Custom I/O"));
        deviceSet(device.name, QLatin1String(group.volts), QString::number(*threshold, 'f', 2));
    }
    return {};
}
