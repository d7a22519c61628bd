#pragma once

#include "WaveSignal.h"
#include "emulator/Bench.h"
#include "platform/InstrumentBus.h"
#include "support/UsbFace.h"

#include <QtGlobal>

#include <utility>
#include <vector>

/// Emulated instruments for the tests that every platform must pass; where they are plugged in is left to the bus.
class InstrumentFace : public UsbFace {
public:
    void plug(std::uint16_t product, bool running) override
    {
        emulator::InstrumentOptions options;
        options.product = product;
        options.firmwareInside = running;
        options.pace = 0;
        const int index = bus().add(options, std::make_shared<emulator::WaveSignal>(
                                                 1, std::vector{emulator::WaveSignal::Wave::noise(5, 1, 40)}));
        m_present.push_back(index);
        bus().with(index, [running](emulator::Instrument &device) {
            device.attach();
            if (running && !fillMemory(device)) {
                qFatal("the instrument does not come up");
            }
            device.log().clear();
        });
    }
    void unplug() override
    {
        for (const int index : std::exchange(m_present, {})) {
            bus().unplug(index);
        }
    }
    bool takesTwo() const override { return true; }

    std::vector<std::uint8_t> send(std::size_t bytes) override
    {
        return bus().with(m_present.front(), [&](emulator::Instrument &device) {
            using bench::operator+;
            std::vector<std::uint8_t> wanted(bytes);
            device.memory().read(m_address, wanted);
            if (!bench::sent(device, 0x38, 0) ||
                !bench::sent(device, 0x20, 0x10, bench::little(m_address, 4) + bench::little(bytes, 4)) ||
                !bench::sent(device, 0x30, 0)) {
                qFatal("the instrument does not send");
            }
            m_address += std::uint32_t(bytes);
            return wanted;
        });
    }
    void halt() override
    {
        bus().with(m_present.front(), [](emulator::Instrument &device) { device.control({0x02, 3, 0, 0x86, 0}, {}); });
    }
    std::size_t written() const override
    {
        return bus().with(m_present.front(), [](emulator::Instrument &device) {
            std::size_t sum = 0;
            for (const auto &entry : device.log().entries()) {
                sum += entry.kind == emulator::TransferLog::Kind::BulkOut ? entry.moved : 0;
            }
            return sum;
        });
    }

protected:
    [[nodiscard]] virtual InstrumentBus &bus() const = 0;

private:
    static bool fillMemory(emulator::Instrument &device)
    {
        bool good = bench::bringUp(device) && bench::configure(device, {.depth = 10'000'000}) && bench::run(device);
        for (int i = 0; i < 10 && device.running(); ++i) {
            good = good && bench::status(device) != 0;
        }
        return good && !device.running();
    }

    std::vector<int> m_present;
    std::uint32_t m_address = 0;
};
