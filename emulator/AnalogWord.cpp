#include "AnalogWord.h"

#include "Words.h"

#include <array>
#include <charconv>
#include <optional>
#include <utility>
#include <vector>

namespace emulator {

namespace {

using Kind = AnalogWave::Kind;

constexpr std::string_view channelMark = "ch";

struct NamedKind {
    std::string_view name;
    Kind kind;
    bool isFile;
    std::vector<std::string_view> keys; ///< that have a meaning
};

const std::array<NamedKind, 6> &namedKinds()
{
    static const std::array<NamedKind, 6> kinds{
        {{"flat", Kind::Flat, false, {"offset", "noise"}},
         {"sine", Kind::Sine, false, {"frequency", "vpp", "offset", "noise"}},
         {"square", Kind::Square, false, {"frequency", "vpp", "offset", "noise"}},
         {"ramp", Kind::Ramp, false, {"frequency", "vpp", "offset", "noise"}},
         {"noise", Kind::Noise, false, {"vpp", "offset"}},
         {"wav", Kind::Flat, true, {"vpp", "offset", "noise", "file"}}}};
    return kinds;
}

/// Takes a number from `least` to `most`. @return what is wrong with it; empty if nothing is
std::string takeNumber(std::string_view text, double least, double most, double &number)
{
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
        return "no number: " + std::string(text);
    }
    if (!(value >= least && value <= most)) {
        return "out of range: " + std::string(text);
    }
    number = value;
    return {};
}

std::string takeValue(AnalogWord &word, std::string_view key, std::string_view value)
{
    constexpr double lowestFrequency = 1e-3; // Hz
    constexpr double highestFrequency = 1e9;
    constexpr double mostVolts = 1000;
    AnalogWave::Settings &settings = word.settings;
    if (key == "frequency") {
        return takeNumber(value, lowestFrequency, highestFrequency, settings.frequency);
    }
    if (key == "vpp") {
        return takeNumber(value, 0, mostVolts, settings.peakToPeak);
    }
    if (key == "offset") {
        return takeNumber(value, -mostVolts, mostVolts, settings.offset);
    }
    if (key == "noise") {
        return takeNumber(value, 0, mostVolts, settings.noise);
    }
    word.file = value;
    return value.empty() ? "file needs a name" : "";
}

/// Takes "KIND[,KEY=VALUE...]". @return what is wrong with it; empty if nothing is
std::string takeAll(AnalogWord &word, std::string_view text)
{
    auto [name, rest] = parted(text, ',');
    const auto kind = std::find_if(namedKinds().begin(), namedKinds().end(),
                                   [name = name](const NamedKind &known) { return known.name == name; });
    if (kind == namedKinds().end()) {
        return "no kind: " + std::string(name);
    }
    word.settings.kind = kind->kind;
    if (kind->isFile) {
        word.settings.peakToPeak = highestVolts - lowestVolts;
    }
    std::vector<std::string_view> seen;
    while (rest) {
        const auto [key, behind] = parted(*rest, '=');
        if (std::find(kind->keys.begin(), kind->keys.end(), key) == kind->keys.end()) {
            return std::string(name) + " has no " + std::string(parted(key, ',').first);
        }
        if (std::find(seen.begin(), seen.end(), key) != seen.end()) {
            return "twice: " + std::string(key);
        }
        seen.push_back(key);
        const bool isLast = key == "file"; // its name may hold commas
        const auto [value, next] = isLast ? std::pair(behind.value_or(""), std::optional<std::string_view>())
                                          : parted(behind.value_or(""), ',');
        if (std::string problem = takeValue(word, key, value); !problem.empty()) {
            return problem;
        }
        rest = next;
    }
    return kind->isFile && word.file.empty() ? "wav needs a file" : "";
}

} // namespace

bool AnalogWord::isOne(std::string_view word)
{
    const std::string_view name = parted(word, '=').first;
    return name.size() < word.size() && name.size() > channelMark.size() && name.starts_with(channelMark) &&
           name.find_first_not_of("0123456789", channelMark.size()) == std::string_view::npos;
}

AnalogWord AnalogWord::parse(std::string_view text)
{
    AnalogWord word;
    const auto [name, what] = parted(text, '=');
    const std::string_view number = name.substr(std::min(channelMark.size(), name.size()));
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), word.channel);
    if (!isOne(text) || error != std::errc() || word.channel < 1) {
        word.problem = "no channel: " + std::string(name);
    } else {
        --word.channel;
        word.problem = takeAll(word, what.value_or(""));
    }
    if (!word.problem.empty()) {
        word.problem = "signal \"" + std::string(text) + "\": " + word.problem;
    }
    return word;
}

} // namespace emulator
