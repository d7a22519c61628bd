#pragma once

#include "QspiSettings.h"

#include <cstdint>
#include <span>
#include <vector>

/// What was transferred: transfers, and the phases in them.
class QspiResults final : public lux::Results {
public:
    enum Kind : std::uint8_t {
        Transfer,
        Short, ///< a select with fewer clocks than a command has
        Command,
        Address,
        Mode,
        Dummy, ///< `data` clocks
        Data,
    };
    enum Flag : std::uint16_t {
        HasCommand = 1,
        HasAddress = 2,
        HasMode = 4,
        Qpi = 8,
        Continued = 16, ///< the command is that of the transfer before
        Write = 32,
        Raw = 64, ///< data without a command
        FourBytes = 128,
    };
    /// A transfer while it goes on.
    struct Content {
        std::uint8_t command = 0;
        std::uint32_t address = 0;
        std::uint8_t mode = 0;
        std::uint8_t lines = 0; ///< of the data
        unsigned flags = 0;
        std::vector<std::uint8_t> data;
        std::vector<std::uint8_t> out; ///< all single-line bytes behind the command, from the controller
        std::vector<std::uint8_t> in;  ///< and from the chip
    };
    /// Bytes that values tell; exports have all of them.
    static constexpr std::size_t mostShown = 64;

    explicit QspiResults(const QspiSettings &settings);

    /// For the worker.
    [[nodiscard]] FrameData transferFrame(const Content &content, lux::Sample first, lux::Sample last);

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override;
    void values(const FrameData &frame, lux::FrameValues &out) const override;
    [[nodiscard]] std::span<const char *const> columns() const override;
    void exportFile(lux::ExportWriter &out, std::uint32_t optionId) const override;

private:
    // The words of a transfer: `data` its data, `data2` address and single-line bytes, `extra` command, lines, mode.
    [[nodiscard]] static bool has(const FrameData &frame, Flag flag) { return (frame.flags & flag) != 0; }
    [[nodiscard]] static std::uint8_t commandOf(const FrameData &frame) { return std::uint8_t(frame.extra); }
    [[nodiscard]] static std::uint8_t linesOf(const FrameData &frame) { return std::uint8_t(frame.extra >> 8); }
    [[nodiscard]] static std::uint8_t modeOf(const FrameData &frame) { return std::uint8_t(frame.extra >> 16); }
    [[nodiscard]] static std::size_t singleCountOf(const FrameData &frame) { return frame.extra >> 24; }
    [[nodiscard]] std::span<const std::uint8_t> dataOf(const FrameData &frame) const;
    [[nodiscard]] std::span<const std::uint8_t> restOf(const FrameData &frame) const { return bytes(frame.data2); }
    [[nodiscard]] std::uint32_t addressOf(const FrameData &frame) const;
    [[nodiscard]] std::string_view nameOf(const FrameData &frame) const;
    void describeTransfer(const FrameData &frame, lux::FrameText &out) const;
    void transferValues(const FrameData &frame, lux::FrameValues &out) const;
    void exportData(lux::ExportWriter &out, bool written) const;
    void exportTransfers(lux::ExportWriter &out) const;

    Channel m_cs;
    Channel m_io;
    QspiSet m_set;
};
