#pragma once

#include <QHostAddress>
#include <QList>
#include <QSslCertificate>
#include <QSslKey>
#include <QSslSocket>
#include <QTcpServer>
#include <QUrl>
#include <QUrlQuery>

#include <functional>

/// A server of HTTP/1.1 (RFC 9112) on this machine, in the test's own thread: each connection has one request, which is
/// noted and answered with the bytes that the test gives, head included.
class LoopbackServer : public QTcpServer {
public:
    /// What a connection gets for its request (head and all); the connection is closed behind it. At first nobody is at
    /// home; to no answer at all Qt asks once more.
    std::function<QByteArray(const QByteArray &request)> answer = [](const QByteArray &) { return notFound(); };
    bool keepsOpen = false;     ///< nothing more comes, and no end
    QList<QByteArray> requests; ///< heads, as they came
    int connections = 0;

    explicit LoopbackServer(const QHostAddress &address = QHostAddress::LocalHost, quint16 port = 0)
    {
        listen(address, port);
    }

    /// Speaks TLS with a certificate and its key in PEM.
    void setCertificate(const QByteArray &pem)
    {
        m_certificate = QSslCertificate(pem);
        m_key = QSslKey(pem, QSsl::Rsa);
    }

    [[nodiscard]] QUrl url() const
    {
        const QString scheme = m_certificate.isNull() ? QStringLiteral("http") : QStringLiteral("https");
        return QUrl(QStringLiteral("%1://%2:%3").arg(scheme, serverAddress().toString()).arg(serverPort()));
    }

    /// The target of a request, such as "/update?app=lux".
    [[nodiscard]] static QByteArray target(const QByteArray &request) { return request.split(' ').value(1); }

    static QByteArray ok(const QByteArray &body)
    {
        return "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
    }

    static QByteArray notFound() { return "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n"; }

    static QByteArray redirection(const QUrl &to)
    {
        return "HTTP/1.1 302 Found\r\nLocation: " + to.toEncoded() + "\r\nContent-Length: 0\r\n\r\n";
    }

protected:
    void incomingConnection(qintptr handle) override
    {
        ++connections;
        auto *socket = new QSslSocket(this);
        socket->setSocketDescriptor(handle);
        if (!m_certificate.isNull()) {
            socket->setLocalCertificate(m_certificate);
            socket->setPrivateKey(m_key);
            socket->startServerEncryption();
        }
        connect(socket, &QSslSocket::readyRead, this, [this, socket] { read(*socket); });
        connect(socket, &QSslSocket::disconnected, socket, &QObject::deleteLater);
    }

private:
    void read(QSslSocket &socket)
    {
        const QByteArray head = socket.peek(16 * 1024);
        if (!head.contains("\r\n\r\n")) {
            return;
        }
        socket.readAll();
        requests += head;
        socket.write(answer(head));
        if (!keepsOpen) {
            socket.disconnectFromHost();
        }
    }

    QSslCertificate m_certificate;
    QSslKey m_key;
};
