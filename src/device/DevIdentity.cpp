#include "device/DevIdentity.h"

#include <QFile>

#include <algorithm>
#include <iterator>

namespace devIdentity {

namespace {

constexpr std::uint16_t productWithoutIdentity = 0x01A1;
constexpr Model modelWithoutIdentity{4, 0};

struct NamedImage {
    int key; ///< product id or model code
    int variant;
    const char *name;
};

constexpr NamedImage firmwares[] = {
    {0x01A1, 0, ":/fwusb/fw01A1"}, {0x01A2, 0, ":/fwusb/fw01A2"}, {0x01A3, 0, ":/fwusb/fw01A3"},
    {0x01A4, 0, ":/fwusb/fw01A4"}, {0x03A1, 0, ":/fwusb/fw03A1"},
};

constexpr NamedImage fpgaImages[] = {
    {2, 0, ":/fwfpga/RV2320"},    {3, 0, ":/fwfpga/RV2420"},   {4, 0, ":/fwfpga/RV2520"},  {5, 0, ":/fwfpga/RV2310A_0"},
    {5, 1, ":/fwfpga/RV2310A_1"}, {6, 0, ":/fwfpga/RV2320A"},  {7, 0, ":/fwfpga/RV2420A"}, {8, 0, ":/fwfpga/RV2520A"},
    {9, 0, ":/fwfpga/RV2540A"},   {65, 0, ":/fwfpga/RV2520A"}, {97, 0, ":/fwfpga/RV2720"},
};

QString present(std::span<const NamedImage> images, int key, int variant)
{
    const auto found = std::find_if(images.begin(), images.end(), [key, variant](const NamedImage &image) {
        return image.key == key && image.variant == variant;
    });
    const QString name = found != images.end() ? QString::fromLatin1(found->name) : QString();
    return QFile::exists(name) ? name : QString();
}

bool isComplement(std::uint8_t value, std::uint8_t other)
{
    return (value ^ other) == 0xFF;
}

/// The identity byte: the first copy that agrees with its complement; 0 when neither does.
int identityOf(std::span<const std::uint8_t, identitySize> bytes)
{
    if (isComplement(bytes[0], bytes[1])) {
        return bytes[0];
    }
    return isComplement(bytes[4], bytes[5]) ? bytes[4] : 0;
}

} // namespace

std::uint16_t hardwareVersionOf(std::span<const std::uint8_t, versionSize> bytes)
{
    const auto version = std::uint16_t(bytes[0] | bytes[1] << 8);
    const auto complement = std::uint16_t(bytes[2] | bytes[3] << 8);
    return (version ^ complement) == 0xFFFF ? version : std::uint16_t(0);
}

Model modelOf(std::uint16_t product, std::span<const std::uint8_t, identitySize> bytes)
{
    if (product == productWithoutIdentity) {
        return modelWithoutIdentity;
    }
    // The first copy alone tells the later builds of two models.
    const bool later = bytes[2] == 1 && isComplement(bytes[2], bytes[3]);
    switch (identityOf(bytes)) {
    case 1:
        return {1, 0};
    case 2:
        return {later ? 7 : 3, 0};
    case 3:
        return {later ? 6 : 2, 0};
    case 4:
        return {5, 0};
    case 5:
        return {8, 0};
    case 6:
        return {9, 0};
    case 7:
        return {5, 1};
    case 8:
        return {7, 0};
    case 9:
        return {6, 0};
    case 65:
        return {65, 0};
    case 97:
        return {97, 0};
    default:
        return {};
    }
}

QString firmwareOf(std::uint16_t product)
{
    return present(firmwares, product, 0);
}

QString fpgaImageOf(const Model &model)
{
    return present(fpgaImages, model.code, model.variant);
}

} // namespace devIdentity
