#include "ManchesterSettings.h"

using lux::BitOrder;

ManchesterSettings::ManchesterSettings()
    : data(*this, "data", "Data", "The line to decode"),
      decodeAs(*this, "decodeas", "Code", "Where the edges of a bit are",
               {{int(BiphaseCode::Manchester), "Manchester", "Manchester", "The middle edge's direction is the bit"},
                {int(BiphaseCode::Differential), "differential|differential-manchester", "Differential Manchester",
                 "An edge in the middle; one at the begin for a 0"},
                {int(BiphaseCode::Mark), "mark|biphase-mark", "Biphase mark",
                 "An edge at the begin; one in the middle for a 1"},
                {int(BiphaseCode::Space), "space|biphase-space", "Biphase space",
                 "An edge at the begin; one in the middle for a 0"}},
               BiphaseCode::Manchester),
      convention(*this, "convention", "Convention", "Which edge in the middle of a bit is a 1",
                 {{int(ManchesterSense::Auto), "auto", "Auto",
                   "A falling one; on a line that rests high that of the first bit"},
                  {int(ManchesterSense::Rising), "802.3|ieee|ieee-802.3|ieee802.3", "IEEE 802.3", "A rising one"},
                  {int(ManchesterSense::Falling), "thomas|ge-thomas", "G. E. Thomas", "A falling one"}},
                 ManchesterSense::Auto),
      polarity(*this, "polarity", "Polarity", "Which level is active: the line rests at the other one",
               {{int(ManchesterPolarity::Auto), "auto", "Auto", "As the longest pause tells"},
                {int(ManchesterPolarity::High), "high|active-high|1", "High"},
                {int(ManchesterPolarity::Low), "low|active-low|0", "Low"}},
               ManchesterPolarity::Auto),
      bitrate(*this, "bitrate", "Bit rate (bits/s)",
              "0 finds the rate from the edges; so does a rate that does not fit them",
              {.least = 0, .most = highestRate}, 0),
      preamble(*this, "preamble", "Preamble", "Bits of 0 and 1 from which on a run is shown; empty for all of it"),
      bits(*this, "bits", "Word length (bits)", "0 shows all bits of a run as one", {.least = 0, .most = mostWordBits},
           0),
      bitOrder(*this, "bit_order", "Bit order", "Which bit of a word is sent first",
               {{int(BitOrder::MsbFirst), "msb|msb-first", "Highest first"},
                {int(BitOrder::LsbFirst), "lsb|lsb-first", "Lowest first"}},
               BitOrder::MsbFirst),
      format(*this, "format", "Show runs as", "How the bits of a run are written",
             {{int(ManchesterFormat::Words), "words|bytes|hex", "Bytes", "In the display format"},
              {int(ManchesterFormat::Ascii), "ascii|bin", "0 and 1"}},
             ManchesterFormat::Ascii)
{}

std::string ManchesterSettings::preambleBits() const
{
    return preamble.value() == "auto" ? std::string() : preamble.value();
}

std::string ManchesterSettings::check() const
{
    if (preambleBits().find_first_not_of("01") != std::string::npos) {
        return "The preamble has other characters than 0 and 1";
    }
    return {};
}
