#pragma once

#include "acquisition/SmpSimulate.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "support/Tokens.h"

#include <atomic>
#include <chrono>
#include <future>
#include <utility>

/// The source of the simulated captures while it lives. Drives no channel, and comes out of a capture's first block
/// when it is let go: until then that capture runs, however long anybody takes. Main thread.
class HeldSource final : public SimulationSource {
public:
    HeldSource() : m_former(std::exchange(gSimulationSource, this)) {}
    ~HeldSource() override
    {
        letGo();
        if (gDev != nullptr) {
            gDev->endCapture();
        }
        gSimulationSource = m_former;
    }
    HeldSource(const HeldSource &) = delete;
    HeldSource &operator=(const HeldSource &) = delete;

    void begin(std::int64_t /*frequency*/) override {}
    void build(std::int64_t /*newest*/, std::int64_t /*frequency*/, std::vector<SimulationChannel> & /*out*/) override
    {
        entered.release();
        (void)m_mayLeave.wait_for(std::chrono::seconds(30));
    }
    void release() override { isReleased = true; }
    void letGo()
    {
        if (!std::exchange(m_isLetGo, true)) {
            m_go.set_value();
        }
    }

    Tokens entered;
    std::atomic<bool> isReleased{false};

private:
    SimulationSource *const m_former;
    bool m_isLetGo = false;
    std::promise<void> m_go;
    std::future<void> m_mayLeave = m_go.get_future();
};
