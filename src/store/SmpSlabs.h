#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

/// A chain of slabs that nothing uses any more. Has one owner, which gives the slabs back to the system when it goes.
class SmpSlabChain {
public:
    struct Slab;

    SmpSlabChain() = default;
    ~SmpSlabChain();
    SmpSlabChain(SmpSlabChain &&other) noexcept
        : m_first(std::exchange(other.m_first, nullptr)), m_count(std::exchange(other.m_count, 0))
    {}
    SmpSlabChain &operator=(SmpSlabChain &&other) noexcept
    {
        std::swap(m_first, other.m_first);
        std::swap(m_count, other.m_count);
        return *this;
    }

    void push(Slab *slab);
    /// @return null when there is none
    [[nodiscard]] Slab *pop();
    [[nodiscard]] int count() const { return m_count; }

private:
    Slab *m_first = nullptr;
    int m_count = 0;
};

/// The memory of one store's blocks: slabs of some megabytes, straight from the system, that blocks are cut from one
/// behind the other.
///
/// The heap would keep what a big capture leaves behind, since a small block somewhere above it holds it. Slabs whose
/// blocks have all been given wait for the capture that follows, which takes them first, and go back to the system with
/// trim(). Each block is charged to `memBudget` by its exact size when it is taken and credited when it is given; what
/// lies between blocks is not (below 0.1 %). Belongs to the store's writer; no lock. Private to this folder.
class SmpSlabs {
public:
    static constexpr std::size_t slabSize = std::size_t(4) << 20; ///< bytes

    SmpSlabs() = default;
    /// As clear() and trim().
    ~SmpSlabs();
    SmpSlabs(const SmpSlabs &) = delete;
    SmpSlabs &operator=(const SmpSlabs &) = delete;

    /// A block of `size` bytes, at most a quarter of a slab, aligned to 64 bytes, charged whatever remains of the
    /// budget; not cleared. Null, with nothing charged, when the system refuses.
    [[nodiscard]] void *take(std::size_t size);
    /// Gives one block and credits `size`, which must be the size it was taken with. Null is allowed.
    void give(void *block, std::size_t size);
    /// Gives all blocks at once. Cost: one step a slab.
    void clear();
    /// Gives all slabs without a block back to the system; many of them on a thread that does nothing else.
    void trim();

private:
    using Slab = SmpSlabChain::Slab;

    Slab *m_used = nullptr; ///< slabs with blocks, as a list in both directions; the first is cut from
    SmpSlabChain m_spare;
    std::int64_t m_charged = 0; ///< bytes of all blocks
};
