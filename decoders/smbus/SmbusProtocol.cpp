#include "SmbusProtocol.h"

using smbus::Protocol;

namespace {

/// Bytes behind an address, without the packet error code.
using Bytes = std::span<const std::uint8_t>;

/// The byte at `at` counts those behind it.
bool isBlock(Bytes bytes, std::size_t at)
{
    return bytes.size() > at + 1 && bytes[at] == bytes.size() - at - 1;
}

Protocol writeProtocol(unsigned address, Bytes data)
{
    if (address == smbus::hostAddress && data.size() == 3) {
        return {"Host Notify"};
    }
    switch (data.size()) {
    case 0:
        return {"Quick Command"};
    case 1:
        return {"Send Byte"};
    case 2:
        return {"Write Byte", true};
    case 3:
        return {"Write Word", true};
    default:
        break;
    }
    if (isBlock(data, 1)) {
        return {"Block Write", true};
    }
    switch (data.size()) {
    case 5:
        return {"Write 32", true};
    case 9:
        return {"Write 64", true};
    default:
        return {"Write"};
    }
}

Protocol readProtocol(unsigned address, Bytes data)
{
    if (address == smbus::alertAddress && data.size() == 1) {
        return {"Alert Response"};
    }
    switch (data.size()) {
    case 0:
        return {"Quick Command"};
    case 1:
        return {"Receive Byte"};
    default:
        return {"Read"};
    }
}

Protocol combinedProtocol(Bytes written, Bytes read)
{
    if (written.size() == 1) {
        switch (read.size()) {
        case 1:
            return {"Read Byte", true};
        case 2:
            return {"Read Word", true};
        default:
            break;
        }
        if (isBlock(read, 0)) {
            return {"Block Read", true};
        }
        switch (read.size()) {
        case 4:
            return {"Read 32", true};
        case 8:
            return {"Read 64", true};
        default:
            break;
        }
    } else if (written.size() == 3 && read.size() == 2) {
        return {"Process Call", true};
    } else if (isBlock(written, 1) && isBlock(read, 0)) {
        return {"Block Process Call", true};
    }
    return {"Write then read"};
}

} // namespace

Protocol smbus::protocolOf(const Transaction &transaction)
{
    const Bytes all = transaction.bytes.first(transaction.bytes.size() - std::size_t(transaction.hasPec));
    const unsigned address = all[0] >> 1;
    if (transaction.secondAddress > 0 && transaction.secondAddress < all.size()) {
        return combinedProtocol(all.subspan(1, transaction.secondAddress - 1),
                                all.subspan(transaction.secondAddress + 1));
    }
    return (all[0] & 1U) != 0 ? readProtocol(address, all.subspan(1)) : writeProtocol(address, all.subspan(1));
}

std::string_view smbus::addressName(unsigned address)
{
    switch (address) {
    case 0x00:
        return "General call";
    case hostAddress:
        return "Host";
    case 0x09:
        return "Smart battery charger";
    case 0x0a:
        return "Smart battery selector";
    case 0x0b:
        return "Smart battery";
    case alertAddress:
        return "Alert response";
    case 0x28:
        return "ACCESS.bus host";
    case 0x37:
        return "ACCESS.bus default";
    case 0x61:
        return "Device default";
    default:
        return {};
    }
}
