#include "MidiSettings.h"

MidiSettings::MidiSettings()
    : rx(*this, "rx", "MIDI", "The line behind the optocoupler"),
      baudrate(*this, "baudrate", "Bit rate (bits/s)", "The standard has 31250; 0 finds the rate from the edges",
               {.least = 0, .most = highestRate}, standardRate),
      invert(*this, "invert", "Polarity", "Inverted", "The line is low while it is idle")
{
    addExport(StandardMidiFile, "Standard MIDI File", "MIDI file", "mid");
}
