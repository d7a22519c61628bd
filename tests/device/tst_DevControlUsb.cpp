#include "RequestDesk.h"
#include "device/DevControlUsb.h"
#include "device/DevModels.h"
#include "settings/Config.h"

#include <QtTest>

#include <thread>

namespace {

QByteArray bytes(std::initializer_list<int> values)
{
    QByteArray array;
    for (const int value : values) {
        array.append(char(value));
    }
    return array;
}

/// A request to the device, with what it carries.
SeenRequest sent(int request, int value, const QByteArray &data = {})
{
    return {{0x40, std::uint8_t(request), std::uint16_t(value), 0, std::uint16_t(data.size())}, data};
}

/// A request for `length` bytes.
SeenRequest asked(int request, int value, int length)
{
    return {{0xC0, std::uint8_t(request), std::uint16_t(value), 0, std::uint16_t(length)}, {}};
}

using Seen = std::vector<SeenRequest>;

/// An instrument side over a scripted device.
struct ControlDesk : RequestDesk {
    ControlDesk() : control(*transport)
    {
        control.sleep = [this](int ms) { pauses.append(ms); };
        setDevControl(&control);
    }
    ~ControlDesk() { setDevControl(nullptr); }
    ControlDesk(const ControlDesk &) = delete;
    ControlDesk &operator=(const ControlDesk &) = delete;

    /// Fills answers with 1, 2, 3 and so on.
    void answerInOrder()
    {
        answer = [](const UsbSetup &, QByteArray &out) {
            for (int i = 0; i < out.size(); ++i) {
                out[i] = char(i + 1);
            }
        };
    }

    DevControlUsb control;
};

using Operation = std::function<int(DevControlUsb &)>;

struct NamedOperation {
    const char *name;
    Operation call;
    Seen expected;
    /// The answer is that of this transfer alone; -1: of the first that fails.
    int decides = -1;
};

const SmpConfig settings{0x123456789A, 0x0102030405, 0xA0B0C0D0, 0x4321,
                         0xFFFF0001,   0x00020003,   0x00040005, 0x00060007};

const QByteArray trigBytes =
    bytes({0x01, 0x00, 0xFF, 0xFF, 0x03, 0x00, 0x02, 0x00, 0x05, 0x00, 0x04, 0x00, 0x07, 0x00, 0x06, 0x00});
const QByteArray smpBytes =
    bytes({0x9A, 0x78, 0x56, 0x34, 0x12, 0x05, 0x04, 0x03, 0x02, 0x01, 0xD0, 0xC0, 0xB0, 0xA0, 0x21, 0x43});

/// Every operation that sends something, with its requests on the wire.
std::vector<NamedOperation> operations()
{
    return {
        {"start", [](auto &c) { return c.startDevice(); }, {sent(0x20, 0, bytes({3}))}},
        {"stop", [](auto &c) { return c.stopDevice(); }, {sent(0x20, 0, bytes({0})), sent(0x38, 0)}, 0},
        {"bulk start", [](auto &c) { return c.bulkStart(); }, {sent(0x30, 0)}},
        {"bulk stop", [](auto &c) { return c.bulkStop(); }, {sent(0x38, 0)}},
        {"status",
         [](auto &c) {
             std::uint16_t status = 0;
             return c.readStatus(status);
         },
         {asked(0x20, 0, 2)}},
        {"capture info",
         [](auto &c) {
             SmpCaptureInfo info;
             return c.readCaptureInfo(info);
         },
         {asked(0x20, 0x10, 12)}},
        {"identity",
         [](auto &c) {
             QByteArray uid;
             return c.readUid(uid);
         },
         {sent(0x60, 0, bytes({0xA3, 0x01, 0xCA})), asked(0x60, 0, 12)}},
        {"settings",
         [](auto &c) { return c.sendSmpConfig(settings); },
         {sent(0x20, 0x30, trigBytes), sent(0x20, 0x20, smpBytes)}},
        {"PWM 0",
         [](auto &c) { return c.sendPwm(0, 0x01020304, 0x05060708); },
         {sent(0x20, 0x70, bytes({4, 3, 2, 1, 8, 7, 6, 5}))}},
        {"PWM 1", [](auto &c) { return c.sendPwm(1, 2, 1); }, {sent(0x20, 0x78, bytes({2, 0, 0, 0, 1, 0, 0, 0}))}},
        {"PWM on", [](auto &c) { return c.sendPwmEnable(2); }, {sent(0x20, 2, bytes({2}))}},
        {"threshold 1",
         [](auto &c) {
             return c.sendVth(1, {0xFF87, 727});
         },
         {sent(0x20, 0x48, bytes({0x87, 0xFF, 0xD7, 0x02}))}},
        {"threshold 2",
         [](auto &c) {
             return c.sendVth(2, {848, 0});
         },
         {sent(0x20, 0x4C, bytes({0x50, 3, 0, 0}))}},
        {"off", [](auto &c) { return c.powerOff(); }, {sent(0x10, 0)}},
    };
}

void addOperations()
{
    QTest::addColumn<int>("number");
    const auto all = operations();
    for (std::size_t i = 0; i < all.size(); ++i) {
        QTest::newRow(all[i].name) << int(i);
    }
}

} // namespace

class TstDevControlUsb : public QObject {
    Q_OBJECT
private slots:
    void init() { configLoad(); }

    void eachOperationIsItsRequestsOnTheWire_data() { addOperations(); }
    void eachOperationIsItsRequestsOnTheWire();
    void aClosedDeviceIsToldAndNothingIsSent_data() { addOperations(); }
    void aClosedDeviceIsToldAndNothingIsSent();
    void eachTransferThatGoesWrongIsTold_data() { addOperations(); }
    void eachTransferThatGoesWrongIsTold();

    void theStatusWordIsLittleEndianAndZeroAfterAFailure();
    void aStatusWordTellsWhatIsWrong_data();
    void aStatusWordTellsWhatIsWrong();
    void theCaptureInfoIsThreeNumbersAndStaysAfterAFailure();
    void theIdentityIsReadAfterAWhileAndStaysAfterAFailure();
    void aReadWindowStopsThePipeAndStartsItAgain();
    void aReadWindowTellsTheFirstStepThatFailsBehindTheStop();
    void theRateTunesTheTransportsReads();
    void aStopMeetsNoOperationInItsMidst();

    void aDeviceSendsItsSettingsAsBlocks();
    void thresholdsReachTheWireAsCodes_data();
    void thresholdsReachTheWireAsCodes();
    void aPwmOutputReachesTheWireAsCounts();
    void resettingThePwmTakesFourRequests();
    void anUnconnectedDeviceSendsNothing();
};

void TstDevControlUsb::eachOperationIsItsRequestsOnTheWire()
{
    QFETCH(int, number);
    const NamedOperation operation = operations().at(std::size_t(number));
    ControlDesk desk;
    QCOMPARE(operation.call(desk.control), 0);
    QCOMPARE(desk.seen, operation.expected);
}

void TstDevControlUsb::aClosedDeviceIsToldAndNothingIsSent()
{
    QFETCH(int, number);
    ControlDesk desk;
    desk.transport->close();
    QCOMPARE(operations().at(std::size_t(number)).call(desk.control), 1);
    QCOMPARE(desk.transfers(), 0);
}

void TstDevControlUsb::eachTransferThatGoesWrongIsTold()
{
    QFETCH(int, number);
    const NamedOperation operation = operations().at(std::size_t(number));
    for (int k = 0; k < int(operation.expected.size()); ++k) {
        const bool isSilent = operation.decides >= 0 && operation.decides != k;
        const bool canBeShort = operation.expected.at(std::size_t(k)).setup.length > 0;
        for (const Trouble trouble : {Trouble::NotOpen, Trouble::Failed, Trouble::Short, Trouble::Unplugged}) {
            ControlDesk desk;
            desk.trouble(k, trouble);
            const bool isSound = isSilent || (trouble == Trouble::Short && !canBeShort);
            QCOMPARE(operation.call(desk.control), isSound ? 0 : trouble == Trouble::NotOpen ? 1 : 2);
        }
    }
}

void TstDevControlUsb::theStatusWordIsLittleEndianAndZeroAfterAFailure()
{
    ControlDesk desk;
    desk.answerInOrder();
    std::uint16_t status = 0;
    QCOMPARE(desk.control.readStatus(status), 0);
    QCOMPARE(status, std::uint16_t(0x0201));
    desk.usb->failAt = desk.usb->operations + 1;
    QCOMPARE(desk.control.readStatus(status), 2);
    QCOMPARE(status, std::uint16_t(0));
    status = 5;
    desk.transport->close();
    QCOMPARE(desk.control.readStatus(status), 1);
    QCOMPARE(status, std::uint16_t(0));
}

void TstDevControlUsb::aStatusWordTellsWhatIsWrong_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("error");
    QTest::newRow("all ones") << 0xFFFF << 7;
    QTest::newRow("all zero") << 0 << 8;
    QTest::newRow("low bits 3") << 0x85C3 << 9;
    QTest::newRow("low bits 0") << 0x85C0 << 9;
    QTest::newRow("not sound") << 0x8541 << 10;
    QTest::newRow("fault") << 0x85D1 << 13;
    QTest::newRow("not sound, with a fault") << 0x8591 << 10;
    QTest::newRow("idle") << 0x85C1 << 0;
    QTest::newRow("busy") << 0x85C2 << 0;
}

void TstDevControlUsb::aStatusWordTellsWhatIsWrong()
{
    QFETCH(int, status);
    QFETCH(int, error);
    ControlDesk desk;
    desk.answer = [status](const UsbSetup &, QByteArray &out) {
        out[0] = char(status & 0xFF);
        out[1] = char(status >> 8);
    };
    std::uint16_t word = 0;
    QCOMPARE(desk.control.readStatus(word), 0);
    QCOMPARE(statusError(word), error);
}

void TstDevControlUsb::theCaptureInfoIsThreeNumbersAndStaysAfterAFailure()
{
    ControlDesk desk;
    desk.answerInOrder();
    SmpCaptureInfo info;
    QCOMPARE(desk.control.readCaptureInfo(info), 0);
    QCOMPARE(info.recordCount, 0x04030201U);
    QCOMPARE(info.trgRecord, 0x08070605U);
    QCOMPARE(info.endAddress, 0x0C0B0A09U);
    desk.transport->close();
    QCOMPARE(desk.control.readCaptureInfo(info), 1);
    QCOMPARE(info.recordCount, 0x04030201U);
}

void TstDevControlUsb::theIdentityIsReadAfterAWhileAndStaysAfterAFailure()
{
    ControlDesk desk;
    desk.answerInOrder();
    QByteArray uid = QByteArrayLiteral("before");
    desk.trouble(1, Trouble::Failed);
    QCOMPARE(desk.control.readUid(uid), 2);
    QCOMPARE(uid, QByteArrayLiteral("before"));
    QCOMPARE(desk.control.readUid(uid), 0);
    QCOMPARE(uid, bytes({3, 4, 5, 6, 7, 8, 9, 10}));
    QCOMPARE(desk.pauses, (QVector<int>{50, 50}));
}

void TstDevControlUsb::aReadWindowStopsThePipeAndStartsItAgain()
{
    ControlDesk desk;
    QCOMPARE(desk.control.setReadWindow(0x11223344, 0x55667788), 0);
    QCOMPARE(desk.seen, (Seen{sent(0x38, 0), sent(0x20, 0x10, bytes({0x44, 0x33, 0x22, 0x11, 0x88, 0x77, 0x66, 0x55})),
                              sent(0x30, 0)}));
}

void TstDevControlUsb::aReadWindowTellsTheFirstStepThatFailsBehindTheStop()
{
    const int requestsBehind[] = {2, 0, 0}; // after the step that goes wrong
    for (int k = 0; k < 3; ++k) {
        ControlDesk desk;
        desk.trouble(k, Trouble::Failed);
        QCOMPARE(desk.control.setReadWindow(0, 4096), k == 0 ? 0 : 2);
        QCOMPARE(desk.transfers(), k + 1 + requestsBehind[k]);
        ControlDesk closed;
        closed.trouble(k, Trouble::NotOpen);
        QCOMPARE(closed.control.setReadWindow(0, 4096), 1);
    }
}

void TstDevControlUsb::theRateTunesTheTransportsReads()
{
    ControlDesk desk;
    desk.control.tuneChunkSize(8 * 1000);
    QCOMPARE(desk.transport->chunkSize.load(), 2048);
    QVERIFY(desk.control.transport() == desk.transport.get());
}

void TstDevControlUsb::aStopMeetsNoOperationInItsMidst()
{
    ControlDesk desk;
    std::thread other([&desk] {
        for (int i = 0; i < 200; ++i) {
            desk.control.stopDevice();
        }
    });
    for (int i = 0; i < 200; ++i) {
        (void)desk.control.setReadWindow(0, 4096);
    }
    other.join();
    // Between the stop and the start of the pipe stands the window, and nothing else.
    QCOMPARE(desk.seen.size(), std::size_t(200 * 2 + 200 * 3));
    for (std::size_t i = 0; i < desk.seen.size();) {
        if (desk.seen[i].setup.request == 0x20) {
            QCOMPARE(desk.seen[i + 1], sent(0x38, 0));
            i += 2;
        } else {
            QCOMPARE(desk.seen[i], sent(0x38, 0));
            QCOMPARE(int(desk.seen[i + 1].setup.value), 0x10);
            QCOMPARE(desk.seen[i + 2], sent(0x30, 0));
            i += 3;
        }
    }
}

void TstDevControlUsb::aDeviceSendsItsSettingsAsBlocks()
{
    ControlDesk desk;
    const auto device = createDevice(8);
    device->clockFrequ = 1000000000;
    device->setSmpFrequIndex(0);  // 500 MHz
    device->setSmpDepthIndex(14); // 10^10 samples
    device->setTrgPosition(50);
    QVector<bool> channels(16, true);
    channels[15] = false;
    device->setChnEnable(channels);
    device->setChnTrig(0, 1);
    device->setChnTrig(1, 2);
    device->setChnTrig(2, 4);
    QCOMPARE(desk.control.sendSmpConfig(device->smpConfig()), 0);
    QCOMPARE(desk.seen.at(0).data, bytes({0xFF, 0x7F, 0, 0, 7, 0, 0, 0, 3, 0, 0, 0, 6, 0, 0, 0}));
    // 0x2540BE400 samples, half of them, half of 0x10000000 bytes, and every second clock.
    QCOMPARE(desk.seen.at(1).data,
             bytes({0x00, 0xE4, 0x0B, 0x54, 0x02, 0x00, 0xF2, 0x05, 0x2A, 0x01, 0, 0, 0, 0x08, 2, 0}));
}

void TstDevControlUsb::thresholdsReachTheWireAsCodes_data()
{
    QTest::addColumn<double>("volts");
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("range");
    QTest::newRow("above the highest") << 5.0 << 848 << 0;
    QTest::newRow("the highest") << 4.0 << 848 << 0;
    QTest::newRow("below the lowest") << -5.0 << 0xFF87 << 727;
    QTest::newRow("2.8") << 2.8 << 969 << 242;
    QTest::newRow("1.65") << 1.65 << 621 << 242;
}

void TstDevControlUsb::thresholdsReachTheWireAsCodes()
{
    QFETCH(double, volts);
    QFETCH(int, code);
    QFETCH(int, range);
    ControlDesk desk;
    const auto device = createDevice(8);
    device->connected = true;
    device->setVth(volts, 1);
    QCOMPARE(desk.seen, (Seen{sent(0x20, 0x48, bytes({code & 0xFF, code >> 8, range & 0xFF, range >> 8}))}));
}

void TstDevControlUsb::aPwmOutputReachesTheWireAsCounts()
{
    ControlDesk desk;
    const auto device = createDevice(8);
    device->connected = true;
    device->pwmClock = 200000000;
    device->setPwm(0, 3.0, 50.0);
    // 66666667 steps, of which 33333333 are high.
    QCOMPARE(desk.seen, (Seen{sent(0x20, 0x70, bytes({0xAB, 0x40, 0xF9, 0x03, 0x55, 0xA0, 0xFC, 0x01}))}));
    QCOMPARE(device->pwmFrequ[0], 2.999999985);
}

void TstDevControlUsb::resettingThePwmTakesFourRequests()
{
    ControlDesk desk;
    const auto device = createDevice(8);
    device->connected = true;
    device->pwmClock = 200000000;
    device->resetPwm();
    QCOMPARE(desk.seen, (Seen{sent(0x20, 2, bytes({0})), sent(0x20, 0x70, bytes({0x40, 0x0D, 3, 0, 0xA0, 0x86, 1, 0})),
                              sent(0x20, 0x78, bytes({0xD0, 7, 0, 0, 0xE8, 3, 0, 0})), sent(0x20, 2, bytes({3}))}));
}

void TstDevControlUsb::anUnconnectedDeviceSendsNothing()
{
    ControlDesk desk;
    const auto device = createDevice(8);
    device->setVth(1.0, 1);
    device->setPwm(0, 1000, 50);
    device->setPwmEnable(true, true);
    device->resetPwm();
    device->shutDown();
    QCOMPARE(desk.transfers(), 0);
}

QTEST_GUILESS_MAIN(TstDevControlUsb)
#include "tst_DevControlUsb.moc"
