#pragma once

#include "AnalyzerExport.h"

#include <cstdint>
#include <type_traits>

/// How numbers are shown.
enum class DisplayBase : std::int32_t { Binary = 0, Decimal = 1, Hexadecimal = 2, Ascii = 3, AsciiHex = 4 };

/// The level of a line. Anything but 0 is high.
enum class BitState : std::int32_t { Low = 0, High = 1 };

/// A small sign on a channel's row. The values are those of the drawing; what is not listed is not drawn.
enum class MarkerType : std::int32_t {
    Dot = 0,
    ErrorDot = 1,
    Square = 2,
    ErrorSquare = 3,
    UpArrow = 4,
    DownArrow = 5,
    X = 6,
    ErrorX = 7,
    Start = 8,
    Stop = 9,
    One = 10,
    Zero = 11,
};

/// A digital channel. `Channel()` is the undefined one, which a setting holds when its selection is "None". Compare
/// indices, not objects: `deviceId` is 0 throughout, and -1 in the undefined channel.
class Channel {
public:
    constexpr Channel() = default;
    constexpr Channel(std::uint64_t device, std::uint32_t index) : deviceId(device), channelIndex(index) {}
    [[nodiscard]] constexpr bool isDefined() const { return channelIndex != ~std::uint32_t(0); }

    std::uint64_t deviceId = ~std::uint64_t(0);
    std::uint32_t channelIndex = ~std::uint32_t(0);
};
static_assert(sizeof(Channel) == 16);

/// A marker: the sample at which it stands, and what it looks like.
struct Marker {
    std::uint64_t sample = 0;
    MarkerType type = MarkerType::Dot;
};
static_assert(sizeof(Marker) == 16);

/// What a frame says, without the class around it: cheap to make and to copy. The words behind the two samples belong
/// to the decoder; the names are what the runtime's own decoders use them for.
struct FrameData {
    std::int64_t firstSample = 0;
    std::int64_t lastSample = 0; ///< at or behind the first; the frame ends with it
    std::uint64_t data = 0;      ///< the value, or a payload (AnalyzerResults::AddPayload)
    std::uint64_t data2 = 0;     ///< a second value: the other line, a check word
    std::uint8_t kind = 0;       ///< the decoder's own list of kinds
    std::uint8_t line = 0;       ///< which of several equal lines it came from
    std::uint16_t flags = 0;     ///< the decoder's own bits: errors, direction
    std::uint32_t extra = 0;     ///< a small value: an index, a length
};
static_assert(std::is_trivially_copyable_v<FrameData> && sizeof(FrameData) == 40);

/// One decoded element: five 64-bit words, copied whole.
class LUX_ANALYZER_API Frame : public FrameData {
public:
    Frame();
    explicit Frame(const FrameData &words);
    Frame(const Frame &) = default;
    Frame &operator=(const Frame &) = default;
    ~Frame();
};
static_assert(sizeof(Frame) == 40);

/// How the last run of a decoder went.
enum class DecodeStatus : std::int32_t {
    Idle = 0,        ///< not run yet
    Running = 1,     ///< a worker is decoding
    Complete = 2,    ///< the whole capture was decoded
    Stopped = 3,     ///< ended early because it was asked to
    OutOfMemory = 4, ///< the memory budget is spent; what was found until then is there
    Failed = 5,      ///< the decoder failed; Analyzer::GetDecodeMessage tells why
};

/// The kind of one value of a frame, see AnalyzerResults::GetFrameValues.
enum class FrameValueType : std::int32_t {
    None = 0,   ///< the frame has the value's name but no value
    Number = 1, ///< `number`
    Flag = 2,   ///< `number` is 0 or 1
    Text = 3,   ///< `text`
    Hex = 4,    ///< `text`, upper-case hexadecimal digits
};

/// One value of a frame, by its stable ASCII name.
struct FrameValue {
    const char *name = nullptr;
    const char *text = nullptr;
    std::uint64_t number = 0;
    FrameValueType type = FrameValueType::None;
};
static_assert(sizeof(FrameValue) == 32);
