// The update check as part of the window: the start, the menu, the end.

#include "app/MainMenu.h"
#include "app/WindowDesk.h"
#include "update/CheckUpdate.h"
#include "update/LoopbackServer.h"
#include "update/UpdateDialog.h"

#include <QSignalSpy>

class TstMainWindowUpdates : public QObject, private WindowDesk {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void theWindowAsksSoonAfterItsStart();
    void disAutoUpdate1StopsOnlyTheStartCheckAndTheMenuEntryStillWorks();
    void aDamagedOptionIsReadAsNumber_data();
    void aDamagedOptionIsReadAsNumber();
    void theModelInUseIsTold();
    void aProgramClosedWithin5SecondsOfItsStartSendsNothingAndLeavesLastUpdateAsItWas();
    void aWindowThatClosesDuringARequestDoesNotWaitForIt();
    void aBuildWithoutAnEndpointAsksNobodyAndTellsThatTheCheckFailed();
    void theOptionsTellWhetherThisBuildAsksByItself();

private:
    void start(const UpdateSource &source);
    [[nodiscard]] QLabel *secondLabel() const;

    std::unique_ptr<LoopbackServer> m_server;
    CheckUpdate *m_check = nullptr;
};

void TstMainWindowUpdates::init()
{
    QFile::remove(configPath());
    configLoad();
    gOpenFile.clear();
    m_session = makeSession(8);
    m_server = std::make_unique<LoopbackServer>();
}

void TstMainWindowUpdates::cleanup()
{
    tearDown();
    m_server.reset();
}

void TstMainWindowUpdates::start(const UpdateSource &source)
{
    m_window = std::make_unique<MainWindow>(*m_session, source);
    m_window->show();
    m_check = m_window->findChild<CheckUpdate *>();
    QVERIFY(m_check != nullptr);
}

QLabel *TstMainWindowUpdates::secondLabel() const
{
    return m_check->dialog->findChildren<QLabel *>().at(1);
}

void TstMainWindowUpdates::theWindowAsksSoonAfterItsStart()
{
    start({m_server->url(), true, {0, 0, 60'000}});
    QTRY_COMPARE(m_server->requests.size(), 1);
    QVERIFY(m_server->requests.constFirst().contains("&op=0&"));
    QVERIFY(!globalGet(QStringLiteral("lastUpdate")).isEmpty());
    QVERIFY(!m_check->dialog->isVisible()); // its failure is nobody's business
}

void TstMainWindowUpdates::disAutoUpdate1StopsOnlyTheStartCheckAndTheMenuEntryStillWorks()
{
    globalSet(QStringLiteral("disAutoUpdate"), QStringLiteral("1"));
    start({m_server->url(), true, {0, 0, 60'000}});
    m_window->findChild<MainMenu *>()->actCheckUpdate();
    QVERIFY(m_check->dialog->isVisible());
    QTRY_COMPARE(secondLabel()->text(), QStringLiteral("Update check failed."));
    QCOMPARE(m_server->requests.size(), 1);
    QVERIFY(m_server->requests.constFirst().contains("&op=1&"));
}

void TstMainWindowUpdates::aDamagedOptionIsReadAsNumber_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("requests");
    QTest::newRow("another number") << QStringLiteral("7") << 1;
    QTest::newRow("no number") << QStringLiteral("yes") << 2;
}

void TstMainWindowUpdates::aDamagedOptionIsReadAsNumber()
{
    QFETCH(QString, value);
    QFETCH(int, requests);
    globalSet(QStringLiteral("disAutoUpdate"), value);
    start({m_server->url(), true, {0, 0, 60'000}});
    // Another check, begun later, tells when that of the start would have been made.
    CheckUpdate other({m_server->url(), true, {0, 0, 60'000}}, m_window.get());
    other.actCheckUpdate();
    QTRY_COMPARE(other.dialog->findChildren<QLabel *>().at(1)->text(), QStringLiteral("Update check failed."));
    QTRY_COMPARE(m_server->requests.size(), requests);
}

void TstMainWindowUpdates::theModelInUseIsTold()
{
    start({m_server->url(), false, {0, 0, 60'000}});
    m_session->chooseModel(97);
    m_window->findChild<MainMenu *>()->actCheckUpdate();
    QTRY_COMPARE(m_server->requests.size(), 1);
    QVERIFY(m_server->requests.constFirst().contains("&mod=97 "));
}

void TstMainWindowUpdates::aProgramClosedWithin5SecondsOfItsStartSendsNothingAndLeavesLastUpdateAsItWas()
{
    globalSet(QStringLiteral("lastUpdate"), QStringLiteral("2020-01-01_00:00:00"));
    start({m_server->url(), true, {0, 0, 60'000}});
    m_window->close();
    CheckUpdate other({m_server->url(), true, {0, 0, 60'000}}, m_window.get());
    other.now = [] { return QDateTime(QDate(2027, 1, 1), QTime(0, 0)); };
    other.actCheckUpdate();
    QTRY_COMPARE(m_server->requests.size(), 1);
    QVERIFY(m_server->requests.constFirst().contains("&op=1&")); // the other's
    QCOMPARE(globalGet(QStringLiteral("lastUpdate")), QStringLiteral("2027-01-01_00:00:00"));
}

void TstMainWindowUpdates::aWindowThatClosesDuringARequestDoesNotWaitForIt()
{
    m_server->answer = [](const QByteArray &) { return QByteArray(); };
    m_server->keepsOpen = true;
    start({m_server->url(), true, {0, 0, 60'000}});
    QTRY_COMPARE(m_server->requests.size(), 1);
    QElapsedTimer clock;
    clock.start();
    m_window->close();
    QVERIFY(!m_window->isLookingUpHost());
    m_window.reset();
    QVERIFY(clock.elapsed() < 30'000); // and not the minute of the request
}

void TstMainWindowUpdates::aBuildWithoutAnEndpointAsksNobodyAndTellsThatTheCheckFailed()
{
    start({});
    m_window->findChild<MainMenu *>()->actCheckUpdate();
    QCOMPARE(secondLabel()->text(), QStringLiteral("Looking for updates, please wait..."));
    QTRY_COMPARE(secondLabel()->text(), QStringLiteral("Update check failed."));
    QVERIFY(m_check->dialog->isVisible());
    QVERIFY(m_server->requests.isEmpty());
}

void TstMainWindowUpdates::theOptionsTellWhetherThisBuildAsksByItself()
{
    start({m_server->url(), true, {60'000, 0, 60'000}});
    QVERIFY(m_window->findChild<MainMenu *>()->checksAtStart);
    start({m_server->url(), false, {}});
    QVERIFY(!m_window->findChild<MainMenu *>()->checksAtStart);
    start({});
    QVERIFY(!m_window->findChild<MainMenu *>()->checksAtStart);
}

LUX_GUI_TEST(TstMainWindowUpdates)
#include "tst_MainWindowUpdates.moc"
