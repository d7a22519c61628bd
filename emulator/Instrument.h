#pragma once

#include "Descriptors.h"
#include "Eeprom.h"
#include "Faults.h"
#include "Firmware.h"
#include "Fpga.h"
#include "LogicSignal.h"
#include "Outputs.h"
#include "StorageCapture.h"
#include "Streamer.h"
#include "TransferLog.h"

#include <array>
#include <memory>
#include <optional>

namespace emulator {

/// How an instrument is built. Fields that are left 0 or negative are those of the model.
struct InstrumentOptions {
    int model = 8;
    std::uint16_t product = 0;
    Speed speed = Speed::High;
    std::uint16_t bcdUsb = 0x0200;
    bool firmwareInside = false; ///< runs firmware as soon as it is plugged in
    std::uint16_t hardwareVersion = 0x0102;
    std::array<std::uint8_t, 8> uid{0x10, 0x32, 0x54, 0x76, 0x98, 0xBA, 0xDC, 0xFE};
    std::uint64_t uidDelay = 0;   ///< ns from the question for the identity to its answer
    std::uint32_t memorySize = 0; ///< bytes
    std::uint32_t ringStart = 0;  ///< where the first capture begins to write; each further one goes on behind the last
    /// Seconds of sampling in a second of the clock; 0: as fast as the host asks. An unpaced capture into memory moves
    /// on by one state with each status request.
    double pace = 1.0;
    bool direct = false;     ///< take sample i from position i of the signal, whatever the rates
    bool silentStop = false; ///< a stopped stream falls silent instead of ending with a short packet
    std::uint64_t leaveAfter = 20 * nanosecondsPerMillisecond;   ///< from the start of the firmware to leaving the bus
    std::uint64_t returnAfter = 150 * nanosecondsPerMillisecond; ///< from there to the return
};

/// One emulated instrument: all that it does on the wire.
///
/// Without I/O, threads and clock: whoever owns it calls it from one thread at a time and tells it the time. After
/// construction it is not plugged in. What is kept without power (EEPROM, what firmware and FPGA expect, signal, script
/// of faults, log) survives unplugging; all else is as new after it.
class Instrument {
public:
    /// @param signal  what lies on the inputs; null: all low. An unknown model code counts as 8.
    explicit Instrument(const InstrumentOptions &options, std::shared_ptr<LogicSignal> signal = nullptr);
    Instrument(const Instrument &) = delete;
    Instrument &operator=(const Instrument &) = delete;

    // ---- the plug ------------------------------------------------------------------------------------------------

    /// Plugs it in; nothing if it is already.
    void attach();
    /// Pulls the plug; also one that is away between two states does not come back.
    void detach();
    [[nodiscard]] bool attached() const { return m_attached; }
    /// Grows with each arrival on the bus: what held before is another device for the host.
    [[nodiscard]] unsigned generation() const { return m_generation; }

    // ---- the bus -------------------------------------------------------------------------------------------------

    [[nodiscard]] Bytes deviceDescriptor() const { return emulator::deviceDescriptor(descriptorFacts()); }
    [[nodiscard]] Bytes configurationDescriptor() const { return emulator::configurationDescriptor(descriptorFacts()); }
    [[nodiscard]] Speed speed() const { return m_options.speed; }
    [[nodiscard]] std::size_t packetSize() const { return bulkPacketSize(m_options.speed); }
    /// @param data  to the device: its data stage. To the host: room for `setup.length` bytes
    Answer control(const SetupPacket &setup, std::span<std::uint8_t> data);
    /// One bulk write. Fewer bytes than given are taken only by a fault.
    Answer bulkOut(std::uint8_t endpoint, std::span<const std::uint8_t> bytes);
    /// What the device has for a host that asks for `out.size()` bytes: some of them, which do not end the transfer
    /// unless the answer says so, or NotYet.
    Answer bulkIn(std::uint8_t endpoint, std::span<std::uint8_t> out);
    /// Time goes on.
    void tick(std::uint64_t nanoseconds);
    [[nodiscard]] std::uint64_t now() const { return m_now; }

    // ---- the bench
    // What is set up and looked at beside the wire.

    void setSignal(std::shared_ptr<LogicSignal> signal) { m_signal = std::move(signal); }
    [[nodiscard]] const InstrumentOptions &options() const { return m_options; }
    [[nodiscard]] const ModelFacts &model() const { return m_model; }
    [[nodiscard]] bool firmwareRuns() const { return m_firmwareRuns; }
    [[nodiscard]] bool running() const { return m_running; }
    Eeprom &eeprom() { return m_eeprom; }
    Firmware &firmware() { return m_firmware; }
    Fpga &fpga() { return m_fpga; }
    Faults &faults() { return m_faults; }
    TransferLog &log() { return m_log; }
    [[nodiscard]] const Outputs &outputs() const { return m_outputs; }
    [[nodiscard]] const StorageCapture &capture() const { return m_capture; }
    [[nodiscard]] const RecordMemory &memory() const { return m_memory; }
    /// Bytes that the last run of bulk reads has sent.
    [[nodiscard]] std::uint64_t inBytes() const { return m_inBytes; }
    /// Samples a second with the present configuration.
    [[nodiscard]] double sampleRate() const;

private:
    /// What the bulk IN pipe carries.
    enum class Pipe {
        Off,
        Window, ///< a part of the memory
        Stream,
        Ending, ///< nothing more, but a packet of length zero for a host that waits
        Silent  ///< nothing, whatever is asked
    };

    [[nodiscard]] DescriptorFacts descriptorFacts() const;
    void powerOn();

    // Control requests; each gives the bytes moved, or nothing for a stall.
    using Moved = std::optional<std::size_t>;
    using In = std::span<std::uint8_t>;
    using Out = std::span<const std::uint8_t>;
    Moved standard(const SetupPacket &setup, In data);
    Moved halts(const SetupPacket &setup, In data);
    Answer vendor(const SetupPacket &setup, In data);
    Moved execute(const SetupPacket &setup, In data);
    Moved ramRequest(const SetupPacket &setup, In data);
    Moved toHost(const SetupPacket &setup, In data);
    [[nodiscard]] bool toDevice(const SetupPacket &setup, Out data);
    [[nodiscard]] bool registerWrite(const SetupPacket &setup, Out data);
    [[nodiscard]] bool configure(const SetupPacket &setup, Out data);

    [[nodiscard]] std::uint16_t statusWord();
    void run(bool on);
    void startBulk();
    void stopBulk();

    // Bulk reads.
    Answer window(In out);
    Answer stream(In out);
    Answer strike(const Fault &fault);
    Answer sent(In out, std::size_t bytes, bool isLast);
    [[nodiscard]] std::size_t streamBytesDue() const;
    [[nodiscard]] Sampler sampler() const;
    void bringCapture();

    const InstrumentOptions m_options;
    const ModelFacts &m_model;
    const std::uint16_t m_product;
    std::shared_ptr<LogicSignal> m_signal;
    Eeprom m_eeprom;
    Firmware m_firmware;
    Fpga m_fpga;
    Outputs m_outputs;
    RecordMemory m_memory;
    StorageCapture m_capture;
    Streamer m_streamer;
    Faults m_faults;
    TransferLog m_log;
    SampleConfig m_sample;
    TriggerConfig m_trigger;

    std::uint64_t m_now = 0; ///< ns
    std::optional<std::uint64_t> m_leavesAt;
    std::optional<std::uint64_t> m_returnsAt;
    unsigned m_generation = 0;
    bool m_attached = false;
    bool m_firmwareRuns = false;
    std::uint8_t m_configuration = 0;
    bool m_haltIn = false;
    bool m_haltOut = false;

    bool m_running = false;                  ///< sampling
    std::uint64_t m_runStart = 0;            ///< ns
    std::optional<std::uint64_t> m_uidAsked; ///< ns
    Pipe m_pipe = Pipe::Off;
    bool m_endIsOld = false;         ///< Ending: a stop of the pipe has come since
    std::uint64_t m_holdUntil = 0;   ///< ns; the bulk pipe is late
    std::uint64_t m_streamStart = 0; ///< ns
    std::uint64_t m_windowAddress = 0;
    std::uint64_t m_windowSize = 0;
    std::uint64_t m_inBytes = 0;
    std::uint64_t m_outBytes = 0;
};

} // namespace emulator
