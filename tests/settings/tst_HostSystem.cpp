#include "settings/HostSystem.h"

#include <QtTest>

class TstHostSystem : public QObject {
    Q_OBJECT
private slots:
    void aWindowsIsNamedByItsVersion_data();
    void aWindowsIsNamedByItsVersion();
    void thisSystemHasANameAndATag();
};

void TstHostSystem::aWindowsIsNamedByItsVersion_data()
{
    QTest::addColumn<int>("major");
    QTest::addColumn<int>("minor");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("tag");
    const auto row = [](int major, int minor, const char *name, const char *tag) {
        QTest::addRow("%d.%d", major, minor) << major << minor << QString::fromLatin1(name) << QString::fromLatin1(tag);
    };
    row(0, 0, "Windows", "win");
    row(4, 9, "Windows", "win");
    row(-1, 0, "Windows", "win");
    row(5, 0, "Windows 2000", "w2k");
    row(5, 1, "Windows XP", "wxp");
    row(5, 2, "Windows XP later", "wxpl");
    row(6, 0, "Windows Vista", "wv");
    row(6, 1, "Windows 7", "w7");
    row(6, 2, "Windows 8", "w8");
    row(6, 3, "Windows 8.1", "w8l");
    row(6, 4, "Windows 8.1", "w8l");
    row(10, 0, "Windows 10", "w10");
    row(10, 7, "Windows 10", "w10");
    row(7, 0, "Windows 10 later", "w10l");
    row(11, 0, "Windows 10 later", "w10l");
}

void TstHostSystem::aWindowsIsNamedByItsVersion()
{
    QFETCH(int, major);
    QFETCH(int, minor);
    QTEST(windowsName(major, minor), "name");
    QTEST(windowsTag(major, minor), "tag");
}

void TstHostSystem::thisSystemHasANameAndATag()
{
    QVERIFY(!osName().isEmpty());
#if defined(Q_OS_LINUX)
    QCOMPARE(osTag(), QStringLiteral("lnx"));
#elif defined(Q_OS_MACOS)
    QCOMPARE(osTag(), QStringLiteral("mac"));
#else
    QVERIFY(osTag().startsWith(QLatin1Char('w')));
#endif
}

QTEST_APPLESS_MAIN(TstHostSystem)
#include "tst_HostSystem.moc"
