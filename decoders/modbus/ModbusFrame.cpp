#include "ModbusFrame.h"

#include <array>

namespace {

struct Name {
    std::uint8_t number;
    std::string_view text;
};

template<std::size_t count>
std::string_view find(const std::array<Name, count> &names, std::uint8_t number)
{
    for (const Name &name : names) {
        if (name.number == number) {
            return name.text;
        }
    }
    return {};
}

} // namespace

bool ModbusFrame::mayBeRequest() const
{
    constexpr std::size_t addressAndCount = 4;
    if (isException()) {
        return false;
    }
    const auto all = data();
    switch (function()) {
    case ReadCoils:
    case ReadDiscreteInputs:
    case ReadHoldingRegisters:
    case ReadInputRegisters:
    case WriteSingleCoil:
    case WriteSingleRegister:
        return all.size() == addressAndCount;
    case WriteMultipleCoils:
    case WriteMultipleRegisters:
        return all.size() > addressAndCount && all.size() == addressAndCount + 1 + all[addressAndCount];
    case ReadWriteRegisters: {
        constexpr std::size_t head = 2 * addressAndCount;
        return all.size() > head && all.size() == head + 1 + all[head];
    }
    default:
        return true;
    }
}

bool ModbusFrame::mayBeResponse() const
{
    constexpr std::size_t addressAndCount = 4;
    const auto all = data();
    if (isException()) {
        return all.size() == 1;
    }
    switch (function()) {
    case ReadCoils:
    case ReadDiscreteInputs:
    case ReadHoldingRegisters:
    case ReadInputRegisters:
    case ReadWriteRegisters:
        return !all.empty() && all.size() == std::size_t(1) + all[0];
    case WriteSingleCoil:
    case WriteSingleRegister:
    case WriteMultipleCoils:
    case WriteMultipleRegisters:
        return all.size() == addressAndCount;
    default:
        return true;
    }
}

std::string_view ModbusFrame::functionName() const
{
    static constexpr std::array<Name, 19> names = {{{1, "Read coils"},
                                                    {2, "Read discrete inputs"},
                                                    {3, "Read holding registers"},
                                                    {4, "Read input registers"},
                                                    {5, "Write single coil"},
                                                    {6, "Write single register"},
                                                    {7, "Read exception status"},
                                                    {8, "Diagnostics"},
                                                    {11, "Get comm event counter"},
                                                    {12, "Get comm event log"},
                                                    {15, "Write multiple coils"},
                                                    {16, "Write multiple registers"},
                                                    {17, "Report server ID"},
                                                    {20, "Read file record"},
                                                    {21, "Write file record"},
                                                    {22, "Mask write register"},
                                                    {23, "Read/write multiple registers"},
                                                    {24, "Read FIFO queue"},
                                                    {43, "Encapsulated interface transport"}}};
    return find(names, function());
}

std::string_view ModbusFrame::exceptionName() const
{
    static constexpr std::array<Name, 9> names = {{{1, "illegal function"},
                                                   {2, "illegal data address"},
                                                   {3, "illegal data value"},
                                                   {4, "server device failure"},
                                                   {5, "acknowledge"},
                                                   {6, "server device busy"},
                                                   {8, "memory parity error"},
                                                   {10, "gateway path unavailable"},
                                                   {11, "gateway target device failed to respond"}}};
    return data().empty() ? std::string_view() : find(names, data()[0]);
}

std::string_view ModbusFrame::tableName() const
{
    switch (function()) {
    case ReadCoils:
    case WriteSingleCoil:
    case WriteMultipleCoils:
        return "coil";
    case ReadDiscreteInputs:
        return "discrete input";
    case ReadInputRegisters:
        return "input register";
    default:
        return "holding register";
    }
}
