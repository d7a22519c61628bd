#pragma once

#include "usbip/UsbIpSession.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <list>
#include <string>
#include <utility>

namespace emulator::usbip {

/// Offers an instrument over USB/IP to this machine, and lets real time pass for it.
///
/// Only the loopback address is bound: the protocol knows no authentication. A host that lets go of the device (or
/// whose connection breaks) has pulled the plug: the instrument is plugged in anew for the next one. One that leaves
/// the bus by itself, to come back with its firmware, ends the connection and waits for the next import.
class Server {
public:
    /// @param device  not owned; used only within run()
    explicit Server(Instrument &device) : m_device(device) {}
    ~Server();
    Server(const Server &) = delete;
    Server &operator=(const Server &) = delete;

    /// Listens on 127.0.0.1. @param port  0 for any that is free @return false if the port cannot be had
    [[nodiscard]] bool listen(std::uint16_t port);
    /// The port that is listened on.
    [[nodiscard]] std::uint16_t port() const { return m_port; }
    /// Plugs the instrument into this system's kernel, at the first free port of its virtual host controller, now and
    /// each time that it comes back. Needs root and the kernel's module vhci-hcd.
    /// @return false if that controller is not there for us
    [[nodiscard]] bool plugIntoKernel();
    /// Takes orders from a file, one a line: "unplug", "plug", "fault" and a word for addFault(), "clear" and "quit".
    /// Its end is no order.
    void takeOrders(int file) { m_orders = file; }
    /// Whom to tell what is wrong with an order, on the thread of run(). Nobody by default.
    void tellProblems(std::function<void(const std::string &)> tell) { m_tell = std::move(tell); }
    /// Serves until stop(). Blocks.
    void run();
    /// Ends run() within some milliseconds. Any thread, also a signal's handler.
    void stop() { m_stop.store(true, std::memory_order_relaxed); }
    /// What went wrong last, for the user; empty for nothing. Only while run() is not under way.
    [[nodiscard]] const std::string &problem() const { return m_problem; }

private:
    struct Connection {
        Connection(int socket_, Instrument &device, bool taken) : socket(socket_), session(device, taken) {}
        int socket;
        Session session;
    };

    void passTime();
    void accept();
    void plugIntoFreePort();
    void obey();
    void obey(const std::string &order);
    void serve(Connection &connection, short events);
    [[nodiscard]] bool read(Connection &connection);
    [[nodiscard]] bool write(Connection &connection);
    void close(std::list<Connection>::iterator at);
    void closeFinished();
    [[nodiscard]] int waitMs() const;

    Instrument &m_device;
    int m_listener = -1;
    int m_orders = -1;
    std::string m_order; ///< a line that is not whole yet
    std::uint16_t m_port = 0;
    std::list<Connection> m_connections;
    std::chrono::steady_clock::time_point m_lastTick;
    bool m_usesKernel = false;
    unsigned m_pluggedGeneration = 0; ///< the arrival that the kernel has been told of
    std::atomic<bool> m_stop{false};
    std::string m_problem;
    std::function<void(const std::string &)> m_tell;
};

} // namespace emulator::usbip
