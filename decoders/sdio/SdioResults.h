#pragma once

#include "SdioBus.h"
#include "SdioNames.h"
#include "SdioSettings.h"

#include <cstdint>
#include <span>

/// What was sent on CMD and on the data lines.
class SdioResults final : public lux::Results {
public:
    enum Kind : std::uint8_t {
        Command,
        Response,
        LongResponse, ///< `data` is the register
        Cut,          ///< a token that the capture's end cuts
        Data,
        CutData, ///< a block that a stop or the capture's end cuts
        Status,  ///< what the card says to a block that was written
        Busy,
    };
    enum Flag : std::uint16_t { CrcWrong = 1, EndWrong = 2, Application = 4, HasCommand = 8, FromHost = 16, Wide = 32 };

    explicit SdioResults(const SdioSettings &settings);

    /// For the worker. @param answers  the command that a response belongs to; the command's own index else
    void addToken(const SdioToken &token, std::uint8_t answers, std::uint16_t flags);
    void addBlock(const SdioBlock &block, bool isWide);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;
    void exportFile(lux::ExportWriter &out, std::uint32_t optionId) const override;

private:
    [[nodiscard]] static bool has(const FrameData &frame, Flag flag) { return (frame.flags & flag) != 0; }
    [[nodiscard]] static std::uint8_t indexOf(const FrameData &frame) { return std::uint8_t(frame.extra); }
    [[nodiscard]] static std::uint8_t answersOf(const FrameData &frame) { return std::uint8_t(frame.extra >> 8); }
    [[nodiscard]] static std::uint8_t bitsOf(const FrameData &frame) { return std::uint8_t(frame.extra >> 16); }
    [[nodiscard]] static sdio::Response typeOf(const FrameData &frame);
    [[nodiscard]] static bool isWrong(const FrameData &frame);
    void describeCommand(const FrameData &frame, lux::FrameText &out) const;
    void describeResponse(const FrameData &frame, lux::FrameText &out) const;
    void describeData(const FrameData &frame, lux::FrameText &out) const;
    void exportCommands(lux::ExportWriter &out) const;

    Channel m_cmd;
    Channel m_dat0;
};
