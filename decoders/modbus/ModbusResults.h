#pragma once

#include "ModbusFrame.h"
#include "ModbusReceiver.h"
#include "ModbusSettings.h"

#include <cstdint>
#include <span>
#include <string_view>

/// What was received: frames with their check, and characters that make none.
class ModbusResults final : public lux::Results {
public:
    enum Kind : std::uint8_t { Whole, Error };
    enum Flag : std::uint16_t {
        CheckWrong = 1,
        Response = 2,   ///< else a request
        HasRequest = 4, ///< of a response: the request is known
        ParityError = 8,
        FramingError = 16,
        Pause = 32, ///< a silence of more than 1.5 characters within
    };
    enum Line : std::uint8_t { Rx, Tx };

    explicit ModbusResults(const ModbusSettings &settings);

    /// For the worker: keeps what was received.
    /// @param asked  the first two words of the request that a response belongs to
    void addReceived(const ModbusReceiver::Received &received, Line line, unsigned flags, std::uint32_t asked);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;
    void exportFile(lux::ExportWriter &out, std::uint32_t optionId) const override;

private:
    // The words of a frame: `data` its bytes, `extra` the words of the request.
    [[nodiscard]] static bool has(const FrameData &frame, Flag flag) { return (frame.flags & flag) != 0; }
    [[nodiscard]] static std::uint16_t askedAddress(const FrameData &frame) { return std::uint16_t(frame.extra >> 16); }
    [[nodiscard]] static std::uint16_t askedCount(const FrameData &frame) { return std::uint16_t(frame.extra); }
    [[nodiscard]] Channel channelOf(const FrameData &frame) const { return frame.line == Rx ? m_rx : m_tx; }
    [[nodiscard]] std::span<const std::uint8_t> withoutCheck(const FrameData &frame) const;
    void describeFrame(const FrameData &frame, lux::FrameText &out) const;
    [[nodiscard]] lux::ShortText details(const FrameData &frame, const ModbusFrame &modbus,
                                         const lux::FrameText &out) const;
    void exportRegisters(lux::ExportWriter &out) const;
    void writeRegisters(lux::ExportWriter &out, const FrameData &frame) const;

    Channel m_rx;
    Channel m_tx;
    std::size_t m_checkBytes;
};
