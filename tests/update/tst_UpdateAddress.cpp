#include "settings/HostSystem.h"
#include "update/UpdateAddress.h"

#include <QSysInfo>
#include <QtTest>

/// Which addresses are asked, followed and shown.
class TstUpdateAddress : public QObject {
    Q_OBJECT
private slots:
    void onlyHttpsOrThisMachineIsSafe_data();
    void onlyHttpsOrThisMachineIsSafe();
    void aRedirectionIsNoLessSafe_data();
    void aRedirectionIsNoLessSafe();
    void onlyLinksOfTheWebAreShown_data();
    void onlyLinksOfTheWebAreShown();
    void aLinkIsEscaped();
    void theRequestBelongsToTheEndpoint_data();
    void theRequestBelongsToTheEndpoint();
};

void TstUpdateAddress::onlyHttpsOrThisMachineIsSafe_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("isSafe");
    const auto row = [](const char *url, bool isSafe) {
        QTest::addRow("\"%s\"", url) << QString::fromLatin1(url) << isSafe;
    };
    row("https://updates.example.org", true);
    row("HTTPS://updates.example.org:8443/lux", true);
    row("http://127.0.0.1:80", true);
    row("http://127.8.9.1", true);
    row("http://[::1]:8080/", true);
    row("http://localhost", true);
    row("http://LOCALHOST", true);
    row("http://updates.example.org", false);
    row("http://127.0.0.1.example.org", false);
    row("http://localhost.example.org", false);
    row("http://127.0.0.1@example.org", false);
    row("http://192.168.0.1", false);
    row("http://0.0.0.0", false);
    row("http://[::2]", false);
    row("ftp://127.0.0.1", false);
    row("file:///tmp/update", false);
    row("https:", false);
    row("updates.example.org", false);
    row("", false);
}

void TstUpdateAddress::onlyHttpsOrThisMachineIsSafe()
{
    QFETCH(QString, url);
    QFETCH(bool, isSafe);
    QCOMPARE(UpdateAddress::isSafe(QUrl(url)), isSafe);
}

void TstUpdateAddress::aRedirectionIsNoLessSafe_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("to");
    QTest::addColumn<bool>("isAllowed");
    const QString https = QStringLiteral("https://a.example.org/update");
    const QString here = QStringLiteral("http://127.0.0.1:8080/update");
    const QString http = QStringLiteral("http://a.example.org/update");
    QTest::newRow("https to https") << https << QStringLiteral("https://b.example.org") << true;
    QTest::newRow("https to http") << https << http << false;
    QTest::newRow("https to this machine") << https << here << false;
    QTest::newRow("this machine to https") << here << https << true;
    QTest::newRow("this machine to itself") << here << QStringLiteral("http://[::1]/x") << true;
    QTest::newRow("this machine to http") << here << http << false;
}

void TstUpdateAddress::aRedirectionIsNoLessSafe()
{
    QFETCH(QString, from);
    QFETCH(QString, to);
    QFETCH(bool, isAllowed);
    QCOMPARE(UpdateAddress::isNoLessSafe(QUrl(from), QUrl(to)), isAllowed);
}

void TstUpdateAddress::onlyLinksOfTheWebAreShown_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("link");
    const auto row = [](const char *name, const QString &text, const QString &link) {
        QTest::newRow(name) << text << link;
    };
    const QString plain = QStringLiteral("https://example.org/lux?a=1&b=2");
    row("https", plain, plain);
    row("http", QStringLiteral("http://example.org"), QStringLiteral("http://example.org"));
    row("blanks around", QStringLiteral("\n ") + plain + QStringLiteral("\t"), plain);
    row("another script", QStringLiteral("https://ex\u0430mple.org"), QStringLiteral("https://xn--exmple-4nf.org"));
    row("script", QStringLiteral("javascript:alert(1)"), {});
    row("file", QStringLiteral("file:///etc/passwd"), {});
    row("mail", QStringLiteral("mailto:a@example.org"), {});
    row("a user's name", QStringLiteral("https://corvanlux.example@evil.example/"), {});
    row("markup", QStringLiteral("https://example.org/\"><b>"), {});
    row("a line within", QStringLiteral("https://example.org/\nx"), {});
    row("without a host", QStringLiteral("https:///lux"), {});
    row("relative", QStringLiteral("/lux"), {});
    row("endless", QStringLiteral("https://example.org/") + QString(2000, QLatin1Char('a')), {});
    row("nothing", {}, {});
}

void TstUpdateAddress::onlyLinksOfTheWebAreShown()
{
    QFETCH(QString, text);
    QFETCH(QString, link);
    QCOMPARE(QString::fromLatin1(UpdateAddress::webLink(text).toEncoded()), link);
}

void TstUpdateAddress::aLinkIsEscaped()
{
    const QUrl url(QStringLiteral("https://example.org/?a='x'&b=%3Cb%3E"));
    QCOMPARE(UpdateAddress::markup(url, QStringLiteral("<i>\"shown\"</i>")),
             QStringLiteral("<a href=\"https://example.org/?a='x'&amp;b=%3Cb%3E\" style=\"color:#b5dcff\">"
                            "&lt;i&gt;&quot;shown&quot;&lt;/i&gt;</a>"));
    QCOMPARE(UpdateAddress::markup(QUrl(), QStringLiteral("nothing")), QString());
}

void TstUpdateAddress::theRequestBelongsToTheEndpoint_data()
{
    QTest::addColumn<QString>("endpoint");
    QTest::addColumn<QString>("begin");
    const auto row = [](const char *endpoint, const char *begin) {
        QTest::addRow("\"%s\"", endpoint) << QString::fromLatin1(endpoint) << QString::fromLatin1(begin);
    };
    row("https://example.org", "https://example.org/update?");
    row("https://example.org/", "https://example.org/update?");
    row("https://example.org:8443/lux//", "https://example.org:8443/lux/update?");
    row("https://example.org/lux?old=1#x", "https://example.org/lux/update?");
}

void TstUpdateAddress::theRequestBelongsToTheEndpoint()
{
    QFETCH(QString, endpoint);
    QFETCH(QString, begin);
    const QString facts = QStringLiteral("app=lux&ver=%1&op=0&bw=%2&os=%3&mod=97")
                              .arg(QStringLiteral(LUX_VERSION))
                              .arg(int(QSysInfo::WordSize))
                              .arg(osTag());
    const auto query = [&](const QString &zero) {
        return UpdateAddress::request(QUrl(endpoint), {0, 97, zero}).toString(QUrl::FullyEncoded);
    };
    QCOMPARE(query({}), begin + facts);
    QCOMPARE(query(QStringLiteral("0")), begin + facts + QStringLiteral("&zc=0"));
    QCOMPARE(query(QStringLiteral("-1")), begin + facts + QStringLiteral("&zc=-1"));
    QCOMPARE(query(QStringLiteral("1&app=other")), begin + facts);
}

QTEST_GUILESS_MAIN(TstUpdateAddress)
#include "tst_UpdateAddress.moc"
