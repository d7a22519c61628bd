#include "device/UsbLink.h"

UsbLink::UsbLink(UsbPlatform &platform_, UsbFile file, UsbInterface iface_)
    : platform(platform_), iface(iface_), m_file(file)
{}

UsbLink::~UsbLink()
{
    platform.freeInterface(iface);
    platform.closeFile(m_file);
}

UsbResult UsbLink::queueRead(std::span<std::uint8_t> buffer, UsbReadSlot &slot)
{
    const std::lock_guard lock(m_mutex);
    if (m_cut) {
        return {UsbError::Gone};
    }
    if (m_brokenOff) {
        return {UsbError::Aborted};
    }
    m_reads = true;
    return platform.queueRead(iface, pipeIn, buffer.data(), std::uint32_t(buffer.size()), slot);
}

void UsbLink::cut()
{
    bool reads = false;
    {
        const std::lock_guard lock(m_mutex);
        m_cut = true;
        reads = m_reads;
    }
    if (reads) {
        platform.abortPipe(iface, pipeIn);
    }
}

void UsbLink::breakOff()
{
    bool reads = false;
    {
        const std::lock_guard lock(m_mutex);
        m_brokenOff = true;
        reads = m_reads && !m_cut;
    }
    if (reads) {
        platform.abortPipe(iface, pipeIn);
    }
}

void UsbLink::startRun()
{
    const std::lock_guard lock(m_mutex);
    m_brokenOff = false;
}
