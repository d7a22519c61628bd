#pragma once

#include "device/DevCodes.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <cstdint>

/// How many digital channels may run at which rate.
struct ChnRateLimit {
    std::int32_t chnCount;
    std::int64_t maxFrequ; ///< Hz
};

/// What a model can do, as values: filled when its device object is made, and never changed again.
struct DevFacts {
    std::int32_t model = devModel::none; ///< model code, the value of "devModel"
    QString name;                        ///< model name and configuration node
    std::int32_t memSize = 0;            ///< bytes of sample memory in the device, 0 for streaming models
    std::int32_t transferMode = devTransfer::memory;
    QVector<ChnRateLimit> chnRateLimits;
    QVector<int> features;               ///< see devFeature
    QVector<std::int64_t> smpFrequs;     ///< rates offered, Hz, fast to slow
    QVector<std::int64_t> smpDepths;     ///< depths offered, samples, short to long
    std::int64_t depthStarAbove = 0;     ///< depths above this show a star
    std::int64_t depthMax = 10000000000; ///< depths above this are not offered
    std::int32_t smpFrequDefault = 0;
    std::int32_t smpDepthDefault = 0;

    [[nodiscard]] bool hasFeature(int value) const { return features.contains(value); }
    [[nodiscard]] bool isAnalogModel() const { return model == devModel::mixedSignal; }
    /// The channels that may run at `rate` (Hz); 0 for a rate that none may run at.
    [[nodiscard]] int maxChnForFrequ(std::int64_t rate) const;
    /// The fastest rate in Hz of so many channels; 0 for more than the model has.
    [[nodiscard]] std::int64_t maxFrequForChn(int channels) const;
    /// The index of that rate; 0 when it is not offered.
    [[nodiscard]] int frequIndexForChn(int channels) const;
    [[nodiscard]] QStringList smpFrequTexts() const; ///< such as "62.5 MHz", one for each rate
    [[nodiscard]] QStringList smpDepthTexts() const; ///< such as "200 M* Samples", one for each depth offered

protected:
    /// Sets `transferMode` and fills `chnRateLimits`, for a model of so many digital channels. Behind `model` and
    /// `smpFrequs`.
    void fillRateLimits(int mode, int channels);
};

/// What the user has chosen, as values; all but the indices by channel. DevBase keeps the rules between them and stores
/// each at once.
struct DevChoices {
    std::int32_t smpFrequIndex = 0;
    std::int32_t smpDepthIndex = 0;
    QVector<bool> chnEnable;  ///< digital channels in use; its size is the model's channel count
    QVector<bool> aChnEnable; ///< analog channels in use
    QVector<int> chnTrig;     ///< 0 none, 1 low, 2 high, 3 rising, 4 falling; negative as stored, none as well
    QVector<int> aChnTrig;
    std::int32_t trgPosition = 5; ///< percent of the depth before the trigger, 0 to 99
    QVector<bool> aChnReverse;
    QVector<int> aChnProbe;
    QVector<int> aChnCouple;
    QVector<int> aChnVoltDiv; ///< millivolts
};
