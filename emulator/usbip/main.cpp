// corvanlux-emulator: an emulated instrument on a USB port of this machine, over USB/IP.

#include "CxdatSignal.h"
#include "WaveSignal.h"
#include "usbip/UsbIpServer.h"

#include <algorithm>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

constexpr int wrongUse = 2;
constexpr int failure = 1;

constexpr const char *usage =
    "Usage: corvanlux-emulator (--listen PORT | --vhci) --model CODE [OPTION...]\n"
    "\n"
    "Emulates an instrument of the models 1 to 9, 65 and 97, and offers it over USB/IP.\n"
    "\n"
    "  --listen PORT   offer it at 127.0.0.1:PORT (0: any free port; it is printed).\n"
    "                  Attach it with:  usbip --tcp-port PORT attach -r 127.0.0.1 -b 1-1\n"
    "  --vhci          plug it into this system's own virtual host controller; needs root and\n"
    "                  the kernel's module vhci-hcd\n"
    "  --model CODE    the model\n"
    "  --signal FILE   what lies on its inputs: a capture (.cxdat). Without it, a counter\n"
    "  --direct        take each sample of the file for a sample, whatever the rates\n"
    "  --pace FACTOR   seconds of sampling in a second; 0: as fast as the host reads. Default 1\n"
    "  --firmware      it runs its firmware already\n"
    "  --full-speed    12 Mbit/s instead of 480\n"
    "  --help          this text\n"
    "\n"
    "Lines on the standard input are orders: unplug, plug, quit.\n";

struct Arguments {
    emulator::InstrumentOptions options;
    int port = -1;
    bool vhci = false;
    bool help = false;
    std::string signal;
    std::string problem;
};

bool parseNumber(const std::string &text, int &number)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

bool parseFactor(const std::string &text, double &factor)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), factor);
    return error == std::errc() && end == text.data() + text.size() && factor >= 0 && factor <= 1e6;
}

/// Takes an option that has a value. @return what is wrong; empty if nothing is
std::string takeValue(Arguments &arguments, const std::string &option, const std::string &value)
{
    constexpr int lastPort = 65535;
    if (option == "--listen") {
        const bool good = parseNumber(value, arguments.port) && arguments.port >= 0 && arguments.port <= lastPort;
        return good ? "" : "no port: " + value;
    }
    if (option == "--model") {
        const bool good =
            parseNumber(value, arguments.options.model) && emulator::findModel(arguments.options.model) != nullptr;
        return good ? "" : "no model: " + value;
    }
    if (option == "--pace") {
        return parseFactor(value, arguments.options.pace) ? "" : "no factor: " + value;
    }
    arguments.signal = value;
    return "";
}

Arguments parse(const std::vector<std::string> &words)
{
    static const std::vector<std::string> withValue{"--listen", "--model", "--pace", "--signal"};
    Arguments out;
    bool hasModel = false;
    for (std::size_t i = 0; i < words.size() && out.problem.empty(); ++i) {
        const std::string &word = words[i];
        if (std::find(withValue.begin(), withValue.end(), word) != withValue.end()) {
            hasModel = hasModel || word == "--model";
            out.problem = ++i < words.size() ? takeValue(out, word, words[i]) : word + " needs a value";
        } else if (word == "--vhci") {
            out.vhci = true;
        } else if (word == "--direct") {
            out.options.direct = true;
        } else if (word == "--firmware") {
            out.options.firmwareInside = true;
        } else if (word == "--full-speed") {
            out.options.speed = emulator::Speed::Full;
        } else if (word == "--help") {
            out.help = true;
        } else {
            out.problem = "unknown: " + word;
        }
    }
    if (out.problem.empty() && !out.help && (!hasModel || (out.port < 0) == !out.vhci)) {
        out.problem = "a model, and either --listen or --vhci, are needed";
    }
    return out;
}

/// The signal of the arguments; null, with `problem` set, if the file cannot be used.
std::shared_ptr<emulator::LogicSignal> makeSignal(const std::string &file, std::string &problem)
{
    if (file.empty()) {
        constexpr std::int64_t rate = 100'000'000;
        constexpr std::int64_t half = 50; // channel 0: 1 MHz
        return std::make_shared<emulator::WaveSignal>(rate, emulator::WaveSignal::counter(32, half));
    }
    std::ifstream in(file, std::ios::binary);
    const emulator::Bytes bytes((std::istreambuf_iterator<char>(in)), {});
    if (!in.is_open() || in.bad()) {
        problem = "cannot be read";
        return nullptr;
    }
    emulator::CxdatCapture capture = emulator::parseCxdat(bytes);
    problem = capture.problem;
    return capture.signal;
}

emulator::usbip::Server *running = nullptr;

extern "C" void stopRunning(int /*signal*/)
{
    running->stop();
}

int serve(const Arguments &arguments, std::shared_ptr<emulator::LogicSignal> signal)
{
    emulator::Instrument device(arguments.options, std::move(signal));
    device.attach();
    emulator::usbip::Server server(device);
    if (arguments.vhci) {
        server.plugIntoKernel();
    } else if (!server.listen(std::uint16_t(arguments.port))) {
        std::fprintf(stderr, "corvanlux-emulator: port %d: %s\n", arguments.port, server.problem().c_str());
        return failure;
    } else {
        std::printf("Listening on 127.0.0.1:%u\n", unsigned(server.port()));
        std::fflush(stdout);
    }
    server.takeOrders(0);
    running = &server;
    std::signal(SIGINT, stopRunning);
    std::signal(SIGTERM, stopRunning);
    server.run();
    if (!server.problem().empty()) {
        std::fprintf(stderr, "corvanlux-emulator: %s\n", server.problem().c_str());
        return failure;
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    const Arguments arguments = parse(std::vector<std::string>(argv + 1, argv + argc));
    if (arguments.help) {
        std::fputs(usage, stdout);
        return 0;
    }
    if (!arguments.problem.empty()) {
        std::fprintf(stderr, "corvanlux-emulator: %s\n\n%s", arguments.problem.c_str(), usage);
        return wrongUse;
    }
    std::string problem;
    std::shared_ptr<emulator::LogicSignal> signal = makeSignal(arguments.signal, problem);
    if (signal == nullptr) {
        std::fprintf(stderr, "corvanlux-emulator: %s: %s\n", arguments.signal.c_str(), problem.c_str());
        return failure;
    }
    return serve(arguments, std::move(signal));
}
