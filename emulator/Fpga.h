#pragma once

#include "UsbTypes.h"

#include <vector>

namespace emulator {

/// The FPGA's configuration: takes an image over the bulk pipe and tells whether it is sound.
///
/// The size comes first, then the image, followed by zeros up to whole blocks of 4096 bytes: one block more than
/// (size + 2047) / 4096. Writes may have any length.
class Fpga {
public:
    /// The status byte that ends an upload.
    enum Status : std::uint8_t {
        Good = 0,
        NotAnnounced = 0x11, ///< no size came before
        Incomplete = 0x12,
        Surplus = 0x13,    ///< more than the announced size takes
        BadFilling = 0x14, ///< other bytes than zero behind the image
        WrongImage = 0x15
    };
    static constexpr std::size_t block = 4096;

    /// @param needsImage  false for the model whose FPGA configures itself
    explicit Fpga(bool needsImage) : m_needsImage(needsImage) { powerOn(); }

    void powerOn();
    /// The one image to accept. Empty, as at first, accepts any.
    void expect(Bytes image) { m_expected = std::move(image); }

    void announce(std::uint32_t imageSize);
    void receive(std::span<const std::uint8_t> bytes);
    /// Judges the upload and ends it.
    [[nodiscard]] std::uint8_t finish();
    void enable(bool on) { m_enabled = on && m_loaded; }

    [[nodiscard]] bool loaded() const { return m_loaded; }
    [[nodiscard]] bool enabled() const { return m_enabled; }
    /// What was received for the last announced size, the filling too.
    [[nodiscard]] const Bytes &received() const { return m_received; }
    /// The lengths of the writes since the announcement.
    [[nodiscard]] const std::vector<std::size_t> &writes() const { return m_writes; }
    /// Bytes that an upload of an image takes.
    [[nodiscard]] static std::size_t uploadSize(std::size_t imageSize)
    {
        return ((imageSize + 2047) / block + 1) * block;
    }

private:
    [[nodiscard]] Status judge() const;

    bool m_needsImage;
    Bytes m_expected;
    Bytes m_received;
    std::vector<std::size_t> m_writes;
    std::size_t m_total = 0; ///< bytes that came, kept or not
    std::size_t m_imageSize = 0;
    bool m_announced = false;
    bool m_loaded = false;
    bool m_enabled = false;
};

} // namespace emulator
