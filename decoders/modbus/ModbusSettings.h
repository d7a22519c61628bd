#pragma once

#include "common/AsyncLine.h"

#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>
#include <string>

/// How bytes are sent (Modbus over serial line V1.02, 2.5).
enum class ModbusMode : std::uint8_t { Rtu, Ascii };

/// Who sends on the RX line.
enum class ModbusRole : std::uint8_t { Auto, Master, Slave };

/// The settings of a Modbus serial line.
class ModbusSettings final : public lux::Settings {
public:
    static constexpr std::int32_t highestRate = 100000000; ///< bits/s
    enum Export : std::uint32_t { Registers = 1 };

    ModbusSettings();

    lux::ChannelSetting rx;
    lux::ChannelSetting tx;
    lux::ChoiceSetting<ModbusMode> mode;
    lux::IntegerSetting baudrate; ///< bits/s, 0 to find it
    lux::IntegerSetting dataBits;
    lux::ChoiceSetting<lux::Parity> parity;
    lux::NumberListSetting stopBits; ///< quarters of a bit
    lux::BoolSetting invertRx;
    lux::BoolSetting invertTx;
    lux::ChoiceSetting<ModbusRole> role;

    [[nodiscard]] lux::AsyncFormat format(bool inverted) const;

protected:
    [[nodiscard]] std::string check() const override;
};
