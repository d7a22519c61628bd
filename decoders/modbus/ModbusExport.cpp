#include "ModbusResults.h"

using lux::ExportWriter;

namespace {

/// One line a register, or a coil.
class RegisterLines {
public:
    RegisterLines(ExportWriter &out, std::int64_t sample, std::uint8_t unit)
        : m_out(out), m_sample(sample), m_unit(unit)
    {}

    void line(std::string_view access, std::string_view table, std::uint32_t address, std::uint32_t value)
    {
        m_out.field(m_out.seconds(m_sample));
        m_out.field(std::int64_t(m_unit));
        m_out.field(access);
        m_out.field(table);
        m_out.field(std::int64_t(address));
        m_out.field(std::int64_t(value));
        m_out.endLine();
    }
    /// Registers of two bytes, the higher first.
    void registers(std::string_view access, std::string_view table, std::uint32_t address,
                   std::span<const std::uint8_t> bytes)
    {
        for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
            line(access, table, address++, std::uint32_t(bytes[i] << 8 | bytes[i + 1]));
        }
    }
    /// Eight in a byte, the first in the lowest bit.
    void bits(std::string_view access, std::string_view table, std::uint32_t address, std::uint32_t count,
              std::span<const std::uint8_t> bytes)
    {
        for (std::size_t i = 0; i < count && i / 8 < bytes.size(); ++i) {
            line(access, table, address++, bytes[i / 8] >> i % 8 & 1U);
        }
    }

private:
    ExportWriter &m_out;
    std::int64_t m_sample;
    std::uint8_t m_unit;
};

constexpr std::string_view wasRead = "read";
constexpr std::string_view wasWritten = "write";

void writeRequest(RegisterLines &lines, const ModbusFrame &modbus)
{
    constexpr std::size_t bytesOfMask = 6; // address, both masks
    constexpr std::size_t headOfMany = 5;  // address, count, bytes
    constexpr std::size_t headOfBoth = 9;  // the same for the read before it
    const std::string_view table = modbus.tableName();
    switch (modbus.function()) {
    case ModbusFrame::WriteSingleCoil:
        lines.line(wasWritten, table, modbus.word(0), modbus.word(2) != 0 ? 1 : 0);
        break;
    case ModbusFrame::WriteSingleRegister:
        lines.line(wasWritten, table, modbus.word(0), modbus.word(2));
        break;
    case ModbusFrame::WriteMultipleCoils:
        lines.bits(wasWritten, table, modbus.word(0), modbus.word(2), modbus.data().subspan(headOfMany));
        break;
    case ModbusFrame::WriteMultipleRegisters:
        lines.registers(wasWritten, table, modbus.word(0), modbus.data().subspan(headOfMany));
        break;
    case ModbusFrame::ReadWriteRegisters:
        lines.registers(wasWritten, table, modbus.word(4), modbus.data().subspan(headOfBoth));
        break;
    case ModbusFrame::MaskWriteRegister: // what it becomes depends on what it was
        if (modbus.data().size() == bytesOfMask) {
            lines.line("and mask", table, modbus.word(0), modbus.word(2));
            lines.line("or mask", table, modbus.word(0), modbus.word(4));
        }
        break;
    default:
        break;
    }
}

} // namespace

void ModbusResults::exportFile(ExportWriter &out, std::uint32_t optionId) const
{
    if (optionId == ModbusSettings::Registers) {
        exportRegisters(out);
    } else {
        exportFrames(out);
    }
}

/// What was read, by the responses whose requests are known, and what was written, by the requests.
void ModbusResults::exportRegisters(ExportWriter &out) const
{
    for (const char *column : {"time", "unit", "access", "table", "address", "value"}) {
        out.field(column);
    }
    out.endLine();
    const std::uint64_t count = frameCount();
    for (std::uint64_t i = 0; i < count; ++i) {
        const FrameData one = frame(i);
        if (one.kind == Whole && !has(one, CheckWrong)) {
            writeRegisters(out, one);
        }
        out.progress(i, count);
    }
}

void ModbusResults::writeRegisters(ExportWriter &out, const FrameData &frame) const
{
    const ModbusFrame modbus(withoutCheck(frame));
    RegisterLines lines(out, frame.firstSample, modbus.unit());
    if (!has(frame, Response)) {
        if (modbus.mayBeRequest()) {
            writeRequest(lines, modbus);
        }
        return;
    }
    const bool isRead = modbus.isRead() || modbus.function() == ModbusFrame::ReadWriteRegisters;
    if (!has(frame, HasRequest) || modbus.isException() || !isRead || !modbus.mayBeResponse()) {
        return;
    }
    const auto values = modbus.data().subspan(1);
    if (modbus.isReadOfBits()) {
        lines.bits(wasRead, modbus.tableName(), askedAddress(frame), askedCount(frame), values);
    } else {
        lines.registers(wasRead, modbus.tableName(), askedAddress(frame), values);
    }
}
