#include "device/UsbDesk.h"

#include <QtTest>

#include <thread>

namespace {

/// What came of one pass over everything that the transport does.
struct Pass {
    int opened = 0;
    std::vector<int> requests; ///< two control transfers and a write, each before, in and after the run
    int run = -1;
    bool inOrder = true;
};

void askAll(UsbDesk &desk, Pass &pass)
{
    std::uint8_t data[12] = {};
    const std::vector<std::uint8_t> block(4096);
    std::uint32_t moved = 0;
    pass.requests.push_back(desk.transport->controlOut(0x20, 0x30, 0, data));
    pass.requests.push_back(desk.transport->controlIn(0x20, 0x10, 0, data));
    const int written = desk.transport->bulkWrite(block, moved);
    pass.requests.push_back(written != 0 ? written : moved == block.size() ? 0 : -1);
}

/// Attach, requests, a read run of `limit` with requests in it, requests again, and a refresh.
Pass passOver(UsbDesk &desk, std::int32_t limit)
{
    Pass pass;
    desk.receiver.next = std::uint8_t(desk.usb->sent);
    desk.receiver.inOrder = true;
    pass.opened = desk.transport->refresh();
    desk.transport->chunkSize = 1000;
    askAll(desk, pass);
    desk.receiver.started = [&] { askAll(desk, pass); };
    desk.receiver.received = [&](int) {
        // As a host does that looks at the bus whenever it is told that something has changed.
        if (desk.usb->devices.empty()) {
            desk.transport->refresh();
        }
    };
    desk.usb->reads = {FakeRead::full(), FakeRead::full(), FakeRead::full(), FakeRead::of(limit == 0 ? 500 : 1000)};
    pass.run = desk.transport->readStream(limit, desk.receiver);
    askAll(desk, pass);
    desk.transport->refresh();
    pass.inOrder = desk.receiver.inOrder;
    desk.receiver.chunks.clear();
    return pass;
}

bool isSound(const Pass &pass)
{
    return pass.opened == 1 && pass.run == 0 && pass.inOrder && pass.requests == std::vector<int>(9, 0);
}

} // namespace

class TstUsbFaults : public QObject {
    Q_OBJECT
private slots:
    void cleanup() { blockRefusal = nullptr; }

    void everyOperationMayFailOnce_data();
    void everyOperationMayFailOnce();
    void theDeviceMayGoBeforeEveryOperation_data();
    void theDeviceMayGoBeforeEveryOperation();
    void everyBufferMayBeRefused();
    void requestsAndARunMayMeetAnUnplugOnAnotherThread();

private:
    static void addLimits()
    {
        QTest::addColumn<int>("limit");
        QTest::newRow("until the device is done") << 0;
        QTest::newRow("a stated number of bytes") << 3500;
    }
};

void TstUsbFaults::everyOperationMayFailOnce_data()
{
    QTest::addColumn<int>("limit");
    QTest::addColumn<bool>("isShort");
    for (const int limit : {0, 3500}) {
        QTest::addRow("fails, limit %d", limit) << limit << false;
        QTest::addRow("is short, limit %d", limit) << limit << true;
    }
}

void TstUsbFaults::everyOperationMayFailOnce()
{
    QFETCH(int, limit);
    QFETCH(bool, isShort);
    UsbDesk sound;
    QVERIFY(isSound(passOver(sound, limit)));
    const int operations = sound.usb->operations;
    QVERIFY(operations > 40);

    int noticed = 0;
    for (int k = 1; k <= operations; ++k) {
        UsbDesk desk;
        desk.usb->failAt = k;
        desk.usb->failShort = isShort;
        const Pass pass = passOver(desk, limit);
        noticed += isSound(pass) ? 0 : 1;
        const QByteArray where = QByteArray::number(k) + ", " + QByteArray::fromStdString(desk.usb->calls.back());
        QVERIFY2(pass.inOrder, where);
        QVERIFY2(desk.usb->misuse.empty(), where);
        QVERIFY2(memBudget == UsbDesk::budget, where);
        for (const int answer : pass.requests) {
            QVERIFY2((answer >= 0 && answer <= 2) || isShort, where);
        }
        QVERIFY2(pass.run == 0 || pass.run == 1 || pass.run == 3, where);

        desk.usb->failAt = 0;
        desk.transport->close();
        QVERIFY2(desk.usb->allFreed(), where);
        QVERIFY2(isSound(passOver(desk, limit)), where); // and the next attach works
        QVERIFY2(desk.usb->misuse.empty(), where);
        QVERIFY2(memBudget == UsbDesk::budget, where);
    }
    QVERIFY(noticed > (isShort ? 8 : 20));
}

void TstUsbFaults::theDeviceMayGoBeforeEveryOperation_data()
{
    addLimits();
}

void TstUsbFaults::theDeviceMayGoBeforeEveryOperation()
{
    QFETCH(int, limit);
    UsbDesk sound;
    QVERIFY(isSound(passOver(sound, limit)));
    const int operations = sound.usb->operations;

    for (int k = 1; k <= operations; ++k) {
        UsbDesk desk;
        desk.usb->unplugAt = k;
        const Pass pass = passOver(desk, limit);
        const QByteArray where = QByteArray::number(k) + ", " + QByteArray::fromStdString(desk.usb->calls.back());
        QVERIFY2(pass.inOrder, where);
        QVERIFY2(desk.usb->misuse.empty(), where);
        QVERIFY2(memBudget == UsbDesk::budget, where);
        for (const int answer : pass.requests) {
            QVERIFY2(answer >= 0 && answer <= 2, where);
        }
        desk.transport->refresh(); // for the message that the last operation was too late to see
        QVERIFY2(!desk.transport->isOpen(), where);
        QVERIFY2(desk.usb->allFreed(), where);
        QCOMPARE(desk.transport->readStream(limit, desk.receiver), 1);

        desk.usb->plug(FakeUsbDevice{});
        QVERIFY2(isSound(passOver(desk, limit)), where);
        QVERIFY2(desk.usb->misuse.empty(), where);
        QVERIFY2(memBudget == UsbDesk::budget, where);
    }
}

void TstUsbFaults::everyBufferMayBeRefused()
{
    static int left = 0;
    constexpr int buffers = 5; // of a pass without a limit: two to begin with, and one after each whole read
    for (int k = 0; k <= buffers; ++k) {
        UsbDesk desk;
        left = k;
        blockRefusal = [](std::size_t) { return left-- <= 0; };
        const Pass pass = passOver(desk, 0);
        blockRefusal = nullptr;
        QCOMPARE(pass.run, k < buffers ? 4 : 0);
        QVERIFY(desk.usb->misuse.empty());
        QCOMPARE(memBudget.load(), UsbDesk::budget);
        desk.transport->close();
        QVERIFY(isSound(passOver(desk, 0)));
    }
}

void TstUsbFaults::requestsAndARunMayMeetAnUnplugOnAnotherThread()
{
    for (int round = 0; round < 40; ++round) {
        UsbDesk desk;
        QVERIFY(desk.open(64));
        desk.usb->whenUsedUp = FakeRead::full();
        std::atomic<int> buffers{0};
        desk.receiver.received = [&](int) {
            desk.receiver.chunks.clear();
            ++buffers;
        };
        int run = -1;
        std::thread capture([&] { run = desk.transport->readStream(0, desk.receiver); });
        std::atomic<bool> asked{false};
        std::thread asker([&] {
            std::uint8_t data[2] = {};
            while (desk.transport->isOpen()) {
                (void)desk.transport->controlIn(0x20, 0, 0, data);
                asked = true;
            }
        });
        while (buffers < 3 || !asked) {
            std::this_thread::yield();
        }
        if (round % 2 == 0) {
            desk.usb->unplug();
            QCOMPARE(desk.transport->refresh(), -1);
        } else {
            desk.transport->close(); // under the hands of both
        }
        capture.join();
        asker.join();
        QCOMPARE(run, 3);
        QVERIFY(desk.usb->allFreed());
        QVERIFY(desk.usb->misuse.empty());
        QVERIFY(desk.receiver.inOrder);
        QCOMPARE(memBudget.load(), UsbDesk::budget);
    }
}

QTEST_GUILESS_MAIN(TstUsbFaults)
#include "tst_UsbFaults.moc"
