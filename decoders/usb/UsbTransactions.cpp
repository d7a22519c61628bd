#include "UsbTransactions.h"

#include "UsbNames.h"

#include <algorithm>

bool UsbTransactions::add(const UsbPacket &packet)
{
    const FrameData frame = m_results.frameOf(packet);
    timePasses(packet.first);
    const bool isRight = UsbResults::isRight(frame);
    const usb::Kind kind = isRight && packet.end == UsbEnd::EndOfPacket ? packet.kind() : usb::Kind::Unknown;
    const bool isOpen = !m_packets.empty();
    if (packet.end == UsbEnd::Preamble && isOpen && m_isLowSpeed && !m_preamble) {
        m_preamble = frame;
    } else if (kind == usb::Kind::Token) {
        close();
        open(packet, frame);
    } else if (kind == usb::Kind::Data && isOpen && m_parts.dataPid == 0) {
        if (m_preamble) {
            m_packets.push_back(*m_preamble);
            m_preamble.reset();
        }
        m_parts.dataPid = packet.pid();
        m_data.assign(packet.data().begin(), packet.data().end());
        m_packets.push_back(frame);
    } else if (kind == usb::Kind::Handshake && isOpen) {
        m_parts.handshake = packet.pid();
        m_packets.push_back(frame);
        close();
    } else if (kind == usb::Kind::Unknown && isOpen) {
        m_packets.push_back(frame); // a broken answer
    } else {
        close();
        m_results.add(frame);
    }
    return isRight && packet.kind() != usb::Kind::Unknown;
}

void UsbTransactions::add(const FrameData &frame)
{
    if (m_packets.empty()) {
        m_results.add(frame);
    } else {
        m_packets.push_back(frame);
    }
}

void UsbTransactions::timePasses(lux::Sample sample)
{
    const lux::Sample timeout = m_isLowSpeed ? m_lowTimeout : m_timeout;
    if (!m_packets.empty() && sample - m_packets.back().lastSample > timeout) {
        close();
    }
}

void UsbTransactions::open(const UsbPacket &packet, const FrameData &frame)
{
    m_parts = {.token = packet.pid(), .address = packet.address(), .endpoint = packet.endpoint()};
    m_data.clear();
    m_isLowSpeed = packet.isLowSpeed;
    m_packets.push_back(frame);
}

void UsbTransactions::close()
{
    if (m_packets.empty()) {
        return;
    }
    control();
    lux::Sample last = 0;
    for (const FrameData &frame : m_packets) {
        last = std::max(last, frame.lastSample);
    }
    m_results.add(m_results.frameOf(m_parts, m_data, m_packets.front().firstSample, last));
    flush();
}

void UsbTransactions::flush()
{
    for (const FrameData &frame : m_packets) {
        m_results.add(frame);
    }
    m_packets.clear();
    if (m_preamble) {
        m_results.add(*m_preamble);
        m_preamble.reset();
    }
}

/// The stages of a control transfer: SETUP, data in one direction, status in the other.
void UsbTransactions::control()
{
    if (m_parts.endpoint != 0 || m_parts.dataPid == 0 || m_parts.handshake != usb::ack) {
        return;
    }
    if (m_parts.token == usb::setup) {
        if (m_data.size() != usb::setupBytes) {
            return;
        }
        Transfer &transfer = m_transfers[m_parts.address];
        std::copy(m_data.begin(), m_data.end(), transfer.setup.begin());
        transfer.data.clear();
        transfer.dataPid = m_parts.dataPid;
        m_parts.stage = UsbResults::Stage::Setup;
        return;
    }
    const auto it = m_transfers.find(m_parts.address);
    if (it == m_transfers.end()) {
        return;
    }
    Transfer &transfer = it->second;
    const bool isIn = m_parts.token == usb::in;
    const bool hasData = usb::lengthOf(transfer.setup) > 0;
    if (hasData && isIn == usb::isDeviceToHost(transfer.setup)) {
        m_parts.stage = UsbResults::Stage::Data;
        // Data is sent again with the same PID when its acknowledgement is lost: the receiver has it then (8.6.4).
        const bool isRepeated = m_parts.dataPid == transfer.dataPid;
        transfer.dataPid = m_parts.dataPid;
        if (!isRepeated && transfer.data.size() + m_data.size() <= mostData) {
            transfer.data.insert(transfer.data.end(), m_data.begin(), m_data.end());
        }
        return;
    }
    m_parts.stage = UsbResults::Stage::Status;
    m_data.assign(transfer.setup.begin(), transfer.setup.end());
    m_data.insert(m_data.end(), transfer.data.begin(), transfer.data.end());
    m_transfers.erase(it);
}
