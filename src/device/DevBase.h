#pragma once

#include "acquisition/SmpHost.h"
#include "acquisition/SmpSimulate.h"

#include <QByteArray>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>

#include <array>
#include <cstdint>

class DevControl;

/// How many digital channels may run at which rate.
struct ChnRateLimit {
    std::int32_t chnCount;
    std::int64_t maxFrequ; ///< Hz
};

/// The analyzer, plugged in or not: what the model can do, what the user has chosen, the store of the last capture and
/// the threads that fill it.
///
/// Reached through `gDev`; made and deleted on the main thread, never held across events. Without an instrument
/// `connected` is false, the settings still work and a capture runs simulated. Settings operations run on the main
/// thread between captures, and save their value in the model's configuration node at once; a value out of range falls
/// back silently and returns false.
class DevBase : public SmpHost {
    Q_OBJECT
public:
    DevBase();
    ~DevBase() override;

    // ---- the model
    // ---------------------------------------------------------------------------------------------------
    std::int32_t model = 0;        ///< model code, the value of "devModel"
    QString name;                  ///< model name and configuration node
    std::int32_t memSize = 0;      ///< bytes of sample memory in the device, 0 for streaming models
    QByteArray devUid;             ///< 8 bytes of identity, all zero when not connected
    std::int32_t transferMode = 0; ///< 1 streaming, 0 capture into device memory
    QVector<ChnRateLimit> chnRateLimits;
    bool connected = false;
    std::int32_t readSize = 0;           ///< bytes asked of the device memory by the last read window
    std::int64_t clockFrequ = 0;         ///< base clock of the sample divider, Hz
    std::int64_t pwmClock = 0;           ///< base clock of the PWM outputs, Hz
    QVector<int> features;               ///< 1 adjustable thresholds, 2 PWM outputs
    QVector<std::int64_t> smpFrequs;     ///< rates offered, Hz, fast to slow
    QVector<std::int64_t> smpDepths;     ///< depths offered, samples, short to long
    std::int64_t depthStarAbove = 0;     ///< depths above this show a star
    std::int64_t depthMax = 10000000000; ///< depths above this are not offered
    std::int32_t smpFrequIndex = 0;
    std::int32_t smpDepthIndex = 0;
    std::int32_t smpFrequDefault = 0;
    std::int32_t smpDepthDefault = 0;

    // ---- the user's choice
    // -------------------------------------------------------------------------------------------
    QVector<bool> chnEnable;  ///< digital channels in use; its size is the model's channel count
    QVector<bool> aChnEnable; ///< analog channels in use
    QVector<int> chnTrig;     ///< 0 none, 1 low, 2 high, 3 rising, 4 falling
    QVector<int> aChnTrig;
    std::int32_t trgPosition = 5; ///< percent of the depth before the trigger, 0 to 99
    QVector<bool> aChnReverse;
    QVector<int> aChnProbe;
    QVector<int> aChnCouple;
    QVector<int> aChnVoltDiv;
    std::array<bool, 2> pwmEnable{};
    std::array<double, 2> pwmFrequ{}; ///< Hz, as really produced
    std::array<double, 2> pwmDuty{};  ///< percent, as really produced

    [[nodiscard]] bool hasFeature(int value) const { return features.contains(value); }
    [[nodiscard]] bool isAnalogModel() const { return model == 97; }

    bool setSmpFrequIndex(int index);
    bool setSmpDepthIndex(int index);
    bool setTrgPosition(int percent);
    void setChnEnable(const QVector<bool> &list);
    void setAChnEnable(const QVector<bool> &list);
    void setChnTrig(int chn, int code);
    void setAChnTrig(int chn, int code);
    void setAChnProbe(int chn, int value);
    void setAChnReverse(int chn, bool value);
    void setAChnCouple(int chn, int value);
    void setAChnVoltDiv(int chn, int value);

    [[nodiscard]] std::int64_t smpFrequ() const; ///< Hz
    [[nodiscard]] std::int64_t smpDepth() const; ///< samples
    [[nodiscard]] int chnEnableCount() const;
    [[nodiscard]] int maxChnForFrequ(std::int64_t rate) const;
    [[nodiscard]] std::int64_t maxFrequForChn(int channels) const;
    [[nodiscard]] int frequIndexForChn(int channels) const;
    [[nodiscard]] QStringList smpFrequTexts() const;
    [[nodiscard]] QStringList smpDepthTexts() const;
    [[nodiscard]] std::int64_t preTrigSamples() const;

    // ---- run control; main thread
    // ------------------------------------------------------------------------------------
    /// Starts one capture. Returns at once; sigSmpSta and sigSmpDataReady tell the rest.
    void startCapture();
    /// Asks the running capture to end; what has been captured is kept.
    void stopCapture();

    void setPwmEnable(bool on0, bool on1);
    void setPwm(int output, double frequ, double duty);
    void resetPwm();
    void loadVth();
    /// Tells a connected instrument that the program goes away.
    void shutDown();

    /// Loads the model's settings from the configuration.
    void loadConfig();

    /// Called at the end of bring-up with the identity block. @return 0 connected, else an error code
    virtual int initDevice(const QByteArray &identity);

    SmpSimulate thrSimulate{*this};

signals:
    void sigChnEnaChanged();
    /// The rate was lowered by a change of channels.
    void sigSmpFrequToLower();
    /// A capture is about to start: whoever reads the last one lets go now. Emitted on the main thread, direct.
    void sigCaptureStarts();

protected:
    /// Fills `chnRateLimits` and sets `transferMode`. After `smpFrequs` and `chnEnable` are filled.
    void initRateLimits(int mode);
};

/// Who drives channels in simulated captures; null for nobody. Not owned; set on the main thread between captures.
extern SimulationSource *gSimulationSource;
