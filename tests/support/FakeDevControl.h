#pragma once

#include "device/DevControl.h"

#include <QStringList>

/// An instrument that answers what a test wants and writes down what it was asked. In use while it lives.
class FakeDevControl final : public DevControl {
public:
    FakeDevControl() { setDevControl(this); }
    ~FakeDevControl() override { setDevControl(nullptr); }

    QStringList calls;
    SmpConfig config;
    std::uint16_t status = 0x85C1; ///< ready and running well
    int statusAnswer = 0;
    int uidAnswer = 0;
    int runAnswer = 0;
    QByteArray uid = QByteArrayLiteral("\x11\x22\x33\x44\x55\x66\x77\x88");
    bool running = false;
    SmpCaptureInfo info;
    SmpTransport *bulk = nullptr; ///< not owned

    SmpTransport *transport() override { return bulk; }
    int startDevice() override
    {
        calls.append(QStringLiteral("startDevice"));
        return 0;
    }
    int bulkStart() override
    {
        calls.append(QStringLiteral("bulkStart"));
        return 0;
    }
    int bulkStop() override
    {
        calls.append(QStringLiteral("bulkStop"));
        return 0;
    }
    int readCaptureInfo(SmpCaptureInfo &out) override
    {
        calls.append(QStringLiteral("readCaptureInfo"));
        out = info;
        return 0;
    }
    int setReadWindow(std::uint32_t address, std::uint32_t size) override
    {
        calls.append(QStringLiteral("setReadWindow %1 %2").arg(address).arg(size));
        return 0;
    }
    int readStatus(std::uint16_t &out) override
    {
        calls.append(QStringLiteral("readStatus"));
        out = statusAnswer == 0 ? status : std::uint16_t(0);
        return statusAnswer;
    }
    int readUid(QByteArray &out) override
    {
        calls.append(QStringLiteral("readUid"));
        if (uidAnswer == 0) {
            out = uid;
        }
        return uidAnswer;
    }
    int sendSmpConfig(const SmpConfig &sent) override
    {
        calls.append(QStringLiteral("sendSmpConfig"));
        config = sent;
        return 0;
    }
    int startRun(bool streaming) override
    {
        calls.append(streaming ? QStringLiteral("startRun streaming") : QStringLiteral("startRun storage"));
        running = runAnswer == 0;
        return runAnswer;
    }
    bool isRunning() const override { return running; }
    int stopDevice() override
    {
        calls.append(QStringLiteral("stopDevice"));
        return 0;
    }
    void tuneChunkSize(std::int64_t bitsPerSecond) override
    {
        calls.append(QStringLiteral("tuneChunkSize %1").arg(bitsPerSecond));
    }
    void attach(bool streaming) override
    {
        calls.append(streaming ? QStringLiteral("attach streaming") : QStringLiteral("attach storage"));
    }
    int sendPwm(int output, std::uint32_t period, std::uint32_t high) override
    {
        calls.append(QStringLiteral("sendPwm %1 %2 %3").arg(output).arg(period).arg(high));
        return 0;
    }
    int sendPwmEnable(std::uint8_t mask) override
    {
        calls.append(QStringLiteral("sendPwmEnable %1").arg(mask));
        return 0;
    }
    int sendVth(int index, const VthCodes &codes) override
    {
        calls.append(QStringLiteral("sendVth %1 %2 %3").arg(index).arg(codes.threshold).arg(codes.range));
        return 0;
    }
    int powerOff() override
    {
        calls.append(QStringLiteral("powerOff"));
        return 0;
    }
};
