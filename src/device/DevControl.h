#pragma once

#include "acquisition/SmpDevice.h"

#include <QByteArray>

#include <cstdint>

class SmpTransport;

/// How a capture is set up in an instrument. Masks: bit i stands for digital channel i.
struct SmpConfig {
    std::int64_t depth = 0;          ///< samples, 40 bits
    std::int64_t preTrig = 0;        ///< samples before the trigger, 40 bits
    std::uint32_t preTrigMemory = 0; ///< bytes of the sample memory that are kept for them
    std::uint16_t divider = 0;       ///< of the base clock
    std::uint32_t enabled = 0;       ///< channels captured
    std::uint32_t trigger = 0;       ///< channels that take part in the trigger
    std::uint32_t level = 0;         ///< of these, the ones tested by level
    std::uint32_t polarity = 0;      ///< of these, the ones that want a high level or a falling edge
    bool operator==(const SmpConfig &) const = default;
};

/// A threshold voltage as the hardware wants it.
struct VthCodes {
    std::uint16_t threshold = 0; ///< 3.3 mV a step, two's complement
    std::uint16_t range = 0;     ///< one of 0, 242, 727
    bool operator==(const VthCodes &) const = default;
};

/// A PWM output in steps of its base clock, and what comes out of that.
struct PwmCounts {
    std::uint32_t period = 0;
    std::uint32_t high = 0;
    double frequ = 0; ///< Hz
    double duty = 0;  ///< percent
};

/// Turns a voltage of any size into codes: beyond -4 V and 4 V the last setting repeats.
[[nodiscard]] VthCodes vthCodes(double volts);
/// Rounds to whole steps of `clock` (Hz). `frequ` in Hz, above 0; `duty` in percent.
[[nodiscard]] PwmCounts pwmCounts(std::int64_t clock, double frequ, double duty);

/// What the device object asks of an instrument: the one seam between the models and the hardware side.
///
/// Every operation that returns an int answers 0 done, 1 not open, 2 the transfer failed; it may block for one control
/// transfer (readUid() for 50 ms more) and may be called in any order, whatever the last answer was. Those declared
/// here run on the main thread, or where an instrument is brought up; the others also on the threads of a capture,
/// which implementations serialise.
class DevControl : public SmpDevice {
public:
    virtual ~DevControl() = default;

    /// Where the instrument's bulk data comes from; null when there is none. It outlives every device object.
    [[nodiscard]] virtual SmpTransport *transport() = 0;
    static constexpr int uidSize = 8;
    /// Reads the identity, `uidSize` bytes; `devUid` is left alone unless the answer is 0.
    [[nodiscard]] virtual int readUid(QByteArray &devUid) = 0;
    /// How many transfers the instrument has let run into their time limit so far. Who looks before and after an
    /// operation knows a silent instrument from one that refuses. Any thread.
    [[nodiscard]] virtual unsigned timeOuts() const { return 0; }
    /// Sets up the next capture.
    virtual int sendSmpConfig(const SmpConfig &config) = 0;
    /// Tells the transport the rate of data on the wire, from which it chooses the size of its reads. Never blocks.
    virtual void tuneChunkSize(std::int64_t bitsPerSecond) = 0;
    /// Sets the counts of one PWM output, 0 or 1.
    virtual int sendPwm(int output, std::uint32_t period, std::uint32_t high) = 0;
    /// Bit 0 runs output 0, bit 1 output 1.
    virtual int sendPwmEnable(std::uint8_t mask) = 0;
    /// Index 1: all channels, or 0 to 15 of 32; index 2: 16 to 31.
    virtual int sendVth(int index, const VthCodes &codes) = 0;
    /// Switches the instrument's logic off; only a new bring-up wakes it.
    virtual int powerOff() = 0;
};

/// The answer of a program without an instrument: nothing is ever open.
class DevControlNone final : public DevControl {
public:
    SmpTransport *transport() override;
    int startDevice() override;
    int stopDevice() override;
    int bulkStart() override;
    int bulkStop() override;
    int readStatus(std::uint16_t &status) override;
    int readCaptureInfo(SmpCaptureInfo &info) override;
    int setReadWindow(std::uint32_t address, std::uint32_t size) override;
    int readUid(QByteArray &devUid) override;
    int sendSmpConfig(const SmpConfig &config) override;
    void tuneChunkSize(std::int64_t bitsPerSecond) override;
    int sendPwm(int output, std::uint32_t period, std::uint32_t high) override;
    int sendPwmEnable(std::uint8_t mask) override;
    int sendVth(int index, const VthCodes &codes) override;
    int powerOff() override;
};

class RequestQueue;

/// The instrument side in use, for all device objects: DevControlNone until another one is set. Main thread.
[[nodiscard]] DevControl &devControl();
/// Where requests of the main thread are put, so that a silent instrument does not hold it up; null: nowhere, they are
/// made at once. Main thread.
[[nodiscard]] RequestQueue *devRequests();
/// Sets both; DevControlNone for null. Not owned. Main thread, while no capture runs.
void setDevControl(DevControl *control, RequestQueue *requests = nullptr);
