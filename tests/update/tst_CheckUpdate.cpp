// The check against a real server of HTTP on this machine, in the test's own thread.

#include "settings/HostSystem.h"
#include "update/UpdateDesk.h"

#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QPointer>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QSysInfo>

namespace {

const QByteArray newer = "<last>99.1.0</last><support>1.0.0</support><dnllink>https://example.org/d</dnllink>"
                         "<updlink>https://example.org/u</updlink>";

ShownState automatic()
{
    return {{QString(), QStringLiteral("Find a new version: 99.1.0, Update now?"), QString()}, true};
}

ShownState manual()
{
    return {{QStringLiteral("Find a new version: 99.1.0"), QStringLiteral("Please click the link below to download."),
             linkMarkup("https://example.org/d")},
            false};
}

QString lastUpdate()
{
    return globalGet(QStringLiteral("lastUpdate"));
}

} // namespace

class TstCheckUpdate : public QObject, private UpdateDesk {
    Q_OBJECT
private slots:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void theUsersCheckShowsTheDialogAtOnceAndThenTheOutcome();
    void theCheckByItselfAppearsOnlyWithANewerVersion_data();
    void theCheckByItselfAppearsOnlyWithANewerVersion();
    void theRequestTellsSevenThingsInTheirOrderAndNothingOfTheUser();
    void theServiceIsAskedStraightAndNotThroughAProxy();
    void thePlaceOfAMalformedRecordIsSentOnce();
    void whatIsNoPlaceOfARecordIsNotSent();

    void aNewLastWithASupportAboveTheProgramsVersionOffersALinkAndNoAutomaticUpdate();
    void aSupportEqualToTheProgramsVersionOffersTheAutomaticUpdate();
    void aLastEqualToTheProgramsVersionReadsAsLatestAndSupportIsNotRead();
    void anOlderLastReadsAsLatest();
    void aNewerVersionWithoutAnUpdatersLinkOffersTheDownload();
    void aLinkThatIsNoneOfTheWebIsNotShown();
    void whatIsNoAnswerIsFailed_data();
    void whatIsNoAnswerIsFailed();
    void aReplyOf64KibIsReadAndALongerOneIsNot_data();
    void aReplyOf64KibIsReadAndALongerOneIsNot();
    void aServerThatDoesNotAnswerIsLeftAtTheLimit_data();
    void aServerThatDoesNotAnswerIsLeftAtTheLimit();
    void aServerThatRefusesConnectionsIsFailed();
    void aNameThatNobodyKnowsIsFailed();
    void aNameThatIsLookedUpForTooLongIsFailedAndItsAnswerIsIgnored();

    void aRedirectionIsFollowed();
    void aRedirectionToALessSafePlaceIsNotAsked();
    void aRingOfRedirectionsIsLeft();

    void aCheckIsDoneWhetherItFailsOrNot();
    void aCheckByItselfIsMadeOnlyWhenItIsDue_data();
    void aCheckByItselfIsMadeOnlyWhenItIsDue();
    void aBuildWithoutAnEndpointAsksNobody_data();
    void aBuildWithoutAnEndpointAsksNobody();
    void aBuildWithoutTheCheckAtTheStartAsksOnlyForItsUser();

    void aCheckThatIsCancelledBeforeItsRequestSendsNothing();
    void aCheckThatIsCancelledStaysClosed();
    void theUsersCheckTakesThePlaceOfTheOneByItself();
    void aSecondCheckOfTheUserLeavesTheFirst();
    void aProgramClosedBeforeItsCheckBeginsSendsNothingAndLeavesLastUpdateAsItWas();
    void aWindowGoesWhileARequestIsUnderWay();
    void theTimesAreThoseOfTheProgram();
};

void TstCheckUpdate::theUsersCheckShowsTheDialogAtOnceAndThenTheOutcome()
{
    serve(newer);
    m_check->actCheckUpdate();
    QVERIFY(dialog().isVisible());
    QCOMPARE(stateOf(dialog()), waiting);
    QCOMPARE(m_check->operation, 1);
    QCOMPARE(outcome(), automatic());
    QVERIFY(dialog().isVisible());
}

void TstCheckUpdate::theCheckByItselfAppearsOnlyWithANewerVersion_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<ShownState>("state");
    QTest::addColumn<bool>("isShown");
    const auto lux = [](const QByteArray &children) { return LoopbackServer::ok("<lux>" + children + "</lux>"); };
    QTest::newRow("newer, automatic") << lux(newer) << automatic() << true;
    QTest::newRow("newer, by hand") << lux(QByteArray(newer).replace("1.0.0", "98.0.0")) << manual() << true;
    QTest::newRow("latest") << lux("<last>0.9</last>") << latest << false;
    QTest::newRow("failed") << QByteArray("HTTP/1.1 500 Oh\r\nContent-Length: 0\r\n\r\n") << failed << false;
}

void TstCheckUpdate::theCheckByItselfAppearsOnlyWithANewerVersion()
{
    QFETCH(QByteArray, reply);
    QFETCH(ShownState, state);
    QFETCH(bool, isShown);
    serveBytes(reply);
    m_check->checkAtStart();
    QCOMPARE(outcome(), state);
    QCOMPARE(m_check->operation, 0);
    QCOMPARE(dialog().isVisible(), isShown);
    // It takes no keys from what the user is doing.
    QCOMPARE(dialog().testAttribute(Qt::WA_ShowWithoutActivating), isShown);
}

void TstCheckUpdate::theRequestTellsSevenThingsInTheirOrderAndNothingOfTheUser()
{
    globalSet(QStringLiteral("zeroSmpCnt"), QStringLiteral("1234"));
    m_check->actCheckUpdate();
    QVERIFY(isOver());
    QCOMPARE(m_server->requests.size(), 1);
    const QList<QByteArray> lines = m_server->requests.constFirst().trimmed().split('\n');
    const QString told = QStringLiteral("GET /update?app=lux&ver=%1&op=1&bw=%2&os=%3&mod=8&zc=1234 HTTP/1.1")
                             .arg(QStringLiteral(LUX_VERSION))
                             .arg(int(QSysInfo::WordSize))
                             .arg(osTag());
    QCOMPARE(QString::fromLatin1(lines.constFirst().trimmed()), told);
    QStringList fields;
    for (const QByteArray &line : lines.mid(1)) {
        fields += QString::fromLatin1(line.trimmed()).toLower();
    }
    fields.sort();
    const QString host = QStringLiteral("host: 127.0.0.1:%1").arg(m_server->serverPort());
    QCOMPARE(fields.join(QLatin1Char('\n')),
             QStringList({QStringLiteral("accept-encoding: identity"), QStringLiteral("accept-language: *"),
                          QStringLiteral("connection: keep-alive"), host, QStringLiteral("user-agent: corvanlux")})
                 .join(QLatin1Char('\n')));
}

void TstCheckUpdate::theServiceIsAskedStraightAndNotThroughAProxy()
{
    LoopbackServer proxy;
    QNetworkProxy::setApplicationProxy({QNetworkProxy::HttpProxy, QStringLiteral("127.0.0.1"), proxy.serverPort()});
    const auto restore = qScopeGuard([] { QNetworkProxyFactory::setUseSystemConfiguration(true); }); // as Qt begins
    // An address of this machine for which Qt would take a proxy; nobody listens there.
    const QUrl url(QStringLiteral("https://0.0.0.0:%1").arg(m_server->serverPort()));
    m_server->close();
    makeCheck({url, true, {0, 0, 60'000}});
    m_check->actCheckUpdate();
    QCOMPARE(outcome(), failed);
    QCOMPARE(proxy.connections, 0);
}

void TstCheckUpdate::thePlaceOfAMalformedRecordIsSentOnce()
{
    globalSet(QStringLiteral("zeroSmpCnt"), QStringLiteral("77"));
    for (const char *expected : {"&zc=77", ""}) {
        m_check->actCheckUpdate();
        QVERIFY(isOver());
        const QByteArray target = LoopbackServer::target(m_server->requests.constLast());
        QCOMPARE(target.mid(target.indexOf("&mod=8") + 6), QByteArray(expected));
        QCOMPARE(globalGet(QStringLiteral("zeroSmpCnt")), QString());
    }
    QCOMPARE(m_server->requests.size(), 2);
}

void TstCheckUpdate::whatIsNoPlaceOfARecordIsNotSent()
{
    globalSet(QStringLiteral("zeroSmpCnt"), QStringLiteral("of somebody's file")); // settings come from files, too
    m_check->actCheckUpdate();
    QVERIFY(isOver());
    QVERIFY(!m_server->requests.constFirst().contains("zc="));
    QCOMPARE(globalGet(QStringLiteral("zeroSmpCnt")), QString());
}

void TstCheckUpdate::aNewLastWithASupportAboveTheProgramsVersionOffersALinkAndNoAutomaticUpdate()
{
    serve(QByteArray(newer).replace("1.0.0", "98.0.0"));
    m_check->actCheckUpdate();
    QCOMPARE(outcome(), manual());
}

void TstCheckUpdate::aSupportEqualToTheProgramsVersionOffersTheAutomaticUpdate()
{
    serve(QByteArray(newer).replace("1.0.0", LUX_VERSION));
    m_check->actCheckUpdate();
    QCOMPARE(outcome(), automatic());
}

void TstCheckUpdate::aLastEqualToTheProgramsVersionReadsAsLatestAndSupportIsNotRead()
{
    serve("<last>" LUX_VERSION "</last><support>98.0.0</support><dnllink>https://example.org/d</dnllink>");
    m_check->actCheckUpdate();
    QCOMPARE(outcome(), latest);
}

void TstCheckUpdate::anOlderLastReadsAsLatest()
{
    serve("<last>3.2.4.9</last>");
    m_check->actCheckUpdate();
    QCOMPARE(outcome(), latest);
}

void TstCheckUpdate::aNewerVersionWithoutAnUpdatersLinkOffersTheDownload()
{
    serve(QByteArray(newer).replace("https://example.org/u", "file:///etc/passwd"));
    m_check->actCheckUpdate();
    QCOMPARE(outcome(), manual());
}

void TstCheckUpdate::aLinkThatIsNoneOfTheWebIsNotShown()
{
    serve("<last>99.1.0</last><dnllink>javascript:alert(1)</dnllink>");
    m_check->actCheckUpdate();
    QVERIFY(isOver());
    QCOMPARE(stateOf(dialog()).texts, (QStringList{manual().texts.at(0), manual().texts.at(1), QString()}));
}

void TstCheckUpdate::whatIsNoAnswerIsFailed_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray lux = "<lux>" + newer + "</lux>";
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("no HTTP") << QByteArray("220 mail ready\r\n\r\n");
    QTest::newRow("empty") << LoopbackServer::ok({});
    QTest::newRow("malformed") << LoopbackServer::ok("<lux><last>99.1.0</lux>");
    QTest::newRow("another root") << LoopbackServer::ok("<html>" + newer + "</html>");
    QTest::newRow("document type") << LoopbackServer::ok(
        "<!DOCTYPE lux [<!ENTITY v \"99\">]><lux><last>&v;</last></lux>");
    QTest::newRow("too deep") << LoopbackServer::ok("<lux>" + QByteArray("<a>").repeated(80) +
                                                    QByteArray("</a>").repeated(80) + "</lux>");
    QTest::newRow("cut") << LoopbackServer::ok(lux).chopped(1);
    QTest::newRow("cut where it would parse") << LoopbackServer::ok(lux + "     ").chopped(2);
    QTest::newRow("of an error") << LoopbackServer::ok(lux).replace("200 OK", "404 Not Found");
    QTest::newRow("of no content") << LoopbackServer::ok(lux).replace("200 OK", "203 Otherwise");
    QTest::newRow("asks for a password") << QByteArray("HTTP/1.1 401 No\r\nWWW-Authenticate: Basic realm=\"a\"\r\n"
                                                       "Content-Length: 0\r\n\r\n");
    // <lux><last>99.1.0</last></lux>, as gzip writes it: few bytes may become many.
    const QByteArray packed = QByteArray::fromBase64("H4sIAAAAAAACA7PJKa2ws8lJLC6xs7TUM9QzsNEHc4AUUAIAll0YYR4AAAA=");
    QTest::newRow("packed") << LoopbackServer::ok(packed).replace("200 OK", "200 OK\r\nContent-Encoding: gzip");
}

void TstCheckUpdate::whatIsNoAnswerIsFailed()
{
    QFETCH(QByteArray, bytes);
    serveBytes(bytes);
    m_check->actCheckUpdate();
    QCOMPARE(outcome(), failed);
    QVERIFY(!m_server->requests.isEmpty());
}

void TstCheckUpdate::aReplyOf64KibIsReadAndALongerOneIsNot_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("isToldLength");
    QTest::addColumn<ShownState>("state");
    QTest::newRow("64 KiB") << 64 * 1024 << true << automatic();
    QTest::newRow("a byte more") << 64 * 1024 + 1 << true << failed;
    QTest::newRow("10 MiB, its length untold") << 10 * 1024 * 1024 << false << failed;
}

void TstCheckUpdate::aReplyOf64KibIsReadAndALongerOneIsNot()
{
    QFETCH(int, size);
    QFETCH(bool, isToldLength);
    QFETCH(ShownState, state);
    const QByteArray end = newer + "</lux>";
    const QByteArray body = "<lux>" + QByteArray(size - 5 - end.size(), ' ') + end;
    QCOMPARE(body.size(), size);
    serveBytes(isToldLength ? LoopbackServer::ok(body) : "HTTP/1.1 200 OK\r\n\r\n" + body);
    m_check->actCheckUpdate();
    QCOMPARE(outcome(), state);
}

void TstCheckUpdate::aServerThatDoesNotAnswerIsLeftAtTheLimit_data()
{
    QTest::addColumn<QByteArray>("begun");
    QTest::newRow("nothing comes") << QByteArray();
    QTest::newRow("the end does not come") << LoopbackServer::ok("<lux>" + newer + "</lux>").chopped(3);
    QTest::newRow("a trickle of hints") << QByteArray("HTTP/1.1 100 Continue\r\n\r\n").repeated(9);
}

void TstCheckUpdate::aServerThatDoesNotAnswerIsLeftAtTheLimit()
{
    QFETCH(QByteArray, begun);
    makeCheck({m_server->url(), true, {0, 0, 150}});
    serveBytes(begun);
    m_server->keepsOpen = true;
    QElapsedTimer clock;
    clock.start();
    m_check->actCheckUpdate();
    QCOMPARE(outcome(), failed);
    QVERIFY(clock.elapsed() >= 140);         // timers may be early by a twentieth
    QVERIFY(m_server->requests.size() <= 1); // on a busy system not even that one has come
}

void TstCheckUpdate::aServerThatRefusesConnectionsIsFailed()
{
    const QUrl url = m_server->url();
    m_server->close();
    makeCheck({url, true, {0, 0, 60'000}});
    m_check->actCheckUpdate();
    QCOMPARE(outcome(), failed);
}

void TstCheckUpdate::aNameThatNobodyKnowsIsFailed()
{
    makeCheck({QUrl(QStringLiteral("https://updates.invalid")), true, {0, 0, 60'000}});
    QString asked;
    m_check->lookUp = [&asked](const QString &host, const std::function<void(bool)> &done) {
        asked = host;
        done(false);
    };
    m_check->actCheckUpdate();
    QCOMPARE(outcome(), failed);
    QCOMPARE(asked, QStringLiteral("updates.invalid"));
    QVERIFY(!m_check->isLookingUp());
}

void TstCheckUpdate::aNameThatIsLookedUpForTooLongIsFailedAndItsAnswerIsIgnored()
{
    makeCheck({QUrl(QStringLiteral("http://localhost:%1").arg(m_server->serverPort())), true, {0, 0, 50}});
    std::function<void(bool)> answer;
    m_check->lookUp = [&answer](const QString &, const std::function<void(bool)> &done) { answer = done; };
    m_check->actCheckUpdate();
    QCOMPARE(outcome(), failed);
    QVERIFY(m_check->isLookingUp()); // nothing can end it
    answer(true);
    QVERIFY(!m_check->isLookingUp());
    QVERIFY(m_check->findChild<QNetworkAccessManager *>() == nullptr); // nothing was sent
    // Another check gets through, however busy the system is, and only that one.
    m_check->pace.limit = 60'000;
    serve(newer);
    m_check->lookUp = [](const QString &, const std::function<void(bool)> &done) { done(true); };
    m_check->actCheckUpdate();
    QCOMPARE(outcome(), automatic());
    QCOMPARE(m_server->requests.size(), 1);
}

void TstCheckUpdate::aRedirectionIsFollowed()
{
    LoopbackServer second;
    second.answer = [](const QByteArray &) { return LoopbackServer::ok("<lux>" + newer + "</lux>"); };
    m_server->answer = [&](const QByteArray &request) {
        // First within the server, by a relative address, then to the other one.
        return LoopbackServer::target(request).startsWith("/update")
                   ? LoopbackServer::redirection(QUrl(QStringLiteral("/moved")))
                   : LoopbackServer::redirection(second.url().resolved(QUrl(QStringLiteral("/there"))));
    };
    m_check->actCheckUpdate();
    QCOMPARE(outcome(), automatic());
    QCOMPARE(m_server->requests.size(), 2);
    QCOMPARE(LoopbackServer::target(second.requests.constFirst()), QByteArray("/there"));
}

void TstCheckUpdate::aRedirectionToALessSafePlaceIsNotAsked()
{
    const auto lead = [this](const char *to) {
        serveBytes(LoopbackServer::redirection(QUrl(QString::fromLatin1(to))));
    };
    QStringList asked;
    m_check->lookUp = [&asked](const QString &host, const std::function<void(bool)> &done) {
        asked += host;
        done(false);
    };
    for (const char *to : {"http://updates.example.org/update", "http://192.0.2.1/update", "file:///etc/hostname",
                           "data:text/xml,<lux/>", "ftp://updates.example.org/update"}) {
        lead(to);
        m_check->actCheckUpdate();
        QCOMPARE(outcome(), failed);
    }
    QVERIFY(asked.isEmpty());
    lead("https://updates.example.org/update");
    m_check->actCheckUpdate();
    QVERIFY(isOver());
    QCOMPARE(asked, QStringList{QStringLiteral("updates.example.org")});
}

void TstCheckUpdate::aRingOfRedirectionsIsLeft()
{
    serveBytes(LoopbackServer::redirection(QUrl(QStringLiteral("/update"))));
    m_check->actCheckUpdate();
    QCOMPARE(outcome(), failed);
    QCOMPARE(m_server->requests.size(), 6);
}

void TstCheckUpdate::aCheckIsDoneWhetherItFailsOrNot()
{
    QString atRequest;
    m_server->answer = [&atRequest](const QByteArray &) {
        atRequest = lastUpdate();
        return LoopbackServer::notFound();
    };
    m_check->actCheckUpdate();
    QCOMPARE(lastUpdate(), QString());
    QCOMPARE(outcome(), failed);
    QCOMPARE(atRequest, QStringLiteral("2026-03-09_07:05:01"));
    QCOMPARE(lastUpdate(), atRequest);
}

void TstCheckUpdate::aCheckByItselfIsMadeOnlyWhenItIsDue_data()
{
    QTest::addColumn<QString>("last");
    QTest::addColumn<bool>("isDue");
    QTest::newRow("seven days back") << QStringLiteral("2026-03-02_07:05:01") << true;
    QTest::newRow("a second less") << QStringLiteral("2026-03-02_07:05:02") << false;
}

void TstCheckUpdate::aCheckByItselfIsMadeOnlyWhenItIsDue()
{
    QFETCH(QString, last);
    QFETCH(bool, isDue);
    globalSet(QStringLiteral("lastUpdate"), last);
    m_check->checkAtStart();
    // A check that was begun later, with the same delay, tells when this one would have been made.
    auto *other = new CheckUpdate({m_server->url(), true, {0, 0, 60'000}}, m_window.get());
    other->actCheckUpdate();
    QCOMPARE(outcomeOf(*other), failed);
    QVERIFY(waitFor([&] { return m_server->requests.size() == (isDue ? 2 : 1); }));
}

void TstCheckUpdate::aBuildWithoutAnEndpointAsksNobody_data()
{
    QTest::addColumn<QUrl>("endpoint");
    QTest::newRow("none") << QUrl();
    QTest::newRow("of no web") << QUrl(QStringLiteral("file:///tmp"));
    QTest::newRow("unsafe") << QUrl(QStringLiteral("http://192.0.2.1"));
}

void TstCheckUpdate::aBuildWithoutAnEndpointAsksNobody()
{
    QFETCH(QUrl, endpoint);
    globalSet(QStringLiteral("zeroSmpCnt"), QStringLiteral("77"));
    makeCheck({endpoint, true, {0, 0, 60'000}});
    QVERIFY(!m_check->canCheckAtStart());
    m_check->checkAtStart();
    m_check->actCheckUpdate();
    QCOMPARE(stateOf(dialog()), waiting);
    QCOMPARE(outcome(), failed);
    QCOMPARE(globalGet(QStringLiteral("zeroSmpCnt")), QStringLiteral("77")); // not sent
    QVERIFY(m_check->findChildren<QObject *>().isEmpty());                   // nothing of the network
}

void TstCheckUpdate::aBuildWithoutTheCheckAtTheStartAsksOnlyForItsUser()
{
    makeCheck({m_server->url(), false, {0, 0, 60'000}});
    QVERIFY(!m_check->canCheckAtStart());
    serve(newer);
    m_check->checkAtStart();
    m_check->actCheckUpdate();
    QCOMPARE(outcome(), automatic());
    QVERIFY(m_server->requests.constFirst().contains("&op=1&"));
    QCOMPARE(m_server->requests.size(), 1);
}

void TstCheckUpdate::aCheckThatIsCancelledBeforeItsRequestSendsNothing()
{
    m_check->actCheckUpdate();
    buttonOf(dialog(), "Cancel")->click();
    QVERIFY(!dialog().isVisible());
    auto *other = new CheckUpdate({m_server->url(), true, {0, 0, 60'000}}, m_window.get());
    other->actCheckUpdate();
    QCOMPARE(outcomeOf(*other), failed);
    QCOMPARE(m_server->requests.size(), 1);
}

void TstCheckUpdate::aCheckThatIsCancelledStaysClosed()
{
    m_server->answer = [this](const QByteArray &) {
        QTest::keyClick(&dialog(), Qt::Key_Escape); // while the answer is on its way
        return LoopbackServer::ok("<lux>" + newer + "</lux>");
    };
    m_check->actCheckUpdate();
    QVERIFY(waitFor([&] { return m_server->requests.size() == (1); }));
    QVERIFY(m_check->cancelled);
    QVERIFY(!dialog().isVisible());
    // The next check is a new one, and nothing of the former has shown itself until it is through.
    serve("<last>1.0</last>");
    const QSignalSpy reject(&dialog(), &QDialog::rejected);
    auto *other = new CheckUpdate({m_server->url(), true, {0, 0, 60'000}}, m_window.get());
    other->actCheckUpdate();
    QCOMPARE(outcomeOf(*other), latest);
    QVERIFY(!dialog().isVisible());
    m_check->actCheckUpdate();
    QCOMPARE(outcome(), latest);
    QVERIFY(!m_check->cancelled);
    QVERIFY(dialog().isVisible());
}

void TstCheckUpdate::theUsersCheckTakesThePlaceOfTheOneByItself()
{
    serve("<last>1.0</last>");
    m_check->checkAtStart();
    m_check->actCheckUpdate();
    QCOMPARE(outcome(), latest);
    QCOMPARE(m_server->requests.size(), 1);
    QVERIFY(m_server->requests.constFirst().contains("&op=1&"));
}

void TstCheckUpdate::aSecondCheckOfTheUserLeavesTheFirst()
{
    int asked = 0;
    bool leavesAtOnce = false;
    m_server->keepsOpen = true;
    m_server->answer = [this, &asked, &leavesAtOnce](const QByteArray &) {
        if (++asked == 1) {
            const QPointer<QNetworkReply> first = m_check->findChild<QNetworkReply *>();
            m_check->actCheckUpdate();
            leavesAtOnce = first && first->isFinished(); // its answer would be taken for that of the second
            return LoopbackServer::ok("<lux><last>1.0</last></lux>");
        }
        return LoopbackServer::ok("<lux>" + newer + "</lux>");
    };
    m_check->actCheckUpdate();
    QCOMPARE(outcome(), automatic());
    QCOMPARE(asked, 2);
    QVERIFY(leavesAtOnce);
}

void TstCheckUpdate::aProgramClosedBeforeItsCheckBeginsSendsNothingAndLeavesLastUpdateAsItWas()
{
    globalSet(QStringLiteral("lastUpdate"), QStringLiteral("2020-01-01_00:00:00"));
    m_check->checkAtStart();
    m_check->stop();
    bool hasBegun = false;
    m_check->now = [this, &hasBegun] {
        hasBegun = true;
        return m_now;
    };
    auto *other = new CheckUpdate({m_server->url(), true, {0, 0, 60'000}}, m_window.get());
    other->now = [] { return QDateTime(QDate(2027, 1, 1), QTime(0, 0)); };
    other->checkAtStart();
    QCOMPARE(outcomeOf(*other), failed);
    QVERIFY(!hasBegun); // before the other one, as it was asked for earlier
    QCOMPARE(m_server->requests.size(), 1);
    QCOMPARE(lastUpdate(), QStringLiteral("2027-01-01_00:00:00")); // the other's, not that of this one's clock
}

void TstCheckUpdate::aWindowGoesWhileARequestIsUnderWay()
{
    m_server->keepsOpen = true;
    m_check->actCheckUpdate();
    QVERIFY(waitFor([&] { return m_server->requests.size() == (1); }));
    QElapsedTimer clock;
    clock.start();
    m_window.reset();
    QVERIFY(clock.elapsed() < 30'000); // and not the minute of the request
}

void TstCheckUpdate::theTimesAreThoseOfTheProgram()
{
    const UpdatePace pace;
    QCOMPARE(pace.startDelay, 5000);
    QCOMPARE(pace.askDelay, 500);
    QCOMPARE(pace.limit, 15'000);
}

LUX_GUI_TEST(TstCheckUpdate)
#include "tst_CheckUpdate.moc"
