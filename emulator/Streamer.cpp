#include "Streamer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace emulator {

namespace {

constexpr std::int64_t groupSamples = 16;
constexpr std::uint32_t byteChannels = 0xFF;
constexpr std::size_t copyAtOnce = 1 << 15; // stays within the processor's first cache

} // namespace

void Streamer::start(Format format, const Sampler &sampler, std::uint32_t channels)
{
    m_format = format;
    m_sampler = sampler;
    m_channels = format == Format::ByteSamples ? byteChannels : channels;
    m_order.clear();
    for (int i = 0; i < int(maxChannels); ++i) {
        if ((m_channels >> i & 1) != 0) {
            m_order.push_back(i);
        }
    }
    m_position = 0;
    m_run = {0, 0};
    m_rest.clear();
    m_restAt = 0;
}

std::int64_t Streamer::bytesIn(std::int64_t samples) const
{
    return m_format == Format::ByteSamples ? samples : samples / groupSamples * std::int64_t(groupSize());
}

void Streamer::fill(std::span<std::uint8_t> out)
{
    if (m_order.empty()) {
        std::fill(out.begin(), out.end(), std::uint8_t(0));
        return;
    }
    const std::size_t rest = std::min(out.size(), m_rest.size() - m_restAt);
    std::copy_n(m_rest.begin() + std::ptrdiff_t(m_restAt), rest, out.begin());
    m_restAt += rest;
    out = out.subspan(rest);
    out = out.subspan(m_format == Format::ByteSamples ? fillBytes(out) : fillGroups(out));
    if (!out.empty()) {
        m_rest.resize(groupSize());
        buildGroup(m_rest.data());
        m_position += groupSamples;
        std::copy_n(m_rest.begin(), out.size(), out.begin());
        m_restAt = out.size();
    }
}

std::size_t Streamer::fillBytes(std::span<std::uint8_t> out)
{
    for (std::size_t at = 0; at < out.size();) {
        const SignalRun run = m_sampler.at(m_position, m_channels);
        const auto length = std::size_t(std::min<std::int64_t>(run.end - m_position, std::int64_t(out.size() - at)));
        std::memset(out.data() + at, int(run.levels), length);
        at += length;
        m_position += std::int64_t(length);
    }
    return out.size();
}

/// As many whole groups as have room. @return their bytes
std::size_t Streamer::fillGroups(std::span<std::uint8_t> out)
{
    const std::size_t size = groupSize();
    std::size_t at = 0;
    while (out.size() - at >= size) {
        if (m_run.end <= m_position) {
            m_run = m_sampler.at(m_position, m_channels);
        }
        const std::int64_t alike = (m_run.end - m_position) / groupSamples;
        const std::size_t groups = std::size_t(std::min<std::int64_t>(alike, std::int64_t((out.size() - at) / size)));
        if (groups > 0) {
            repeatGroup(out.subspan(at, groups * size), m_run.levels);
            at += groups * size;
            m_position += std::int64_t(groups) * groupSamples;
            continue;
        }
        buildGroup(out.data() + at);
        at += size;
        m_position += groupSamples;
    }
    return at;
}

/// Fills with groups of constant levels.
void Streamer::repeatGroup(std::span<std::uint8_t> out, std::uint32_t levels) const
{
    if (levels == 0 || levels == m_channels) {
        std::memset(out.data(), levels == 0 ? 0 : 0xFF, out.size());
        return;
    }
    std::size_t filled = 0;
    for (const int channel : m_order) {
        const auto byte = std::uint8_t((levels >> channel & 1) != 0 ? 0xFF : 0);
        out[filled] = byte;
        out[filled + 1] = byte;
        filled += 2;
    }
    // Doubles what is there, then copies pieces of that.
    while (filled < out.size()) {
        const std::size_t piece = std::min({filled, out.size() - filled, copyAtOnce / groupSize() * groupSize()});
        std::memcpy(out.data() + filled, out.data(), piece);
        filled += piece;
    }
}

/// The group at m_position, run by run.
void Streamer::buildGroup(std::uint8_t *out)
{
    std::array<std::uint32_t, maxChannels> words{};
    for (std::int64_t k = 0; k < groupSamples;) {
        const std::int64_t at = m_position + k;
        if (m_run.end <= at) {
            m_run = m_sampler.at(at, m_channels);
        }
        const std::int64_t next = std::min(groupSamples, m_run.end - m_position);
        const std::uint32_t samples = (1U << next) - (1U << k);
        for (std::uint32_t levels = m_run.levels; levels != 0; levels &= levels - 1) {
            words[std::size_t(std::countr_zero(levels))] |= samples;
        }
        k = next;
    }
    for (const int channel : m_order) {
        const std::uint32_t word = words[std::size_t(channel)];
        *out++ = std::uint8_t(word);
        *out++ = std::uint8_t(word >> 8);
    }
}

} // namespace emulator
