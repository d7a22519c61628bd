#pragma once

#include "DecoderChecks.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// What the tests of both busses with strobes ask alike.

namespace strobedTraffic {

/// The first frames of the simulation: command n, n modulo 8 words of data, a read of the state and one of data.
inline std::vector<std::string> ofSimulation(std::size_t count)
{
    std::vector<std::string> expected;
    const auto add = [&expected](const char *kind, int isData, unsigned word) {
        expected.push_back(std::string(kind) + " rs=" + std::to_string(isData) + " v=" + std::to_string(word & 0xffU));
    };
    for (unsigned n = 0; expected.size() < count; ++n) {
        add("write", 0, n);
        for (unsigned i = 0; i < n % 8; ++i) {
            add("write", 1, n * 8 + i);
        }
        add("read", 0, ~n);
        add("read", 1, n);
    }
    expected.resize(count);
    return expected;
}

/// Decodes random edges on the channels 0 to 11. @return what is wrong with the frames, empty for nothing
template<class AnalyzerType>
std::string faultOfRandomEdges(const std::string &settings)
{
    constexpr std::int64_t length = 20000;
    for (const std::int64_t mean : {1, 2, 10, 100, 2000}) {
        TestCapture capture(1000000, length);
        for (std::uint32_t i = 0; i < 12; ++i) {
            capture.channel(i, i % 2 == 0, decoderChecks::randomEdges(i, mean, length));
        }
        DecodeDesk desk(std::make_unique<AnalyzerType>(), settings);
        if (std::string fault = decoderChecks::faultOf(desk.run(capture), length); !fault.empty()) {
            return fault;
        }
    }
    return {};
}

/// The exports of accesses of which write 0x2a, data 0x01, read data 0xef and state 0x55, write 0x2c, data 0x41 are
/// all. @return what is missing, empty for nothing
inline std::string faultOfExports(const DecodeDesk &desk, const std::string &path)
{
    using Results = lux::StrobedBusResults;
    const std::string text = decoderChecks::exported(desk, path + ".txt", Results::Commands);
    const std::string csv = decoderChecks::exported(desk, path + ".csv", 0);
    if (decoderChecks::exported(desk, path + ".bin", Results::WrittenData) != "\x01\x41") {
        return "written data";
    }
    if (decoderChecks::exported(desk, path + ".bin", Results::ReadData) != "\xef") {
        return "read data";
    }
    if (text.find(" 0x2A 0x01 <0xEF <0x55\n") == std::string::npos || text.find(" 0x2C 0x41\n") == std::string::npos) {
        return text;
    }
    return csv.find(",write,0,42,Write command 0x2A") == std::string::npos ? csv : std::string();
}

} // namespace strobedTraffic
