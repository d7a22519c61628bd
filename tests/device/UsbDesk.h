#pragma once

#include "acquisition/InterfaceDevCallback.h"
#include "device/UsbTransport.h"
#include "store/MemBudget.h"
#include "support/FakeUsb.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

/// A receiver that keeps what it is given until the desk goes, and does what a test wants in between.
struct UsbReceiver final : InterfaceDevCallback {
    std::function<void()> started;
    std::function<void(int)> received; ///< with the number of the buffer, from 0
    int starts = 0;
    std::vector<std::int32_t> lengths;
    std::vector<SmpChunk> chunks;
    bool inOrder = true; ///< the bytes are those of the stream, without a hole
    std::uint8_t next = 0;

    void onStart() override
    {
        ++starts;
        if (started) {
            started();
        }
    }
    void onData(SmpChunk bytes, std::int32_t length) override
    {
        for (std::int32_t i = 0; i < length; ++i) {
            inOrder = inOrder && bytes.bytes()[i] == next;
            ++next;
        }
        lengths.push_back(length);
        chunks.push_back(std::move(bytes));
        if (received) {
            received(int(lengths.size()) - 1);
        }
    }
};

inline const std::vector<FakeUsbDevice> noDevice;

/// A transport over a scripted bus, with a receiver and a budget that a test can look at.
struct UsbDesk {
    static constexpr std::int64_t budget = 1000000000;

    explicit UsbDesk(std::vector<FakeUsbDevice> devices = {FakeUsbDevice{}},
                     std::vector<std::uint8_t> slotsRefused = {})
    {
        memBudget = budget;
        auto platform = std::make_unique<FakeUsb>();
        usb = platform.get();
        usb->devices = std::move(devices);
        usb->slotsRefused = std::move(slotsRefused);
        transport = std::make_unique<UsbTransport>(std::move(platform));
        transport->setCallback(&receiver);
    }
    /// Opens, and makes reads small.
    bool open(std::int32_t chunk = 1000)
    {
        const bool opened = transport->refresh() == 1;
        transport->chunkSize = chunk;
        return opened;
    }

    UsbReceiver receiver;
    FakeUsb *usb = nullptr;
    std::unique_ptr<UsbTransport> transport;
};
