#include "DsiLane.h"

#include <algorithm>

using lux::Sample;

bool DsiLane::next(DsiElement &element)
{
    for (;;) {
        bool isElement = false;
        bool goesOn = false;
        switch (m_mode) {
        case Mode::Unknown:
            goesOn = state() == Lp11 || step();
            m_mode = state() == Lp11 ? Mode::Stop : Mode::Unknown;
            break;
        case Mode::Stop:
            goesOn = fromStop(element, isElement);
            break;
        case Mode::Escape:
        case Mode::Data:
            goesOn = readByte(element, isElement);
            break;
        case Mode::Trigger:
        case Mode::UltraLow:
            goesOn = leave(element, isElement);
            break;
        }
        if (isElement) {
            return true;
        }
        if (!goesOn) {
            return false;
        }
    }
}

bool DsiLane::step()
{
    if (!m_pair.hasChange()) {
        return false;
    }
    m_pair.next();
    return true;
}

/// From LP-11: to LP-10 for a low-power request, to LP-01 for a high-speed one (6.2).
bool DsiLane::fromStop(DsiElement &element, bool &isElement)
{
    if (!step()) {
        return false;
    }
    switch (state()) {
    case Lp10:
        return request(element, isElement);
    case Lp01:
        return burst(element, isElement);
    default:
        m_mode = Mode::Unknown;
        return true;
    }
}

/// LP-10, LP-00, then LP-01 and LP-00 for escape mode (6.6), or LP-10 and LP-00 for a turnaround (6.5).
bool DsiLane::request(DsiElement &element, bool &isElement)
{
    const Sample first = m_pair.begin();
    m_mode = Mode::Unknown; // what does not go on as it must has no meaning
    if (!step()) {
        return false;
    }
    if (state() != Lp00) {
        return true;
    }
    if (!step()) {
        return false;
    }
    const unsigned third = state();
    if (third == Lp11 || third == Lp00) {
        return true;
    }
    if (!step()) {
        return false;
    }
    if (state() != Lp00) {
        return true;
    }
    if (third == Lp01) {
        m_mode = Mode::Escape;
        return true;
    }
    element = {.kind = DsiElement::Kind::Turnaround,
               .first = first,
               .last = std::min(m_pair.peekChange(), m_pair.sampleCount()) - 1};
    isElement = true;
    return true;
}

/// LP-01, LP-00, and then what only a high-speed receiver sees, up to LP-11 (6.4).
bool DsiLane::burst(DsiElement &element, bool &isElement)
{
    const Sample first = m_pair.begin();
    m_mode = Mode::Unknown;
    if (!step()) {
        return false;
    }
    if (state() != Lp00) {
        return true;
    }
    while (state() != Lp11) {
        if (!step()) {
            return false;
        }
    }
    m_mode = Mode::Stop;
    element = {.kind = DsiElement::Kind::Burst, .first = first, .last = m_pair.begin() - 1};
    isElement = true;
    return true;
}

/// A mark, LP-10 for 1 and LP-01 for 0, and the space LP-00 behind it (6.6). LP-10 and LP-11 leave escape mode.
bool DsiLane::readBit(Bit &bit)
{
    while (state() == Lp00) { // the space, as long as it likes
        if (!step()) {
            return false;
        }
    }
    bit = {.first = m_pair.begin()};
    if (state() == Lp11) {
        bit.isExit = true; // without a mark
        return true;
    }
    bit.value = state() == Lp10;
    if (!step()) {
        return false;
    }
    bit.isExit = state() != Lp00;
    const Sample mark = m_pair.begin() - bit.first;
    bit.last = std::min({m_pair.begin() + mark, m_pair.peekChange(), m_pair.sampleCount()}) - 1;
    return true;
}

/// Eight bits: those of a code come with the highest first, those of data with the lowest.
bool DsiLane::readByte(DsiElement &element, bool &isElement)
{
    const bool isEntry = m_mode == Mode::Escape;
    element = {.kind = isEntry ? DsiElement::Kind::Entry : DsiElement::Kind::Byte};
    for (unsigned count = 0; count < 8; ++count) {
        Bit bit;
        if (!readBit(bit)) {
            return false;
        }
        if (bit.isExit) {
            m_mode = Mode::Unknown;
            if (!isEntry) {
                element.kind = DsiElement::Kind::Exit;
                element.value = std::uint8_t(count);
                element.first = bit.first;
                element.last = m_pair.begin();
                isElement = true;
            }
            return true;
        }
        if (count == 0) {
            element.first = bit.first;
        }
        element.last = bit.last;
        const unsigned place = isEntry ? 7 - count : count;
        element.value = std::uint8_t(element.value | unsigned(bit.value) << place);
    }
    if (isEntry) {
        m_entryEnd = element.last + 1;
        m_mode = element.value == dsi::lowPowerData    ? Mode::Data
                 : element.value == dsi::ultraLowPower ? Mode::UltraLow
                                                       : Mode::Trigger;
    }
    isElement = true;
    return true;
}

/// What comes behind the code of a trigger has no meaning (6.6.1); ultra-low power lasts to the stop state (6.6.3).
bool DsiLane::leave(DsiElement &element, bool &isElement)
{
    while (state() != Lp11) {
        if (!step()) {
            return false;
        }
    }
    if (m_mode == Mode::UltraLow) {
        element = {.kind = DsiElement::Kind::UltraLowPower, .first = m_entryEnd, .last = m_pair.begin() - 1};
        isElement = element.last >= element.first;
    }
    m_mode = Mode::Stop;
    return true;
}
