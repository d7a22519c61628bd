#pragma once

#include "device/DevControl.h"
#include "support/FakeCapture.h"

#include <QCoreApplication>
#include <QStringList>
#include <QThread>

/// An instrument that answers what a test wants and writes down what it was asked. In use while it lives.
///
/// What the main thread asks stands in `calls`; what the threads of a capture ask, and each stop, in `device`.
class FakeDevControl final : public DevControl {
public:
    FakeDevControl() { setDevControl(this); }
    ~FakeDevControl() override { setDevControl(nullptr); }

    QStringList calls;
    SmpConfig config;
    std::uint16_t status = 0x85C1; ///< ready and running well
    int statusAnswer = 0;
    int uidAnswer = 0;
    int configAnswer = 0;
    QByteArray uid = QByteArrayLiteral("\x11\x22\x33\x44\x55\x66\x77\x88");
    FakeDevice device;
    SmpTransport *bulk = nullptr; ///< not owned

    SmpTransport *transport() override { return bulk; }
    int startDevice() override { return device.startDevice(); }
    int bulkStart() override { return device.bulkStart(); }
    int bulkStop() override { return device.bulkStop(); }
    int readCaptureInfo(SmpCaptureInfo &out) override { return device.readCaptureInfo(out); }
    int setReadWindow(std::uint32_t address, std::uint32_t size) override
    {
        return device.setReadWindow(address, size);
    }
    int readStatus(std::uint16_t &out) override
    {
        if (!isMainThread()) {
            return device.readStatus(out);
        }
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
        return configAnswer;
    }
    int stopDevice() override
    {
        if (isMainThread()) {
            calls.append(QStringLiteral("stopDevice"));
        }
        return device.stopDevice();
    }
    void tuneChunkSize(std::int64_t bitsPerSecond) override
    {
        calls.append(QStringLiteral("tuneChunkSize %1").arg(bitsPerSecond));
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

private:
    static bool isMainThread() { return QThread::currentThread() == QCoreApplication::instance()->thread(); }
};
