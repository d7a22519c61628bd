#pragma once

#include "LcdInstructions.h"

#include <cstdint>

/// Which memory of a display an access goes to.
enum class LcdRam : std::uint8_t { Unknown, Display, Characters, Graphics };

/// The address counter of a display's controller, followed through what is sent to it. It is not known before something
/// sets it. Graphic controllers have two addresses; theirs is not followed.
class LcdMemory {
public:
    explicit LcdMemory(LcdController controller) : m_controller(controller) {}

    void instruct(std::uint8_t code);
    /// A byte went to the memory or came from it.
    void step();
    [[nodiscard]] LcdRam ram() const { return m_ram; }
    [[nodiscard]] std::uint8_t address() const { return m_address; }
    /// The ST7920 is in its extended instruction set.
    [[nodiscard]] bool isExtended() const { return m_isExtended; }

private:
    void instructCharacters(std::uint8_t code);
    void move(bool up);

    LcdController m_controller;
    LcdRam m_ram = LcdRam::Unknown;
    std::uint8_t m_address = 0;
    bool m_goesUp = true;
    bool m_hasTwoLines = true;
    bool m_isExtended = false;
};
