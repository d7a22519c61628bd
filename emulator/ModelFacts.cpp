#include "ModelFacts.h"

#include <algorithm>
#include <array>

namespace emulator {

namespace {

constexpr std::uint16_t streamOnlyProduct = 0x01A3;
constexpr std::uint16_t imageProduct = 0x01A4;

constexpr std::array<ModelFacts, 11> models{{
    {1, "RV2210", 0x01A3, 8, 0, 0, 48, 240, 1, 0},
    {2, "RV2320", 0x01A2, 16, 0, 0x8000000, 100, 200, 3, 0},
    {3, "RV2420", 0x01A2, 16, 0, 0x8000000, 200, 200, 2, 0},
    {4, "RV2520", 0x01A1, 16, 0, 0x4000000, 500, 250, 0, 0},
    {5, "RV2310", 0x01A2, 16, 0, 0, 800, 200, 4, 0},
    {6, "RV2320", 0x01A2, 16, 0, 0x8000000, 100, 200, 9, 0},
    {7, "RV2420", 0x01A2, 16, 0, 0x8000000, 200, 200, 8, 0},
    {8, "RV2520", 0x01A2, 16, 0, 0x10000000, 1000, 200, 5, 0},
    {9, "RV2540", 0x01A4, 32, 0, 0x20000000, 1000, 200, 6, 0},
    {65, "RV2620", 0x01A4, 16, 0, 0x10000000, 1000, 200, 65, 0},
    {97, "RV2720", 0x03A1, 16, 2, 0x8000, 100, 200, 97, 0},
}};

constexpr std::array<std::uint16_t, 10> products{0x01A1, 0x01A2, 0x01A3, 0x01A4, 0x02A1,
                                                 0x02A2, 0x02A3, 0x03A1, 0x03A2, 0x03A3};

} // namespace

std::span<const ModelFacts> allModels()
{
    return models;
}

const ModelFacts *findModel(int code)
{
    const auto found =
        std::find_if(models.begin(), models.end(), [code](const ModelFacts &model) { return model.code == code; });
    return found == models.end() ? nullptr : &*found;
}

std::span<const std::uint16_t> allProducts()
{
    return products;
}

FirmwareFormat firmwareFormatOf(std::uint16_t product)
{
    return product == imageProduct ? FirmwareFormat::Image : FirmwareFormat::HexRecords;
}

std::uint8_t bulkInOf(std::uint16_t product)
{
    return product == streamOnlyProduct ? 0x82 : 0x86;
}

std::uint8_t bulkOutOf(std::uint16_t product)
{
    return product == streamOnlyProduct ? 0x00 : 0x02;
}

} // namespace emulator
