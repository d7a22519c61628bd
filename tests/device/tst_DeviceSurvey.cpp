#include "device/DevRequests.h"
#include "device/DeviceSurvey.h"
#include "support/FakeUsb.h"

#include <QtTest>

#include <set>

using State = FoundInstrument::State;

namespace {

const QByteArray uid = QByteArray::fromHex("1032547698BADCFE");

/// Answers as the model with 32 channels does.
UsbResult answer(const UsbSetup &setup, std::uint8_t *data, std::uint32_t &moved)
{
    moved = setup.length;
    std::fill_n(data, setup.isIn() ? setup.length : 0, std::uint8_t(0));
    if (setup.isIn() && setup.request == devRequest::eeprom) {
        const std::uint8_t identity[] = {6, 0xF9, 0, 0xFF, 6, 0xF9, 0, 0xFF};
        std::copy_n(identity, std::min<std::size_t>(setup.length, sizeof identity), data);
    } else if (setup.isIn() && setup.request == devRequest::uid) {
        std::copy(uid.begin(), uid.end(), data + devRequest::uidAt);
    }
    return {};
}

FakeUsbDevice device(const char *path, std::uint16_t product)
{
    FakeUsbDevice made;
    made.path = path;
    made.product = product;
    return made;
}

} // namespace

class TstDeviceSurvey : public QObject {
    Q_OBJECT
private slots:
    void anEmptyBusHasNone();
    void anInstrumentTellsModelAndSerialNumber();
    void oneWithoutFirmwareIsToldAsThat();
    void severalAreToldInTheirOrder();
    void aStrangerAtOurPortIsUnusable();
    void whateverFailsIsToldAndAllIsClosed_data();
    void whateverFailsIsToldAndAllIsClosed();
    void oneThatLeavesIsUnusable();
};

void TstDeviceSurvey::anEmptyBusHasNone()
{
    FakeUsb usb;
    QVERIFY(surveyInstruments(usb).empty());
    QVERIFY(usb.allFreed() && usb.misuse.empty());
}

void TstDeviceSurvey::anInstrumentTellsModelAndSerialNumber()
{
    FakeUsb usb;
    usb.devices = {device("fake:7", 0x01A2)};
    usb.onControl = answer;
    const auto found = surveyInstruments(usb);
    QCOMPARE(found.size(), std::size_t(1));
    QCOMPARE(found[0].port, QStringLiteral("fake:7"));
    QCOMPARE(found[0].state, State::Ready);
    QCOMPARE(found[0].product, std::uint16_t(0x01A2));
    QCOMPARE(found[0].model, 9);
    QCOMPARE(found[0].uid, uid);
    QVERIFY(usb.allFreed() && usb.misuse.empty());
}

void TstDeviceSurvey::oneWithoutFirmwareIsToldAsThat()
{
    FakeUsb usb;
    usb.devices = {device("fake:1", 0x01A4)};
    usb.devices[0].pipes.clear();
    usb.onControl = answer;
    const auto found = surveyInstruments(usb);
    QCOMPARE(found[0].state, State::NoFirmware);
    QCOMPARE(found[0].model, 0);
    QVERIFY(usb.setups.empty()); // it is asked nothing
}

void TstDeviceSurvey::severalAreToldInTheirOrder()
{
    FakeUsb usb;
    usb.devices = {device("fake:1", 0x01A2), device("fake:2", 0x01A3), device("fake:3", 0x01A2)};
    usb.devices[1].pipes = {{0x82, 512}}; // its data come from another end point
    usb.devices[2].opens = false;
    usb.onControl = answer;
    const auto found = surveyInstruments(usb);
    QCOMPARE(found.size(), std::size_t(3));
    QCOMPARE(found[0].state, State::Ready);
    QCOMPARE(found[1].state, State::Ready);
    QCOMPARE(found[2].state, State::Unusable);
    QCOMPARE(found[2].port, QStringLiteral("fake:3"));
}

void TstDeviceSurvey::aStrangerAtOurPortIsUnusable()
{
    FakeUsb usb;
    usb.devices = {device("fake:1", 0x7777)};
    const auto found = surveyInstruments(usb);
    QCOMPARE(found[0].state, State::Unusable);
    QVERIFY(usb.setups.empty());
}

void TstDeviceSurvey::whateverFailsIsToldAndAllIsClosed_data()
{
    QTest::addColumn<int>("error");
    QTest::newRow("refused") << int(UsbError::Refused);
    QTest::newRow("gone") << int(UsbError::Gone);
}

void TstDeviceSurvey::whateverFailsIsToldAndAllIsClosed()
{
    QFETCH(int, error);
    std::set<State> states;
    FakeUsb clean;
    clean.devices = {device("fake:1", 0x01A2)};
    clean.onControl = answer;
    (void)surveyInstruments(clean);
    QVERIFY(clean.operations > 8);
    for (int at = 1; at <= clean.operations; ++at) {
        FakeUsb usb;
        usb.devices = {device("fake:1", 0x01A2)};
        usb.onControl = answer;
        usb.failAt = at;
        usb.failWith = {UsbError(error), 3};
        for (const FoundInstrument &found : surveyInstruments(usb)) {
            states.insert(found.state);
        }
        QVERIFY(usb.allFreed());
        QVERIFY(usb.misuse.empty());
    }
    QVERIFY(states.contains(State::Ready)); // one that keeps its serial number to itself
    QVERIFY(states.contains(State::Unusable));
    QCOMPARE(states.contains(State::InUse), UsbError(error) == UsbError::Refused);
#ifndef Q_OS_WIN
    QCOMPARE(states.contains(State::NoRights), UsbError(error) == UsbError::Refused);
#endif
}

void TstDeviceSurvey::oneThatLeavesIsUnusable()
{
    FakeUsb clean;
    clean.devices = {device("fake:1", 0x01A2)};
    clean.onControl = answer;
    (void)surveyInstruments(clean);
    for (int at = 1; at <= clean.operations; ++at) {
        FakeUsb usb;
        usb.devices = {device("fake:1", 0x01A2)};
        usb.onControl = answer;
        usb.unplugAt = at;
        (void)surveyInstruments(usb);
        QVERIFY(usb.allFreed());
        QVERIFY(usb.misuse.empty());
    }
}

QTEST_GUILESS_MAIN(TstDeviceSurvey)
#include "tst_DeviceSurvey.moc"
