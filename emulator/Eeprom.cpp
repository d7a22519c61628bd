#include "Eeprom.h"

#include "UsbTypes.h"

#include <algorithm>
#include <cstring>
#include <random>

namespace emulator {

Eeprom::Eeprom(const ModelFacts &model, std::uint16_t hardwareVersion)
{
    m_bytes.fill(0xFF);
    if (model.identity != 0) {
        setIdentity(model.identity, model.variant);
    }
    constexpr std::size_t nameLength = 6;
    const std::span<std::uint8_t> block(m_bytes.data() + blockAt, 12);
    std::memcpy(block.data(), model.name, std::min(nameLength, std::strlen(model.name)));
    block[6] = std::uint8_t(std::min<int>(model.clockMhz, 0xFF));
    block[7] = 0;
    writeLittle(block.subspan(8, 2), model.clockMhz);
    writeLittle(block.subspan(10, 2), model.pwmClockMhz);
    setHardwareVersion(hardwareVersion);
}

void Eeprom::setPair(std::size_t at, std::uint8_t value)
{
    m_bytes[at] = value;
    m_bytes[at + 1] = std::uint8_t(~value);
}

void Eeprom::setIdentity(std::uint8_t identity, std::uint8_t variant)
{
    setPair(identityAt, identity);
    setPair(identityAt + 2, variant);
    setPair(identityAt + 4, identity);
    setPair(identityAt + 6, variant);
}

void Eeprom::setHardwareVersion(std::uint16_t version)
{
    const std::span<std::uint8_t> at(m_bytes.data() + versionAt, 4);
    writeLittle(at.first(2), version);
    writeLittle(at.subspan(2), std::uint16_t(~version));
}

void Eeprom::fillWithNoise(std::uint32_t seed)
{
    std::minstd_rand random(seed);
    std::generate(m_bytes.begin(), m_bytes.end(), [&random] { return std::uint8_t(random() >> 8); });
}

void Eeprom::read(std::uint16_t address, std::span<std::uint8_t> out) const
{
    for (std::size_t i = 0; i < out.size(); ++i) {
        out[i] = m_bytes[(address + i) % size];
    }
}

} // namespace emulator
