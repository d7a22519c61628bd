#include "ModbusSettings.h"

using lux::Parity;
using lux::Presence;

ModbusSettings::ModbusSettings()
    : rx(*this, "rx", "RX", "The bus, or the line of one direction", Presence::Optional),
      tx(*this, "tx", "TX", "The line of the other direction", Presence::Optional),
      mode(*this, "mode", "Mode", "How bytes are sent",
           {{int(ModbusMode::Rtu), "rtu", "RTU"}, {int(ModbusMode::Ascii), "ascii", "ASCII"}}, ModbusMode::Rtu),
      baudrate(*this, "baudrate", "Bit rate (bits/s)", "0 finds the rate from the edges of the capture",
               {.least = 0, .most = highestRate}, 0),
      dataBits(*this, "data_bits", "Data bits", "RTU has 8, ASCII 7 as a rule", {.least = 7, .most = 8}, 8),
      parity(*this, "parity", "Parity", "The bit behind the data",
             {{int(Parity::None), "none", "None"},
              {int(Parity::Odd), "odd", "Odd"},
              {int(Parity::Even), "even", "Even"},
              {int(Parity::Mark), "mark|one", "Mark"},
              {int(Parity::Space), "space|zero", "Space"},
              {int(Parity::Ignored), "ignore|ignored", "Not checked", "The bit is there and may have any value"}},
             Parity::None),
      stopBits(*this, "stop_bits", "Stop bits", "The shortest idle time between two characters",
               {{4, "1", "1"}, {6, "1.5", "1.5"}, {8, "2", "2"}}, 4),
      invertRx(*this, "invert_rx", "Polarity of RX", "Inverted", "The line is low while it is idle"),
      invertTx(*this, "invert_tx", "Polarity of TX", "Inverted", "The line is low while it is idle"),
      role(*this, "role", "RX is sent by", "Who sends on the RX line",
           {{int(ModbusRole::Auto), "auto", "Either", "What is a request is told from the frames"},
            {int(ModbusRole::Master), "master", "Master", "RX has the requests"},
            {int(ModbusRole::Slave), "slave", "Slaves", "RX has the responses"}},
           ModbusRole::Auto)
{
    addExport(Registers, "Registers, a line each", "CSV file", "csv");
}

lux::AsyncFormat ModbusSettings::format(bool inverted) const
{
    return {.dataBits = unsigned(dataBits.value()),
            .parity = parity,
            .stopQuarters = unsigned(stopBits.value()),
            .idleHigh = !inverted};
}

std::string ModbusSettings::check() const
{
    if (!rx.isDefined() && !tx.isDefined()) {
        return "Choose a channel for RX or TX";
    }
    if (mode == ModbusMode::Rtu && dataBits.value() != 8) {
        return "RTU needs 8 data bits";
    }
    return {};
}
