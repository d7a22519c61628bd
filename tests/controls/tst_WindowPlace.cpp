#include "controls/Look.h"
#include "controls/WindowPlace.h"
#include "settings/Config.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QtTest>

#include <array>

namespace {

void put(const char *key, const QString &text)
{
    globalSet(QString::fromLatin1(key), text);
}

} // namespace

class TstWindowPlace : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void theStoredWindowIsUsedIfItCanBeReached_data();
    void theStoredWindowIsUsedIfItCanBeReached();
    void theReachOfAWindowGrowsWithTheScreensDpi();
    void theDefaultWindowIsMeasuredFromTheOrigin();
    void theWindowIsStoredAsFourNumbers();
};

void TstWindowPlace::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void TstWindowPlace::init()
{
    QDir(QFileInfo(configPath()).path()).removeRecursively();
    configLoad();
    globalsSetDpi(96);
}

void TstWindowPlace::cleanup()
{
    globalsSetDpi(96);
}

void TstWindowPlace::theStoredWindowIsUsedIfItCanBeReached_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<bool>("used");
    // The screen is 100,50 1920x1000: it reaches to 2020 and 1050.
    QTest::newRow("inside") << QStringLiteral("200,100,800,600") << true;
    QTest::newRow("absent") << QString() << false;
    QTest::newRow("as large as the screen") << QStringLiteral("100,70,1920,1000") << true;
    QTest::newRow("wider than the screen") << QStringLiteral("100,70,1921,600") << false;
    QTest::newRow("higher than the screen") << QStringLiteral("100,70,800,1001") << false;
    QTest::newRow("least size") << QStringLiteral("200,100,1,1") << true;
    QTest::newRow("no width") << QStringLiteral("200,100,0,600") << false;
    QTest::newRow("no height") << QStringLiteral("200,100,800") << false;
    QTest::newRow("negative size") << QStringLiteral("200,100,-800,-600") << false;
    QTest::newRow("160 visible at the right") << QStringLiteral("1860,100,800,600") << true;
    QTest::newRow("159 visible at the right") << QStringLiteral("1861,100,800,600") << false;
    QTest::newRow("160 visible at the left") << QStringLiteral("-540,100,800,600") << true;
    QTest::newRow("159 visible at the left") << QStringLiteral("-541,100,800,600") << false;
    QTest::newRow("20 below the top") << QStringLiteral("200,70,800,600") << true;
    QTest::newRow("19 below the top") << QStringLiteral("200,69,800,600") << false;
    QTest::newRow("20 above the bottom") << QStringLiteral("200,1030,800,600") << true;
    QTest::newRow("19 above the bottom") << QStringLiteral("200,1031,800,600") << false;
    QTest::newRow("largest numbers") << QStringLiteral("2147483647,2147483647,2147483647,2147483647") << false;
    QTest::newRow("smallest numbers") << QStringLiteral("-2147483648,-2147483648,800,600") << false;
    QTest::newRow("numbers that would wrap") << QStringLiteral("-2147483648,100,800,600") << false;
    QTest::newRow("numbers that would wrap to a large width") << QStringLiteral("-2147483648,100,-800,600") << false;
    QTest::newRow("words") << QStringLiteral("left,top,wide,high") << false;
}

void TstWindowPlace::theStoredWindowIsUsedIfItCanBeReached()
{
    QFETCH(QString, stored);
    QFETCH(bool, used);
    put("windowPosition", stored);
    const QRect window = windowPositionGet(QRect(100, 50, 1920, 1000));
    if (used) {
        const std::array<int, 4> numbers{window.x(), window.y(), window.width(), window.height()};
        QCOMPARE(intListPut(numbers.data(), 4), stored);
    } else {
        QCOMPARE(window, QRect(192, 100, 1536, 800));
    }
}

void TstWindowPlace::theReachOfAWindowGrowsWithTheScreensDpi()
{
    globalsSetDpi(192);
    const QRect screen(0, 0, 2000, 1000);
    put("windowPosition", QStringLiteral("1680,40,800,600"));
    QCOMPARE(windowPositionGet(screen), QRect(1680, 40, 800, 600));
    put("windowPosition", QStringLiteral("1681,40,800,600"));
    QCOMPARE(windowPositionGet(screen), QRect(200, 100, 1600, 800));
    put("windowPosition", QStringLiteral("1680,39,800,600"));
    QCOMPARE(windowPositionGet(screen), QRect(200, 100, 1600, 800));
}

void TstWindowPlace::theDefaultWindowIsMeasuredFromTheOrigin()
{
    QCOMPARE(windowPositionGet(QRect(1920, 300, 1366, 768)), QRect(136, 76, 1092, 614));
    QCOMPARE(windowPositionGet(QRect()), QRect(0, 0, 0, 0));
}

void TstWindowPlace::theWindowIsStoredAsFourNumbers()
{
    windowPositionSet(QRect(-5, 30, 800, 600));
    QCOMPARE(globalGet(QStringLiteral("windowPosition")), QStringLiteral("-5,30,800,600"));
    QCOMPARE(windowPositionGet(QRect(0, 0, 1920, 1080)), QRect(-5, 30, 800, 600));
}

QTEST_GUILESS_MAIN(TstWindowPlace)
#include "tst_WindowPlace.moc"
