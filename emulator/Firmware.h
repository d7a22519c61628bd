#pragma once

#include "ModelFacts.h"
#include "UsbTypes.h"

#include <map>
#include <string>
#include <vector>

namespace emulator {

/// The controller without firmware: takes RAM writes in the one or the other format, checks them, and tells when a
/// firmware was started that it accepts.
///
/// A controller of the HEX kind has RAM from 0 to 0xE1FF and the control register at 0xE600, whose bit 0 holds the CPU;
/// RAM may be written only while the CPU is held. A controller of the image kind has its RAM in three pieces and takes
/// at most 1024 bytes a write; the load is opened by reading one byte, and a write of length 0 is the jump to its
/// address, which must lie in what was loaded.
class Firmware {
public:
    struct Write {
        std::uint32_t address;
        std::size_t length;
    };

    static constexpr std::uint32_t cpuControl = 0xE600;
    static constexpr std::uint32_t hexRamSize = 0xE200;
    static constexpr std::size_t imagePiece = 1024;

    explicit Firmware(FirmwareFormat format) : m_format(format) {}

    /// The power comes back: RAM and state are as new. What is expected stays.
    void powerOn();
    /// What must stand in the RAM when the firmware is started, by address. Empty (as at first) accepts any firmware of
    /// at least one byte.
    void expect(std::map<std::uint32_t, std::uint8_t> memory) { m_expected = std::move(memory); }

    /// One write. @return false if the controller refuses it: it then stalls
    bool write(std::uint32_t address, std::span<const std::uint8_t> data);
    /// One read of a byte. 0 where nothing was written.
    [[nodiscard]] std::uint8_t read(std::uint32_t address);

    /// A firmware was started that the controller accepts.
    [[nodiscard]] bool started() const { return m_started; }
    /// Written bytes by address.
    [[nodiscard]] const std::map<std::uint32_t, std::uint8_t> &memory() const { return m_memory; }
    [[nodiscard]] const std::vector<Write> &writes() const { return m_writes; }
    [[nodiscard]] std::uint32_t entry() const { return m_entry; }
    /// What was wrong with what came, in words; empty if nothing was.
    [[nodiscard]] const std::vector<std::string> &complaints() const { return m_complaints; }

private:
    bool refuse(const char *why);
    bool writeHex(std::uint32_t address, std::span<const std::uint8_t> data);
    bool writeImage(std::uint32_t address, std::span<const std::uint8_t> data);
    void store(std::uint32_t address, std::span<const std::uint8_t> data);
    void start();

    FirmwareFormat m_format;
    std::map<std::uint32_t, std::uint8_t> m_expected;
    std::map<std::uint32_t, std::uint8_t> m_memory;
    std::vector<Write> m_writes;
    std::vector<std::string> m_complaints;
    std::uint32_t m_entry = 0;
    bool m_held = false;   ///< HEX kind: the CPU stands still
    bool m_opened = false; ///< image kind: the load was opened
    bool m_started = false;
};

} // namespace emulator
