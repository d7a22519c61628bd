#include "device/UsbPlatformWinUsb.h"
#include "support/FakeUsbFace.h"
#include "support/UsbPlatformContract.h"

#include <QtTest>

// The first declares what the others need, so this is not the order of the alphabet.
// clang-format off
#include <windows.h>
#include <setupapi.h>
#include <winternl.h>
// clang-format on

extern "C" NTSTATUS NTAPI NtCreateSymbolicLinkObject(PHANDLE, ACCESS_MASK, POBJECT_ATTRIBUTES, PUNICODE_STRING);

namespace {

constexpr GUID instrumentClass = {0x57BAA63D, 0x5E5A, 0x42F5, {0x8C, 0xE5, 0xEA, 0xF7, 0x8B, 0x45, 0xBA, 0xCF}};
// The class of devices of this driver.
constexpr GUID deviceClass = {0x88BAE032, 0x5A81, 0x49F0, {0xBC, 0x3D, 0xA4, 0xFF, 0x13, 0x82, 0x16, 0xD6}};

constexpr ACCESS_MASK symbolicLinkAllAccess = 0xF0001; // of the driver kit's headers, which are not here

using Reset = FakeUsb *(*)();

Reset standIn()
{
    static const HMODULE library = LoadLibraryW(L"winusb.dll");
    return reinterpret_cast<Reset>(reinterpret_cast<void *>(GetProcAddress(library, "standInReset")));
}

/// A device interface in the system's books. A name is used once in the life of the process, as a bus does.
class Registered {
public:
    explicit Registered(const std::string &name) : m_name(name)
    {
        const std::string id = "USB\\" + name;
        const HDEVINFO set = SetupDiCreateDeviceInfoList(nullptr, nullptr);
        SP_DEVINFO_DATA device{};
        device.cbSize = sizeof(device);
        SP_DEVICE_INTERFACE_DATA iface{};
        iface.cbSize = sizeof(iface);
        // Names come again with the numbers of processes: what an earlier run has left is taken over.
        good = (SetupDiCreateDeviceInfoA(set, id.c_str(), &deviceClass, nullptr, nullptr, 0, &device) ||
                SetupDiOpenDeviceInfoA(set, id.c_str(), nullptr, 0, &device)) &&
               SetupDiRegisterDeviceInfo(set, &device, 0, nullptr, nullptr, nullptr) &&
               SetupDiCreateDeviceInterfaceA(set, &device, &instrumentClass, nullptr, 0, &iface);
        SetupDiDestroyDeviceInfoList(set);
        good = good && setLinked(1) && makeOpenable();
    }
    ~Registered()
    {
        (void)setLinked(0);
        if (m_link != nullptr) {
            CloseHandle(m_link);
        }
    }
    Registered(const Registered &) = delete;
    Registered &operator=(const Registered &) = delete;

    bool good = false;

private:
    static constexpr const char *guid = "{57baa63d-5e5a-42f5-8ce5-eaf78b45bacf}";

    /// "USB\A\B" is written "USB#A#B" in the name of its interface.
    [[nodiscard]] std::string interfaceName() const
    {
        std::string text = "USB#" + m_name + "#" + guid;
        std::replace(text.begin(), text.end(), '\\', '#');
        return text;
    }
    /// Present, or only known from before.
    [[nodiscard]] bool setLinked(DWORD linked) const
    {
        const std::string key = std::string("SYSTEM\\CurrentControlSet\\Control\\DeviceClasses\\") + guid + "\\##?#" +
                                interfaceName() + "\\#\\Control";
        HKEY opened = nullptr;
        if (RegCreateKeyExA(HKEY_LOCAL_MACHINE, key.c_str(), 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr,
                            &opened, nullptr) != ERROR_SUCCESS) {
            return false;
        }
        const LONG code =
            RegSetValueExA(opened, "Linked", 0, REG_DWORD, reinterpret_cast<const BYTE *>(&linked), sizeof(linked));
        RegCloseKey(opened);
        return code == ERROR_SUCCESS;
    }
    /// Lets the interface's path lead to a device that opens and does nothing.
    [[nodiscard]] bool makeOpenable()
    {
        const std::wstring name =
            QStringLiteral("\\??\\").toStdWString() + QString::fromStdString(interfaceName()).toLower().toStdWString();
        UNICODE_STRING link{};
        UNICODE_STRING target{};
        RtlInitUnicodeString(&link, name.c_str());
        RtlInitUnicodeString(&target, L"\\Device\\Null");
        OBJECT_ATTRIBUTES attributes;
        InitializeObjectAttributes(&attributes, &link, OBJ_CASE_INSENSITIVE | OBJ_OPENIF, nullptr, nullptr);
        return NtCreateSymbolicLinkObject(&m_link, symbolicLinkAllAccess, &attributes, &target) >= 0;
    }

    const std::string m_name;
    HANDLE m_link = nullptr;
};

/// The driver's stand-in, and a device in the system's books for each one that is plugged in.
class WinUsbFace final : public FakeUsbFace {
public:
    std::unique_ptr<UsbPlatform> makePlatform() override
    {
        take(*standIn()());
        return makeUsbPlatformWinUsb();
    }
    void plug(std::uint16_t product, bool running) override
    {
        static int number = 0;
        FakeUsbFace::plug(product, running);
        const std::string name = QStringLiteral("VID_77A1&PID_%1\\%2_%3")
                                     .arg(product, 4, 16, QLatin1Char('0'))
                                     .arg(GetCurrentProcessId())
                                     .arg(++number)
                                     .toUpper()
                                     .toStdString();
        m_registered.push_back(std::make_unique<Registered>(name));
        if (!m_registered.back()->good) {
            qFatal("the device cannot be registered");
        }
    }
    void unplug() override
    {
        m_registered.clear();
        FakeUsbFace::unplug();
    }

private:
    std::vector<std::unique_ptr<Registered>> m_registered;
};

} // namespace

/// Runs where devices can be registered by a program, which real systems allow to administrators only, and where the
/// stand-in is loaded in place of the system's driver.
class TstUsbPlatformWinUsb final : public UsbPlatformContract {
    Q_OBJECT
    std::unique_ptr<UsbFace> makeFace() override { return std::make_unique<WinUsbFace>(); }
private slots:
    void initTestCase()
    {
        if (standIn() == nullptr) {
            QSKIP("the system's own driver is loaded");
        }
    }
    void aWindowIsToldOfChangesOnceItIsRegistered();
};

void TstUsbPlatformWinUsb::aWindowIsToldOfChangesOnceItIsRegistered()
{
    const std::unique_ptr<UsbPlatform> platform = makeUsbPlatformWinUsb();
    const HWND window =
        CreateWindowW(L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, GetModuleHandleW(nullptr), nullptr);
    QVERIFY(window != nullptr);
    const auto handle = reinterpret_cast<std::uintptr_t>(window);
    QVERIFY(platform->registerHotplug(handle, [] {}));
    QVERIFY(!platform->registerHotplug(handle, [] {}));
    DestroyWindow(window); // before the platform, as the program's window
}

QTEST_GUILESS_MAIN(TstUsbPlatformWinUsb)
#include "tst_UsbPlatformWinUsb.moc"
