#pragma once

#include <cstddef>
#include <cstdint>

/// The monkey's dice: the same throws for the same seed on every system.
class Chance {
public:
    explicit Chance(std::uint32_t seed) : m_state(seed * 2654435761U + 1) {}

    /// 0 to `count` - 1; 0 for a count below 1.
    [[nodiscard]] int below(int count)
    {
        m_state ^= m_state << 13;
        m_state ^= m_state >> 7;
        m_state ^= m_state << 17;
        return count < 1 ? 0 : int((m_state >> 20) % std::uint64_t(count));
    }
    [[nodiscard]] bool oneIn(int count) { return below(count) == 0; }
    /// One of a list that is not empty.
    template<class List>
    [[nodiscard]] auto of(const List &list) -> decltype(list[0])
    {
        return list[decltype(list.size())(below(int(list.size())))];
    }

private:
    std::uint64_t m_state; ///< never 0
};
