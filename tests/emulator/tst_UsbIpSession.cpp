// The USB/IP protocol, byte by byte, without a socket.

#include "WaveSignal.h"
#include "emulator/UsbIpClient.h"

#include <QtTest>

using namespace bench;
using emulator::usbip::Session;
using usbIpClient::big;
using usbIpClient::bigAt;
using usbIpClient::importRequest;
using usbIpClient::submit;
using usbIpClient::unlink;

namespace {

Bytes take(Session &session)
{
    session.pump();
    Bytes all;
    while (!session.output().empty()) {
        const auto out = session.output();
        const std::size_t piece = std::min<std::size_t>(out.size(), 100); // as sockets do
        all.insert(all.end(), out.begin(), out.begin() + std::ptrdiff_t(piece));
        session.sent(piece);
    }
    return all;
}

Bytes give(Session &session, const Bytes &bytes)
{
    session.receive(bytes);
    return take(session);
}

/// An imported device.
struct Rig {
    explicit Rig(int model = 8)
        : device(steadyOptions(model), std::make_shared<emulator::WaveSignal>(1, emulator::WaveSignal::counter(16, 5)))
    {
        device.attach();
        session = std::make_unique<Session>(device, false);
        answer = give(*session, importRequest("1-1"));
    }
    Instrument device;
    std::unique_ptr<Session> session;
    Bytes answer;
};

constexpr SetupPacket askStatus{0xC0, 0x20, 0, 0, 2};

} // namespace

class TstUsbIpSession : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theListDescribesTheDeviceAndItsInterface();
    void theListIsEmptyWhileNothingIsPluggedIn();
    void anImportDescribesTheDevice();
    void onlyAFreeDeviceThatIsThereIsImported_data();
    void onlyAFreeDeviceThatIsThereIsImported();
    void anotherVersionEndsTheConnection();
    void aRequestIsAnsweredWithItsSequenceNumber();
    void commandsMayComeInAnyPieces();
    void aRequestWithDataReachesTheDevice();
    void aStallIsABrokenPipe();
    void aBulkReadWaitsForItsData();
    void aReadThatIsTakenBackIsReset();
    void aReadThatIsTakenBackKeepsItsData();
    void takingBackWhatIsDoneIsNoError();
    void theDeviceLeavingEndsTheConnection();
    void commandsThatMakeNoSenseEndTheConnection_data();
    void commandsThatMakeNoSenseEndTheConnection();
    void aHostThatReadsNothingDoesNotFillTheMemory();
};

void TstUsbIpSession::theListDescribesTheDeviceAndItsInterface()
{
    Instrument device(steadyOptions());
    device.attach();
    Session session(device, false);
    const Bytes got = give(session, Bytes{0x01, 0x11, 0x80, 0x05, 0, 0, 0, 0});
    QCOMPARE(got.size(), std::size_t(8 + 4 + 312 + 4));
    QCOMPARE(Bytes(got.begin(), got.begin() + 12), (Bytes{0x01, 0x11, 0x00, 0x05, 0, 0, 0, 0, 0, 0, 0, 1}));
    QCOMPARE(std::string(reinterpret_cast<const char *>(got.data()) + 12 + 256), std::string("1-1"));
    const std::size_t numbers = 12 + 256 + 32;
    QCOMPARE(bigAt(got, numbers + 8), 3U); // high speed
    QCOMPARE(Bytes(got.begin() + numbers + 12, got.begin() + numbers + 18),
             (Bytes{0x77, 0xA1, 0x01, 0xA2, 0x01, 0x00}));
    QCOMPARE(Bytes(got.begin() + numbers + 18, got.end()), (Bytes{0xFF, 0, 0, 1, 1, 1, 0xFF, 0, 0, 0}));
    QVERIFY(session.finished());
}

void TstUsbIpSession::theListIsEmptyWhileNothingIsPluggedIn()
{
    Instrument device(steadyOptions());
    Session session(device, false);
    QCOMPARE(give(session, Bytes{0x01, 0x11, 0x80, 0x05, 0, 0, 0, 0}),
             (Bytes{0x01, 0x11, 0x00, 0x05, 0, 0, 0, 0, 0, 0, 0, 0}));
}

void TstUsbIpSession::anImportDescribesTheDevice()
{
    Rig rig;
    QCOMPARE(rig.answer.size(), std::size_t(8 + 312));
    QCOMPARE(Bytes(rig.answer.begin(), rig.answer.begin() + 8), (Bytes{0x01, 0x11, 0x00, 0x03, 0, 0, 0, 0}));
    QVERIFY(rig.session->imported());
    QVERIFY(!rig.session->finished());
}

void TstUsbIpSession::onlyAFreeDeviceThatIsThereIsImported_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<bool>("there");
    QTest::addColumn<bool>("taken");
    QTest::addColumn<quint32>("status");
    QTest::addRow("another name") << QByteArray("1-2") << true << false << 4U;
    QTest::addRow("a longer name") << QByteArray("1-1.1") << true << false << 4U;
    QTest::addRow("not plugged in") << QByteArray("1-1") << false << false << 4U;
    QTest::addRow("taken") << QByteArray("1-1") << true << true << 2U;
}

void TstUsbIpSession::onlyAFreeDeviceThatIsThereIsImported()
{
    QFETCH(QByteArray, name);
    QFETCH(bool, there);
    QFETCH(bool, taken);
    QFETCH(quint32, status);
    Instrument device(steadyOptions());
    if (there) {
        device.attach();
    }
    Session session(device, taken);
    const Bytes got = give(session, importRequest(name.toStdString()));
    QCOMPARE(got, (Bytes{0x01, 0x11, 0x00, 0x03} + big(status)));
    QVERIFY(session.finished());
    QVERIFY(!session.imported());
}

void TstUsbIpSession::anotherVersionEndsTheConnection()
{
    Instrument device(steadyOptions());
    device.attach();
    Session session(device, false);
    QVERIFY(give(session, Bytes{0x01, 0x06, 0x80, 0x05, 0, 0, 0, 0}).empty());
    QVERIFY(session.finished());
}

void TstUsbIpSession::aRequestIsAnsweredWithItsSequenceNumber()
{
    Rig rig;
    const Bytes got = give(*rig.session, submit(77, 0, true, 2, askStatus));
    QCOMPARE(got.size(), std::size_t(50));
    QCOMPARE(bigAt(got, 0), 3U);
    QCOMPARE(bigAt(got, 4), 77U);
    QCOMPARE(bigAt(got, 20), 0U);
    QCOMPARE(bigAt(got, 24), 2U);
    QCOMPARE(Bytes(got.end() - 2, got.end()), (Bytes{0xFF, 0xFF})); // no FPGA image yet
}

void TstUsbIpSession::commandsMayComeInAnyPieces()
{
    Rig rig;
    const Bytes setup{4096 & 0xFF, 4096 >> 8, 0, 0};
    const Bytes all = submit(1, 0, false, 4, {0x40, 0x50, 0, 0, 4}, setup) +
                      submit(2, 2, false, 4096, {}, Bytes(4096, 7)) + submit(3, 0, true, 2, askStatus);
    Bytes got;
    for (const std::uint8_t byte : all) {
        got = got + give(*rig.session, Bytes{byte});
    }
    QCOMPARE(got.size(), std::size_t(48 + 48 + 50));
    QCOMPARE(bigAt(got, 48 + 4), 2U);
    QCOMPARE(bigAt(got, 48 + 24), 4096U);
    QCOMPARE(rig.device.fpga().writes(), std::vector<std::size_t>{4096});
}

void TstUsbIpSession::aRequestWithDataReachesTheDevice()
{
    Rig rig;
    const Bytes question{0xA3, 0x01, 0xCA};
    const Bytes got = give(*rig.session, submit(5, 0, false, 3, {0x40, 0x60, 0, 0, 3}, question));
    QCOMPARE(got.size(), std::size_t(48)); // no data in the answer to a write
    QCOMPARE(bigAt(got, 24), 3U);
    QCOMPARE(rig.device.log().entries().back().data, question);
}

void TstUsbIpSession::aStallIsABrokenPipe()
{
    Rig rig;
    const Bytes got = give(*rig.session, submit(5, 0, true, 4, {0xC0, 0xEE, 0, 0, 4}));
    QCOMPARE(got.size(), std::size_t(48));
    QCOMPARE(std::int32_t(bigAt(got, 20)), -32);
}

void TstUsbIpSession::aBulkReadWaitsForItsData()
{
    Rig rig(5);
    QVERIFY(bringUp(rig.device) && configure(rig.device, {}));
    QVERIFY(give(*rig.session, submit(9, 6, true, 512, {})).empty());
    QVERIFY(rig.session->waits());
    QVERIFY(run(rig.device) && sent(rig.device, 0x30, 0));
    const Bytes got = take(*rig.session);
    QCOMPARE(got.size(), std::size_t(48 + 512));
    QCOMPARE(bigAt(got, 24), 512U);
    const Bytes samples(got.begin() + 48, got.end());
    QCOMPARE(decodeSliced(samples, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15})[5], 1U);
}

void TstUsbIpSession::aReadThatIsTakenBackIsReset()
{
    Rig rig;
    QVERIFY(give(*rig.session, submit(9, 6, true, 512, {})).empty());
    const Bytes got = give(*rig.session, unlink(10, 9));
    QCOMPARE(got.size(), std::size_t(48));
    QCOMPARE(bigAt(got, 0), 4U);
    QCOMPARE(bigAt(got, 4), 10U);
    QCOMPARE(std::int32_t(bigAt(got, 20)), -104);
    QVERIFY(!rig.session->waits());
}

void TstUsbIpSession::aReadThatIsTakenBackKeepsItsData()
{
    InstrumentOptions o = steadyOptions(5);
    o.pace = 1.0;
    Instrument device(o, nullptr);
    QVERIFY(bringUp(device) && configure(device, {.divider = 80}));
    Session session(device, false);
    give(session, importRequest("1-1"));
    QVERIFY(give(session, submit(9, 6, true, 65536, {})).empty());
    QVERIFY(run(device) && sent(device, 0x30, 0));
    device.tick(millisecond);
    QVERIFY(take(session).empty());
    const Bytes got = give(session, unlink(10, 9));
    const std::uint32_t due = 20000 / 512 * 512;
    QCOMPARE(got.size(), std::size_t(48 + due + 48));
    QCOMPARE(bigAt(got, 4), 9U);
    QCOMPARE(bigAt(got, 20), 0U);
    QCOMPARE(bigAt(got, 24), due);
    QCOMPARE(bigAt(got, 48 + due), 4U);
    QCOMPARE(bigAt(got, 48 + due + 20), 0U);
}

void TstUsbIpSession::takingBackWhatIsDoneIsNoError()
{
    Rig rig;
    give(*rig.session, submit(5, 0, true, 2, askStatus));
    const Bytes got = give(*rig.session, unlink(6, 5));
    QCOMPARE(got.size(), std::size_t(48));
    QCOMPARE(bigAt(got, 20), 0U);
}

void TstUsbIpSession::theDeviceLeavingEndsTheConnection()
{
    Rig rig;
    QVERIFY(rig.session->holdsDevice());
    give(*rig.session, submit(9, 6, true, 512, {}));
    rig.device.detach();
    rig.session->pump();
    QVERIFY(rig.session->finished());
    QVERIFY(!rig.session->holdsDevice());
    QVERIFY(!rig.session->waits());

    // Also when it is already back.
    Rig again;
    again.device.detach();
    again.device.attach();
    again.session->pump();
    QVERIFY(again.session->finished());
    QVERIFY(!again.session->holdsDevice());
}

void TstUsbIpSession::commandsThatMakeNoSenseEndTheConnection_data()
{
    QTest::addColumn<int>("at");
    QTest::addColumn<quint32>("value");
    QTest::addRow("unknown command") << 0 << 9U;
    QTest::addRow("an answer") << 0 << 3U;
    QTest::addRow("a huge transfer") << 24 << 0x7FFFFFFFU;
    QTest::addRow("a negative length") << 24 << 0xFFFFFFFFU;
    QTest::addRow("an end point above 15") << 16 << 16U;
}

void TstUsbIpSession::commandsThatMakeNoSenseEndTheConnection()
{
    QFETCH(int, at);
    QFETCH(quint32, value);
    Rig rig;
    Bytes bytes = submit(1, 6, true, 512, {});
    const Bytes word = big(value);
    std::copy(word.begin(), word.end(), bytes.begin() + at);
    QVERIFY(give(*rig.session, bytes).empty());
    QVERIFY(rig.session->finished());

    Rig twice;
    give(*twice.session, submit(1, 6, true, 512, {}));
    give(*twice.session, submit(1, 6, true, 512, {}));
    QVERIFY(twice.session->finished());
}

void TstUsbIpSession::aHostThatReadsNothingDoesNotFillTheMemory()
{
    Rig rig(5);
    QVERIFY(bringUp(rig.device) && configure(rig.device, {}) && run(rig.device) && sent(rig.device, 0x30, 0));
    const std::uint32_t size = 1 << 20;
    for (std::uint32_t i = 0; i < 64; ++i) {
        rig.session->receive(submit(i + 1, 6, true, size, {}));
        rig.session->pump();
    }
    QVERIFY(rig.device.inBytes() < 16 * size);
    QVERIFY(!rig.session->wantsPump());
}

QTEST_GUILESS_MAIN(TstUsbIpSession)
#include "tst_UsbIpSession.moc"
