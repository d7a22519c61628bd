#include "device/UsbErrorsWindows.h"

#include <QtTest>

class TstUsbErrorsWindows : public QObject {
    Q_OBJECT
private slots:
    void anErrorOfTheSystemBecomesOneOfOurs_data();
    void anErrorOfTheSystemBecomesOneOfOurs();
};

void TstUsbErrorsWindows::anErrorOfTheSystemBecomesOneOfOurs_data()
{
    QTest::addColumn<quint32>("code");
    QTest::addColumn<int>("error");
    const auto row = [](const char *what, quint32 code, UsbError error) { QTest::newRow(what) << code << int(error); };
    row("success", 0, UsbError::None);
    row("file not found", 2, UsbError::NotFound);
    row("path not found", 3, UsbError::NotFound);
    row("access denied", 5, UsbError::Refused);
    row("invalid handle", 6, UsbError::Failed);
    row("not enough memory", 8, UsbError::NoMemory);
    row("out of memory", 14, UsbError::NoMemory);
    row("bad command", 22, UsbError::Gone);
    row("general failure", 31, UsbError::Halted);
    row("sharing violation", 32, UsbError::Refused);
    row("device does not exist", 55, UsbError::Gone);
    row("invalid parameter", 87, UsbError::NotFound);
    row("semaphore time-out", 121, UsbError::TimedOut);
    row("insufficient buffer", 122, UsbError::TooSmall);
    row("invalid name", 123, UsbError::NotFound);
    row("busy", 170, UsbError::Refused);
    row("no more items", 259, UsbError::NotFound);
    row("no such device", 433, UsbError::Gone);
    row("operation aborted", 995, UsbError::Aborted);
    row("not complete", 996, UsbError::Pending);
    row("pending", 997, UsbError::Pending);
    row("not connected", 1167, UsbError::Gone);
    row("not found", 1168, UsbError::NotFound);
    row("no system resources", 1450, UsbError::NoMemory);
    row("time-out", 1460, UsbError::TimedOut);
    row("device removed", 1617, UsbError::Gone);
    row("any other", 4711, UsbError::Failed);
    row("the greatest", 0xFFFFFFFF, UsbError::Failed);
}

void TstUsbErrorsWindows::anErrorOfTheSystemBecomesOneOfOurs()
{
    QFETCH(quint32, code);
    const UsbResult result = usbResultOfWindows(code);
    QTEST(int(result.error), "error");
    QCOMPARE(result.system, code);
}

QTEST_APPLESS_MAIN(TstUsbErrorsWindows)
#include "tst_UsbErrorsWindows.moc"
