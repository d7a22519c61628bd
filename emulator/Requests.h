#pragma once

#include "UsbTypes.h"

/// The vendor requests of the instruments, by type, request and value. `wIndex` is 0 in all but the RAM writes.
namespace emulator::requests {

struct Request {
    std::uint8_t requestType;
    std::uint8_t request;
    std::uint16_t value;

    [[nodiscard]] bool matches(const SetupPacket &s) const
    {
        return s.requestType == requestType && s.request == request && s.value == value;
    }
    [[nodiscard]] SetupPacket packet(std::uint16_t length) const { return {requestType, request, value, 0, length}; }
};

constexpr std::uint8_t toDevice = 0x40;
constexpr std::uint8_t toHost = 0xC0;

// By request number alone: the value is an address.
constexpr std::uint8_t ram = 0xA0;
constexpr std::uint8_t eeprom = 0xA2;

constexpr Request ramRead{toHost, ram, 0};
constexpr Request fpgaLoadStart{toDevice, 0x50, 0};
constexpr Request fpgaLoadDone{toHost, 0x50, 0};
constexpr Request fpgaEnable{toDevice, 0x10, 1};
constexpr Request fpgaOff{toDevice, 0x10, 0};
constexpr Request statusRead{toHost, 0x20, 0x0000};
constexpr Request run{toDevice, 0x20, 0x0000};
constexpr Request pwmEnable{toDevice, 0x20, 0x0002};
constexpr Request readWindow{toDevice, 0x20, 0x0010};
constexpr Request captureInfo{toHost, 0x20, 0x0010};
constexpr Request sampleBlock{toDevice, 0x20, 0x0020};
constexpr Request triggerBlock{toDevice, 0x20, 0x0030};
constexpr Request threshold1{toDevice, 0x20, 0x0048};
constexpr Request threshold2{toDevice, 0x20, 0x004C};
constexpr Request pwm0{toDevice, 0x20, 0x0070};
constexpr Request pwm1{toDevice, 0x20, 0x0078};
constexpr Request bulkStart{toDevice, 0x30, 0};
constexpr Request bulkStop{toDevice, 0x38, 0};
constexpr Request uidAsk{toDevice, 0x60, 0};
constexpr Request uidRead{toHost, 0x60, 0};

} // namespace emulator::requests
