#pragma once

#include "SdioBus.h"

#include <array>
#include <cstddef>
#include <cstdint>

/// What the commands so far make of the data lines: which data comes next, and how long its blocks are.
class SdioTransfer {
public:
    enum class Direction : std::uint8_t { None, Read, Write };

    /// Takes note of a command whose check is right.
    void command(const SdioToken &token);
    /// Takes note of a response.
    void response(const SdioToken &token);
    /// Takes note of a block that was read.
    void blockDone();
    /// What comes on the data lines is not what was announced.
    void giveUp();
    [[nodiscard]] Direction direction() const { return m_direction; }
    [[nodiscard]] std::size_t blockLength() const { return m_length; }
    /// The length of the response that comes next.
    [[nodiscard]] SdioLength responseLength() const;
    [[nodiscard]] std::uint8_t lastCommand() const { return m_last; }
    [[nodiscard]] bool hasCommand() const { return m_hasLast; }
    /// The command before was CMD55.
    [[nodiscard]] bool isApplication() const { return m_isApplication; }
    /// A response was given behind which the card may hold DAT0 low.
    [[nodiscard]] bool mayBeBusy() const { return m_mayBeBusy; }
    void busyDone() { m_mayBeBusy = false; }

private:
    static constexpr std::size_t usualLength = 512;
    static constexpr std::size_t mostLength = 2048; ///< of a block (CSD, READ_BL_LEN, 5.3.2)
    static constexpr std::uint32_t endless = UINT32_MAX;

    void begin(Direction direction, std::size_t length, std::uint32_t blocks = 1);
    void applicationData(const SdioToken &token);
    void plainData(const SdioToken &token);
    void extended(std::uint32_t argument);
    void direct(std::uint32_t argument);

    Direction m_direction = Direction::None;
    std::size_t m_length = usualLength;
    std::uint32_t m_blocksLeft = 0;
    std::size_t m_setLength = usualLength;
    std::uint32_t m_setCount = 0;
    std::array<std::size_t, 8> m_functionLengths{}; ///< block sizes of SDIO functions
    std::uint8_t m_last = 0;
    bool m_hasLast = false;
    bool m_isApplication = false;
    bool m_nextIsApplication = false;
    bool m_mayBeBusy = false;
};
