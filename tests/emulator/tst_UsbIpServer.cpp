// An instrument over a loopback socket, with real time: a host attaches, loads firmware, attaches again, captures.

#include "WaveSignal.h"
#include "emulator/UsbIpConnection.h"
#include "usbip/UsbIpServer.h"

#include <QtTest>

#include <numeric>
#include <thread>
#include <unistd.h>

using namespace bench;
using emulator::usbip::Server;
using usbIpClient::bigAt;
using usbIpClient::Connection;
using usbIpClient::importWhenThere;

namespace {

/// A server in a thread of its own.
struct Serving {
    explicit Serving(const InstrumentOptions &options)
        : device(options, std::make_shared<emulator::WaveSignal>(1, emulator::WaveSignal::counter(16, 5))),
          server(device)
    {
        device.attach();
        if (!server.listen(0)) {
            qFatal("no port");
        }
        thread = std::thread([this] { server.run(); });
    }
    ~Serving()
    {
        server.stop();
        thread.join();
    }
    Instrument device;
    Server server;
    std::thread thread;
};

} // namespace

class TstUsbIpServer : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aHostBringsUpTheInstrumentOverTwoImports();
    void aSecondHostIsRefusedUntilTheFirstHasLetGo();
    void aPortThatIsTakenIsNotListenedOn();
    void ordersPullAndPlug();
};

void TstUsbIpServer::aHostBringsUpTheInstrumentOverTwoImports()
{
    InstrumentOptions options;
    options.model = 5;
    options.pace = 0;
    options.direct = true;
    options.leaveAfter = millisecond;
    options.returnAfter = millisecond;
    Serving serving(options);
    {
        Connection host(serving.server.port());
        QVERIFY(host.import());
        QCOMPARE(host.write(0xA0, 0xE600, {1}), 0);
        QCOMPARE(host.write(0xA0, 0x0000, {1, 2, 3}), 0);
        QCOMPARE(host.write(0xA0, 0xE600, {0}), 0);
        QVERIFY(host.receive(1).empty()); // the device leaves the bus
    }
    const auto host = importWhenThere(serving.server.port());
    QVERIFY(host != nullptr);
    QCOMPARE(host->write(0x50, 0, little(5000, 4)), 0);
    for (int block = 0; block < 2; ++block) {
        Bytes data(4096, std::uint8_t(block == 0 ? 1 : 0));
        std::fill(data.begin(), data.begin() + 900, std::uint8_t(1));
        QCOMPARE(host->transfer(2, false, {}, data), 0);
    }
    Bytes status(1);
    QCOMPARE(host->transfer(0, true, {0xC0, 0x50, 0, 0, 1}, status), 0);
    QCOMPARE(status, Bytes{0});
    QCOMPARE(host->write(0x10, 1, {}), 0);
    QCOMPARE(host->write(0x20, 0x30, little(0xFFFF, 4) + Bytes(12)), 0);
    QCOMPARE(host->write(0x20, 0x20, little(1000, 5) + Bytes(9) + little(8, 2)), 0);
    QCOMPARE(host->write(0x20, 0, {3}), 0);
    QCOMPARE(host->write(0x30, 0, {}), 0);
    Bytes stream(1 << 20);
    QCOMPARE(host->transfer(6, true, {}, stream), 0);
    QCOMPARE(stream.size(), std::size_t(1 << 20));
    std::vector<int> channels(16);
    std::iota(channels.begin(), channels.end(), 0);
    auto wanted = emulator::WaveSignal(1, emulator::WaveSignal::counter(16, 5));
    QVERIFY(decodeSliced(stream, channels) == samplesOf(wanted, 0, (1 << 20) / 2));
}

void TstUsbIpServer::aSecondHostIsRefusedUntilTheFirstHasLetGo()
{
    Serving serving(InstrumentOptions{});
    {
        Connection first(serving.server.port());
        QVERIFY(first.import());
        Connection second(serving.server.port());
        QVERIFY(!second.import());
        Connection list(serving.server.port());
        list.send({0x01, 0x11, 0x80, 0x05, 0, 0, 0, 0});
        QCOMPARE(list.receive(1000).size(), std::size_t(8 + 4 + 312 + 4));
    }
    QVERIFY(importWhenThere(serving.server.port()) != nullptr);
}

void TstUsbIpServer::aPortThatIsTakenIsNotListenedOn()
{
    Serving serving(InstrumentOptions{});
    Instrument other(InstrumentOptions{});
    Server server(other);
    QVERIFY(!server.listen(serving.server.port()));
    QVERIFY(!server.problem().empty());
}

void TstUsbIpServer::ordersPullAndPlug()
{
    int ends[2];
    QCOMPARE(pipe(ends), 0);
    const auto order = [&ends](const std::string &text) { return write(ends[1], text.data(), text.size()) > 0; };
    Instrument device(InstrumentOptions{});
    Server server(device);
    QVERIFY(server.listen(0));
    server.takeOrders(ends[0]);
    std::thread thread([&server] { server.run(); });
    QVERIFY(order("nonsense\npl"));
    QVERIFY(order("ug\n"));
    {
        const auto host = importWhenThere(server.port());
        QVERIFY(host != nullptr);
        QVERIFY(order("unplug\n"));
        QVERIFY(host->receive(1).empty());
    }
    QVERIFY(order("quit\n"));
    thread.join();
    QVERIFY(!device.attached());
    close(ends[0]);
    close(ends[1]);
}

QTEST_GUILESS_MAIN(TstUsbIpServer)
#include "tst_UsbIpServer.moc"
