#include "support/UmockdevBus.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <filesystem>
#include <linux/ioctl.h>
// The first must come before the second, which does not bring it.
#include <linux/usbdevice_fs.h>
#include <stdexcept>
#include <sys/stat.h>
#include <thread>
#include <umockdev.h>
#include <unistd.h>

#ifdef __SANITIZE_THREAD__
#include <cstdarg>
#include <dlfcn.h>
#include <sanitizer/tsan_interface.h>
#endif

using emulator::Outcome;
using emulator::Urb;

#ifdef __SANITIZE_THREAD__
namespace {

// What is behind the memory that an order brings along. umockdev passes orders on in a way that ThreadSanitizer does
// not see, so both sides tell it.
char passedOn;

} // namespace

/// Stands before umockdev's.
extern "C" int ioctl(int file, unsigned long request, ...)
{
    using Function = int (*)(int, unsigned long, ...);
    static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "ioctl"));
    va_list arguments;
    va_start(arguments, request);
    void *const argument = va_arg(arguments, void *);
    va_end(arguments);
    __tsan_release(&passedOn);
    const int result = next(file, request, argument);
    __tsan_acquire(&passedOn);
    return result;
}
#endif

namespace {

constexpr int fifoSize = 4096; // one page: the least that a FIFO holds, and what makes it full at once
constexpr unsigned capabilities = USBDEVFS_CAP_ZERO_PACKET | USBDEVFS_CAP_BULK_CONTINUATION |
                                  USBDEVFS_CAP_NO_PACKET_SIZE_LIM | USBDEVFS_CAP_BULK_SCATTER_GATHER |
                                  USBDEVFS_CAP_REAP_AFTER_DISCONNECT;

int statusOf(Outcome outcome)
{
    switch (outcome) {
    case Outcome::Done:
        return 0;
    case Outcome::Stalled:
        return -EPIPE;
    case Outcome::NotYet:
    case Outcome::Failed:
        return -EPROTO;
    case Outcome::Gone:
        break;
    }
    return -ESHUTDOWN;
}

std::string hexOf(const emulator::Bytes &bytes)
{
    std::string text;
    for (const std::uint8_t byte : bytes) {
        std::array<char, 3> digits{};
        std::snprintf(digits.data(), digits.size(), "%02X", unsigned(byte));
        text += digits.data();
    }
    return text;
}

std::string threeDigits(int number)
{
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%03d", number);
    return text.data();
}

} // namespace

/// An instrument under one arrival: a node of usbfs, and what a program has submitted through it.
struct UmockdevBus::Node {
    UmockdevBus *bus = nullptr;
    int port = 0;
    unsigned generation = 0;
    int address = 0;
    UMockdevIoctlBase *handler = nullptr;
    int fifo = -1;
    bool isReady = true; ///< the FIFO is empty
    bool claimed = false;
    int claimsToRefuse = 0;
    std::map<std::uint64_t, usbdevfs_urb *> pending; ///< by key
    std::deque<usbdevfs_urb *> completed;

    [[nodiscard]] std::string path() const { return "/dev/bus/usb/001/" + threeDigits(address); }
    [[nodiscard]] std::string sysPath() const { return "/sys/devices/usb1/1-" + std::to_string(port + 1); }
};

struct UmockdevBus::Glib {
    UMockdevTestbed *testbed = nullptr;
    std::string root;

    static gboolean onIoctl(UMockdevIoctlBase * /*base*/, UMockdevIoctlClient *client, gpointer data)
    {
        Node &node = *static_cast<Node *>(data);
#ifdef __SANITIZE_THREAD__
        __tsan_acquire(&passedOn);
#endif
        const UMockdevIoctlData *argument = umockdev_ioctl_client_get_arg(client);
        const int result = node.bus->handle(node, umockdev_ioctl_client_get_request(client),
                                            *reinterpret_cast<void *const *>(argument->data));
#ifdef __SANITIZE_THREAD__
        __tsan_release(&passedOn);
#endif
        umockdev_ioctl_client_complete(client, result < 0 ? -1 : result, result < 0 ? -result : 0);
        return TRUE;
    }
    static void onVanished(UMockdevIoctlBase * /*base*/, UMockdevIoctlClient * /*client*/, gpointer data)
    {
        Node &node = *static_cast<Node *>(data);
        node.bus->forgetClient(node);
    }
};

bool UmockdevBus::enter(char **argv)
{
    constexpr const char *mark = "LUX_UMOCKDEV";
    const char *preloaded = getenv("LD_PRELOAD");
    if (preloaded != nullptr && std::strstr(preloaded, "libumockdev-preload") != nullptr) {
        return true;
    }
    if (getenv(mark) == nullptr) {
        setenv(mark, "1", 1);
        // The wrapper's library comes before the sanitizer's, which minds.
        setenv("ASAN_OPTIONS", "verify_asan_link_order=0", 0);
        std::vector<char *> words;
        std::string wrapper = "umockdev-wrapper";
        std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
        words.push_back(wrapper.data());
        words.push_back(self.data());
        for (char **word = argv + 1; *word != nullptr; ++word) {
            words.push_back(*word);
        }
        words.push_back(nullptr);
        execvp(wrapper.c_str(), words.data());
    }
    std::fprintf(stderr, "umockdev-wrapper cannot be started\n");
    return false;
}

UmockdevBus::UmockdevBus(double timeScale) : InstrumentBus(timeScale), m_glib(std::make_unique<Glib>())
{
    m_glib->testbed = umockdev_testbed_new();
    gchar *root = umockdev_testbed_get_root_dir(m_glib->testbed);
    m_glib->root = root;
    g_free(root);
    start();
}

UmockdevBus::~UmockdevBus()
{
    stop();
    for (const auto &port : m_ports) {
        port->instrument->detach();
    }
    for (const auto &node : m_nodes) {
        if (node->handler != nullptr) {
            leave(node->port);
        }
    }
    g_object_unref(m_glib->testbed);
}

// ---- coming and going, on the bus's thread

void UmockdevBus::changed(int port, bool attached, unsigned generation)
{
    const auto known = std::find_if(m_nodes.begin(), m_nodes.end(), [port, generation](const auto &node) {
        return node->port == port && node->generation == generation && node->handler != nullptr;
    });
    if (!attached) {
        leave(port);
    } else if (known == m_nodes.end()) {
        arrive(port, generation);
    } else {
        umockdev_testbed_uevent(m_glib->testbed, (*known)->sysPath().c_str(), "add");
    }
}

void UmockdevBus::arrive(int port, unsigned generation)
{
    auto made = std::make_unique<Node>();
    Node &node = *made;
    node.bus = this;
    node.port = port;
    node.generation = generation;
    emulator::Bytes device;
    emulator::Bytes configuration;
    emulator::Speed speed{};
    {
        const Turn turn(*this);
        node.address = ++m_lastAddress;
        node.claimsToRefuse = m_claimsToRefuse;
        const emulator::Instrument &instrument = *m_ports[std::size_t(port)]->instrument;
        device = instrument.deviceDescriptor();
        configuration = instrument.configurationDescriptor();
        speed = instrument.speed();
        m_nodes.push_back(std::move(made));
    }

    // The node stands before anybody is told of the device.
    const std::string path = m_glib->root + node.path();
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    if (mkfifo(path.c_str(), 0666) != 0) {
        throw std::runtime_error("no FIFO: " + path);
    }
    node.fifo = open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    fcntl(node.fifo, F_SETPIPE_SZ, fifoSize);
    {
        const Turn turn(*this);
        setReady(node);
    }
    node.handler = umockdev_ioctl_base_new();
    g_signal_connect(node.handler, "handle-ioctl", G_CALLBACK(Glib::onIoctl), &node);
    g_signal_connect(node.handler, "client-vanished", G_CALLBACK(Glib::onVanished), &node);
    umockdev_testbed_attach_ioctl(m_glib->testbed, node.path().c_str(), node.handler, nullptr);

    const std::string address = threeDigits(node.address);
    const auto word = [&device](std::size_t at) { return unsigned(device[at] | device[at + 1] << 8); };
    std::array<char, 32> product{};
    std::snprintf(product.data(), product.size(), "%x/%x/%x", word(8), word(10), word(12));
    const std::string text =
        "P: /devices/usb1/1-" + std::to_string(port + 1) +
        "\nE: SUBSYSTEM=usb\nE: DRIVER=usb\nE: BUSNUM=001\nE: DEVNUM=" + address + "\nE: DEVNAME=" + node.path() +
        "\nE: DEVTYPE=usb_device\nE: PRODUCT=" + product.data() +
        "\nA: bConfigurationValue=1\\n\nA: busnum=1\\n\nA: devnum=" + std::to_string(node.address) +
        "\\n\nA: speed=" + (speed == emulator::Speed::High ? "480" : "12") +
        "\\n\nA: dev=189:" + std::to_string(node.address - 1) + "\\n\nH: descriptors=" + hexOf(device) +
        hexOf(configuration) + "\n";
    GError *error = nullptr;
    if (umockdev_testbed_add_from_string(m_glib->testbed, text.c_str(), &error) == FALSE) {
        throw std::runtime_error(error->message);
    }
}

void UmockdevBus::leave(int port)
{
    const auto found = std::find_if(m_nodes.rbegin(), m_nodes.rend(), [port](const auto &node) {
        return node->port == port && node->handler != nullptr;
    });
    if (found == m_nodes.rend()) {
        return;
    }
    Node &node = **found;
    umockdev_testbed_uevent(m_glib->testbed, node.sysPath().c_str(), "remove");
    umockdev_testbed_remove_device(m_glib->testbed, node.sysPath().c_str());
    umockdev_testbed_detach_ioctl(m_glib->testbed, node.path().c_str(), nullptr);
    g_object_unref(node.handler);
    node.handler = nullptr;
    std::remove((m_glib->root + node.path()).c_str());
}

// ---- orders of the program

int UmockdevBus::handle(Node &node, unsigned long request, void *argument)
{
    const Turn turn(*this);
    int result = 0;
    switch (request) {
    case USBDEVFS_GET_CAPABILITIES:
        *static_cast<std::uint32_t *>(argument) = capabilities;
        break;
    case USBDEVFS_CLAIMINTERFACE:
        if (isGone(node)) {
            result = -ENODEV;
        } else if (node.claimsToRefuse > 0) {
            --node.claimsToRefuse;
            std::this_thread::sleep_for(m_refusalTakes.load());
            result = -ENOENT;
        } else {
            node.claimed = true;
        }
        break;
    case USBDEVFS_RELEASEINTERFACE:
        node.claimed = false;
        break;
    case USBDEVFS_SETCONFIGURATION:
    case USBDEVFS_SETINTERFACE:
    case USBDEVFS_RESET:
        result = isGone(node) ? -ENODEV : 0;
        break;
    case USBDEVFS_CLEAR_HALT:
        result = clearHalt(node, *static_cast<unsigned *>(argument));
        break;
    case USBDEVFS_GETDRIVER:
        result = -ENODATA;
        break;
    case USBDEVFS_SUBMITURB:
        result = submit(node, argument);
        break;
    case USBDEVFS_DISCARDURB:
        result = discard(node, argument);
        break;
    case USBDEVFS_REAPURB:
    case USBDEVFS_REAPURBNDELAY:
        result = reap(node, static_cast<void **>(argument));
        break;
    default:
        result = -ENOTTY;
        break;
    }
    setReady(node);
    return result;
}

bool UmockdevBus::isGone(const Node &node) const
{
    return !isPresent(node.port, node.generation);
}

int UmockdevBus::submit(Node &node, void *urb)
{
    auto &order = *static_cast<usbdevfs_urb *>(urb);
    if (isGone(node)) {
        return -ENODEV;
    }
    const bool isControl = order.type == USBDEVFS_URB_TYPE_CONTROL;
    if (!isControl && !node.claimed) {
        return -EINVAL;
    }
    Urb made;
    made.key = ++m_lastKey;
    auto *const data = static_cast<std::uint8_t *>(order.buffer);
    const auto length = std::size_t(order.buffer_length);
    if (isControl) {
        constexpr std::size_t setupSize = 8;
        made.setup = emulator::SetupPacket::fromBytes(std::span<const std::uint8_t, setupSize>(data, setupSize));
        made.buffer = {data + setupSize, std::min<std::size_t>(length - setupSize, made.setup.length)};
    } else {
        made.kind = (order.endpoint & 0x80) != 0 ? Urb::Kind::BulkIn : Urb::Kind::BulkOut;
        made.endpoint = order.endpoint;
        made.buffer = {data, length};
    }
    order.actual_length = 0;
    node.pending[made.key] = &order;
    m_ports[std::size_t(node.port)]->urbs->submit(made);
    passTime();
    (void)pumpOnce();
    return 0;
}

int UmockdevBus::discard(Node &node, void *urb)
{
    const auto found = std::find_if(node.pending.begin(), node.pending.end(),
                                    [urb](const auto &entry) { return entry.second == urb; });
    if (found == node.pending.end()) {
        return -EINVAL;
    }
    const auto taken = m_ports[std::size_t(node.port)]->urbs->cancel(found->first);
    found->second->status = -ENOENT;
    found->second->actual_length = taken ? int(taken->actual) : 0;
    node.completed.push_back(found->second);
    node.pending.erase(found);
    return 0;
}

int UmockdevBus::reap(Node &node, void **urb)
{
    if (node.completed.empty()) {
        return isGone(node) ? -ENODEV : -EAGAIN;
    }
    *urb = node.completed.front();
    node.completed.pop_front();
    return 0;
}

int UmockdevBus::clearHalt(Node &node, unsigned endpoint)
{
    if (isGone(node)) {
        return -ENODEV;
    }
    constexpr std::uint8_t toEndpoint = 0x02;
    constexpr std::uint8_t clearFeature = 1;
    (void)m_ports[std::size_t(node.port)]->instrument->control(
        {toEndpoint, clearFeature, 0, std::uint16_t(endpoint), 0}, {});
    return 0;
}

/// The program has closed the node: nothing of it may be touched any more.
void UmockdevBus::forgetClient(Node &node)
{
    const Turn turn(*this);
    for (const auto &[key, urb] : node.pending) {
        (void)m_ports[std::size_t(node.port)]->urbs->cancel(key);
    }
    node.pending.clear();
    node.completed.clear();
    node.claimed = false;
}

// ---- ends of transfers

UmockdevBus::Node *UmockdevBus::nodeOf(int port, std::uint64_t key)
{
    for (const auto &node : m_nodes) {
        if (node->port == port && node->pending.contains(key)) {
            return node.get();
        }
    }
    return nullptr;
}

void UmockdevBus::completed(int port, const Urb &urb)
{
    Node *node = nodeOf(port, urb.key);
    if (node == nullptr) {
        return;
    }
    usbdevfs_urb *order = node->pending[urb.key];
    order->status = statusOf(urb.outcome);
    order->actual_length = int(urb.actual);
    node->pending.erase(urb.key);
    node->completed.push_back(order);
}

void UmockdevBus::afterPump()
{
    for (const auto &node : m_nodes) {
        setReady(*node);
    }
}

/// Makes the node poll writable exactly while something can be reaped.
void UmockdevBus::setReady(Node &node)
{
    static std::array<char, fifoSize> page{};
    const bool wanted = !node.completed.empty();
    if (node.fifo < 0 || wanted == node.isReady) {
        return;
    }
    const ssize_t moved =
        wanted ? read(node.fifo, page.data(), page.size()) : write(node.fifo, page.data(), page.size());
    node.isReady = moved == ssize_t(page.size()) ? wanted : node.isReady;
}
