#pragma once

#include "emulator/UsbIpClient.h"

#include <QDeadlineTimer>

#include <arpa/inet.h>
#include <memory>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace usbIpClient {

constexpr int longWait = 20000; // ms: never waited for when all is well

/// One connection of a host.
class Connection {
public:
    explicit Connection(std::uint16_t port) : m_socket(socket(AF_INET, SOCK_STREAM, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        m_good = connect(m_socket, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
    }
    ~Connection() { close(m_socket); }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    void send(const Bytes &bytes)
    {
        m_good = m_good && ::send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL) == ssize_t(bytes.size());
    }
    /// Exactly so many bytes; fewer when the server ends the connection.
    Bytes receive(std::size_t length)
    {
        Bytes out(length);
        std::size_t got = 0;
        while (got < length) {
            pollfd file{m_socket, POLLIN, 0};
            const ssize_t n = poll(&file, 1, longWait) == 1 ? recv(m_socket, out.data() + got, length - got, 0) : -1;
            if (n <= 0) {
                break;
            }
            got += std::size_t(n);
        }
        out.resize(got);
        return out;
    }
    bool import()
    {
        send(importRequest("1-1"));
        const Bytes head = receive(8);
        return head.size() == 8 && bigAt(head, 4) == 0 && receive(312).size() == 312;
    }
    /// One transfer from start to end. @return its status; -1 when the connection broke
    int transfer(std::uint32_t endpoint, bool toHost, const SetupPacket &setup, Bytes &data)
    {
        send(submit(++m_sequence, endpoint, toHost, std::uint32_t(data.size()), setup, toHost ? Bytes() : data));
        const Bytes head = receive(48);
        if (head.size() != 48 || bigAt(head, 4) != m_sequence) {
            return -1;
        }
        if (toHost) {
            data = receive(bigAt(head, 24));
        }
        return int(bigAt(head, 20));
    }
    int write(std::uint8_t request, std::uint16_t value, Bytes data, std::uint16_t index = 0)
    {
        return transfer(0, false, {0x40, request, value, index, std::uint16_t(data.size())}, data);
    }

private:
    int m_socket;
    bool m_good = false;
    std::uint32_t m_sequence = 0;
};

/// Imports as soon as the device is there.
inline std::unique_ptr<Connection> importWhenThere(std::uint16_t port)
{
    for (QDeadlineTimer limit(longWait); !limit.hasExpired();) {
        auto connection = std::make_unique<Connection>(port);
        if (connection->import()) {
            return connection;
        }
    }
    return nullptr;
}

} // namespace usbIpClient
