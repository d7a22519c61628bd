#pragma once

#include "AnalyzerTypes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace lux {

/// A short piece of text that owns its characters; made without the heap.
class ShortText {
public:
    static constexpr std::size_t most = 95;

    ShortText() = default;
    ShortText(std::string_view text) { add(text); } // NOLINT(google-explicit-constructor): a text like any other
    operator std::string_view() const { return {m_text, m_size}; } // NOLINT(google-explicit-constructor)
    [[nodiscard]] std::string_view view() const { return {m_text, m_size}; }
    /// What is too long is cut.
    void add(std::string_view text)
    {
        const std::size_t size = std::min(text.size(), most - m_size);
        text.copy(m_text + m_size, size); // which may have no memory, where it is empty
        m_size = std::uint8_t(m_size + size);
    }
    void add(char c)
    {
        if (m_size < most)
            m_text[m_size++] = c;
    }

private:
    char m_text[most]; ///< the first `m_size` of them
    std::uint8_t m_size = 0;
};

/// A number of `bits` bits, 1 to 64, as all decoders show it: 0b0100, 65, 0x41, 'A', 'A' (0x41). Binary and hexadecimal
/// have all leading zeros; control characters have their names (LF, ESC). What is wider than 8 bits, or no ASCII
/// character, is hexadecimal in both ASCII bases.
[[nodiscard]] LUX_ANALYZER_API ShortText formatNumber(std::uint64_t value, unsigned bits, DisplayBase base);
/// A number in decimal, whatever the base: counts, indices, lengths.
[[nodiscard]] LUX_ANALYZER_API ShortText formatCount(std::int64_t value);
/// Samples as a time with three or more digits and its unit: "8.68 us".
[[nodiscard]] LUX_ANALYZER_API ShortText formatDuration(std::int64_t samples, std::int64_t sampleRate);

/// Takes the texts of one frame, from the shortest to the longest: "A", "Address", "Address 0x50 read". The bubble
/// shows the longest that fits, and the results list the last. Made by the runtime, and filled by Results::describe().
class LUX_ANALYZER_API FrameText {
public:
    /// What the texts are for; a decoder that says different things on its lines looks at the channel.
    enum class Purpose : std::uint8_t { Bubble, Tabular };

    FrameText();
    FrameText(const FrameText &) = delete;
    FrameText &operator=(const FrameText &) = delete;
    ~FrameText();

    [[nodiscard]] DisplayBase base() const { return m_base; }
    [[nodiscard]] bool isBubble() const { return m_purpose == Purpose::Bubble; }
    /// The row on which the bubble is; undefined for the results list.
    [[nodiscard]] const Channel &channel() const { return m_channel; }
    /// A number in the base that the user has chosen.
    [[nodiscard]] ShortText number(std::uint64_t value, unsigned bits) const
    {
        return formatNumber(value, bits, m_base);
    }
    /// One text, out of pieces: out.add("Address ", out.number(address, 7), " read").
    template<class... Pieces>
    void add(const Pieces &...pieces)
    {
        const std::string_view list[] = {std::string_view(pieces)...};
        addPieces(list, sizeof...(pieces));
    }
    /// One text that ends in bytes in the chosen base, with a blank between; in ASCII as one text where all are
    /// printable. At most `most` of them, then "...".
    void addBytes(std::string_view before, std::span<const std::uint8_t> bytes, std::size_t most = 256);

    // ---- for the runtime -------------------------------------------------------------------------------------------

    void start(Purpose purpose, const Channel &channel, DisplayBase base);
    [[nodiscard]] std::string_view last() const;
    void strings(const char *const **texts, std::uint32_t *count) const;

private:
    void addPieces(const std::string_view *pieces, std::size_t count);

    struct Private;
    Private *m_private;
    Channel m_channel;
    DisplayBase m_base = DisplayBase::Hexadecimal;
    Purpose m_purpose = Purpose::Tabular;
};

/// Takes the structured values of one frame: a kind and named values, for other programs. Names are string literals:
/// lower-case ASCII. Made by the runtime, and filled by Results::values().
class LUX_ANALYZER_API FrameValues {
public:
    FrameValues();
    FrameValues(const FrameValues &) = delete;
    FrameValues &operator=(const FrameValues &) = delete;
    ~FrameValues();

    FrameValues &kind(const char *name);
    FrameValues &number(const char *name, std::uint64_t value);
    FrameValues &flag(const char *name, bool value);
    FrameValues &text(const char *name, std::string_view value);
    /// Upper-case hexadecimal digits: `digits` of them, or two a byte in the order given.
    FrameValues &hex(const char *name, std::uint64_t value, unsigned digits);
    FrameValues &hex(const char *name, std::span<const std::uint8_t> bytes);
    /// A value that the frame should have but does not.
    FrameValues &none(const char *name);

    // ---- for the runtime -------------------------------------------------------------------------------------------

    void start();
    [[nodiscard]] const char *frameKind() const;
    [[nodiscard]] std::span<const FrameValue> list() const;

private:
    struct Private;
    Private *m_private;
};

} // namespace lux
