// The instrument on the bus: plugging, standard requests and time.

#include "Instrument.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace emulator {

namespace {

constexpr int fallbackModel = 8;
constexpr std::int64_t effortPerTick = 1 << 22; // steps of the signal: some tenths of a second at the most

// Standard requests of the USB 2.0 specification, chapter 9.4.
constexpr std::uint8_t getStatus = 0;
constexpr std::uint8_t clearFeature = 1;
constexpr std::uint8_t setFeature = 3;
constexpr std::uint8_t setAddress = 5;
constexpr std::uint8_t getDescriptor = 6;
constexpr std::uint8_t getConfiguration = 8;
constexpr std::uint8_t setConfiguration = 9;
constexpr std::uint8_t getInterface = 10;
constexpr std::uint8_t setInterface = 11;
constexpr std::uint8_t recipientMask = 0x1F;
constexpr std::uint8_t recipientEndpoint = 2;
constexpr std::uint16_t endpointHalt = 0;

const ModelFacts &modelOf(int code)
{
    const ModelFacts *model = findModel(code);
    return model != nullptr ? *model : *findModel(fallbackModel);
}

RecordFormat formatOf(const ModelFacts &model)
{
    if (model.analogChannels > 0) {
        return RecordFormat::Mixed16;
    }
    return model.channels > 16 ? RecordFormat::Rle32 : RecordFormat::Rle16;
}

/// Gives the host as much of `bytes` as it has room for.
std::size_t give(const Bytes &bytes, std::span<std::uint8_t> room)
{
    const std::size_t length = std::min(bytes.size(), room.size());
    std::copy_n(bytes.begin(), length, room.begin());
    return length;
}

} // namespace

Instrument::Instrument(const InstrumentOptions &options, std::shared_ptr<LogicSignal> signal)
    : m_options(options),
      m_model(modelOf(options.model)),
      m_product(options.product != 0 ? options.product : m_model.product),
      m_signal(std::move(signal)),
      m_eeprom(m_model, options.hardwareVersion),
      m_firmware(firmwareFormatOf(m_product)),
      m_fpga(!m_model.hasNoFpgaImage()),
      m_memory(formatOf(m_model), options.memorySize != 0 ? options.memorySize : m_model.memorySize),
      m_capture(m_memory)
{
    m_capture.setNextAddress(options.ringStart);
}

// ---- the plug

void Instrument::attach()
{
    if (m_attached || m_returnsAt) {
        return;
    }
    powerOn();
    m_firmwareRuns = m_options.firmwareInside;
    m_attached = true;
    ++m_generation;
}

void Instrument::detach()
{
    powerOn();
    m_attached = false;
    m_leavesAt.reset();
    m_returnsAt.reset();
}

/// All that power holds is as new.
void Instrument::powerOn()
{
    m_capture.powerOn();
    m_firmware.powerOn();
    m_fpga.powerOn();
    m_outputs.powerOn();
    m_firmwareRuns = false;
    m_configuration = 0;
    m_haltIn = false;
    m_haltOut = false;
    m_running = false;
    m_uidAsked.reset();
    m_pipe = Pipe::Off;
    m_endIsOld = false;
    m_holdUntil = 0;
    m_windowSize = 0;
    m_inBytes = 0;
    m_outBytes = 0;
}

void Instrument::tick(std::uint64_t nanoseconds)
{
    m_now += nanoseconds;
    if (m_leavesAt && m_now >= *m_leavesAt) {
        const std::uint64_t left = *m_leavesAt;
        detach();
        if (!m_faults.neverReturns()) {
            m_returnsAt = left + m_options.returnAfter;
        }
    }
    if (m_returnsAt && m_now >= *m_returnsAt) {
        m_returnsAt.reset();
        m_firmwareRuns = true;
        m_attached = true;
        ++m_generation;
    }
    if (m_running && !m_model.streams() && m_options.pace > 0) {
        bringCapture();
    }
}

/// Moves the capture into memory up to the present time.
void Instrument::bringCapture()
{
    const double elapsed = double(m_now - m_runStart) * m_options.pace;
    m_capture.advance(sampler().samplesIn(elapsed), effortPerTick, false);
    m_running = m_capture.phase() != StorageCapture::Phase::Ended;
}

Sampler Instrument::sampler() const
{
    constexpr std::int64_t hertzInMegahertz = 1'000'000;
    return {m_signal, m_model.clockMhz * hertzInMegahertz, m_sample.clockDivider, m_options.direct};
}

double Instrument::sampleRate() const
{
    return m_model.clockMhz * 1e6 / std::max<double>(m_sample.clockDivider, 1);
}

// ---- standard requests

DescriptorFacts Instrument::descriptorFacts() const
{
    return {m_product, m_options.bcdUsb, m_options.speed, m_firmwareRuns, std::string(m_model.name)};
}

Answer Instrument::control(const SetupPacket &setup, std::span<std::uint8_t> data)
{
    if (!m_attached) {
        m_log.addAfterUnplug();
        return {Outcome::Gone};
    }
    if (setup.isVendor()) {
        return vendor(setup, data);
    }
    const Moved moved = setup.isStandard() ? standard(setup, data) : std::nullopt;
    return moved ? Answer{Outcome::Done, *moved} : Answer{Outcome::Stalled};
}

Instrument::Moved Instrument::standard(const SetupPacket &setup, In data)
{
    switch (setup.request) {
    case getDescriptor: {
        Bytes bytes;
        switch (setup.value >> 8) {
        case 1:
            bytes = deviceDescriptor();
            break;
        case 2:
            bytes = configurationDescriptor();
            break;
        case 3:
            bytes = stringDescriptor(descriptorFacts(), std::uint8_t(setup.value));
            break;
        default:
            break;
        }
        return bytes.empty() ? Moved() : give(bytes, data);
    }
    case getConfiguration:
        return give({m_configuration}, data);
    case setConfiguration:
        if (setup.value > 1) {
            return std::nullopt;
        }
        m_configuration = std::uint8_t(setup.value);
        m_haltIn = false;
        m_haltOut = false;
        return 0;
    case getInterface:
        return give({0}, data);
    case setInterface:
        return setup.value == 0 && setup.index == 0 ? Moved(0) : std::nullopt;
    case setAddress:
        return 0;
    case getStatus:
    case clearFeature:
    case setFeature:
        return halts(setup, data);
    default:
        return std::nullopt;
    }
}

/// Status and features: of end points, whether they are halted; of all else there is nothing to set.
Instrument::Moved Instrument::halts(const SetupPacket &setup, In data)
{
    const bool ofEndpoint = (setup.requestType & recipientMask) == recipientEndpoint;
    bool none = false;
    bool &halt = setup.index == bulkInOf(m_product) ? m_haltIn : setup.index == bulkOutOf(m_product) ? m_haltOut : none;
    if (setup.request == getStatus) {
        return give({std::uint8_t(ofEndpoint && halt), 0}, data);
    }
    if (ofEndpoint && setup.value == endpointHalt) {
        halt = setup.request == setFeature;
        if (&halt == &m_haltIn && m_pipe == Pipe::Ending) {
            m_pipe = Pipe::Off;
        }
    }
    return 0;
}

} // namespace emulator
