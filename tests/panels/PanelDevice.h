#pragma once

#include "controls/Look.h"
#include "device/DevBase.h"
#include "device/DevModels.h"
#include "device/DeviceGlobals.h"
#include "settings/Config.h"
#include "store/MemBudget.h"

#include <memory>

/// A device in `gDev` for a test of a panel: a fresh configuration, and no instrument.
class PanelDevice {
public:
    explicit PanelDevice(int model) : m_device(makeFresh(model)) { gDev = m_device.get(); }
    ~PanelDevice() { gDev = nullptr; }
    PanelDevice(const PanelDevice &) = delete;
    PanelDevice &operator=(const PanelDevice &) = delete;

    /// The former device object is gone before the new one is made, as when another model is chosen.
    void replace(int model)
    {
        gDev = nullptr;
        m_device.reset();
        m_device = createDevice(model);
        gDev = m_device.get();
    }

private:
    static std::unique_ptr<DevBase> makeFresh(int model)
    {
        globalsFillTables();
        globalsSetDpi(96.0);
        configLoad();
        memBudgetInit(); // without it a capture ends at its first block
        return createDevice(model);
    }

    std::unique_ptr<DevBase> m_device;
};

constexpr int streaming16Model = 5; ///< offers fewer channels at its fast rates
constexpr int storage16Model = 7;
constexpr int analogModel = 97;
