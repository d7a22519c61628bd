#pragma once

#include "Faults.h"

#include <QMetaType>

#include <algorithm>
#include <cstddef>
#include <cstdint>

/// What befalls a transfer of an emulated instrument.
enum class Wrong { Stalled, Failed, Short, Nothing, Unplugged };
Q_DECLARE_METATYPE(Wrong)

/// @param length  bytes that the transfer moves when all is well
inline emulator::Fault faultOf(Wrong wrong, std::size_t length)
{
    using emulator::FaultAction;
    switch (wrong) {
    case Wrong::Stalled:
        return {FaultAction::Stall};
    case Wrong::Failed:
        return {FaultAction::Fail};
    case Wrong::Short:
        return {FaultAction::Shorten, std::max<std::uint64_t>(length, 1) - 1};
    case Wrong::Nothing:
        return {FaultAction::Shorten, 0};
    case Wrong::Unplugged:
        return {FaultAction::Unplug};
    }
    return {};
}
