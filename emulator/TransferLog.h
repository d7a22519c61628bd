#pragma once

#include "UsbTypes.h"

#include <vector>

namespace emulator {

/// What the instrument was asked, in order. Tests look here for what a host did.
class TransferLog {
public:
    enum class Kind { Control, BulkOut };

    struct Entry {
        Kind kind = Kind::Control;
        SetupPacket setup;      ///< Control
        Bytes data;             ///< Control to the device: its data stage
        std::size_t length = 0; ///< asked for
        Outcome outcome = Outcome::Done;
        std::size_t moved = 0;
    };

    /// The first so many are kept; later ones are only counted.
    static constexpr std::size_t limit = 100000;

    void add(Entry entry)
    {
        ++m_count;
        if (m_entries.size() < limit) {
            m_entries.push_back(std::move(entry));
        }
    }
    void clear()
    {
        m_entries.clear();
        m_count = 0;
        m_afterUnplug = 0;
    }
    void addAfterUnplug() { ++m_afterUnplug; }

    /// Vendor requests and bulk writes; standard requests are the bus's own affair and are not recorded.
    [[nodiscard]] const std::vector<Entry> &entries() const { return m_entries; }
    [[nodiscard]] std::size_t count() const { return m_count; }
    /// Requests of all kinds while no device was attached.
    [[nodiscard]] std::size_t afterUnplug() const { return m_afterUnplug; }

private:
    std::vector<Entry> m_entries;
    std::size_t m_count = 0;
    std::size_t m_afterUnplug = 0;
};

} // namespace emulator
