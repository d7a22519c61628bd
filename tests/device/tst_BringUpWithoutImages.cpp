// Bring-up in a program that was built without firmware and FPGA images.

#include "BringUpDesk.h"
#include "device/DeviceGlobals.h"

class TstBringUpWithoutImages : public QObject {
    Q_OBJECT
private slots:
    void aBareDeviceIsToldToHaveNoFirmware();
    void anInstrumentThatNeedsAnFpgaImageIsToldThatThereIsNone();
    void theModelWithoutAnFpgaImageComesUp();
};

void TstBringUpWithoutImages::aBareDeviceIsToldToHaveNoFirmware()
{
    BringUpDesk desk;
    desk.bus->add(instrumentOf(8));
    desk.bus->plug();
    QTRY_VERIFY(desk.hasEnded());
    QCOMPARE(desk.reports, (QVector<Report>{{0, 0, 0}, {0, 1, 0}}));
}

void TstBringUpWithoutImages::anInstrumentThatNeedsAnFpgaImageIsToldThatThereIsNone()
{
    BringUpDesk desk;
    desk.bus->add(runningInstrument(8));
    desk.bus->plug();
    QTRY_VERIFY(desk.hasEnded());
    QCOMPARE(desk.reports, (QVector<Report>{{2, 0, 0}, {4, 1, 0}}));
}

void TstBringUpWithoutImages::theModelWithoutAnFpgaImageComesUp()
{
    BringUpDesk desk;
    desk.bus->add(runningInstrument(1));
    desk.bus->plug();
    QTRY_VERIFY(desk.hasEnded());
    QVERIFY(gDev->connected);
}

QTEST_GUILESS_MAIN(TstBringUpWithoutImages)
#include "tst_BringUpWithoutImages.moc"
