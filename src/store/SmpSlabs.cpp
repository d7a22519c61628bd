#include "store/SmpSlabs.h"

#include "store/MemBudget.h"
#include "store/SmpReturns.h"
#include "store/SystemPages.h"

#include <new>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(address, size)
#define ASAN_UNPOISON_MEMORY_REGION(address, size)
#endif

namespace {

constexpr std::size_t alignment = 64;

constexpr std::size_t roundedUp(std::size_t size)
{
    return (size + alignment - 1) / alignment * alignment;
}

} // namespace

/// Stands at the begin of each slab.
struct SmpSlabChain::Slab {
    Slab *next = nullptr;
    Slab *previous = nullptr; ///< while it is in use
    std::size_t end = 0;      ///< where the next block is cut, bytes from the slab's begin
    int blocks = 0;           ///< that have been taken and not given

    [[nodiscard]] std::byte *bytes() { return reinterpret_cast<std::byte *>(this); }
};

namespace {

using Slab = SmpSlabChain::Slab;

constexpr std::size_t headSize = roundedUp(sizeof(Slab));
/// Stands before each block, and names its slab. As long as the alignment, so that the block begins behind it.
constexpr std::size_t markSize = alignment;

/// An empty slab from the system; null when it refuses.
Slab *newSlab()
{
    void *pages = systemPages::take(SmpSlabs::slabSize);
    return pages == nullptr ? nullptr : new (pages) Slab;
}

/// Makes a slab as good as new.
void reset(Slab &slab)
{
    slab.next = nullptr;
    slab.previous = nullptr;
    slab.end = headSize;
    slab.blocks = 0;
    ASAN_POISON_MEMORY_REGION(slab.bytes() + headSize, SmpSlabs::slabSize - headSize);
}

} // namespace

SmpSlabChain::~SmpSlabChain()
{
    while (Slab *slab = pop()) {
        ASAN_UNPOISON_MEMORY_REGION(slab->bytes(), SmpSlabs::slabSize);
        systemPages::give(slab, SmpSlabs::slabSize);
    }
}

void SmpSlabChain::push(Slab *slab)
{
    slab->next = m_first;
    m_first = slab;
    ++m_count;
}

SmpSlabChain::Slab *SmpSlabChain::pop()
{
    Slab *slab = m_first;
    if (slab != nullptr) {
        m_first = slab->next;
        --m_count;
    }
    return slab;
}

SmpSlabs::~SmpSlabs()
{
    clear();
    trim();
}

void *SmpSlabs::take(std::size_t size)
{
    if (blockIsRefused(size)) {
        return nullptr;
    }
    const std::size_t room = markSize + roundedUp(size);
    if (m_used == nullptr || slabSize - m_used->end < room) {
        Slab *slab = m_spare.pop();
        slab = slab != nullptr ? slab : newSlab();
        if (slab == nullptr) {
            return nullptr;
        }
        reset(*slab);
        slab->next = m_used;
        if (m_used != nullptr) {
            m_used->previous = slab;
        }
        m_used = slab;
    }
    std::byte *mark = m_used->bytes() + m_used->end;
    m_used->end += room;
    ++m_used->blocks;
    ASAN_UNPOISON_MEMORY_REGION(mark, sizeof(Slab *));
    ASAN_UNPOISON_MEMORY_REGION(mark + markSize, size);
    new (mark) Slab *(m_used);
    m_charged += std::int64_t(size);
    memBudget.fetch_sub(std::int64_t(size), std::memory_order_relaxed);
    return mark + markSize;
}

void SmpSlabs::give(void *block, std::size_t size)
{
    if (block == nullptr) {
        return;
    }
    Slab *slab = *std::launder(reinterpret_cast<Slab **>(static_cast<std::byte *>(block) - markSize));
    ASAN_POISON_MEMORY_REGION(block, size);
    m_charged -= std::int64_t(size);
    memBudget.fetch_add(std::int64_t(size), std::memory_order_relaxed);
    if (--slab->blocks > 0) {
        return;
    }
    if (slab->next != nullptr) {
        slab->next->previous = slab->previous;
    }
    (slab->previous != nullptr ? slab->previous->next : m_used) = slab->next;
    m_spare.push(slab);
}

void SmpSlabs::clear()
{
    while (Slab *slab = m_used) {
        m_used = slab->next;
        m_spare.push(slab);
    }
    memBudget.fetch_add(m_charged, std::memory_order_relaxed);
    m_charged = 0;
}

void SmpSlabs::trim()
{
    constexpr int few = 4; // whose pages are freed in some hundred microseconds
    SmpSlabChain spare = std::move(m_spare);
    if (spare.count() > few) {
        SmpReturns::instance().giveBack(std::move(spare));
    }
}
