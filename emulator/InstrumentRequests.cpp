// The instrument's vendor requests.

#include "Instrument.h"

#include <algorithm>
#include <array>

namespace emulator {

namespace {

// The status word.
constexpr std::uint16_t notConfigured = 0xFFFF; // the FPGA does not drive the bus
constexpr std::uint16_t notEnabled = 0;
constexpr std::uint16_t idle = 1;
constexpr std::uint16_t busy = 2;
constexpr std::uint16_t triggeredBit = 1 << 2;
constexpr std::uint16_t waitingBit = 1 << 3;
constexpr std::uint16_t powerGood = 3 << 6;
constexpr std::uint16_t memoryReady = 0x8500;
constexpr std::uint16_t noMemory = 0x8100;

constexpr std::array<std::uint8_t, 3> uidQuestion{0xA3, 0x01, 0xCA};
constexpr std::size_t uidAnswerSize = 12;
constexpr std::size_t uidAt = 2;
constexpr std::size_t captureInfoSize = 12;
constexpr std::size_t biggestAnswer = 12;
constexpr std::uint8_t runBits = 3;
constexpr std::int64_t unpacedStep = std::int64_t(1) << 28; // samples of an unpaced capture with each status request
constexpr std::int64_t unpacedEffort = 1 << 22;

} // namespace

Answer Instrument::vendor(const SetupPacket &setup, In data)
{
    TransferLog::Entry entry;
    entry.setup = setup;
    entry.length = setup.length;
    if (!setup.toHost()) {
        entry.data.assign(data.begin(), data.end());
    }
    const std::optional<Fault> fault = m_faults.takeForRequest(setup);
    const auto struck = [&fault](FaultAction action) { return fault && fault->action == action; };
    Answer answer;
    if (struck(FaultAction::Unplug)) {
        detach();
        answer.outcome = Outcome::Gone;
    } else if (struck(FaultAction::Stall)) {
        answer.outcome = Outcome::Stalled;
    } else if (struck(FaultAction::Fail)) {
        answer.outcome = Outcome::Failed;
    } else if (struck(FaultAction::Silence)) {
        answer.outcome = Outcome::NotYet;
    } else if (struck(FaultAction::Shorten) && !setup.toHost()) {
        answer.bytes = std::min<std::size_t>(data.size(), fault->amount);
    } else {
        const Moved moved = execute(setup, data);
        answer.outcome = moved ? Outcome::Done : Outcome::Stalled;
        answer.bytes = moved.value_or(0);
        if (struck(FaultAction::Shorten)) {
            answer.bytes = std::min<std::size_t>(answer.bytes, fault->amount);
        } else if (struck(FaultAction::Delay)) {
            answer.delay = fault->amount;
        } else if (struck(FaultAction::Replace) && moved) {
            answer.bytes = std::min(data.size(), fault->bytes.size());
            std::copy_n(fault->bytes.begin(), answer.bytes, data.begin());
        }
    }
    entry.outcome = answer.outcome;
    entry.moved = answer.bytes;
    m_log.add(std::move(entry));
    return answer;
}

Instrument::Moved Instrument::execute(const SetupPacket &setup, In data)
{
    if (setup.request == requests::ram) {
        return m_firmwareRuns ? Moved() : ramRequest(setup, data);
    }
    if (!m_firmwareRuns) {
        return std::nullopt; // the bare controller knows nothing else
    }
    if (setup.toHost()) {
        return toHost(setup, data);
    }
    return data.size() == setup.length && toDevice(setup, data) ? Moved(data.size()) : std::nullopt;
}

Instrument::Moved Instrument::ramRequest(const SetupPacket &setup, In data)
{
    const std::uint32_t address = std::uint32_t(setup.index) << 16 | setup.value;
    if (setup.toHost()) {
        for (std::size_t i = 0; i < data.size(); ++i) {
            data[i] = m_firmware.read(address + std::uint32_t(i));
        }
        return data.size();
    }
    if (m_leavesAt || !m_firmware.write(address, data)) {
        return std::nullopt;
    }
    if (m_firmware.started()) {
        m_leavesAt = m_now + m_options.leaveAfter;
    }
    return data.size();
}

/// A host that asks for more than there is gets what there is.
Instrument::Moved Instrument::toHost(const SetupPacket &setup, In data)
{
    if (setup.request == requests::eeprom) {
        m_eeprom.read(setup.value, data);
        return data.size();
    }
    std::array<std::uint8_t, biggestAnswer> room{};
    const std::span<std::uint8_t> all(room);
    std::size_t length = 0;
    if (requests::statusRead.matches(setup)) {
        length = 2;
        writeLittle(all.first(length), statusWord());
    } else if (requests::fpgaLoadDone.matches(setup)) {
        length = 1;
        room[0] = m_fpga.finish();
    } else if (requests::captureInfo.matches(setup) && m_fpga.enabled() && !m_model.streams()) {
        length = captureInfoSize;
        const CaptureInfo info = m_capture.info();
        writeLittle(all.first(4), info.recordCount);
        writeLittle(all.subspan(4, 4), info.triggerRecord);
        writeLittle(all.subspan(8, 4), info.endAddress);
    } else if (requests::uidRead.matches(setup)) {
        length = uidAnswerSize;
        if (m_uidAsked && m_now - *m_uidAsked >= m_options.uidDelay) {
            std::copy(m_options.uid.begin(), m_options.uid.end(), room.begin() + uidAt);
        }
    } else {
        return std::nullopt;
    }
    length = std::min(length, data.size());
    std::copy_n(room.begin(), length, data.begin());
    return length;
}

/// @return false for a stall
bool Instrument::toDevice(const SetupPacket &setup, Out data)
{
    const auto is = [&](const requests::Request &request, std::size_t length) {
        return request.matches(setup) && data.size() == length;
    };
    if (is(requests::fpgaLoadStart, 4)) {
        run(false);
        m_fpga.announce(std::uint32_t(readLittle(data)));
        m_outBytes = 0;
    } else if (is(requests::fpgaEnable, 0) || is(requests::fpgaOff, 0)) {
        run(false);
        m_fpga.enable(setup.value != 0);
    } else if (is(requests::bulkStart, 0)) {
        startBulk();
    } else if (is(requests::bulkStop, 0)) {
        stopBulk();
    } else if (is(requests::uidAsk, uidQuestion.size())) {
        if (!std::equal(data.begin(), data.end(), uidQuestion.begin())) {
            return false;
        }
        m_uidAsked = m_now;
    } else {
        return m_fpga.enabled() && (registerWrite(setup, data) || configure(setup, data));
    }
    return true;
}

/// The registers that act at once.
bool Instrument::registerWrite(const SetupPacket &setup, Out data)
{
    const auto is = [&](const requests::Request &request, std::size_t length) {
        return request.matches(setup) && data.size() == length;
    };
    if (is(requests::run, 1) && (data[0] == runBits || data[0] == 0)) {
        run(data[0] != 0);
        return true;
    }
    if (is(requests::pwmEnable, 1)) {
        m_outputs.enablePwm(data[0]);
        return true;
    }
    if (is(requests::pwm0, 8) || is(requests::pwm1, 8)) {
        return m_outputs.setPwm(requests::pwm1.matches(setup) ? 1 : 0, data);
    }
    if (is(requests::threshold1, 4) || is(requests::threshold2, 4)) {
        return m_outputs.setThreshold(requests::threshold2.matches(setup) ? 1 : 0, data);
    }
    return false;
}

/// The blocks that the next capture or read-back goes by.
bool Instrument::configure(const SetupPacket &setup, Out data)
{
    if (requests::sampleBlock.matches(setup) && data.size() == SampleConfig::size) {
        const SampleConfig config = SampleConfig::parse(data.first<SampleConfig::size>());
        if (config.clockDivider == 0 || config.preTrigger > config.depth) {
            return false;
        }
        m_sample = config;
        return true;
    }
    if (requests::triggerBlock.matches(setup) && data.size() == TriggerConfig::size) {
        m_trigger = TriggerConfig::parse(data.first<TriggerConfig::size>());
        return true;
    }
    if (requests::readWindow.matches(setup) && data.size() == 8 && !m_model.streams()) {
        m_windowAddress = readLittle(data.first(4));
        m_windowSize = readLittle(data.subspan(4, 4));
        return true;
    }
    return false;
}

void Instrument::run(bool on)
{
    if (on) {
        m_running = true;
        m_runStart = m_now;
        if (!m_model.streams()) {
            m_capture.start(sampler(), m_sample, m_trigger);
        } else if (m_pipe == Pipe::Stream) {
            startBulk();
        }
        return;
    }
    if (m_running && !m_model.streams()) {
        if (m_options.pace > 0) {
            bringCapture();
        }
        m_capture.stop();
    }
    m_running = false;
    if (m_pipe == Pipe::Stream) {
        m_pipe = m_options.silentStop ? Pipe::Silent : Pipe::Ending;
        m_endIsOld = false;
    }
}

std::uint16_t Instrument::statusWord()
{
    if (!m_fpga.loaded()) {
        return notConfigured;
    }
    if (!m_fpga.enabled()) {
        return notEnabled;
    }
    auto word = std::uint16_t(powerGood | (m_model.streams() ? noMemory : memoryReady));
    if (m_model.streams()) {
        return std::uint16_t(word | (m_running ? busy : idle));
    }
    if (m_running && m_options.pace > 0) {
        bringCapture();
    }
    using Phase = StorageCapture::Phase;
    const Phase phase = m_capture.phase();
    word |= phase == Phase::Idle || phase == Phase::Ended ? idle : busy;
    word |= phase == Phase::Waiting ? waitingBit : std::uint16_t(0);
    word |= phase == Phase::Triggered || phase == Phase::Ended ? triggeredBit : std::uint16_t(0);
    if (m_running && m_options.pace <= 0) {
        m_capture.advance(m_capture.due() + unpacedStep, unpacedEffort, true);
        m_running = m_capture.phase() != Phase::Ended;
    }
    return word;
}

} // namespace emulator
