// What the user chooses on a device, the rules between those choices, and how they are kept.

#include "device/DevBase.h"
#include "device/DevControl.h"
#include "settings/Config.h"
#include "store/SmpTrigCode.h"

#include <algorithm>

namespace {

constexpr int defaultTrgPosition = 5; // percent
constexpr int defaultVoltDiv = 1000;  // millivolts

/// Any other code triggers nothing; a settings file may hold negative ones, and they are kept.
bool isTrigger(int code)
{
    return code >= smpTrigCode::lowLevel && code <= smpTrigCode::fallingEdge;
}

bool has(const QVector<int> &list, int index)
{
    return index >= 0 && index < list.size();
}

void clearEdges(QVector<int> &triggers)
{
    std::replace_if(triggers.begin(), triggers.end(), smpTrigCode::isEdge, 0);
}

/// Takes over the states of `list` and clears the triggers of channels that are off.
void takeChannels(QVector<bool> &enable, QVector<int> &triggers, const QVector<bool> &list)
{
    std::copy_n(list.cbegin(), std::min(list.size(), enable.size()), enable.begin());
    for (int chn = 0; chn < std::min(enable.size(), triggers.size()); ++chn) {
        if (!enable.at(chn)) {
            triggers[chn] = 0;
        }
    }
}

QString number(std::int64_t value)
{
    return QString::number(value);
}

/// A stored integer; `otherwise` for an empty or unreadable text.
int storedInt(const QString &model, const QString &key, int otherwise)
{
    bool isNumber = false;
    const int value = deviceGet(model, key).toInt(&isNumber);
    return isNumber ? value : otherwise;
}

/// A list of `count` stored integers; those missing take `otherwise`.
QVector<int> storedInts(const QString &model, const QString &key, int count, int otherwise)
{
    QVector<int> values(count, otherwise);
    intListGet(deviceGet(model, key), values.data(), count);
    return values;
}

void storeInts(const QString &model, const QString &key, const QVector<int> &values)
{
    deviceSet(model, key, intListPut(values.constData(), values.size()));
}

QVector<int> storedTriggers(const QString &model, int count, bool analog)
{
    QVector<int> triggers(count, 0);
    chnTrigGet(model, triggers, analog);
    triggers.resize(count);
    return triggers;
}

QVector<bool> storedChannels(const QString &model, int count, bool analog)
{
    QVector<bool> flags(count, true);
    chnEnableGet(model, flags, analog);
    return flags;
}

} // namespace

// ---- rates and channels --------------------------------------------------------------------------------------------

void DevBase::initRateLimits(int mode)
{
    fillRateLimits(mode, int(chnEnable.size()));
}

std::int64_t DevBase::smpFrequ() const
{
    return smpFrequs.value(smpFrequIndex, 0);
}

std::int64_t DevBase::smpDepth() const
{
    return smpDepths.value(smpDepthIndex, 0);
}

int DevBase::chnEnableCount() const
{
    return int(chnEnable.count(true));
}

bool DevBase::setSmpFrequIndex(int index)
{
    const bool valid = index >= 0 && index < smpFrequs.size();
    smpFrequIndex = valid ? index : smpFrequDefault;
    deviceSet(name, QStringLiteral("smpFrequIndex"), number(smpFrequIndex));
    const int enabled = chnEnableCount();
    int surplus = enabled - maxChnForFrequ(smpFrequ());
    if (surplus > 0) {
        // The walk begins at the number of channels in use, so that one above it may stay on.
        for (int chn = enabled - 1; chn >= 0 && surplus > 0; --chn) {
            if (chnEnable.at(chn)) {
                chnEnable[chn] = false;
                if (has(chnTrig, chn)) {
                    chnTrig[chn] = 0;
                }
                --surplus;
            }
        }
        saveChnEnable();
        saveChnTrig();
        emit sigChnEnaChanged();
    }
    tuneChunkSize();
    return valid;
}

bool DevBase::setSmpDepthIndex(int index)
{
    const bool valid = index >= 0 && index < smpDepths.size();
    smpDepthIndex = valid ? index : smpDepthDefault;
    deviceSet(name, QStringLiteral("smpDepthIndex"), number(smpDepthIndex));
    return valid;
}

void DevBase::setChnEnable(const QVector<bool> &list)
{
    takeChannels(chnEnable, chnTrig, list);
    saveChnEnable();
    saveChnTrig();
    emit sigChnEnaChanged();
    const int index = frequIndexForChn(chnEnable.size()); // of all channels, not of those in use
    if (index > smpFrequIndex) {
        smpFrequIndex = index;
        deviceSet(name, QStringLiteral("smpFrequIndex"), number(smpFrequIndex));
        emit sigSmpFrequToLower();
    }
    tuneChunkSize();
}

void DevBase::setAChnEnable(const QVector<bool> &list)
{
    takeChannels(aChnEnable, aChnTrig, list);
    chnEnablePut(name, aChnEnable, true);
    saveAChnTrig();
    emit sigChnEnaChanged();
}

void DevBase::tuneChunkSize()
{
    if (transferMode == devTransfer::streaming) {
        const int bitsPerSample = model == devModel::bytes8 ? 8 : chnEnableCount();
        devControl().tuneChunkSize(smpFrequ() * bitsPerSample);
    }
}

// ---- triggers ------------------------------------------------------------------------------------------------------

bool DevBase::setTrgPosition(int percent)
{
    const bool valid = percent >= 0 && percent <= 99;
    trgPosition = valid ? percent : defaultTrgPosition;
    deviceSet(name, QStringLiteral("trgPosition"), number(trgPosition));
    return valid;
}

void DevBase::setChnTrig(int chn, int code)
{
    if (!has(chnTrig, chn)) {
        return;
    }
    if (smpTrigCode::isEdge(code)) {
        clearEdges(chnTrig);
        clearEdges(aChnTrig);
        saveAChnTrig();
    }
    chnTrig[chn] = isTrigger(code) ? code : 0;
    saveChnTrig();
}

void DevBase::setAChnTrig(int chn, int code)
{
    if (!has(aChnTrig, chn)) {
        return;
    }
    if (smpTrigCode::isEdge(code)) {
        std::fill(aChnTrig.begin(), aChnTrig.end(), 0);
        clearEdges(chnTrig);
        saveChnTrig();
    }
    aChnTrig[chn] = isTrigger(code) ? code : 0;
    saveAChnTrig();
}

std::int64_t DevBase::preTrigSamples() const
{
    const bool triggered = std::any_of(chnTrig.cbegin(), chnTrig.cend(), isTrigger);
    return triggered ? smpDepth() * trgPosition / 100 : 0;
}

SmpConfig DevBase::smpConfig() const
{
    SmpConfig config;
    config.depth = smpDepth();
    config.preTrig = preTrigSamples();
    config.preTrigMemory = std::uint32_t(std::int64_t(trgPosition) * memSize / 100);
    config.divider = smpFrequ() > 0 ? std::uint16_t(clockFrequ / smpFrequ()) : std::uint16_t(0);
    for (int chn = 0; chn < std::min(chnEnable.size(), 32); ++chn) {
        const std::uint32_t bit = std::uint32_t(1) << chn;
        const int code = chnTrig.value(chn, 0);
        config.enabled |= chnEnable.at(chn) ? bit : 0;
        config.trigger |= isTrigger(code) ? bit : 0;
        config.level |= code == smpTrigCode::lowLevel || code == smpTrigCode::highLevel ? bit : 0;
        config.polarity |= code == smpTrigCode::highLevel || code == smpTrigCode::fallingEdge ? bit : 0;
    }
    return config;
}

// ---- analog channels -----------------------------------------------------------------------------------------------

void DevBase::setAChnProbe(int chn, int value)
{
    if (has(aChnProbe, chn)) {
        aChnProbe[chn] = value;
        storeInts(name, QStringLiteral("AChnProbe"), aChnProbe);
    }
}

void DevBase::setAChnReverse(int chn, bool value)
{
    if (chn >= 0 && chn < aChnReverse.size()) {
        aChnReverse[chn] = value;
        deviceSet(name, QStringLiteral("AChnReverse"), boolListPut(aChnReverse.constData(), aChnReverse.size()));
    }
}

void DevBase::setAChnCouple(int chn, int value)
{
    if (has(aChnCouple, chn)) {
        aChnCouple[chn] = value;
        storeInts(name, QStringLiteral("AChnCouple"), aChnCouple);
    }
}

void DevBase::setAChnVoltDiv(int chn, int value)
{
    if (has(aChnVoltDiv, chn)) {
        aChnVoltDiv[chn] = value;
        storeInts(name, QStringLiteral("AChnVoltDiv"), aChnVoltDiv);
    }
}

// ---- loading and saving --------------------------------------------------------------------------------------------

void DevBase::loadConfig()
{
    globalSet(QStringLiteral("devModel"), number(model));
    // Applying the rate may turn channels off and save that: what the user has chosen is read before.
    const QVector<int> triggers = storedTriggers(name, chnEnable.size(), false);
    const QVector<bool> channels = storedChannels(name, chnEnable.size(), false);
    chnTrig.fill(0, chnEnable.size());
    setSmpFrequIndex(storedInt(name, QStringLiteral("smpFrequIndex"), -1));
    setSmpDepthIndex(storedInt(name, QStringLiteral("smpDepthIndex"), -1));
    setTrgPosition(storedInt(name, QStringLiteral("trgPosition"), -1));
    chnTrig = triggers;
    setChnEnable(channels);
    if (!aChnEnable.isEmpty()) {
        loadAnalogConfig();
    }
}

void DevBase::loadAnalogConfig()
{
    const int count = int(aChnEnable.size());
    aChnProbe = storedInts(name, QStringLiteral("AChnProbe"), count, 1);
    aChnReverse.fill(false, count);
    boolListGet(deviceGet(name, QStringLiteral("AChnReverse")), aChnReverse.data(), count);
    aChnCouple = storedInts(name, QStringLiteral("AChnCouple"), count, 0);
    aChnVoltDiv = storedInts(name, QStringLiteral("AChnVoltDiv"), count, defaultVoltDiv);
    aChnTrig = storedTriggers(name, count, true);
    setAChnEnable(storedChannels(name, count, true));
}

void DevBase::saveChnEnable()
{
    chnEnablePut(name, chnEnable, false);
}

void DevBase::saveChnTrig()
{
    chnTrigPut(name, chnTrig, false);
}

void DevBase::saveAChnTrig()
{
    chnTrigPut(name, aChnTrig, true);
}
