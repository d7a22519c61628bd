#pragma once

#include "BlockList.h"

#include <array>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <thread>

namespace lux::detail {

/// Slabs that nothing uses any more, on their way back to the system: a thread of its own gives them back, since that
/// takes as long as clearing them, and results mostly go on the thread that the user waits for. Some of them it only
/// marks, so that the next run has them without new memory, and the system whenever it wants.
///
/// One for the process; the thread starts when it is first needed and ends with the process. Any thread.
class SlabReturns {
public:
    [[nodiscard]] static SlabReturns &instance();

    SlabReturns() = default;
    /// Ends the thread. What is freed later goes back at once.
    ~SlabReturns();
    SlabReturns(const SlabReturns &) = delete;
    SlabReturns &operator=(const SlabReturns &) = delete;

    /// A slab of this size that was freed; null when there is none.
    [[nodiscard]] void *take(std::size_t bytes);
    /// @param slab  of whole pages
    void free(void *slab, std::size_t bytes) noexcept;

private:
    /// Stands at the begin of a slab that waits.
    struct Waiting {
        Waiting *next;
        std::size_t bytes;
    };

    struct Spare {
        void *slab;
        std::size_t bytes;
    };

    void run();
    [[nodiscard]] bool hasRoomFor(std::size_t bytes) const;
    [[nodiscard]] static bool mark(Waiting *slab, std::size_t bytes);

    static constexpr std::size_t most = 256;
    static constexpr std::size_t mostBytes = std::size_t(512) << 20;

    std::mutex m_mutex; ///< guards all below; never held while the system is called
    std::condition_variable m_woken;
    Waiting *m_waiting = nullptr;
    std::array<Spare, most> m_spare{}; ///< marked
    std::size_t m_spareCount = 0;
    std::size_t m_spareBytes = 0;
    bool m_ending = false;
    std::thread m_thread;
};

} // namespace lux::detail
