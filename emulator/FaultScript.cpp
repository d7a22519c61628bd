#include "FaultScript.h"

#include "Words.h"

#include <array>
#include <charconv>
#include <optional>
#include <utility>
#include <vector>

namespace emulator {

namespace {

using Number = std::uint64_t;

struct NamedRequest {
    std::string_view name;
    requests::Request request;
};

constexpr std::array<NamedRequest, 20> namedRequests{{{"ram-read", requests::ramRead},
                                                      {"fpga-start", requests::fpgaLoadStart},
                                                      {"fpga-done", requests::fpgaLoadDone},
                                                      {"fpga-enable", requests::fpgaEnable},
                                                      {"fpga-off", requests::fpgaOff},
                                                      {"status", requests::statusRead},
                                                      {"run", requests::run},
                                                      {"pwm-enable", requests::pwmEnable},
                                                      {"window", requests::readWindow},
                                                      {"info", requests::captureInfo},
                                                      {"samples", requests::sampleBlock},
                                                      {"trigger", requests::triggerBlock},
                                                      {"threshold1", requests::threshold1},
                                                      {"threshold2", requests::threshold2},
                                                      {"pwm0", requests::pwm0},
                                                      {"pwm1", requests::pwm1},
                                                      {"bulk-start", requests::bulkStart},
                                                      {"bulk-stop", requests::bulkStop},
                                                      {"uid-ask", requests::uidAsk},
                                                      {"uid-read", requests::uidRead}}};

std::optional<Number> numberOf(std::string_view text)
{
    const bool hex = text.starts_with("0x");
    text.remove_prefix(hex ? 2 : 0);
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, hex ? 16 : 10);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

/// `count` numbers with ":" between them, each at most `limit`.
std::optional<std::vector<Number>> numbersOf(std::optional<std::string_view> text, std::size_t count, Number limit)
{
    std::vector<Number> numbers;
    while (text) {
        const auto [first, rest] = parted(*text, ':');
        const std::optional<Number> number = numberOf(first);
        if (!number || *number > limit) {
            return std::nullopt;
        }
        numbers.push_back(*number);
        text = rest;
    }
    return numbers.size() == count ? std::optional(numbers) : std::nullopt;
}

/// "stall", or "shorten=5". @return nothing if it is no action
std::optional<Fault> actionOf(std::string_view text)
{
    constexpr Number longestDelay = 3'600'000; // an hour
    const auto [name, value] = parted(text, '=');
    if (name == "shorten" || name == "delay") {
        const bool delays = name == "delay";
        const auto amount = numbersOf(value, 1, delays ? longestDelay : std::numeric_limits<Number>::max());
        if (!amount) {
            return std::nullopt;
        }
        return Fault{delays ? FaultAction::Delay : FaultAction::Shorten,
                     delays ? amount->front() * nanosecondsPerMillisecond : amount->front()};
    }
    static constexpr std::array<std::pair<std::string_view, FaultAction>, 5> plain{{{"stall", FaultAction::Stall},
                                                                                    {"fail", FaultAction::Fail},
                                                                                    {"silence", FaultAction::Silence},
                                                                                    {"unplug", FaultAction::Unplug},
                                                                                    {"end", FaultAction::End}}};
    for (const auto &[known, action] : plain) {
        if (name == known && !value) {
            return Fault{action};
        }
    }
    return std::nullopt;
}

/// Adds `fault` at a place such as "read:512" or "status:3+".
std::string addAt(Faults &faults, Fault fault, std::string_view place)
{
    fault.repeats = place.ends_with('+');
    place.remove_suffix(fault.repeats ? 1 : 0);
    const auto [name, index] = parted(place, ':');
    const auto numbers = numbersOf(index, 1, std::numeric_limits<Number>::max());
    if (index && !numbers) {
        return "no number: " + std::string(*index);
    }
    const Number at = numbers ? numbers->front() : 0;
    const bool reads = name == "read" && numbers;
    if (reads ? fault.action == FaultAction::Shorten : fault.action == FaultAction::End) {
        return reads ? "reads are not shortened: they end" : "only reads end";
    }
    if (reads) {
        if (fault.repeats && fault.action == FaultAction::Delay) {
            return "a read is late once"; // it would find the same byte late again, for ever
        }
        faults.atInByte(at, std::move(fault));
        return {};
    }
    if (name == "transfer" && numbers) {
        if (fault.repeats) {
            return "each transfer comes once";
        }
        faults.atTransfer(at, std::move(fault));
        return {};
    }
    if (name == "write" && numbers) {
        faults.atOutByte(at, std::move(fault));
        return {};
    }
    for (const NamedRequest &known : namedRequests) {
        if (name == known.name) {
            faults.atRequest(known.request, at, std::move(fault));
            return {};
        }
    }
    return "no place: " + std::string(place);
}

/// Adds what has no place of its own, such as "status=0xFFFF".
std::string addWithoutPlace(Instrument &device, std::string_view word)
{
    constexpr Number any32 = 0xFFFFFFFF;
    const auto [name, value] = parted(word, '=');
    Faults &faults = device.faults();
    const RecordFormat format = device.memory().format();
    if (name == "never-return" && !value) {
        faults.neverReturn();
    } else if (const auto one = numbersOf(value, 1, 0xFFFF); name == "status" && one) {
        faults.setStatus(std::uint16_t(one->front()));
    } else if (const auto record = numbersOf(value, 1, any32); name == "zero-count" && record) {
        if (device.model().streams() || format == RecordFormat::Mixed16) {
            return "the model has no records with a count";
        }
        faults.zeroCountAt(format, record->front());
    } else if (const auto group = numbersOf(value, 1, any32); name == "wrong-check" && group) {
        if (device.model().streams() || format != RecordFormat::Rle32) {
            return "the model has no check bytes";
        }
        faults.wrongCheckAt(group->front());
    } else if (const auto byte = numbersOf(value, 2, std::numeric_limits<Number>::max());
               name == "byte" && byte && byte->back() <= 0xFF) {
        faults.patchIn(byte->front(), std::uint8_t(byte->back()));
    } else if (const auto info = numbersOf(value, 3, any32); name == "info" && info) {
        faults.setCaptureInfo(std::uint32_t((*info)[0]), std::uint32_t((*info)[1]), std::uint32_t((*info)[2]));
    } else {
        return "not understood";
    }
    return {};
}

} // namespace

std::string addFault(Instrument &device, std::string_view word)
{
    const auto [action, place] = parted(word, '@');
    std::string problem;
    if (!place) {
        problem = addWithoutPlace(device, word);
    } else if (std::optional<Fault> fault = actionOf(action)) {
        problem = addAt(device.faults(), std::move(*fault), *place);
    } else {
        problem = "no action: " + std::string(action);
    }
    return problem.empty() ? problem : "fault \"" + std::string(word) + "\": " + problem;
}

std::string addFaults(Instrument &device, std::string_view script)
{
    constexpr std::string_view blanks = " \t\r";
    std::optional<std::string_view> rest = script;
    for (int number = 1; rest; ++number) {
        const auto [line, below] = parted(*rest, '\n');
        rest = below;
        std::string_view words = parted(line, '#').first;
        while (words.find_first_not_of(blanks) != std::string_view::npos) {
            words.remove_prefix(words.find_first_not_of(blanks));
            const std::string_view word = words.substr(0, words.find_first_of(blanks));
            words.remove_prefix(word.size());
            if (const std::string problem = addFault(device, word); !problem.empty()) {
                return "line " + std::to_string(number) + ": " + problem;
            }
        }
    }
    return {};
}

} // namespace emulator
