#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The channels that a file or a capture has, and which of them are wanted. One thread at a time.
///
/// A vector of bits is one entry, so that a file with thousands of wide ones takes little memory. Channels are numbered
/// from 0 over all entries, within a vector from its lowest bit on.
class ChannelOffer {
public:
    /// Bytes that names may take in all, with what stands beside each.
    static constexpr std::int64_t memoryMax = std::int64_t(24) << 20;

    /// One signal or vector.
    struct Entry {
        std::string name;
        std::int32_t scope = 0;  ///< of addScope()
        std::int32_t width = 1;  ///< bits
        std::int32_t low = 0;    ///< index of the lowest bit in its name
        std::int32_t step = 1;   ///< 1 or -1: from bit to bit of the name
        bool isIndexed = false;  ///< the name of a bit has its index
        std::int64_t number = 0; ///< of the lowest bit; set by add()
    };
    /// One channel.
    struct Bit {
        std::int32_t entry;
        std::int32_t bit; ///< from the lowest one
        bool operator==(const Bit &) const = default;
    };
    struct Pick {
        std::vector<Bit> bits; ///< of channel 0, 1 and so on; at most CaptureFiller::channelMax
        QStringList names;     ///< of these
        QString error;         ///< why there are none; empty if there are
    };

    ChannelOffer() : m_scopes(1) {}

    /// A path such as "top.cpu". @return its number for Entry::scope; the one of no scope is 0
    std::int32_t addScope(std::string path);
    [[nodiscard]] std::string_view scope(std::int32_t number) const { return m_scopes[std::size_t(number)]; }
    void add(Entry entry);
    /// Whether what was added is more than memoryMax.
    [[nodiscard]] bool isTooMuch() const { return m_memory > memoryMax; }

    [[nodiscard]] std::size_t entries() const { return m_entries.size(); }
    [[nodiscard]] const Entry &entry(std::size_t number) const { return m_entries[number]; }
    /// Channels, the bits of vectors each for itself.
    [[nodiscard]] std::int64_t total() const { return m_total; }

    /// The channels that ForeignOptions::channels means. A number goes before a name of digits, and a name in any scope
    /// before one with its scope. Cost: one step an entry for each name.
    [[nodiscard]] Pick pick(const QStringList &wanted) const;

private:
    [[nodiscard]] Bit bitOf(std::int64_t number) const;
    [[nodiscard]] QString nameOf(const Bit &bit, bool withScope) const;
    [[nodiscard]] QString fullNameOf(const Bit &bit) const { return nameOf(bit, true); }
    [[nodiscard]] bool takeNumbers(const QString &item, std::vector<Bit> &bits, QString &error) const;
    void takeNamed(const QString &item, std::vector<Bit> &bits, QString &error) const;
    void matchesOf(const std::string &item, bool withScope, std::vector<Bit> &found) const;
    [[nodiscard]] QString tooMany() const;
    void tellNames(Pick &pick) const;

    std::vector<std::string> m_scopes;
    std::vector<Entry> m_entries;
    std::int64_t m_total = 0;
    std::int64_t m_memory = 0; ///< bytes
};
