#pragma once

#include "common/AsyncLine.h"

#include <corvanlux/analyzer/Decoder.h>
#include <cstdint>
#include <string>

/// The settings of an asynchronous serial interface.
class UartSettings final : public lux::Settings {
public:
    static constexpr std::int32_t highestRate = 1000000000; ///< bits/s
    enum Export : std::uint32_t { RxBytes = 1, TxBytes = 2 };

    UartSettings();

    lux::ChannelSetting rx;
    lux::ChannelSetting tx;
    lux::IntegerSetting baudrate; ///< bits/s, 0 to find it
    lux::IntegerSetting dataBits;
    lux::ChoiceSetting<lux::Parity> parity;
    lux::NumberListSetting stopBits; ///< quarters of a bit
    lux::BoolSetting invert;         ///< both lines
    lux::BoolSetting invertRx;
    lux::BoolSetting invertTx;
    lux::ChoiceSetting<lux::BitOrder> bitOrder;
    lux::BoolSetting addressBit;
    lux::IntegerSetting idleBits;

    /// @param ownInvert  that of the line, `invertRx` or `invertTx`
    [[nodiscard]] lux::AsyncFormat format(bool ownInvert) const;

protected:
    [[nodiscard]] std::string check() const override;
};
