// What a capture of another program needs to be one of this.

#include "device/DevModels.h"
#include "session/ForeignOpening.h"
#include "settings/Config.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"
#include "support/CaptureBuilder.h"
#include "support/FakeDevControl.h"

#include <QtTest>

#include <memory>

class TstForeignOpening : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        memBudget = std::int64_t(1) << 30;
        configLoad();
    }
    void aCaptureUnderWayKeepsItsReceiver_data();
    void aCaptureUnderWayKeepsItsReceiver();
};

void TstForeignOpening::aCaptureUnderWayKeepsItsReceiver_data()
{
    QTest::addColumn<int>("channels");
    for (const int channels : {8, 16, 32}) {
        QTest::addRow("%d channels", channels) << channels;
    }
}

/// The file is another one than what the instrument captures, and is opened meanwhile.
void TstForeignOpening::aCaptureUnderWayKeepsItsReceiver()
{
    QFETCH(int, channels);
    constexpr int withMemory = 2;
    FakeBulk bulk;
    FakeDevControl control;
    control.bulk = &bulk;
    const std::unique_ptr<DevBase> device = createDevice(withMemory);
    InterfaceDevCallback *const receiver = bulk.receiver();
    QVERIFY(receiver != nullptr);
    ForeignCapture capture;
    capture.capture = std::make_unique<SmpData>(channels, 0);
    CaptureBuilder{}.fill(*capture.capture);
    const ConfigDocument settings = foreignSettings(capture);
    QCOMPARE(digitalChannelsOf(settings), channels);
    QCOMPARE(bulk.receiver(), receiver);
}

QTEST_GUILESS_MAIN(TstForeignOpening)
#include "tst_ForeignOpening.moc"
