#pragma once

#include "files/ChannelOffer.h"
#include "files/TextPieces.h"

#include <QString>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// The declarations of a value change dump (IEEE Std 1364-2005, clause 18.2). Private to this folder.

/// The identifier codes of a dump: words of printable letters, short ones in tables.
class VcdCodes {
public:
    static constexpr std::size_t lengthMax = 32; ///< letters

    VcdCodes() { m_one.fill(-1); }

    /// @return the code's number, a new one if it is new; -1 if it is none
    [[nodiscard]] std::int32_t add(std::string_view code);
    /// @return -1 for one that is not declared
    [[nodiscard]] std::int32_t find(std::string_view code) const
    {
        return code.size() == 1 ? m_one[std::uint8_t(code[0])] : findLong(code);
    }
    [[nodiscard]] std::int32_t count() const { return m_count; }

private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
    };
    [[nodiscard]] std::int32_t findLong(std::string_view code) const;

    std::array<std::int32_t, 256> m_one;
    std::vector<std::int32_t> m_few; ///< of two and three letters; made when the first comes
    std::unordered_map<std::string, std::int32_t, Hash, std::equal_to<>> m_more;
    std::int32_t m_count = 0;
};

/// The bytes of a dump and a place in them, which goes forward word by word.
struct VcdText {
    explicit VcdText(QIODevice &device) : pieces(device), at(pieces.begin()) {}

    TextPieces pieces;
    const char *at;
    QString error; ///< with the number of the line; empty for none

    /// Passes blanks and takes the next word, which is good until the next call. @return false at the file's end, and
    /// when something is wrong with it
    [[nodiscard]] bool word(std::string_view &word);
    /// Passes what comes before the next "$end", and that. `text` takes what fits into 512 bytes, if it is there.
    /// Memory: none. @return false at the file's end
    [[nodiscard]] bool passToEnd(std::string *text = nullptr);
    /// Sets the error, with the line of `place`. @return false
    bool fail(const char *place, const QString &what);
};

/// What the declarations tell.
struct VcdDeclarations {
    std::int64_t ticksPerSecond = 1'000'000'000;
    std::int64_t timeFactor = 1; ///< of the times in the file: of a scale of tens of seconds
    ChannelOffer offer;
    VcdCodes codes;
    std::vector<std::int32_t> codeOf; ///< of each entry of the offer
    std::int64_t toldRate = 0;        ///< Hz, in a comment; 0 for none
    std::int64_t toldTrigger = 0;     ///< sample
    int otherKinds = 0;               ///< variables that are no bits
    bool hasScale = false;

    /// Reads to the end of the declarations. @return false with the text's error set
    [[nodiscard]] bool read(VcdText &text);

private:
    [[nodiscard]] bool takeCommand(VcdText &text, std::string_view command);
    [[nodiscard]] bool takeScale(VcdText &text);
    [[nodiscard]] bool takeScope(VcdText &text);
    [[nodiscard]] bool takeVariable(VcdText &text);
    void takeComment(const std::string &comment);

    std::vector<std::int32_t> m_open; ///< scopes
};
