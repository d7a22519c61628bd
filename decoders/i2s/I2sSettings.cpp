#include "I2sSettings.h"

using lux::BitOrder;

I2sSettings::I2sSettings()
    : sck(*this, "sck", "Bit clock (SCK)", "The clock of the bits (BCLK)"),
      ws(*this, "ws", "Word select (WS)", "Tells left from right, or begins a frame (LRCLK, FSYNC)"),
      sd(*this, "sd", "Data (SD)", "The samples"),
      format(*this, "format", "Format", "Where a word stands behind a change of the word select",
             {{int(I2sFormat::I2s), "i2s", "I2S", "The highest bit one clock behind the change"},
              {int(I2sFormat::Left), "left|left-justified|lj", "Left-justified", "The highest bit at the change"},
              {int(I2sFormat::Right), "right|right-justified|rj", "Right-justified",
               "The lowest bit right before the change"},
              {int(I2sFormat::DspA), "pcm|dsp|dsp_a", "DSP/PCM mode A", "The first bit one clock behind the rise"},
              {int(I2sFormat::DspB), "dsp_b", "DSP/PCM mode B", "The first bit at the rise"},
              {int(I2sFormat::Tdm), "tdm", "TDM", "Several slots, the first one clock behind the rise"}},
             I2sFormat::I2s),
      bits(*this, "bits", "Bits per word", "0 for all bits that there are", {.least = 0, .most = mostBits}, 0),
      slotCount(*this, "slots", "Slots per frame", "0 for as many as there are; two for I2S, left and right",
                {.least = 0, .most = mostSlots}, 0),
      slotWidth(*this, "slot_width", "Clocks per slot", "0 for as many as a word has bits", {.least = 0, .most = 256},
                0),
      edge(*this, "edge", "Clock edge", "The edge of the bit clock at which bits are taken",
           {{int(I2sEdge::Rising), "rising|r", "Rising"}, {int(I2sEdge::Falling), "falling|f", "Falling"}},
           I2sEdge::Rising),
      bitOrder(*this, "bit_order", "Bit order", "Which bit of a word is sent first",
               {{int(BitOrder::MsbFirst), "msb|msb-first", "Highest first"},
                {int(BitOrder::LsbFirst), "lsb|lsb-first", "Lowest first"}},
               BitOrder::MsbFirst),
      left(*this, "left", "Left is", "The level of the word select for the left channel",
           {{int(I2sLeft::Usual), "auto", "As the format has it", "Low for I2S, high for left- and right-justified"},
            {int(I2sLeft::Low), "low|0", "Low"},
            {int(I2sLeft::High), "high|1", "High"}},
           I2sLeft::Usual),
      isSigned(*this, "signed", "", "Signed samples", "Two's complement, for decimal numbers and the wave file", true)
{
    addExport(Wave, "Sound", "Wave file", "wav");
}

bool I2sSettings::isStereo() const
{
    return format == I2sFormat::I2s || format == I2sFormat::Left || format == I2sFormat::Right;
}

bool I2sSettings::isLeftHigh() const
{
    return left == I2sLeft::Usual ? format != I2sFormat::I2s : left == I2sLeft::High;
}

std::string I2sSettings::check() const
{
    if (slotWidth.value() > 0 && slotWidth.value() < bits.value()) {
        return "A slot must have as many clocks as a word has bits";
    }
    return {};
}
