#include "usbip/UsbIpServer.h"

#include "FaultScript.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sstream>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace emulator::usbip {

namespace {

constexpr const char *hostController = "/sys/devices/platform/vhci_hcd.0";
constexpr int busyWaitMs = 1;  // transfers are pending: the grain of time
constexpr int idleWaitMs = 20; // bounds the wait for stop() and for a device that comes back
constexpr int freePort = 4;    // state of a port in the host controller's table
constexpr std::size_t readSize = 1 << 16;
constexpr int socketBuffer = 4 << 20;

void makeNonBlocking(int file)
{
    fcntl(file, F_SETFL, fcntl(file, F_GETFL) | O_NONBLOCK);
}

/// The first free port of the host controller's hub for high speed, which takes full speed too; -1 if there is none.
int findFreePort()
{
    std::ifstream table(std::string(hostController) + "/status");
    std::string line;
    while (std::getline(table, line)) {
        std::istringstream fields(line);
        std::string hub;
        int port = -1;
        int state = -1;
        if (fields >> hub >> port >> state && hub == "hs" && state == freePort) {
            return port;
        }
    }
    return -1;
}

} // namespace

Server::~Server()
{
    for (const Connection &connection : m_connections) {
        ::close(connection.socket);
    }
    if (m_listener >= 0) {
        ::close(m_listener);
    }
}

bool Server::listen(std::uint16_t port)
{
    m_listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    setsockopt(m_listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    constexpr int backlog = 4;
    auto *const plain = reinterpret_cast<sockaddr *>(&address);
    if (m_listener < 0 || bind(m_listener, plain, length) != 0 || ::listen(m_listener, backlog) != 0 ||
        getsockname(m_listener, plain, &length) != 0) {
        m_problem = std::strerror(errno);
        return false;
    }
    makeNonBlocking(m_listener);
    m_port = ntohs(address.sin_port);
    return true;
}

bool Server::plugIntoKernel()
{
    const std::string attach = std::string(hostController) + "/attach";
    m_usesKernel = access(attach.c_str(), W_OK) == 0;
    if (!m_usesKernel) {
        m_problem = attach + ": " + std::strerror(errno);
    }
    return m_usesKernel;
}

void Server::passTime()
{
    const auto now = std::chrono::steady_clock::now();
    m_device.tick(std::uint64_t(std::chrono::nanoseconds(now - m_lastTick).count()));
    m_lastTick = now;
}

void Server::run()
{
    m_lastTick = std::chrono::steady_clock::now();
    while (!m_stop.load(std::memory_order_relaxed)) {
        passTime();
        plugIntoFreePort();
        std::vector<pollfd> files{{m_listener, POLLIN, 0}, {m_orders, POLLIN, 0}};
        for (Connection &connection : m_connections) {
            connection.session.pump();
            const short out = connection.session.output().empty() ? short(0) : short(POLLOUT);
            files.push_back({connection.socket, short(POLLIN | out), 0});
        }
        closeFinished();
        if (poll(files.data(), files.size(), waitMs()) < 0 && errno != EINTR) {
            m_problem = std::strerror(errno);
            return;
        }
        for (const pollfd &file : files) {
            const auto at = std::find_if(m_connections.begin(), m_connections.end(),
                                         [&file](const Connection &c) { return c.socket == file.fd; });
            if (at != m_connections.end()) {
                serve(*at, file.revents);
            }
        }
        if (files[0].revents != 0) {
            accept();
        }
        if (files[1].revents != 0) {
            obey();
        }
    }
}

int Server::waitMs() const
{
    const bool pump = std::any_of(m_connections.begin(), m_connections.end(),
                                  [](const Connection &c) { return c.session.wantsPump(); });
    const bool waits =
        std::any_of(m_connections.begin(), m_connections.end(), [](const Connection &c) { return c.session.waits(); });
    return pump ? 0 : waits ? busyWaitMs : idleWaitMs;
}

void Server::accept()
{
    const int socket = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (socket < 0) {
        return;
    }
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    setsockopt(socket, SOL_SOCKET, SO_SNDBUF, &socketBuffer, sizeof socketBuffer);
    const bool taken = std::any_of(m_connections.begin(), m_connections.end(),
                                   [](const Connection &c) { return c.session.holdsDevice(); });
    m_connections.emplace_back(socket, m_device, taken);
}

/// Plugs an instrument that has arrived into the kernel's host controller.
void Server::plugIntoFreePort()
{
    if (!m_usesKernel || !m_device.attached() || m_device.generation() == m_pluggedGeneration) {
        return;
    }
    const int port = findFreePort();
    std::array<int, 2> ends{};
    if (port < 0 || socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        m_problem = "no free port at the kernel's virtual host controller";
        return; // the last device's port may not be free yet: tried again
    }
    setsockopt(ends[0], SOL_SOCKET, SO_SNDBUF, &socketBuffer, sizeof socketBuffer);
    constexpr int device = 0x10002;
    const int speed = m_device.speed() == Speed::High ? 3 : 2;
    const std::string line = std::to_string(port) + ' ' + std::to_string(ends[1]) + ' ' + std::to_string(device) + ' ' +
                             std::to_string(speed);
    const int attach = open((std::string(hostController) + "/attach").c_str(), O_WRONLY | O_CLOEXEC);
    const bool good = attach >= 0 && ::write(attach, line.data(), line.size()) == ssize_t(line.size());
    m_problem = good ? "" : std::strerror(errno);
    if (attach >= 0) {
        ::close(attach);
    }
    ::close(ends[1]);
    if (!good) {
        ::close(ends[0]);
        return;
    }
    makeNonBlocking(ends[0]);
    m_connections.emplace_back(ends[0], m_device, false);
    m_connections.back().session.startImported();
    m_pluggedGeneration = m_device.generation();
}

void Server::obey()
{
    std::array<char, 256> buffer{};
    const ssize_t length = ::read(m_orders, buffer.data(), buffer.size());
    if (length <= 0) {
        m_orders = -1;
        return;
    }
    for (ssize_t i = 0; i < length; ++i) {
        const char c = buffer[std::size_t(i)];
        if (c != '\n') {
            m_order += c;
        } else {
            obey(std::exchange(m_order, {}));
        }
    }
}

void Server::obey(const std::string &order)
{
    if (order == "unplug") {
        m_device.detach();
    } else if (order == "plug") {
        m_device.attach();
    } else if (order == "quit") {
        stop();
    } else if (order == "clear") {
        m_device.faults().clear();
    } else {
        constexpr std::string_view fault = "fault ";
        const bool isFault = order.starts_with(fault);
        const std::string problem = isFault ? addFault(m_device, order.substr(fault.size())) : "no order: " + order;
        if (!problem.empty() && m_tell) {
            m_tell(problem);
        }
    }
}

void Server::serve(Connection &connection, short events)
{
    bool alive = (events & (POLLERR | POLLNVAL)) == 0;
    if (alive && (events & (POLLIN | POLLHUP)) != 0) {
        alive = read(connection);
        connection.session.pump();
    }
    // Also what has just come to be sent.
    alive = alive && write(connection);
    if (!alive) {
        close(std::find_if(m_connections.begin(), m_connections.end(),
                           [&connection](const Connection &c) { return &c == &connection; }));
    }
}

bool Server::read(Connection &connection)
{
    std::array<std::uint8_t, readSize> buffer;
    const ssize_t length = recv(connection.socket, buffer.data(), buffer.size(), 0);
    if (length > 0) {
        connection.session.receive(std::span(buffer).first(std::size_t(length)));
    }
    return length > 0 || (length < 0 && (errno == EAGAIN || errno == EINTR));
}

bool Server::write(Connection &connection)
{
    while (!connection.session.output().empty()) {
        const std::span<const std::uint8_t> out = connection.session.output();
        const ssize_t length = send(connection.socket, out.data(), out.size(), MSG_NOSIGNAL);
        if (length < 0) {
            return errno == EAGAIN || errno == EINTR;
        }
        connection.session.sent(std::size_t(length));
    }
    return true;
}

/// Closes a connection. A host that held the device has let go of it.
void Server::close(std::list<Connection>::iterator at)
{
    const bool letGo = at->session.holdsDevice();
    ::close(at->socket);
    m_connections.erase(at);
    if (letGo) {
        m_device.detach();
        if (!m_usesKernel) {
            m_device.attach();
        }
    }
}

void Server::closeFinished()
{
    for (auto at = m_connections.begin(); at != m_connections.end();) {
        const auto here = at++;
        if (here->session.finished() &&
            (here->session.output().empty() || !write(*here) || here->session.output().empty())) {
            close(here);
        }
    }
}

} // namespace emulator::usbip
