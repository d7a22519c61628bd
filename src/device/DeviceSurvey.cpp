#include "device/DeviceSurvey.h"

#include "device/DevControl.h"
#include "device/DevIdentity.h"
#include "device/DevRequests.h"
#include "device/UsbIds.h"
#include "device/UsbLook.h"
#include "device/UsbPlatform.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <thread>

namespace {

using SurveyState = FoundInstrument::State;

constexpr std::uint32_t surveyTimeoutMs = 1000; // of a control transfer
constexpr int mostInstruments = 100;
constexpr std::uint8_t vendorOut = 0x40; // request types, USB 2.0, table 9-2
constexpr std::uint8_t vendorIn = 0xC0;

/// A system tells in different steps that somebody else has the device, or that the user may not.
SurveyState stateOfRefusedFile()
{
#ifdef Q_OS_WIN
    return SurveyState::InUse;
#else
    return SurveyState::NoRights;
#endif
}

/// One device from its opening to its closing.
class SurveyVisit {
public:
    SurveyVisit(UsbPlatform &platform, const char *path, FoundInstrument &found) : m_platform(platform), m_found(found)
    {
        const UsbResult opened = platform.openFile(path, m_file);
        if (opened.error == UsbError::Refused) {
            m_found.state = stateOfRefusedFile();
        }
        if (!opened.ok()) {
            return;
        }
        const UsbResult claimed = platform.initInterface(m_file, m_iface);
        if (claimed.error == UsbError::Refused) {
            m_found.state = SurveyState::InUse;
        }
    }
    ~SurveyVisit()
    {
        if (m_iface != UsbInterface::None) {
            m_platform.freeInterface(m_iface);
        }
        if (m_file != UsbFile::None) {
            m_platform.closeFile(m_file);
        }
    }
    SurveyVisit(const SurveyVisit &) = delete;
    SurveyVisit &operator=(const SurveyVisit &) = delete;

    void look()
    {
        constexpr std::size_t descriptorSize = 18; // USB 2.0, table 9-8
        std::array<std::uint8_t, descriptorSize> descriptor{};
        std::uint32_t moved = 0;
        if (m_iface == UsbInterface::None || !m_platform.deviceDescriptor(m_iface, descriptor, moved).ok() ||
            moved != descriptorSize) {
            return;
        }
        const auto vendor = std::uint16_t(descriptor[8] | descriptor[9] << 8);
        m_found.product = std::uint16_t(descriptor[10] | descriptor[11] << 8);
        int pipes = 0;
        if (!isUsbInstrument(vendor, m_found.product) || !m_platform.interfaceSettings(m_iface, pipes).ok()) {
            return;
        }
        if (!hasDataPipe(pipes)) {
            m_found.state = SurveyState::NoFirmware;
            return;
        }
        for (const int pipe : {0x00, 0x80}) {
            m_platform.setPipePolicy(m_iface, std::uint8_t(pipe), UsbPolicy::TransferTimeout, surveyTimeoutMs);
        }
        identify();
    }

private:
    [[nodiscard]] bool hasDataPipe(int pipes) const
    {
        for (int index = 0; index < pipes; ++index) {
            UsbPipe pipe;
            if (m_platform.queryPipe(m_iface, index, pipe).ok() && pipe.id == usbDataPipe(m_found.product)) {
                return true;
            }
        }
        return false;
    }

    void identify()
    {
        std::array<std::uint8_t, devIdentity::identitySize> identity{};
        if (!controlIn(devRequest::eeprom, devIdentity::identityAt, identity)) {
            return;
        }
        m_found.model = devIdentity::modelOf(m_found.product, identity).code;
        m_found.state = m_found.model != 0 ? SurveyState::Ready : SurveyState::Unusable;
        std::array<std::uint8_t, devRequest::uidQuestion.size()> question = devRequest::uidQuestion;
        std::array<std::uint8_t, devRequest::uidAnswerSize> answer{};
        if (!control(vendorOut, devRequest::uid, 0, question)) {
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(devRequest::uidDelayMs));
        if (controlIn(devRequest::uid, 0, answer)) {
            const QByteArray uid(reinterpret_cast<const char *>(&answer[devRequest::uidAt]), DevControl::uidSize);
            m_found.uid = uid.count('\0') < uid.size() ? uid : QByteArray();
        }
    }

    bool controlIn(std::uint8_t request, std::uint16_t value, std::span<std::uint8_t> room)
    {
        return control(vendorIn, request, value, room);
    }

    bool control(std::uint8_t type, std::uint8_t request, std::uint16_t value, std::span<std::uint8_t> data)
    {
        std::uint32_t moved = 0;
        const UsbSetup setup{type, request, value, 0, std::uint16_t(data.size())};
        return m_platform.controlTransfer(m_iface, setup, data.data(), moved).ok() && moved == data.size();
    }

    UsbPlatform &m_platform;
    FoundInstrument &m_found;
    UsbFile m_file = UsbFile::None;
    UsbInterface m_iface = UsbInterface::None;
};

} // namespace

std::vector<FoundInstrument> surveyInstruments(UsbPlatform &platform)
{
    constexpr std::size_t pathRoom = 260;
    std::vector<FoundInstrument> found;
    const UsbList list = platform.openList();
    for (int index = 0; list != UsbList::None && index < mostInstruments && platform.listHas(list, index); ++index) {
        std::array<char, pathRoom> path{};
        if (usbFetchPath(platform, list, index, path) != usbPathFits) {
            continue;
        }
        FoundInstrument instrument;
        instrument.port = QString::fromUtf8(path.data());
        SurveyVisit(platform, path.data(), instrument).look();
        found.push_back(instrument);
    }
    if (list != UsbList::None) {
        platform.freeList(list);
    }
    return found;
}
