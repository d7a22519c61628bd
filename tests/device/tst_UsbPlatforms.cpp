#include "device/UsbDesk.h"
#include "device/UsbIds.h"
#include "device/UsbPlatformNone.h"
#include "device/UsbPlatforms.h"
#include "device/UsbTransport.h"

#include <QtTest>

class TstUsbPlatforms : public QObject {
    Q_OBJECT
private slots:
    void thereIsAPlatformOnEverySystem();
    void withoutAPlatformNothingIsFoundAndNothingIsTold();
    void onlyOurProductsAreInstruments_data();
    void onlyOurProductsAreInstruments();
};

void TstUsbPlatforms::thereIsAPlatformOnEverySystem()
{
    std::unique_ptr<UsbPlatform> platform = makeUsbPlatform();
    QVERIFY(platform != nullptr);
    const UsbList list = platform->openList();
    QVERIFY(list == UsbList::None || !platform->listHas(list, 1000));
    platform->freeList(list);
}

void TstUsbPlatforms::withoutAPlatformNothingIsFoundAndNothingIsTold()
{
    UsbTransport transport(std::make_unique<UsbPlatformNone>());
    QCOMPARE(transport.refresh(), 0);
    QVERIFY(!transport.isOpen());
    QVERIFY(!transport.registerHotplug(1));
    QCOMPARE(transport.controlOut(0x20, 0, 0, {}), 1);
    UsbReceiver receiver;
    transport.setCallback(&receiver);
    QCOMPARE(transport.readStream(0, receiver), 1);
}

void TstUsbPlatforms::onlyOurProductsAreInstruments_data()
{
    QTest::addColumn<int>("vendor");
    QTest::addColumn<int>("product");
    QTest::addColumn<bool>("ours");
    for (const int product : {0x01A1, 0x01A2, 0x01A3, 0x01A4, 0x02A1, 0x02A2, 0x02A3, 0x03A1, 0x03A2, 0x03A3}) {
        QTest::addRow("%04x", product) << 0x77A1 << product << true;
        QTest::addRow("%04x of another vendor", product) << 0x77A2 << product << false;
    }
    for (const int product : {0x01A0, 0x01A5, 0x02A4, 0x03A4, 0, 0xFFFF}) {
        QTest::addRow("%04x", product) << 0x77A1 << product << false;
    }
}

void TstUsbPlatforms::onlyOurProductsAreInstruments()
{
    QFETCH(int, vendor);
    QFETCH(int, product);
    QTEST(isUsbInstrument(std::uint16_t(vendor), std::uint16_t(product)), "ours");
}

QTEST_GUILESS_MAIN(TstUsbPlatforms)
#include "tst_UsbPlatforms.moc"
