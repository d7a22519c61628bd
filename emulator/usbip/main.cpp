// corvanlux-emulator: an emulated instrument on a USB port of this machine, over USB/IP.

#include "CxdatSignal.h"
#include "FaultScript.h"
#include "MixedSignal.h"
#include "WavFile.h"
#include "WaveSignal.h"
#include "usbip/Arguments.h"
#include "usbip/UsbIpServer.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using emulator::usbip::Arguments;

constexpr int wrongUse = 2;
constexpr int failure = 1;

void complain(const std::string &problem)
{
    std::fprintf(stderr, "corvanlux-emulator: %s\n", problem.c_str());
}

/// @return nothing if the file cannot be read
std::optional<emulator::Bytes> contentOf(const std::string &file)
{
    std::ifstream in(file, std::ios::binary);
    emulator::Bytes bytes;
    std::array<char, 65536> piece;
    while (in.read(piece.data(), piece.size()) || in.gcount() > 0) {
        bytes.insert(bytes.end(), piece.begin(), piece.begin() + in.gcount());
    }
    return in.is_open() && !in.bad() ? std::optional(std::move(bytes)) : std::nullopt;
}

/// The signal of a capture's file; null, with `problem` set, if the file cannot be used.
std::shared_ptr<emulator::LogicSignal> makeDigital(const std::string &file, std::string &problem)
{
    if (file.empty()) {
        constexpr std::int64_t rate = 100'000'000;
        constexpr std::int64_t half = 50; // channel 0: 1 MHz
        return std::make_shared<emulator::WaveSignal>(rate, emulator::WaveSignal::counter(32, half));
    }
    const std::optional<emulator::Bytes> bytes = contentOf(file);
    emulator::CxdatCapture capture;
    capture.problem = "cannot be read";
    if (bytes) {
        capture = emulator::parseCxdat(*bytes);
    }
    problem = capture.problem.empty() ? "" : file + ": " + capture.problem;
    return capture.signal;
}

/// What lies on an analog input of which no word is told.
emulator::AnalogWord usualWord(int channel)
{
    emulator::AnalogWord word;
    word.channel = channel;
    const bool first = channel == 0;
    word.settings.kind = first ? emulator::AnalogWave::Kind::Sine : emulator::AnalogWave::Kind::Square;
    word.settings.frequency = first ? 100e3 : 50e3; // Hz
    return word;
}

/// The input that a word tells; null, with `problem` set, if its file cannot be used.
std::unique_ptr<emulator::AnalogInput> makeInput(const emulator::AnalogWord &word, bool direct, std::string &problem)
{
    const auto seed = std::uint32_t(word.channel + 1);
    if (word.file.empty()) {
        return std::make_unique<emulator::AnalogWave>(word.settings, seed);
    }
    const std::optional<emulator::Bytes> bytes = contentOf(word.file);
    auto file = std::make_shared<emulator::WavFile>();
    file->problem = "cannot be read";
    if (bytes) {
        *file = emulator::parseWav(*bytes);
    }
    if (!file->problem.empty()) {
        problem = word.file + ": " + file->problem;
        return nullptr;
    }
    const emulator::AnalogWave::Settings &settings = word.settings;
    return std::make_unique<emulator::WavInput>(
        std::move(file), word.channel,
        emulator::WavInput::Settings{settings.peakToPeak, settings.offset, settings.noise, direct}, seed);
}

/// The signal of the arguments; null, or with `problem` set, if a file cannot be used.
std::shared_ptr<emulator::LogicSignal> makeSignal(const Arguments &arguments, std::string &problem)
{
    std::shared_ptr<emulator::LogicSignal> digital = makeDigital(arguments.signal, problem);
    const int analogChannels = emulator::findModel(arguments.options.model)->analogChannels;
    if (digital == nullptr || analogChannels == 0) {
        return digital;
    }
    std::vector<std::unique_ptr<emulator::AnalogInput>> inputs;
    for (int channel = 0; channel < analogChannels && problem.empty(); ++channel) {
        emulator::AnalogWord word = usualWord(channel);
        for (const emulator::AnalogWord &told : arguments.analog) {
            word = told.channel == channel ? told : word;
        }
        inputs.push_back(makeInput(word, arguments.options.direct, problem));
    }
    return std::make_shared<emulator::MixedSignal>(std::move(digital), std::move(inputs));
}

/// Takes the faults of the arguments. @return what is wrong with them; empty if nothing is
std::string takeFaults(emulator::Instrument &device, const Arguments &arguments)
{
    if (!arguments.script.empty()) {
        const std::optional<emulator::Bytes> script = contentOf(arguments.script);
        const std::string problem =
            script ? emulator::addFaults(device, std::string(script->begin(), script->end())) : "cannot be read";
        if (!problem.empty()) {
            return arguments.script + ": " + problem;
        }
    }
    for (const std::string &word : arguments.faults) {
        if (std::string problem = emulator::addFault(device, word); !problem.empty()) {
            return problem;
        }
    }
    return {};
}

emulator::usbip::Server *running = nullptr;

extern "C" void stopRunning(int /*signal*/)
{
    running->stop();
}

int serve(const Arguments &arguments, emulator::Instrument &device)
{
    device.attach();
    emulator::usbip::Server server(device);
    server.tellProblems(complain);
    const std::string face = arguments.vhci ? "--vhci" : "port " + std::to_string(arguments.port);
    if (!(arguments.vhci ? server.plugIntoKernel() : server.listen(std::uint16_t(arguments.port)))) {
        complain(face + ": " + server.problem());
        return failure;
    }
    if (!arguments.vhci) {
        std::printf("Listening on 127.0.0.1:%u\n", unsigned(server.port()));
        std::fflush(stdout);
    }
    server.takeOrders(0);
    running = &server;
    std::signal(SIGINT, stopRunning);
    std::signal(SIGTERM, stopRunning);
    server.run();
    if (!server.problem().empty()) {
        complain(server.problem());
        return failure;
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    const Arguments arguments = emulator::usbip::parseArguments(std::vector<std::string>(argv + 1, argv + argc));
    if (!arguments.problem.empty()) {
        complain(arguments.problem + "\n\n" + emulator::usbip::usageText());
        return wrongUse;
    }
    if (arguments.help) {
        std::fputs(emulator::usbip::usageText(), stdout);
        return 0;
    }
    std::string problem;
    std::shared_ptr<emulator::LogicSignal> signal = makeSignal(arguments, problem);
    emulator::Instrument device(arguments.options, std::move(signal));
    if (problem.empty()) {
        problem = takeFaults(device, arguments);
    }
    if (!problem.empty()) {
        complain(problem);
        return wrongUse;
    }
    return serve(arguments, device);
}
