#pragma once

#include "AnalogWord.h"
#include "Instrument.h"

#include <string>
#include <vector>

namespace emulator::usbip {

/// What the command line of corvanlux-emulator asks for. docs/emulator.md tells it to the user.
struct Arguments {
    InstrumentOptions options;
    int port = -1; ///< -1: not to listen
    bool vhci = false;
    bool help = false;
    std::string signal;              ///< a file; empty for the generator
    std::vector<AnalogWord> analog;  ///< what lies on analog inputs, in order; the last of a channel counts
    std::vector<std::string> faults; ///< words for addFault(), in order
    std::string script;              ///< a file of such words; empty for none
    std::string problem;             ///< why the words are refused; empty for good ones
};

/// @param words  those behind the program's name. A value follows its option, or stands behind a "=" in the same word
[[nodiscard]] Arguments parseArguments(const std::vector<std::string> &words);

/// The text of --help.
[[nodiscard]] const char *usageText();

} // namespace emulator::usbip
