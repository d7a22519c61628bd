#include "device/DevModels.h"

#include "device/DevConnection.h"
#include "settings/ConfigDocument.h"

#include <algorithm>
#include <span>

namespace {

constexpr std::int64_t ratesEight[] = {24000000, 16000000, 12000000, 8000000, 4000000, 2000000,
                                       1000000,  500000,   200000,   100000,  50000};
constexpr std::int64_t ratesStream[] = {100000000, 80000000, 50000000, 40000000, 32000000, 25000000, 16000000,
                                        12500000,  10000000, 8000000,  5000000,  4000000,  2000000,  1000000,
                                        500000,    200000,   100000,   50000,    20000};
constexpr std::int64_t rates500Binary[] = {500000000, 250000000, 125000000, 62500000, 25000000, 12500000, 5000000,
                                           2500000,   1000000,   500000,    200000,   100000,   50000,    20000};
/// The decimal rates up to 500 MHz: slower models begin further down.
constexpr std::int64_t rates500[] = {500000000, 200000000, 100000000, 50000000, 20000000, 10000000, 5000000,
                                     2000000,   1000000,   500000,    200000,   100000,   50000,    20000};
constexpr std::span<const std::int64_t> rates200 = std::span(rates500).subspan(1);
constexpr std::span<const std::int64_t> rates100 = std::span(rates500).subspan(2);

enum class Depths { common, withoutLast, only8K };

/// One row of the catalogue.
struct ModelTable {
    int code;
    const char *name;
    std::int32_t memSize; ///< bytes
    int chnCount;
    int aChnCount;
    int transferMode; ///< 1 streaming, 0 device memory
    bool thresholds;
    bool pwm;
    std::span<const std::int64_t> rates; ///< Hz
    Depths depths;
    std::int64_t depthStarAbove;
    std::int64_t depthMax;
    std::int32_t frequDefault;
    std::int32_t depthDefault;
};

constexpr std::int64_t depth10G = 10000000000;

// clang-format off
constexpr ModelTable models[] = {
    {0,  "RV2520", 0x10000000, 16, 0, 0, true,  true,  rates500,       Depths::common,      100000000, depth10G,   1, 8},
    {1,  "RV2210", 0,          8,  0, 1, false, false, ratesEight,     Depths::common,      50000000,  depth10G,   1, 5},
    {2,  "RV2320", 0x8000000,  16, 0, 0, false, true,  rates100,       Depths::common,      50000000,  depth10G,   0, 7},
    {3,  "RV2420", 0x8000000,  16, 0, 0, false, true,  rates200,       Depths::common,      50000000,  depth10G,   1, 7},
    {4,  "RV2520", 0x4000000,  16, 0, 0, false, true,  rates500Binary, Depths::withoutLast, 30000000,  5000000000, 3, 6},
    {5,  "RV2310", 0,          16, 0, 1, true,  true,  ratesStream,    Depths::common,      50000000,  depth10G,   8, 4},
    {6,  "RV2320", 0x8000000,  16, 0, 0, true,  true,  rates100,       Depths::common,      50000000,  depth10G,   0, 7},
    {7,  "RV2420", 0x8000000,  16, 0, 0, true,  true,  rates200,       Depths::common,      50000000,  depth10G,   1, 7},
    {8,  "RV2520", 0x10000000, 16, 0, 0, true,  true,  rates500,       Depths::common,      100000000, depth10G,   1, 8},
    {9,  "RV2540", 0x20000000, 32, 0, 0, true,  true,  rates500,       Depths::common,      100000000, depth10G,   4, 4},
    {65, "RV2620", 0x10000000, 16, 0, 0, true,  true,  rates500,       Depths::common,      100000000, depth10G,   1, 8},
    {97, "RV2720", 32768,      16, 2, 0, true,  true,  rates100,       Depths::only8K,      50000000,  depth10G,   0, 0},
};
// clang-format on

const ModelTable &tableOf(int code)
{
    const auto *row = std::find_if(std::begin(models), std::end(models),
                                   [code](const ModelTable &table) { return table.code == code; });
    return row != std::end(models) ? *row : models[0];
}

/// A model: its constructor fills the tables from its row of the catalogue and loads the user's settings.
class DevModel : public DevBase {
public:
    using DevBase::receiveBulk;

protected:
    explicit DevModel(int code);

private:
    void fillTables(const ModelTable &table);
};

DevModel::DevModel(int code)
{
    const ModelTable &table = tableOf(code);
    fillTables(table);
    initRateLimits(table.transferMode);
    loadConfig();
    smpData = std::make_unique<SmpData>(table.chnCount, table.aChnCount);
}

void DevModel::fillTables(const ModelTable &table)
{
    model = table.code;
    name = QString::fromLatin1(table.name);
    memSize = table.memSize;
    chnEnable.fill(true, table.chnCount);
    aChnEnable.fill(true, table.aChnCount);
    if (table.thresholds) {
        features.append(devFeature::thresholds);
    }
    if (table.pwm) {
        features.append(devFeature::pwm);
    }
    smpFrequs = QVector<std::int64_t>(table.rates.begin(), table.rates.end());
    if (table.depths == Depths::withoutLast) {
        smpDepths.removeLast();
    } else if (table.depths == Depths::only8K) {
        smpDepths = {8000};
    }
    depthStarAbove = table.depthStarAbove;
    depthMax = table.depthMax;
    smpFrequDefault = table.frequDefault;
    smpDepthDefault = table.depthDefault;
}

/// The model of a program that has never seen hardware.
class DevNone final : public DevModel {
public:
    DevNone() : DevModel(0) {}

protected:
    int readIdentity(const QByteArray &identity, DevConnection &) override
    {
        readClocks(identity);
        return 1; // it can never become connected
    }
};

class DevRV2210 final : public DevModel {
public:
    DevRV2210() : DevModel(1) {}

protected:
    int readIdentity(const QByteArray &identity, DevConnection &) override
    {
        tuneChunkSize();
        if (!namesThisModel(identity)) {
            return DevConnection::errWrongModel;
        }
        clockFrequ = std::int64_t(identityByte(identity, 6)) * 1000000;
        pwmClock = 5 * clockFrequ;
        return 0;
    }
};

class DevRV2320 final : public DevModel {
public:
    DevRV2320() : DevModel(2) {}
};

class DevRV2420 final : public DevModel {
public:
    DevRV2420() : DevModel(3) {}
};

class DevRV2520 final : public DevModel {
public:
    DevRV2520() : DevModel(4) {}

protected:
    int readIdentity(const QByteArray &identity, DevConnection &connection) override
    {
        const int error = DevModel::readIdentity(identity, connection);
        pwmClock = 250000000;
        return error;
    }
};

class DevRV2310A final : public DevModel {
public:
    DevRV2310A() : DevModel(5) {}

protected:
    int readIdentity(const QByteArray &identity, DevConnection &connection) override
    {
        tuneChunkSize();
        return DevModel::readIdentity(identity, connection);
    }
};

class DevRV2320A final : public DevModel {
public:
    DevRV2320A() : DevModel(6) {}
};

class DevRV2420A final : public DevModel {
public:
    DevRV2420A() : DevModel(7) {}
};

class DevRV2520A final : public DevModel {
public:
    DevRV2520A() : DevModel(8) {}
};

class DevRV2540A final : public DevModel {
public:
    DevRV2540A() : DevModel(9) {}
};

class DevRV2620 final : public DevModel {
public:
    DevRV2620() : DevModel(65) {}
};

class DevRV2720 final : public DevModel {
public:
    DevRV2720() : DevModel(97) {}
};

std::unique_ptr<DevModel> makeModel(int code)
{
    switch (code) {
    case 1:
        return std::make_unique<DevRV2210>();
    case 2:
        return std::make_unique<DevRV2320>();
    case 3:
        return std::make_unique<DevRV2420>();
    case 4:
        return std::make_unique<DevRV2520>();
    case 5:
        return std::make_unique<DevRV2310A>();
    case 6:
        return std::make_unique<DevRV2320A>();
    case 7:
        return std::make_unique<DevRV2420A>();
    case 8:
        return std::make_unique<DevRV2520A>();
    case 9:
        return std::make_unique<DevRV2540A>();
    case 65:
        return std::make_unique<DevRV2620>();
    case 97:
        return std::make_unique<DevRV2720>();
    default:
        return std::make_unique<DevNone>();
    }
}

} // namespace

std::unique_ptr<DevBase> createDevice(int code)
{
    std::unique_ptr<DevModel> device = makeModel(code);
    device->receiveBulk();
    return device;
}

std::unique_ptr<const DevBase> createModel(int code)
{
    return makeModel(code);
}

int digitalChannelsOf(const ConfigDocument &settings)
{
    return tableOf(settings.global(QStringLiteral("devModel")).toInt()).chnCount;
}
