// The check over TLS: whom it believes, and that others learn nothing.

#include "update/UpdateDesk.h"

#include <QSslConfiguration>

namespace {

QByteArray pem()
{
    QFile file(QStringLiteral(LUX_LOOPBACK_PEM));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// While it lives, the system trusts the certificate of the tests as well.
class Trust {
public:
    Trust() : m_former(QSslConfiguration::defaultConfiguration())
    {
        QSslConfiguration trusting = m_former;
        trusting.addCaCertificate(QSslCertificate(pem()));
        QSslConfiguration::setDefaultConfiguration(trusting);
    }
    ~Trust() { QSslConfiguration::setDefaultConfiguration(m_former); }
    Trust(const Trust &) = delete;
    Trust &operator=(const Trust &) = delete;

private:
    QSslConfiguration m_former;
};

} // namespace

class TstUpdateTls : public QObject, private UpdateDesk {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        if (!QSslSocket::supportsSsl()) {
            QSKIP("this Qt has no TLS");
        }
#ifdef Q_OS_WIN
        QSKIP("under Wine the tests' own server gets no TLS connection up");
#endif
    }
    void init()
    {
        setUp();
    }
    void cleanup()
    {
        tearDown();
    }

    void aServerWithATrustedCertificateIsAsked();
    void aCertificateThatNobodyVouchesForIsFailedAndSeesNoRequest();
    void aCertificateOfAnotherHostIsFailedAndSeesNoRequest();
    void aServerThatSpeaksNoTlsIsFailed();
    void aRedirectionFromHttpsToHttpIsNotFollowed();

private:
    void makeTlsServer(const char *address = "127.0.0.1");
};

void TstUpdateTls::makeTlsServer(const char *address)
{
    m_server = std::make_unique<LoopbackServer>(QHostAddress(QString::fromLatin1(address)));
    m_server->setCertificate(pem());
    serve("<last>1.0</last>");
    makeCheck({m_server->url(), true, {0, 0, 60'000}});
}

void TstUpdateTls::aServerWithATrustedCertificateIsAsked()
{
    const Trust trust;
    makeTlsServer();
    m_check->actCheckUpdate();
    QCOMPARE(outcome(), latest);
    QCOMPARE(m_server->requests.size(), 1);
}

void TstUpdateTls::aCertificateThatNobodyVouchesForIsFailedAndSeesNoRequest()
{
    makeTlsServer();
    m_check->actCheckUpdate();
    QCOMPARE(outcome(), failed);
    QVERIFY(m_server->connections > 0);
    QVERIFY(m_server->requests.isEmpty());
}

void TstUpdateTls::aCertificateOfAnotherHostIsFailedAndSeesNoRequest()
{
    const Trust trust;
    makeTlsServer("127.0.0.2"); // the certificate is of 127.0.0.1
    m_check->actCheckUpdate();
    QCOMPARE(outcome(), failed);
    QVERIFY(m_server->connections > 0);
    QVERIFY(m_server->requests.isEmpty());
}

void TstUpdateTls::aServerThatSpeaksNoTlsIsFailed()
{
    QUrl url = m_server->url();
    url.setScheme(QStringLiteral("https"));
    makeCheck({url, true, {0, 0, 60'000}});
    m_check->actCheckUpdate();
    QVERIFY(waitFor([this] { return m_server->connections > 0; }));
    m_server.reset(); // hangs up
    QCOMPARE(outcome(), failed);
}

void TstUpdateTls::aRedirectionFromHttpsToHttpIsNotFollowed()
{
    const Trust trust;
    LoopbackServer open;
    makeTlsServer();
    serveBytes(LoopbackServer::redirection(open.url()));
    m_check->actCheckUpdate();
    QCOMPARE(outcome(), failed);
    QCOMPARE(m_server->requests.size(), 1);
    QCOMPARE(open.connections, 0);
}

LUX_GUI_TEST(TstUpdateTls)
#include "tst_UpdateTls.moc"
