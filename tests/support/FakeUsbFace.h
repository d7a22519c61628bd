#pragma once

#include "support/FakeUsb.h"
#include "support/UsbFace.h"

#include <algorithm>
#include <string>

/// A hand at a scripted bus. How the platform under test reaches that bus is left to whoever derives from it.
class FakeUsbFace : public UsbFace {
public:
    void plug(std::uint16_t product, bool running) override
    {
        FakeUsbDevice device;
        device.path = "fake:" + std::to_string(++m_plugged);
        device.product = product;
        if (!running) {
            device.pipes.clear();
        }
        m_usb->plug(device);
    }
    void unplug() override { m_usb->unplug(); }
    [[nodiscard]] bool takesTwo() const override { return true; }
    std::vector<std::uint8_t> send(std::size_t bytes) override
    {
        std::vector<std::uint8_t> sent(bytes);
        for (std::size_t i = 0; i < bytes; ++i) {
            sent[i] = std::uint8_t(m_usb->sent + i);
        }
        constexpr std::size_t read = 64 * 1024; // as the contract asks for
        for (; bytes >= read; bytes -= read) {
            m_usb->push(FakeRead::full());
        }
        m_usb->push(FakeRead::of(std::uint32_t(bytes)));
        return sent;
    }
    void halt() override { m_usb->halt(); }
    [[nodiscard]] std::size_t written() const override
    {
        std::size_t sum = 0;
        for (const std::uint32_t size : m_usb->writeSizes) {
            sum += size;
        }
        return sum;
    }

protected:
    /// Takes the bus, which outlives the face's use, and makes its devices answer requests.
    void take(FakeUsb &usb)
    {
        m_usb = &usb;
        usb.holds = true;
        usb.onControl = [](const UsbSetup &setup, std::uint8_t *data, std::uint32_t &moved) -> UsbResult {
            if (setup.request == 0xEE) {
                return {UsbError::Halted, 31};
            }
            moved = setup.isIn() ? std::min<std::uint32_t>(setup.length, 2) : setup.length;
            std::fill_n(data, setup.isIn() ? moved : 0, std::uint8_t(0x85));
            return {};
        };
    }

private:
    FakeUsb *m_usb = nullptr;
    int m_plugged = 0;
};
