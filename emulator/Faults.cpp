#include "Faults.h"

#include <algorithm>

namespace emulator {

namespace {

constexpr std::uint64_t group16 = 16;
constexpr std::uint64_t group32 = 32;

} // namespace

void Faults::atTransfer(std::uint64_t index, Fault fault)
{
    m_transferFaults.push_back({std::move(fault), index, false});
}

void Faults::atRequest(const requests::Request &request, std::uint64_t nth, Fault fault)
{
    m_requestFaults.push_back({request, {std::move(fault), nth, false}, 0});
}

void Faults::atInByte(std::uint64_t offset, Fault fault)
{
    m_inFaults.push_back({std::move(fault), offset, false});
}

void Faults::atOutByte(std::uint64_t offset, Fault fault)
{
    m_outFaults.push_back({std::move(fault), offset, false});
}

void Faults::setStatus(std::uint16_t word)
{
    atRequest(requests::statusRead, 0, {FaultAction::Replace, 0, {std::uint8_t(word), std::uint8_t(word >> 8)}, true});
}

void Faults::patchIn(std::uint64_t offset, std::uint8_t value)
{
    m_patches.push_back({offset, value, false});
}

void Faults::zeroCountAt(RecordFormat format, std::uint64_t record)
{
    const bool wide = format == RecordFormat::Rle32;
    const std::uint64_t records = wide ? 6 : 5;
    const std::uint64_t recordSize = wide ? 5 : 3;
    const std::uint64_t group = record / records * (wide ? group32 : group16);
    patchIn(group + record % records * recordSize + recordSize - 1, 0);
}

void Faults::wrongCheckAt(std::uint64_t group)
{
    m_patches.push_back({group * group32 + group32 - 1, 0, true});
}

void Faults::setCaptureInfo(std::uint32_t recordCount, std::uint32_t triggerRecord, std::uint32_t endAddress)
{
    Bytes bytes(12);
    writeLittle(std::span(bytes).first(4), recordCount);
    writeLittle(std::span(bytes).subspan(4, 4), triggerRecord);
    writeLittle(std::span(bytes).subspan(8, 4), endAddress);
    atRequest(requests::captureInfo, 0, {FaultAction::Replace, 0, std::move(bytes), true});
}

std::optional<Fault> Faults::takeAt(std::vector<Planned> &list, std::uint64_t at)
{
    for (Planned &planned : list) {
        if (planned.at == at && !planned.spent) {
            planned.spent = !planned.fault.repeats;
            return planned.fault;
        }
    }
    return std::nullopt;
}

std::optional<Fault> Faults::takeForRequest(const SetupPacket &setup)
{
    std::optional<Fault> found = takeAt(m_transferFaults, m_transfers++);
    for (PlannedRequest &planned : m_requestFaults) {
        if (!planned.request.matches(setup)) {
            continue;
        }
        const std::uint64_t nth = planned.seen++;
        const bool strikes = planned.planned.fault.repeats ? nth >= planned.planned.at : nth == planned.planned.at;
        if (strikes && !found) {
            found = planned.planned.fault;
        }
    }
    return found;
}

std::optional<Fault> Faults::takeForOut(std::uint64_t offset, std::size_t length)
{
    std::optional<Fault> found = takeAt(m_transferFaults, m_transfers++);
    for (Planned &planned : m_outFaults) {
        if (!found && !planned.spent && planned.at >= offset && planned.at < offset + length) {
            planned.spent = !planned.fault.repeats;
            found = planned.fault;
        }
    }
    return found;
}

std::uint64_t Faults::inBytesBefore(std::uint64_t offset) const
{
    std::uint64_t next = std::numeric_limits<std::uint64_t>::max();
    for (const Planned &planned : m_inFaults) {
        if (!planned.spent && planned.at >= offset) {
            next = std::min(next, planned.at - offset);
        }
    }
    return next;
}

std::optional<Fault> Faults::takeForIn(std::uint64_t offset)
{
    return takeAt(m_inFaults, offset);
}

void Faults::patch(std::uint64_t offset, std::span<std::uint8_t> bytes) const
{
    for (const Patch &patch : m_patches) {
        if (patch.offset >= offset && patch.offset - offset < bytes.size()) {
            std::uint8_t &byte = bytes[std::size_t(patch.offset - offset)];
            byte = patch.invert ? std::uint8_t(~byte) : patch.value;
        }
    }
}

} // namespace emulator
