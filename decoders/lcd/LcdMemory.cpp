#include "LcdMemory.h"

namespace {

// HD44780U data sheet (ADE-207-272), table 6 and figures 3 and 5.
constexpr unsigned clearDisplay = 0x01;
constexpr unsigned returnHome = 0x02; ///< the lowest bit does not matter
constexpr unsigned entryModeSet = 0x04;
constexpr unsigned shift = 0x10;
constexpr unsigned functionSet = 0x20;
constexpr unsigned setCharacterAddress = 0x40;
constexpr unsigned setDisplayAddress = 0x80;
constexpr unsigned lastOfOneLine = 0x4f;
constexpr unsigned lastOfFirstLine = 0x27;
constexpr unsigned secondLine = 0x40;
constexpr unsigned lastOfSecondLine = 0x67;
constexpr unsigned extendedSet = 0x04; ///< RE of the ST7920

} // namespace

void LcdMemory::instruct(std::uint8_t code)
{
    if (m_controller == LcdController::Ks0108) {
        return;
    }
    if (m_controller == LcdController::St7920 && (code & 0xe0U) == functionSet) {
        m_isExtended = (code & extendedSet) != 0;
    } else if (!m_isExtended) {
        instructCharacters(code);
    } else if ((code & setDisplayAddress) != 0) {
        m_ram = LcdRam::Graphics;
    }
}

void LcdMemory::instructCharacters(std::uint8_t code)
{
    if ((code & setDisplayAddress) != 0) {
        m_ram = LcdRam::Display;
        m_address = code & 0x7fU;
    } else if ((code & setCharacterAddress) != 0) {
        m_ram = LcdRam::Characters;
        m_address = code & 0x3fU;
    } else if ((code & functionSet) != 0) {
        m_hasTwoLines = (code & 0x08U) != 0;
    } else if ((code & shift) != 0) {
        if ((code & 0x08U) == 0) {
            move((code & 0x04U) != 0);
        }
    } else if ((code & 0xfcU) == entryModeSet) {
        m_goesUp = (code & 0x02U) != 0;
    } else if (code == clearDisplay || (code & 0xfeU) == returnHome) {
        m_ram = LcdRam::Display;
        m_address = 0;
        m_goesUp = m_goesUp || code == clearDisplay;
    }
}

void LcdMemory::step()
{
    if (m_ram == LcdRam::Display || m_ram == LcdRam::Characters) {
        move(m_goesUp);
    }
}

void LcdMemory::move(bool up)
{
    if (m_ram == LcdRam::Characters) {
        m_address = std::uint8_t((m_address + (up ? 1U : 0x3fU)) & 0x3fU);
        return;
    }
    if (m_controller == LcdController::St7920) {
        return; // two bytes an address
    }
    const unsigned last = m_hasTwoLines ? lastOfSecondLine : lastOfOneLine;
    if (up) {
        m_address = m_address == last                               ? std::uint8_t(0)
                    : m_hasTwoLines && m_address == lastOfFirstLine ? std::uint8_t(secondLine)
                                                                    : std::uint8_t((m_address + 1U) & 0x7fU);
    } else {
        m_address = m_address == 0                             ? std::uint8_t(last)
                    : m_hasTwoLines && m_address == secondLine ? std::uint8_t(lastOfFirstLine)
                                                               : std::uint8_t(m_address - 1U);
    }
}
