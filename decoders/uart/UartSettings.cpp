#include "UartSettings.h"

using lux::BitOrder;
using lux::Parity;
using lux::Presence;

UartSettings::UartSettings()
    : rx(*this, "rx", "RX", "The line to decode", Presence::Optional),
      tx(*this, "tx", "TX", "The line of the other direction", Presence::Optional),
      baudrate(*this, "baudrate", "Bit rate (bits/s)", "0 finds the rate from the edges of the capture",
               {.least = 0, .most = highestRate}, 0),
      dataBits(*this, "data_bits", "Data bits", "Bits of a character without start, parity and stop",
               {.least = 5, .most = 9}, 8),
      parity(*this, "parity", "Parity", "The bit behind the data",
             {{int(Parity::None), "none", "None"},
              {int(Parity::Odd), "odd", "Odd", "The number of ones is odd"},
              {int(Parity::Even), "even", "Even", "The number of ones is even"},
              {int(Parity::Mark), "mark|one", "Mark", "Always 1"},
              {int(Parity::Space), "space|zero", "Space", "Always 0"},
              {int(Parity::Ignored), "ignore|ignored", "Not checked", "The bit is there and may have any value"}},
             Parity::None),
      stopBits(*this, "stop_bits", "Stop bits", "The shortest idle time between two characters",
               {{2, "0.5", "0.5"}, {4, "1", "1"}, {6, "1.5", "1.5"}, {8, "2", "2"}}, 4),
      invert(*this, "invert", "Polarity", "Inverted", "The line is low while it is idle, as on RS-232 itself"),
      invertRx(*this, "invert_rx", "Polarity of RX", "Inverted", "RX is low while it is idle, whatever TX is"),
      invertTx(*this, "invert_tx", "Polarity of TX", "Inverted", "TX is low while it is idle, whatever RX is"),
      bitOrder(*this, "bit_order", "Bit order", "Which bit of the data is sent first",
               {{int(BitOrder::LsbFirst), "lsb|lsb-first", "Lowest first"},
                {int(BitOrder::MsbFirst), "msb|msb-first", "Highest first"}},
               BitOrder::LsbFirst),
      addressBit(*this, "address_bit", "Ninth bit", "Marks an address",
                 "With 9 data bits: a character whose last bit is 1 addresses a device"),
      idleBits(*this, "idle_bits", "Idle time (bits)", "Pauses of at least this length are shown; 0 shows none",
               {.least = 0, .most = 1000000}, 0)
{
    addExport(RxBytes, "Bytes of RX", "Binary file", "bin");
    addExport(TxBytes, "Bytes of TX", "Binary file", "bin");
}

lux::AsyncFormat UartSettings::format(bool ownInvert) const
{
    return {.dataBits = unsigned(dataBits.value()),
            .parity = parity,
            .stopQuarters = unsigned(stopBits.value()),
            .order = bitOrder,
            .idleHigh = !(invert || ownInvert)};
}

std::string UartSettings::check() const
{
    if (!rx.isDefined() && !tx.isDefined()) {
        return "Choose a channel for RX or TX";
    }
    if (addressBit && dataBits.value() != 9) {
        return "An address bit needs 9 data bits";
    }
    return {};
}
