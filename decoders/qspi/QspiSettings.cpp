#include "QspiSettings.h"

#include "common/ChannelList.h"
#include "common/DistinctChannels.h"

#include <vector>

using lux::Presence;

QspiSettings::QspiSettings()
    : clk(*this, "clk", "CLK", "The clock line"),
      cs(*this, "cs", "CS", "The select line of the chip, active low; transfers are shown on it"),
      io0(*this, "io0", "IO0", "The first data line (MOSI, DI)", Presence::Optional),
      io1(*this, "io1", "IO1", "The second data line (MISO, DO)", Presence::Optional),
      io2(*this, "io2", "IO2", "The third data line (WP)", Presence::Optional),
      io3(*this, "io3", "IO3", "The fourth data line (HOLD, RESET)", Presence::Optional),
      io(*this, "io", "Data lines", "Channels of IO0 to IO3 that are not chosen above, such as 3+2+5+4 or 4-7"),
      set(*this, "set", "Command set", "Commands that chips understand differently",
          {{int(QspiSet::Winbond), "winbond", "W25Q and alike"},
           {int(QspiSet::Macronix), "macronix", "MX25 and alike"},
           {int(QspiSet::Micron), "micron", "N25Q, MT25Q and alike"}},
          QspiSet::Winbond),
      qpi(*this, "qpi", "QPI", "The chip begins in QPI mode", "Commands are sent on four lines"),
      mode(*this, "mode", "Other commands", "Lines of command, address and data that the command set does not tell",
           {{int(QspiMode::Auto), "auto|111", "1-1-1, no address"},
            {int(QspiMode::M112), "112|1-1-2", "1-1-2"},
            {int(QspiMode::M122), "122|1-2-2", "1-2-2"},
            {int(QspiMode::M114), "114|1-1-4", "1-1-4"},
            {int(QspiMode::M144), "144|1-4-4", "1-4-4"},
            {int(QspiMode::M444), "444", "4: data alone", "No transfer has a command"}},
           QspiMode::Auto),
      address(*this, "address", "Address", "How many bytes an address has",
              {{0, "auto", "As the chip was told"}, {3, "3", "3 bytes"}, {4, "4", "4 bytes"}}, 0),
      dummy(*this, "dummy", "Dummy clocks", "Behind the address of fast reads; -1 for those of the command",
            {.least = dummyOfCommand, .most = 31}, dummyOfCommand),
      glitch(*this, "glitch", "Glitch filter (samples)", "Shorter pulses of CS are passed over",
             {.least = 0, .most = 1000000}, 0),
      clockEdge(*this, "clock_edge", "Clock edge", "At which data is taken",
                {{1, "rising", "Rising"}, {0, "falling", "Falling"}}, 1),
      word(*this, "word", "Clocks per word", "Of data without commands", {.least = 1, .most = 16}, 2),
      wordOrder(*this, "word_order", "Word order", "Which part of a word comes first in data without commands",
                {{int(QspiOrder::Big), "big", "The highest"}, {int(QspiOrder::Little), "little", "The lowest"}},
                QspiOrder::Big)
{
    addExport(ReadData, "Data that was read", "Binary file", "bin");
    addExport(WrittenData, "Data that was written", "Binary file", "bin");
    addExport(Transfers, "Transfers", "Text file", "txt");
    addExport(Transfers, "Transfers", "CSV file", "csv");
}

std::array<Channel, 4> QspiSettings::lines() const
{
    std::array<Channel, 4> all = {io0, io1, io2, io3};
    const auto listed = lux::channelList(io.value()).value_or(std::vector<Channel>());
    for (std::size_t i = 0; i < all.size() && i < listed.size(); ++i) {
        if (!all[i].isDefined()) {
            all[i] = listed[i];
        }
    }
    return all;
}

std::string QspiSettings::check() const
{
    const auto listed = lux::channelList(io.value());
    if (!listed || listed->size() > lines().size()) {
        return "The data lines are up to four channels, such as 3+2+5+4 or 4-7";
    }
    const std::array<Channel, 4> all = lines();
    if (!all[0].isDefined() && !all[1].isDefined()) {
        return "Choose a channel for IO0 or IO1";
    }
    const bool needsFour = qpi || mode == QspiMode::M444 || mode == QspiMode::M144 || mode == QspiMode::M114;
    if (needsFour && !(all[2].isDefined() && all[3].isDefined())) {
        return "Choose channels for all four data lines";
    }
    if (!lux::areDistinct({clk, cs, all[0], all[1], all[2], all[3]})) {
        return "All lines must be different channels";
    }
    return {};
}
