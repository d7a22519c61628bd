#pragma once

#include "device/UsbPlatformNone.h"
#include "session/Session.h"

#include <memory>

/// A session on a system without USB.
inline std::unique_ptr<Session> makeSession(int model = 0)
{
    return std::make_unique<Session>(std::make_unique<UsbPlatformNone>(), model);
}
