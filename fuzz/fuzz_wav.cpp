// A WAVE file, whatever it holds, is refused with a message or gives frames that can be played.

#include "WavFile.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <utility>

using emulator::WavFile;
using emulator::WavInput;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    auto file = std::make_shared<WavFile>(emulator::parseWav({bytes, size}));
    const bool good = file->problem.empty();
    if (good != (file->channels > 0) || good != !file->samples.empty() || good != (file->rate > 0)) {
        std::abort();
    }
    if (!good) {
        return 0;
    }
    if (file->samples.size() > size || file->samples.size() != file->frames() * std::size_t(file->channels)) {
        std::abort();
    }
    for (const bool direct : {false, true}) {
        for (int channel = 0; channel < 2; ++channel) {
            WavInput input(file, channel, {.direct = direct});
            for (const std::int64_t at : {0, 1, 7, 1000, 2'000'000'000}) {
                if (!std::isfinite(input.voltsAt({.index = at, .seconds = double(at) * 1e-6}))) {
                    std::abort();
                }
            }
        }
    }
    return 0;
}
