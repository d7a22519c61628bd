#pragma once

#include <cstdint>
#include <span>

namespace emulator {

/// How firmware reaches the controller.
enum class FirmwareFormat {
    HexRecords, ///< writes to the RAM of a controller that is held in reset through its control register
    Image       ///< sections at 32-bit addresses and a start address
};

/// What tells the models apart on the wire. The clocks are those of the boards: each divides exactly into all sample
/// rates that the model offers.
struct ModelFacts {
    int code;
    const char *name;      ///< six characters
    std::uint16_t product; ///< the USB product that the model usually comes as
    int channels;          ///< digital
    int analogChannels;
    std::uint32_t memorySize;  ///< bytes; 0 for a model that streams
    std::uint16_t clockMhz;    ///< of the sample divider
    std::uint16_t pwmClockMhz; ///< of the PWM outputs
    std::uint8_t identity;     ///< identity byte in the EEPROM; 0 for a model that has none
    std::uint8_t variant;      ///< variant byte behind it

    [[nodiscard]] bool streams() const { return memorySize == 0; }
    /// One byte a sample instead of words of 16 samples.
    [[nodiscard]] bool streamsBytes() const { return streams() && channels == 8; }
    /// Loads no FPGA image.
    [[nodiscard]] bool hasNoFpgaImage() const { return code == 1; }
};

/// All eleven models, by rising code.
[[nodiscard]] std::span<const ModelFacts> allModels();

/// @return null for a code that is no model
[[nodiscard]] const ModelFacts *findModel(int code);

constexpr std::uint16_t vendorId = 0x77A1;

/// The products that instruments come as.
[[nodiscard]] std::span<const std::uint16_t> allProducts();

[[nodiscard]] FirmwareFormat firmwareFormatOf(std::uint16_t product);
/// End point addresses of a product that runs firmware; 0 for none.
[[nodiscard]] std::uint8_t bulkInOf(std::uint16_t product);
[[nodiscard]] std::uint8_t bulkOutOf(std::uint16_t product);

} // namespace emulator
