#pragma once

#include "Instrument.h"

#include <string>
#include <string_view>

namespace emulator {

/// Adds what goes wrong, told in one word, to the faults of an instrument:
///
///     ACTION@PLACE      stall, fail, silence, unplug, shorten=BYTES, delay=MILLISECONDS, end; where it strikes once
///     ACTION@PLACE+     the same from then on, each time
///     status=WORD  never-return  zero-count=RECORD  wrong-check=GROUP  byte=OFFSET:VALUE  info=RECORDS:TRIGGER:END
///
/// A PLACE is `transfer:K` (request or bulk write K), `read:BYTE` or `write:BYTE` (of the bulk pipe's run), or the name
/// of a request, with `:N` behind it for the Nth of its kind. All count from 0, as Faults tells. Numbers are decimal,
/// or hexadecimal behind 0x. docs/emulator.md tells it to the user, with the names of the requests.
/// @return what is wrong with the word; empty if nothing is, and nothing is added otherwise
[[nodiscard]] std::string addFault(Instrument &device, std::string_view word);

/// Adds the faults of a whole script: words parted by blanks and line ends; what follows a "#" on its line is a remark.
/// @return what is wrong with the first bad word, with its line; empty if nothing is. The words before it were added
[[nodiscard]] std::string addFaults(Instrument &device, std::string_view script);

} // namespace emulator
