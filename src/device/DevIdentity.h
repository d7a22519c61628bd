#pragma once

#include <QString>

#include <array>
#include <cstdint>
#include <span>

/// What an instrument tells of itself before its model is known, and which compiled-in images belong to it. All pure
/// but for the two that look into the resources; any thread.
namespace devIdentity {

// The identity EEPROM of the USB controller.
constexpr std::uint16_t identityAt = 0x08; ///< identity byte and variant byte, each with its complement, twice
constexpr std::uint16_t identitySize = 8;
constexpr std::uint16_t blockAt = 0x10; ///< the identity block, see DevBase::initDevice()
constexpr std::uint16_t blockSize = 12;
constexpr std::uint16_t versionAt = 0x20; ///< hardware version and its complement, 16 bits each, little-endian
constexpr std::uint16_t versionSize = 4;

/// A model and which of its FPGA images it wants. Model 0: none that this program knows.
struct Model {
    int code = 0;
    int variant = 0;
    bool operator==(const Model &) const = default;
};

/// The hardware version; 0 when its complement does not agree.
[[nodiscard]] std::uint16_t hardwareVersionOf(std::span<const std::uint8_t, versionSize> bytes);

/// The model by the EEPROM's 8 bytes. The product that has no identity is told by its USB product id.
[[nodiscard]] Model modelOf(std::uint16_t product, std::span<const std::uint8_t, identitySize> bytes);

/// The resource with the controller's firmware; empty for a product that has none, or when this program was built
/// without it.
[[nodiscard]] QString firmwareOf(std::uint16_t product);

/// The resource with the FPGA's image; empty for a model that has none, for a code that is no model, and when this
/// program was built without it.
[[nodiscard]] QString fpgaImageOf(const Model &model);

} // namespace devIdentity
