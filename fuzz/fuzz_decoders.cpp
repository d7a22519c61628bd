// Every decoder, with any settings and stored text, on any edges: no crash, no hang, frames in order and inside.

#include "support/PluginChecks.h"
#include "support/PluginFiles.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <span>

namespace {

using Bytes = std::span<const std::uint8_t>;

/// Takes choices from the front of the input; 0 when it is used up.
pluginChecks::Chooser chooserOf(Bytes &input)
{
    return [&input](std::uint32_t below) -> std::uint32_t {
        if (below == 0 || input.empty()) {
            return 0;
        }
        std::uint32_t value = input.front();
        input = input.subspan(1);
        if (below > 256 && !input.empty()) {
            value = value << 8 | input.front();
            input = input.subspan(1);
        }
        return value % below;
    };
}

/// Two bytes a step: which of eight lines change, and how long it takes to the next.
std::unique_ptr<TestCapture> captureOf(Bytes input, std::int64_t sampleRate)
{
    std::array<std::vector<std::int64_t>, 8> edges;
    std::int64_t at = 1;
    for (std::size_t i = 0; i + 1 < input.size(); i += 2) {
        for (std::size_t line = 0; line < edges.size(); ++line) {
            if ((input[i] >> line & 1U) != 0) {
                edges[line].push_back(at);
            }
        }
        constexpr int longFrom = 224; // what is above stands for long times
        constexpr std::int64_t longStep = 5000;
        const int width = input[i + 1];
        at += width < longFrom ? width + 1 : (width - longFrom + 1) * longStep;
    }
    auto capture = std::make_unique<TestCapture>(sampleRate, at + 1);
    for (std::uint32_t channel = 0; channel < 16; ++channel) {
        capture->channel(channel, channel % 2 == 0, edges[channel % edges.size()]);
    }
    return capture;
}

void require(const std::string &fault, const std::string &name)
{
    if (!fault.empty()) {
        std::fprintf(stderr, "%s: %s\n", name.c_str(), fault.c_str());
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    static const std::vector<PluginFile> plugins = pluginsIn(QStringLiteral(LUX_PLUGIN_FOLDER));
    constexpr std::array<std::int64_t, 6> rates{1, 100000, 1000000, 20000000, 100000000, 10000000000};
    constexpr std::size_t least = 4;
    if (size < least || plugins.empty()) {
        return 0;
    }
    const PluginFile &plugin = plugins[bytes[0] % plugins.size()];
    const std::int64_t rate = rates[bytes[1] % rates.size()];
    const int way = bytes[2];
    Bytes input(bytes + 3, size - 3);
    const pluginChecks::Chooser random = chooserOf(input);

    DecodeDesk desk(plugin.make());
    pluginChecks::connectChannels(*desk.analyzer);
    if ((way & 1) != 0) {
        pluginChecks::chooseSettings(*desk.analyzer, random);
    }
    if ((way & 2) != 0) {
        desk.analyzer->GetAnalyzerSettings()->LoadText(pluginChecks::chooseText(*desk.analyzer, random).c_str());
    }
    constexpr std::int64_t simulated = 20000;
    const auto capture = (way & 4) != 0 ? desk.simulate(rate, simulated, simulated / 3) : captureOf(input, rate);
    desk.run(*capture);
    require(pluginChecks::faultOfResults(desk, capture->device().smpCount, 50), plugin.name);
    return 0;
}
