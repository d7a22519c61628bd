#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

/// The parts of a frame on a serial line: address, function, data; the check is left out (Modbus over serial line
/// V1.02, 2.2; Modbus application protocol V1.1b3, 4.1 and 6).
class ModbusFrame {
public:
    static constexpr std::uint8_t broadcast = 0;

    enum Function : std::uint8_t {
        ReadCoils = 1,
        ReadDiscreteInputs = 2,
        ReadHoldingRegisters = 3,
        ReadInputRegisters = 4,
        WriteSingleCoil = 5,
        WriteSingleRegister = 6,
        WriteMultipleCoils = 15,
        WriteMultipleRegisters = 16,
        MaskWriteRegister = 22,
        ReadWriteRegisters = 23,
    };

    /// @param bytes  from the address on, two at least, without the check
    explicit ModbusFrame(std::span<const std::uint8_t> bytes) : m_bytes(bytes) {}

    [[nodiscard]] std::uint8_t unit() const { return m_bytes[0]; }
    [[nodiscard]] std::uint8_t function() const { return m_bytes[1] & 0x7fU; }
    [[nodiscard]] bool isException() const { return (m_bytes[1] & 0x80U) != 0; }
    [[nodiscard]] std::span<const std::uint8_t> data() const { return m_bytes.subspan(2); }
    /// The 16 bits at an offset of the data, 0 behind its end.
    [[nodiscard]] std::uint16_t word(std::size_t offset) const
    {
        const auto all = data();
        return offset + 1 < all.size() ? std::uint16_t(all[offset] << 8 | all[offset + 1]) : std::uint16_t(0);
    }
    [[nodiscard]] bool isReadOfBits() const { return function() == ReadCoils || function() == ReadDiscreteInputs; }
    [[nodiscard]] bool isRead() const { return function() >= ReadCoils && function() <= ReadInputRegisters; }
    /// Its length is that of a request, of a response. Both for functions that say the same in both directions.
    [[nodiscard]] bool mayBeRequest() const;
    [[nodiscard]] bool mayBeResponse() const;
    /// The function in the words of the standard; empty for one that it does not know.
    [[nodiscard]] std::string_view functionName() const;
    [[nodiscard]] std::string_view exceptionName() const;
    /// The kind of what a function reads or writes: "coil", "holding register".
    [[nodiscard]] std::string_view tableName() const;

private:
    std::span<const std::uint8_t> m_bytes;
};
