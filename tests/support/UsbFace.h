#pragma once

#include "device/UsbPlatform.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/// An instrument on a bus of some kind, for the tests that every platform must pass: what a hand would do to it, and
/// what it would do by itself. Main thread.
class UsbFace {
public:
    virtual ~UsbFace() = default;

    /// The platform under test, over a bus on which nothing is plugged in. Once.
    [[nodiscard]] virtual std::unique_ptr<UsbPlatform> makePlatform() = 0;

    /// Plugs in an instrument of vendor 0x77A1: one that runs its firmware (bulk end points 0x02 and 0x86, at least 512
    /// bytes a packet) or one that does not yet (neither of them).
    virtual void plug(std::uint16_t product, bool running) = 0;
    /// Pulls out all.
    virtual void unplug() = 0;
    /// True when two instruments may be plugged in at a time.
    [[nodiscard]] virtual bool takesTwo() const = 0;

    /// The instrument sends so many bytes and then a packet that is not full. @return what it will have sent
    virtual std::vector<std::uint8_t> send(std::size_t bytes) = 0;
    /// The instrument's bulk IN pipe is halted, until it is reset.
    virtual void halt() = 0;
    /// Bytes that have been written to the instrument's bulk OUT pipe since it was plugged in.
    [[nodiscard]] virtual std::size_t written() const = 0;

    /// A request that the instrument answers with fewer bytes than the 64 that it is asked for, but some.
    [[nodiscard]] virtual UsbSetup shortRequest() const { return {0xC0, 0x20, 0, 0, 64}; }
    /// A request that it answers with two bytes.
    [[nodiscard]] virtual UsbSetup statusRequest() const { return {0xC0, 0x20, 0, 0, 2}; }
    /// A request without data that it takes.
    [[nodiscard]] virtual UsbSetup emptyRequest() const { return {0x40, 0x38, 0, 0, 0}; }
    /// A request that it refuses.
    [[nodiscard]] virtual UsbSetup refusedRequest() const { return {0xC0, 0xEE, 0, 0, 4}; }
};
