#include "Descriptors.h"

#include "ModelFacts.h"

namespace emulator {

namespace {

// Descriptor types and field values of the USB 2.0 specification, chapter 9.
constexpr std::uint8_t typeDevice = 1;
constexpr std::uint8_t typeConfiguration = 2;
constexpr std::uint8_t typeString = 3;
constexpr std::uint8_t typeInterface = 4;
constexpr std::uint8_t typeEndpoint = 5;
constexpr std::uint8_t vendorClass = 0xFF;
constexpr std::uint8_t controlPacketSize = 64;
constexpr std::uint8_t busPowered = 0x80;
constexpr std::uint8_t milliampsByTwo = 250;
constexpr std::uint8_t bulkTransfer = 2;
constexpr std::uint16_t englishUs = 0x0409;
constexpr std::uint8_t productStringIndex = 1;

std::uint8_t low(std::size_t word)
{
    return std::uint8_t(word);
}

std::uint8_t high(std::size_t word)
{
    return std::uint8_t(word >> 8);
}

void addEndpoint(Bytes &out, std::uint8_t address, std::size_t packet)
{
    out.insert(out.end(), {7, typeEndpoint, address, bulkTransfer, low(packet), high(packet), 0});
}

} // namespace

std::size_t bulkPacketSize(Speed speed)
{
    return speed == Speed::High ? 512 : 64;
}

Bytes deviceDescriptor(const DescriptorFacts &f)
{
    constexpr std::uint16_t release = 0x0100;
    return {18,
            typeDevice,
            low(f.bcdUsb),
            high(f.bcdUsb),
            vendorClass,
            0,
            0,
            controlPacketSize,
            low(vendorId),
            high(vendorId),
            low(f.product),
            high(f.product),
            low(release),
            high(release),
            0,
            productStringIndex,
            0,
            1};
}

Bytes configurationDescriptor(const DescriptorFacts &f)
{
    Bytes endpoints;
    if (f.firmwareRuns) {
        const std::size_t packet = bulkPacketSize(f.speed);
        if (bulkOutOf(f.product) != 0) {
            addEndpoint(endpoints, bulkOutOf(f.product), packet);
        }
        addEndpoint(endpoints, bulkInOf(f.product), packet);
    }
    const std::size_t total = 9 + 9 + endpoints.size();
    Bytes out{9, typeConfiguration, low(total), high(total), 1, 1, 0, busPowered, milliampsByTwo};
    const auto count = std::uint8_t(endpoints.size() / 7);
    out.insert(out.end(), {9, typeInterface, 0, 0, count, vendorClass, 0, 0, 0});
    out.insert(out.end(), endpoints.begin(), endpoints.end());
    return out;
}

Bytes stringDescriptor(const DescriptorFacts &f, std::uint8_t index)
{
    if (index == 0) {
        return {4, typeString, low(englishUs), high(englishUs)};
    }
    if (index != productStringIndex) {
        return {};
    }
    Bytes out{std::uint8_t(2 + 2 * f.productName.size()), typeString};
    for (const char c : f.productName) {
        out.insert(out.end(), {std::uint8_t(c), 0});
    }
    return out;
}

} // namespace emulator
