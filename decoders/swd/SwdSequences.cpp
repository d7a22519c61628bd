#include "SwdSequences.h"

#include <cstdint>

namespace {

/// Numbers are sent with their lowest bit first.
struct Known {
    std::uint64_t number;
    unsigned bits;
    std::int64_t onesBefore; ///< at least
    SwdTarget target;
    unsigned onesAtEnd;
};

constexpr std::int64_t lineReset = 49; ///< the 50th may be that with which a capture begins
constexpr Known sequences[] = {
    {0xe79e, 16, lineReset, SwdTarget::Swd, 3},     {0xedb6, 16, lineReset, SwdTarget::Swd, 3},  // deprecated
    {0xe73c, 16, lineReset, SwdTarget::Jtag, 3},    {0xaeae, 16, lineReset, SwdTarget::Jtag, 1}, // deprecated
    {0xe3bc, 16, lineReset, SwdTarget::Dormant, 3}, {0x33bbbbba, 31, 5, SwdTarget::Dormant, 2},  // from JTAG
};

// B5.3.4: 128 bits that wake a dormant port, four of idle, then the code of the protocol.
constexpr std::uint64_t alertFirst = 0x86852d956209f392;
constexpr std::uint64_t alertSecond = 0x19bc0ea2e3ddafe9;
constexpr unsigned alertBits = 128;
constexpr unsigned alertIdle = 4;
constexpr unsigned codeBits = 8;
constexpr std::uint64_t codeOfSwd = 0x1a;
constexpr std::uint64_t codeOfJtag = 0x0a;
constexpr std::int64_t onesBeforeAlert = 8;

SwdSequence activationAt(SwdBits bits)
{
    constexpr unsigned all = alertBits + alertIdle + codeBits;
    if (bits.left() < all) {
        return {};
    }
    lux::Sample last = 0;
    if (bits.number(alertBits / 2, last) != alertFirst || bits.number(alertBits / 2, last) != alertSecond ||
        bits.number(alertIdle, last) != 0) {
        return {};
    }
    const std::uint64_t code = bits.number(codeBits, last);
    if (code == codeOfSwd) {
        return {SwdTarget::Swd, all, 0};
    }
    return code == codeOfJtag ? SwdSequence{SwdTarget::Jtag, all, 0} : SwdSequence{};
}

} // namespace

SwdSequence sequenceAt(SwdBits &bits, std::int64_t ones)
{
    constexpr unsigned most = 31;
    if (ones < sequences[5].onesBefore || bits.left() < sequences[0].bits) {
        return {};
    }
    const auto count = unsigned(bits.left() < most ? sequences[0].bits : most);
    const std::uint64_t number = bits.peek(count);
    for (const Known &known : sequences) {
        const std::uint64_t mask = (std::uint64_t(1) << known.bits) - 1;
        if (ones >= known.onesBefore && count >= known.bits && (number & mask) == known.number) {
            return {known.target, known.bits, known.onesAtEnd};
        }
    }
    const std::uint64_t alertBegin = alertFirst & ((std::uint64_t(1) << count) - 1);
    return ones >= onesBeforeAlert && number == alertBegin ? activationAt(bits) : SwdSequence{};
}
