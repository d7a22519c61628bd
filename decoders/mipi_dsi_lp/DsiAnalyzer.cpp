#include "DsiAnalyzer.h"

#include <algorithm>

using lux::Sample;

LUX_PLUGIN(DsiAnalyzer)

/// D-PHY 1.1, 6 and DSI 1.01, 8: lane 0 has the data; the others are told for their states alone.
void DsiAnalyzer::decode()
{
    prepare();
    const DsiSettings::Lane lines = m_settings.lines()[0];
    DsiLane lane(reader(lines.p), reader(lines.n));
    DsiElement element;
    while (lane.next(element)) {
        take(element);
    }
    for (const FrameData &frame : m_frames) { // the capture's end: a packet is not told as cut
        add(frame);
    }
    clear();
    addOthersBefore(sampleCount());
}

void DsiAnalyzer::prepare()
{
    m_others.clear();
    clear();
    m_fromPeripheral = false;
    const auto lines = m_settings.lines();
    for (std::size_t i = 1; i < std::size_t(m_settings.lanes.value()); ++i) {
        m_others.push_back({.lane = DsiLane(reader(lines[i].p), reader(lines[i].n)), .element = {}, .number = i});
        m_others.back().hasElement = m_others.back().lane.next(m_others.back().element);
    }
}

void DsiAnalyzer::add(const FrameData &frame)
{
    addOthersBefore(frame.firstSample);
    results().add(frame);
}

/// Frames of all lanes come in the order of time.
void DsiAnalyzer::addOthersBefore(Sample sample)
{
    for (;;) {
        OtherLane *earliest = nullptr;
        for (OtherLane &other : m_others) {
            const bool isEarlier =
                other.hasElement && (earliest == nullptr || other.element.first < earliest->element.first);
            earliest = isEarlier ? &other : earliest;
        }
        if (earliest == nullptr || earliest->element.first >= sample) {
            return;
        }
        if (earliest->element.kind != DsiElement::Kind::Byte && earliest->element.kind != DsiElement::Kind::Exit) {
            results().add(DsiResults::frameOf(earliest->element, earliest->number));
        }
        earliest->hasElement = earliest->lane.next(earliest->element);
    }
}

void DsiAnalyzer::take(const DsiElement &element)
{
    switch (element.kind) {
    case DsiElement::Kind::Byte:
        m_bytes.push_back(element.value);
        m_frames.push_back(DsiResults::frameOf(element, 0));
        results().mark(m_settings.d0n, element.first, MarkerType::Dot);
        if (m_bytes.size() == dsi::headBytes) {
            checkHead(element.last);
        }
        addPacketIfWhole();
        break;
    case DsiElement::Kind::Exit:
        if (element.value != 0 || !m_bytes.empty()) {
            results().mark(m_settings.d0n, element.first, MarkerType::ErrorX);
        }
        endOfData(true);
        break;
    default:
        endOfData(true);
        if (element.kind == DsiElement::Kind::Turnaround) {
            m_fromPeripheral = !m_fromPeripheral;
        }
        add(DsiResults::frameOf(element, 0));
        break;
    }
}

/// The bytes that the packet must have, once its head is there.
std::size_t DsiAnalyzer::wantedBytes() const
{
    if (m_bytes.size() < dsi::headBytes) {
        return dsi::headBytes;
    }
    std::uint32_t head = sentHead();
    (void)dsi::checkHead(head, m_bytes[3]);
    return dsi::isLong(head) ? dsi::headBytes + (head >> 8) + dsi::checksumBytes : dsi::headBytes;
}

std::uint32_t DsiAnalyzer::sentHead() const
{
    return std::uint32_t(m_bytes[0]) | std::uint32_t(m_bytes[1]) << 8 | std::uint32_t(m_bytes[2]) << 16;
}

/// An error dot at the end of a head that was corrected, an error cross where that cannot be. @param at  its last
/// sample
void DsiAnalyzer::checkHead(Sample at)
{
    std::uint32_t head = sentHead();
    const dsi::Ecc ecc = dsi::checkHead(head, m_bytes[3]);
    if (ecc != dsi::Ecc::Right) {
        results().mark(m_settings.d0n, at, ecc == dsi::Ecc::Corrected ? MarkerType::ErrorDot : MarkerType::ErrorX);
    }
}

void DsiAnalyzer::addPacketIfWhole()
{
    if (m_bytes.size() < dsi::headBytes || m_bytes.size() < wantedBytes()) {
        return;
    }
    DsiResults::PacketContent content;
    content.head = sentHead();
    content.fixed = content.head;
    const dsi::Ecc ecc = dsi::checkHead(content.fixed, m_bytes[3]);
    unsigned flags = m_fromPeripheral ? unsigned(DsiResults::FromPeripheral) : 0U;
    flags |= ecc == dsi::Ecc::Wrong       ? unsigned(DsiResults::EccWrong)
             : ecc == dsi::Ecc::Corrected ? unsigned(DsiResults::EccCorrected)
                                          : 0U;
    if (dsi::isLong(content.fixed)) {
        const std::size_t end = m_bytes.size() - dsi::checksumBytes;
        const std::uint32_t sent = std::uint32_t(m_bytes[end]) | std::uint32_t(m_bytes[end + 1]) << 8;
        content.payload = std::span(m_bytes).first(end).subspan(dsi::headBytes);
        flags |= DsiResults::Long;
        if (lux::Crc<dsi::checksum>::of(content.payload) != sent) {
            flags |= DsiResults::ChecksumWrong;
            results().mark(m_settings.d0n, m_frames.back().lastSample, MarkerType::ErrorX);
        }
    }
    content.flags = std::uint16_t(flags);
    add(results().packetFrame(content, m_frames.front().firstSample, m_frames.back().lastSample));
    endOfData(false);
}

/// What is left of a packet when its bytes end.
void DsiAnalyzer::endOfData(bool isCut)
{
    if (m_frames.empty()) {
        return;
    }
    if (isCut) {
        add({.firstSample = m_frames.front().firstSample,
             .lastSample = m_frames.back().lastSample,
             .kind = DsiResults::Cut,
             .extra = std::uint32_t(m_bytes.size())});
    }
    for (const FrameData &frame : m_frames) {
        add(frame);
    }
    clear();
}

void DsiAnalyzer::clear()
{
    m_bytes.clear();
    m_frames.clear();
}
