#include "usbip/Arguments.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace emulator::usbip {

namespace {

constexpr std::array<std::string_view, 6> withValue{"--listen", "--model", "--pace", "--signal", "--fault", "--script"};

template<typename Number>
bool parseNumber(const std::string &text, Number &number, Number least, Number most)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && number >= least && number <= most;
}

/// Takes an option that has a value. @return what is wrong; empty if nothing is
std::string takeValue(Arguments &arguments, const std::string &option, const std::string &value)
{
    constexpr int lastPort = 65535;
    constexpr double fastest = 1e6;
    if (option == "--listen") {
        return parseNumber(value, arguments.port, 0, lastPort) ? "" : "no port: " + value;
    }
    if (option == "--model") {
        int &model = arguments.options.model;
        return parseNumber(value, model, 0, lastPort) && findModel(model) != nullptr ? "" : "no model: " + value;
    }
    if (option == "--pace") {
        return parseNumber(value, arguments.options.pace, 0.0, fastest) ? "" : "no factor: " + value;
    }
    if (option == "--fault") {
        arguments.faults.push_back(value);
        return "";
    }
    if (option == "--signal" && AnalogWord::isOne(value)) {
        arguments.analog.push_back(AnalogWord::parse(value));
        return arguments.analog.back().problem;
    }
    if (value.empty()) {
        return option + " needs a file";
    }
    (option == "--signal" ? arguments.signal : arguments.script) = value;
    return "";
}

/// What contradicts itself in all words together. @return empty if nothing does
std::string contradiction(const Arguments &arguments, bool hasModel)
{
    if (!hasModel || (arguments.port < 0) == !arguments.vhci) {
        return "a model, and either --listen or --vhci, are needed";
    }
    const ModelFacts *model = findModel(arguments.options.model);
    for (const AnalogWord &word : arguments.analog) {
        if (model == nullptr || word.channel >= model->analogChannels) {
            return "the model has no analog channel " + std::to_string(word.channel + 1);
        }
    }
    return "";
}

/// Takes an option that stands alone. @return false if there is none of that name
bool takeFlag(Arguments &arguments, const std::string &word)
{
    if (word == "--vhci") {
        arguments.vhci = true;
    } else if (word == "--direct") {
        arguments.options.direct = true;
    } else if (word == "--firmware") {
        arguments.options.firmwareInside = true;
    } else if (word == "--full-speed") {
        arguments.options.speed = Speed::Full;
    } else if (word == "--help") {
        arguments.help = true;
    } else {
        return false;
    }
    return true;
}

} // namespace

Arguments parseArguments(const std::vector<std::string> &words)
{
    Arguments out;
    bool hasModel = false;
    for (std::size_t i = 0; i < words.size() && out.problem.empty(); ++i) {
        const std::size_t mark = words[i].find('=');
        const std::string option = words[i].substr(0, mark);
        if (std::find(withValue.begin(), withValue.end(), option) != withValue.end()) {
            hasModel = hasModel || option == "--model";
            if (mark != std::string::npos) {
                out.problem = takeValue(out, option, words[i].substr(mark + 1));
            } else if (++i < words.size()) {
                out.problem = takeValue(out, option, words[i]);
            } else {
                out.problem = option + " needs a value";
            }
        } else if (!takeFlag(out, words[i])) {
            out.problem = "unknown: " + words[i];
        }
    }
    if (out.problem.empty() && !out.help) {
        out.problem = contradiction(out, hasModel);
    }
    return out;
}

const char *usageText()
{
    return "Usage: corvanlux-emulator (--listen PORT | --vhci) --model CODE [OPTION...]\n"
           "\n"
           "Emulates an instrument of the models 1 to 9, 65 and 97, and offers it over USB/IP.\n"
           "\n"
           "  --listen PORT   offer it at 127.0.0.1:PORT (0: any free port; it is printed).\n"
           "                  Attach it with:  usbip --tcp-port PORT attach -r 127.0.0.1 -b 1-1\n"
           "  --vhci          plug it into this system's own virtual host controller; needs root and\n"
           "                  the kernel's module vhci-hcd\n"
           "  --model CODE    the model\n"
           "  --signal FILE   what lies on its inputs: a capture (.cxdat). Without it, a counter\n"
           "  --signal WORD   what lies on an analog input of model 97; may be given several times\n"
           "  --direct        take each sample of the file for a sample, whatever the rates\n"
           "  --pace FACTOR   seconds of sampling in a second; 0: as fast as the host reads. Default 1\n"
           "  --firmware      it runs its firmware already\n"
           "  --full-speed    12 Mbit/s instead of 480\n"
           "  --fault WORD    what goes wrong, and where; may be given several times\n"
           "  --script FILE   the same from a file\n"
           "  --help          this text\n"
           "\n"
           "An analog signal is chN=KIND[,KEY=VALUE...], as in ch1=sine,frequency=1000,vpp=3. N is 1 or 2.\n"
           "  kinds           flat, sine, square, ramp, noise, or wav for a WAVE file, again and again\n"
           "  keys            frequency=HERTZ, vpp=VOLTS (of a file: from its lowest to its highest value),\n"
           "                  offset=VOLTS, noise=VOLTS (from peak to peak), file=NAME (the last key)\n"
           "Without a word, ch1 has a sine of 100 kHz and ch2 a square wave of 50 kHz, both of 3 V.\n"
           "\n"
           "A fault is ACTION@PLACE, with \"+\" behind it for each time from then on. All counts begin at 0.\n"
           "  actions         stall, fail, silence, unplug, shorten=BYTES, delay=MILLISECONDS, end (of reads)\n"
           "  places          transfer:K (the Kth request or bulk write), read:BYTE, write:BYTE, or a request:\n"
           "                  ram-read, fpga-start, fpga-done, fpga-enable, fpga-off, status, run, pwm-enable,\n"
           "                  window, info, samples, trigger, threshold1, threshold2, pwm0, pwm1, bulk-start,\n"
           "                  bulk-stop, uid-ask, uid-read; NAME:N for the Nth of its kind\n"
           "  others          status=WORD, never-return, zero-count=RECORD, wrong-check=GROUP,\n"
           "                  byte=OFFSET:VALUE, info=RECORDS:TRIGGER:END\n"
           "\n"
           "Lines on the standard input are orders: unplug, plug, fault WORD, clear (of all faults), quit.\n";
}

} // namespace emulator::usbip
