#include "session/InitStatus.h"

#include <QtTest>

class TstInitStatus : public QObject {
    Q_OBJECT
private slots:
    void anErrorIsItsStateAndCodeInHexadecimal_data();
    void anErrorIsItsStateAndCodeInHexadecimal();
    void theBarFollowsTheStates_data();
    void theBarFollowsTheStates();
    void onlyArrivalAndRemovalOfDevicesCountAmongTheSystemsMessages_data();
    void onlyArrivalAndRemovalOfDevicesCountAmongTheSystemsMessages();
};

void TstInitStatus::anErrorIsItsStateAndCodeInHexadecimal_data()
{
    QTest::addColumn<int>("sta");
    QTest::addColumn<int>("err");
    QTest::addColumn<QString>("code");
    QTest::newRow("no firmware") << 0 << 1 << QStringLiteral("I-1");
    QTest::newRow("not back") << 1 << 5 << QStringLiteral("I-105");
    QTest::newRow("unknown identity") << 3 << 1 << QStringLiteral("I-301");
    QTest::newRow("the FPGA does not run") << 4 << 9 << QStringLiteral("I-409");
    QTest::newRow("status byte") << 4 << 255 << QStringLiteral("I-4ff");
    QTest::newRow("wrong model") << 5 << 11 << QStringLiteral("I-50b");
    QTest::newRow("a state that does not exist") << 10 << 10 << QStringLiteral("I-a0a");
}

void TstInitStatus::anErrorIsItsStateAndCodeInHexadecimal()
{
    QFETCH(int, sta);
    QFETCH(int, err);
    QFETCH(QString, code);
    QCOMPARE(InitStatus::errorText(sta, err), QStringLiteral("An error occurred: ") + code);
}

void TstInitStatus::theBarFollowsTheStates_data()
{
    QTest::addColumn<int>("sta");
    QTest::addColumn<int>("n");
    QTest::addColumn<int>("percent");
    const int rows[][3] = {{0, 0, 10},    {1, 0, 10},    {1, 59, 10},  {1, 60, 11},  {1, 200, 13}, {1, 3600, 70},
                           {1, 3599, 69}, {1, 9999, 70}, {2, 0, 70},   {3, 0, -1},   {4, 0, 70},   {4, 4, 70},
                           {4, 5, 71},    {4, 50, 80},   {4, 100, 90}, {4, 200, 90}, {5, 0, 90},   {6, 0, -1},
                           {7, 0, -1},    {8, 0, -1},    {-1, 0, -1}};
    for (const auto &row : rows) {
        QTest::addRow("state %d at %d", row[0], row[1]) << row[0] << row[1] << row[2];
    }
}

void TstInitStatus::theBarFollowsTheStates()
{
    QFETCH(int, sta);
    QFETCH(int, n);
    QTEST(InitStatus::progress(sta, n), "percent");
}

void TstInitStatus::onlyArrivalAndRemovalOfDevicesCountAmongTheSystemsMessages_data()
{
    QTest::addColumn<int>("message");
    QTest::addColumn<int>("parameter");
    QTest::addColumn<bool>("counts");
    QTest::newRow("arrival") << 537 << 0x8000 << true;
    QTest::newRow("removal") << 537 << 0x8004 << true;
    QTest::newRow("the tree of devices has changed") << 537 << 7 << false;
    QTest::newRow("a removal that is only asked for") << 537 << 0x8001 << false;
    QTest::newRow("another message") << 536 << 0x8000 << false;
}

void TstInitStatus::onlyArrivalAndRemovalOfDevicesCountAmongTheSystemsMessages()
{
    QFETCH(int, message);
    QFETCH(int, parameter);
    QTEST(InitStatus::isDeviceChange(std::uint32_t(message), std::uintptr_t(parameter)), "counts");
}

QTEST_GUILESS_MAIN(TstInitStatus)
#include "tst_InitStatus.moc"
