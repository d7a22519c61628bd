#include "device/HostSystem.h"

#include <QtTest>

class TstHostSystem : public QObject {
    Q_OBJECT
private slots:
    void aWindowsIsNamedByItsVersion_data();
    void aWindowsIsNamedByItsVersion();
    void thisSystemHasAName();
};

void TstHostSystem::aWindowsIsNamedByItsVersion_data()
{
    QTest::addColumn<int>("major");
    QTest::addColumn<int>("minor");
    QTest::addColumn<QString>("name");
    const auto row = [](int major, int minor, const char *name) {
        QTest::addRow("%d.%d", major, minor) << major << minor << QString::fromLatin1(name);
    };
    row(0, 0, "Windows");
    row(4, 9, "Windows");
    row(-1, 0, "Windows");
    row(5, 0, "Windows 2000");
    row(5, 1, "Windows XP");
    row(5, 2, "Windows XP later");
    row(6, 0, "Windows Vista");
    row(6, 1, "Windows 7");
    row(6, 2, "Windows 8");
    row(6, 3, "Windows 8.1");
    row(6, 4, "Windows 8.1");
    row(10, 0, "Windows 10");
    row(10, 7, "Windows 10");
    row(7, 0, "Windows 10 later");
    row(11, 0, "Windows 10 later");
}

void TstHostSystem::aWindowsIsNamedByItsVersion()
{
    QFETCH(int, major);
    QFETCH(int, minor);
    QFETCH(QString, name);
    QCOMPARE(windowsName(major, minor), name);
}

void TstHostSystem::thisSystemHasAName()
{
    QVERIFY(!osName().isEmpty());
}

QTEST_APPLESS_MAIN(TstHostSystem)
#include "tst_HostSystem.moc"
