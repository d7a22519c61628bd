#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <vector>

class UsbPlatform;

/// An instrument as one look at the bus finds it.
struct FoundInstrument {
    enum class State {
        Ready,      ///< runs its firmware, and may be used
        NoFirmware, ///< may be used, and is sent its firmware then: until that it does not know its model
        InUse,      ///< another program has it
        NoRights,   ///< the user may not open it
        Unusable,   ///< it does not answer as an instrument does, or left while it was looked at
    };

    QString port; ///< the system's name of where it is plugged in
    State state = State::Unusable;
    std::uint16_t product = 0; ///< USB product id; 0 when it cannot be asked
    int model = 0;             ///< model code; 0 when it is not known
    QByteArray uid;            ///< 8 bytes; empty when it does not tell
};

/// Looks at all instruments that are plugged in, and changes none: no firmware is sent. Each is opened, asked and
/// closed again. Main thread, while the platform has nothing open; blocks for some control transfers and 50 ms for each
/// instrument, for some seconds when one is silent.
[[nodiscard]] std::vector<FoundInstrument> surveyInstruments(UsbPlatform &platform);
