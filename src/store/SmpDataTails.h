#pragma once

#include "store/SmpBytes.h"
#include "store/SmpDataBlocks.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

/// Where the next entry of each channel goes. Private to this folder.
///
/// Lives on the stack of one decoder call, so that the way from a channel to its last leaf is not walked again for
/// every entry. An append then writes the low word only: the high bytes, which stay the same for 2^32 samples, and the
/// count of a leaf are written when the leaf is full, when the high byte changes, and at the end of the call. Until
/// then the tree is stale. Costs one step a channel to make and to destroy. The writer's thread.
class SmpData::Tails {
public:
    static constexpr std::size_t capacity = 64; ///< channels that a word can carry

    /// `pos` is about where the call starts to append.
    Tails(SmpData &data, std::int64_t pos);
    ~Tails() { store(); }
    Tails(const Tails &) = delete;
    Tails &operator=(const Tails &) = delete;

    /// Bit i is set for a channel that has a root: only these may be appended to.
    [[nodiscard]] std::uint64_t present() const { return m_present; }

    /// The first position that put() must not be given, because its high byte is another one or has no room in 40
    /// bits. Moved by reach() and add().
    [[nodiscard]] std::int64_t limit() const { return (m_high + 1) << lowBits; }

    /// Tells that the next positions are at or beyond `pos`.
    void reach(std::int64_t pos)
    {
        if (pos >> lowBits != m_high) [[unlikely]] {
            enter(pos);
        }
    }

    /// Appends an entry, from reach() to below limit(), to a channel that is present. False, with nothing done, when
    /// the channel's leaf is full.
    [[nodiscard]] bool put(std::size_t chn, std::int64_t pos)
    {
        Tail &tail = m_tails[chn];
        if (tail.next == tail.end) [[unlikely]] {
            return false;
        }
        *tail.next++ = std::uint32_t(pos);
        return true;
    }

    /// How many entries put() still takes of a channel.
    [[nodiscard]] std::int64_t room(std::size_t chn) const { return m_tails[chn].end - m_tails[chn].next; }

    /// Where put() writes the low word of a present channel's next position, for a loop that appends several itself, no
    /// more than room(); setNext() then tells how far it came.
    [[nodiscard]] std::uint32_t *next(std::size_t chn) const { return m_tails[chn].next; }
    void setNext(std::size_t chn, std::uint32_t *next) { m_tails[chn].next = next; }

    /// Appends an entry to a channel that is present, whatever the room and the position: one that 40 bits do not hold
    /// is passed over, since finish() would cut it off. False when memory is spent.
    [[nodiscard]] bool add(std::size_t chn, std::int64_t pos)
    {
        return (pos >> lowBits == m_high && put(chn, pos)) || addWithCare(chn, pos);
    }

    /// add() on every channel whose bit is set in `changed` and that is present.
    [[nodiscard]] bool addChanged(std::uint64_t changed, std::int64_t pos)
    {
        for (changed &= m_present; changed != 0; changed &= changed - 1) {
            if (!add(std::size_t(std::countr_zero(changed)), pos)) {
                return false;
            }
        }
        return true;
    }

private:
    static constexpr int lowBits = 32;

    struct Tail {
        std::uint32_t *next; ///< equal to `end`, thus no room, when there is no leaf
        std::uint32_t *end;
        SmpEdgeLeaf *leaf;
        std::int64_t stored; ///< entries of the leaf whose high byte is written
    };

    /// Seldom called, thus not inline: the loops of the decoders keep their registers.
    [[nodiscard]] bool addWithCare(std::size_t chn, std::int64_t pos);
    void enter(std::int64_t pos);
    void store();
    void store(Tail &tail) const;
    static void set(Tail &tail, SmpEdgeLeaf *leaf);

    SmpData &m_data;
    std::size_t m_chns;
    std::uint64_t m_present = 0;
    std::int64_t m_high = -1;           ///< high byte of all entries from `stored` on; -1 beyond 40 bits
    std::array<Tail, capacity> m_tails; ///< set for the first `m_chns`
};
