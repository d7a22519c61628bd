#include "Fpga.h"

#include <algorithm>

namespace emulator {

void Fpga::powerOn()
{
    m_received.clear();
    m_writes.clear();
    m_total = 0;
    m_imageSize = 0;
    m_announced = false;
    m_loaded = !m_needsImage;
    m_enabled = false;
}

void Fpga::announce(std::uint32_t imageSize)
{
    powerOn();
    m_loaded = false;
    m_imageSize = imageSize;
    m_announced = true;
}

void Fpga::receive(std::span<const std::uint8_t> bytes)
{
    m_writes.push_back(bytes.size());
    m_total += bytes.size();
    if (m_announced && m_total <= uploadSize(m_imageSize)) {
        m_received.insert(m_received.end(), bytes.begin(), bytes.end());
    }
}

Fpga::Status Fpga::judge() const
{
    if (!m_announced) {
        return NotAnnounced;
    }
    const std::size_t wanted = uploadSize(m_imageSize);
    if (m_total != wanted) {
        return m_total < wanted ? Incomplete : Surplus;
    }
    const auto imageEnd = m_received.begin() + std::ptrdiff_t(m_imageSize);
    if (std::any_of(imageEnd, m_received.end(), [](std::uint8_t byte) { return byte != 0; })) {
        return BadFilling;
    }
    if (!m_expected.empty() && !std::equal(m_received.begin(), imageEnd, m_expected.begin(), m_expected.end())) {
        return WrongImage;
    }
    return Good;
}

std::uint8_t Fpga::finish()
{
    const Status status = judge();
    m_announced = false;
    m_loaded = status == Good;
    return status;
}

} // namespace emulator
