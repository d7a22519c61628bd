#include "LcdSettings.h"

#include "common/DistinctChannels.h"

#include <algorithm>

using lux::Presence;

namespace {

constexpr unsigned ofByte = 8;
constexpr unsigned ofNibble = 4;

} // namespace

LcdSettings::LcdSettings()
    : rs(*this, "rs", "RS (D/I)", "Low for an instruction, high for data"),
      rw(*this, "rw", "R/W", "High for a read; without it all are writes", Presence::Optional),
      e(*this, "e", "Enable (E)", "Data is taken where it falls"),
      row(*this, "d", "Data lines from", "The first of four or eight data lines on channels in a row; else choose each",
          Presence::Optional),
      data(*this, ofByte),
      cs1(*this, "cs1", "CS1", "Selects the left half of a KS0108", Presence::Optional),
      cs2(*this, "cs2", "CS2", "Selects the right half of a KS0108", Presence::Optional),
      controller(*this, "controller", "Controller", "Tells the names of instructions",
                 {{int(LcdController::Hd44780), "hd44780", "HD44780", "Characters: 1602, 2004"},
                  {int(LcdController::St7920), "st7920", "ST7920", "Characters and graphics: 12864"},
                  {int(LcdController::Ks0108), "ks0108", "KS0108", "Graphics: 12864"}},
                 LcdController::Hd44780),
      width(*this, "bits", "Data lines", "How many data lines the bus has",
            {{0, "auto", "Automatic", "Eight when all of them have a channel"}, {4, "4", "4"}, {8, "8", "8"}}, 0)
{
    addExport(ShownText, "Text as shown", "Text file", "txt");
}

unsigned LcdSettings::lines() const
{
    if (controller == LcdController::Ks0108) {
        return ofByte;
    }
    if (width.value() != 0) {
        return unsigned(width.value());
    }
    for (unsigned i = 0; i < ofByte; ++i) {
        if (!data[i].isDefined()) {
            return ofNibble;
        }
    }
    return row.isDefined() ? ofNibble : ofByte;
}

/// Four lines are those of the upper half, as on the display, or D0 to D3 where only those are chosen.
std::vector<Channel> LcdSettings::bus() const
{
    const unsigned count = lines();
    const unsigned first = count == ofNibble && data.width() > ofNibble + 1 ? ofNibble : 0;
    std::vector<Channel> channels;
    for (unsigned i = 0; i < count; ++i) {
        channels.push_back(row.isDefined() ? Channel(0, row.value().channelIndex + i) : data[first + i]);
    }
    return channels;
}

std::string LcdSettings::check() const
{
    std::vector<Channel> lines = bus();
    if (std::any_of(lines.begin(), lines.end(), [](const Channel &line) { return !line.isDefined(); })) {
        return "Choose a channel for each data line: D4 to D7, or D0 to D7";
    }
    lines.insert(lines.end(), {rs, rw, e, cs1, cs2});
    if (!lux::areDistinct(lines)) {
        return "All lines must be different channels";
    }
    return {};
}
