#include "device/UsbErrorsLibusb.h"
#include "device/UsbPlatformLibusb.h"

#include <QtTest>

#include <libusb.h>

class TstUsbPlatformLibusb : public QObject {
    Q_OBJECT
private slots:
    void anErrorOfTheLibraryBecomesOneOfOurs_data();
    void anErrorOfTheLibraryBecomesOneOfOurs();
    void theEndOfATransferBecomesAResult_data();
    void theEndOfATransferBecomesAResult();
    void thePlatformComesAndGoesWithItsThread();
    void aPathThatIsNoneDoesNotOpen();
};

void TstUsbPlatformLibusb::anErrorOfTheLibraryBecomesOneOfOurs_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("error");
    const auto row = [](int code, UsbError error) { QTest::newRow(libusb_error_name(code)) << code << int(error); };
    row(LIBUSB_SUCCESS, UsbError::None);
    QTest::newRow("a count of bytes") << 4096 << int(UsbError::None);
    row(LIBUSB_ERROR_IO, UsbError::Failed);
    row(LIBUSB_ERROR_INVALID_PARAM, UsbError::Failed);
    row(LIBUSB_ERROR_ACCESS, UsbError::Refused);
    row(LIBUSB_ERROR_NO_DEVICE, UsbError::Gone);
    row(LIBUSB_ERROR_NOT_FOUND, UsbError::NotFound);
    row(LIBUSB_ERROR_BUSY, UsbError::Refused);
    row(LIBUSB_ERROR_TIMEOUT, UsbError::TimedOut);
    row(LIBUSB_ERROR_OVERFLOW, UsbError::Failed);
    row(LIBUSB_ERROR_PIPE, UsbError::Halted);
    row(LIBUSB_ERROR_INTERRUPTED, UsbError::Aborted);
    row(LIBUSB_ERROR_NO_MEM, UsbError::NoMemory);
    row(LIBUSB_ERROR_NOT_SUPPORTED, UsbError::Failed);
    row(LIBUSB_ERROR_OTHER, UsbError::Failed);
    QTest::newRow("one that there is not") << -12345 << int(UsbError::Failed);
}

void TstUsbPlatformLibusb::anErrorOfTheLibraryBecomesOneOfOurs()
{
    QFETCH(int, code);
    const UsbResult result = usbResultOfLibusb(code);
    QTEST(int(result.error), "error");
    QCOMPARE(result.system, code < 0 ? std::uint32_t(-code) : 0U);
}

void TstUsbPlatformLibusb::theEndOfATransferBecomesAResult_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("error");
    QTest::newRow("completed") << int(LIBUSB_TRANSFER_COMPLETED) << int(UsbError::None);
    QTest::newRow("error") << int(LIBUSB_TRANSFER_ERROR) << int(UsbError::Failed);
    QTest::newRow("timed out") << int(LIBUSB_TRANSFER_TIMED_OUT) << int(UsbError::TimedOut);
    QTest::newRow("cancelled") << int(LIBUSB_TRANSFER_CANCELLED) << int(UsbError::Aborted);
    QTest::newRow("stall") << int(LIBUSB_TRANSFER_STALL) << int(UsbError::Halted);
    QTest::newRow("no device") << int(LIBUSB_TRANSFER_NO_DEVICE) << int(UsbError::Gone);
    QTest::newRow("overflow") << int(LIBUSB_TRANSFER_OVERFLOW) << int(UsbError::Failed);
    QTest::newRow("one that there is not") << 77 << int(UsbError::Failed);
}

void TstUsbPlatformLibusb::theEndOfATransferBecomesAResult()
{
    QFETCH(int, status);
    QTEST(int(usbResultOfTransfer(status).error), "error");
}

void TstUsbPlatformLibusb::thePlatformComesAndGoesWithItsThread()
{
    for (int i = 0; i < 20; ++i) {
        const std::unique_ptr<UsbPlatform> platform = makeUsbPlatformLibusb();
        if (!platform) {
            QSKIP("libusb does not start on this machine");
        }
        (void)platform->registerHotplug(0, [] {});
    }
}

void TstUsbPlatformLibusb::aPathThatIsNoneDoesNotOpen()
{
    const std::unique_ptr<UsbPlatform> platform = makeUsbPlatformLibusb();
    if (!platform) {
        QSKIP("libusb does not start on this machine");
    }
    for (const char *path : {"", "usb:999:999", "no such device"}) {
        UsbFile file = UsbFile(7);
        QCOMPARE(platform->openFile(path, file).error, UsbError::NotFound);
        QCOMPARE(file, UsbFile::None);
        platform->closeFile(file);
    }
}

QTEST_GUILESS_MAIN(TstUsbPlatformLibusb)
#include "tst_UsbPlatformLibusb.moc"
