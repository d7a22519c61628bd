// The faults of an instrument as words, which the command line and the orders of corvanlux-emulator take.

#include "FaultScript.h"
#include "WaveSignal.h"
#include "emulator/Bench.h"

#include <QtTest>

using namespace bench;
using emulator::addFault;
using emulator::addFaults;
using emulator::WaveSignal;

namespace {

/// A running device whose signal changes all the time.
struct Rig {
    explicit Rig(int model = 8)
        : device(steadyOptions(model), std::make_shared<WaveSignal>(1, WaveSignal::counter(32, 3)))
    {
        if (!bringUp(device)) {
            qFatal("not brought up");
        }
        device.faults().clear(); // counts from 0
    }
    /// Captures 3000 samples. @return false if a transfer fails
    bool capture()
    {
        bool good = configure(device, {.depth = 3000}) && run(device);
        for (int i = 0; i < 5; ++i) {
            good = good && status(device) != 0;
        }
        return good && !device.running();
    }

    Instrument device;
};

QString added(Instrument &device, const char *word)
{
    return QString::fromStdString(addFault(device, word));
}

} // namespace

class TstFaultScript : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aTransferIsStruckByItsNumber_data();
    void aTransferIsStruckByItsNumber();
    void aRequestIsStruckByItsNameAndNumber();
    void aPlusStrikesFromThenOn();
    void everyRequestHasAName();
    void aShortenedRequestMovesTheGivenBytes();
    void aDelayIsGivenInMilliseconds();
    void thePlugIsPulledAtAByteOfTheReads();
    void theReadsEndAtAByte();
    void aWriteIsStruckAtItsByte();
    void theStatusWordIsReplaced();
    void aByteOfTheReadsIsReplaced();
    void aRecordOfNoSamplesIsSent();
    void theCheckBytesOfAGroupDisagree();
    void theCaptureTellsGivenNumbers();
    void aDeviceStaysAwayAfterItsFirmware();
    void aScriptHasManyWordsAndRemarks();
    void theFirstBadLineOfAScriptIsTold();
    void aBadWordIsToldAndAddsNothing_data();
    void aBadWordIsToldAndAddsNothing();
};

void TstFaultScript::aTransferIsStruckByItsNumber_data()
{
    QTest::addColumn<QByteArray>("word");
    QTest::addColumn<int>("outcome");
    QTest::addRow("stall") << QByteArray("stall@transfer:1") << int(Outcome::Stalled);
    QTest::addRow("fail") << QByteArray("fail@transfer:0x1") << int(Outcome::Failed);
    QTest::addRow("silence") << QByteArray("silence@transfer:1") << int(Outcome::NotYet);
    QTest::addRow("unplug") << QByteArray("unplug@transfer:1") << int(Outcome::Gone);
}

void TstFaultScript::aTransferIsStruckByItsNumber()
{
    QFETCH(QByteArray, word);
    QFETCH(int, outcome);
    Rig rig;
    QCOMPARE(added(rig.device, word.constData()), QString());
    QCOMPARE(int(send(rig.device, 0x38, 0).outcome), int(Outcome::Done));
    QCOMPARE(int(send(rig.device, 0x38, 0).outcome), outcome);
    QCOMPARE(rig.device.attached(), outcome != int(Outcome::Gone));
    if (rig.device.attached()) {
        QCOMPARE(int(send(rig.device, 0x38, 0).outcome), int(Outcome::Done));
    }
}

void TstFaultScript::aRequestIsStruckByItsNameAndNumber()
{
    Rig rig;
    QCOMPARE(added(rig.device, "stall@bulk-stop:1"), QString());
    QVERIFY(sent(rig.device, 0x38, 0));
    QVERIFY(sent(rig.device, 0x30, 0));
    QVERIFY(!sent(rig.device, 0x38, 0));
    QVERIFY(sent(rig.device, 0x38, 0));
    QCOMPARE(added(rig.device, "fail@status"), QString()); // the first one
    QCOMPARE(int(status(rig.device)), 0);
    QVERIFY(status(rig.device) != 0);
}

void TstFaultScript::aPlusStrikesFromThenOn()
{
    Rig rig;
    QCOMPARE(added(rig.device, "stall@bulk-stop:1+"), QString());
    QVERIFY(sent(rig.device, 0x38, 0));
    for (int i = 0; i < 3; ++i) {
        QVERIFY(!sent(rig.device, 0x38, 0));
    }
}

void TstFaultScript::everyRequestHasAName()
{
    const char *const names[] = {"ram-read", "fpga-start", "fpga-done",  "fpga-enable", "fpga-off",
                                 "status",   "run",        "pwm-enable", "window",      "info",
                                 "samples",  "trigger",    "threshold1", "threshold2",  "pwm0",
                                 "pwm1",     "bulk-start", "bulk-stop",  "uid-ask",     "uid-read"};
    Rig rig;
    for (const char *name : names) {
        QCOMPARE(added(rig.device, qPrintable(QStringLiteral("silence@%1").arg(QLatin1String(name)))), QString());
    }
    QVERIFY(!sent(rig.device, 0x20, 0x48, little(100, 2)));
    QVERIFY(!sent(rig.device, 0x50, 0, little(100, 4)));
    QVERIFY(ask(rig.device, 0x60, 0, 8).empty());
}

void TstFaultScript::aShortenedRequestMovesTheGivenBytes()
{
    Rig rig;
    QCOMPARE(added(rig.device, "shorten=3@transfer:0"), QString());
    QCOMPARE(ask(rig.device, 0xA2, 0x08, 8).size(), std::size_t(3));
    QCOMPARE(ask(rig.device, 0xA2, 0x08, 8).size(), std::size_t(8));
}

void TstFaultScript::aDelayIsGivenInMilliseconds()
{
    Rig rig;
    QCOMPARE(added(rig.device, "delay=250@transfer:0"), QString());
    QCOMPARE(send(rig.device, 0x38, 0).delay, 250 * millisecond);
}

void TstFaultScript::thePlugIsPulledAtAByteOfTheReads()
{
    Rig rig;
    QVERIFY(rig.capture());
    QCOMPARE(added(rig.device, "unplug@read:700"), QString());
    QCOMPARE(readWindow(rig.device, 0, 1024).size(), std::size_t(700));
    QVERIFY(!rig.device.attached());
}

void TstFaultScript::theReadsEndAtAByte()
{
    Rig rig(5);
    QVERIFY(configure(rig.device, {}) && run(rig.device));
    QCOMPARE(added(rig.device, "end@read:5000"), QString());
    QVERIFY(sent(rig.device, 0x30, 0));
    QCOMPARE(readBulk(rig.device, 1 << 20).size(), std::size_t(5000));
}

void TstFaultScript::aWriteIsStruckAtItsByte()
{
    Rig rig;
    QCOMPARE(added(rig.device, "shorten=1000@write:4096"), QString());
    QVERIFY(sent(rig.device, 0x50, 0, little(5000, 4)));
    const Bytes block(4096);
    QCOMPARE(rig.device.bulkOut(0x02, block).bytes, std::size_t(4096));
    QCOMPARE(rig.device.bulkOut(0x02, block).bytes, std::size_t(1000));
}

void TstFaultScript::theStatusWordIsReplaced()
{
    Rig rig;
    QCOMPARE(added(rig.device, "status=0xBEEF"), QString());
    QCOMPARE(int(status(rig.device)), 0xBEEF);
    QCOMPARE(int(status(rig.device)), 0xBEEF);
}

void TstFaultScript::aByteOfTheReadsIsReplaced()
{
    Rig rig;
    QVERIFY(rig.capture());
    const Bytes sound = readWindow(rig.device, 0, 1024);
    QCOMPARE(added(rig.device, qPrintable(QStringLiteral("byte=600:%1").arg(sound[600] ^ 0xFF))), QString());
    const Bytes patched = readWindow(rig.device, 0, 1024);
    for (std::size_t i = 0; i < sound.size(); ++i) {
        QCOMPARE(int(patched[i]), int(i == 600 ? sound[i] ^ 0xFF : sound[i]));
    }
}

void TstFaultScript::aRecordOfNoSamplesIsSent()
{
    Rig rig;
    QVERIFY(rig.capture());
    QCOMPARE(added(rig.device, "zero-count=7"), QString());
    const Bytes records = readWindow(rig.device, 0, 1024);
    QCOMPARE(int(records[16 + 2 * 3 + 2]), 0); // the third record of the second group of five
    QVERIFY(records[16 + 1 * 3 + 2] != 0);
}

void TstFaultScript::theCheckBytesOfAGroupDisagree()
{
    Rig rig(9);
    QVERIFY(rig.capture());
    QCOMPARE(added(rig.device, "wrong-check=1"), QString());
    const Bytes records = readWindow(rig.device, 0, 1024);
    const auto check = [&records](std::size_t group) { return records[group * 32 + 30] ^ records[group * 32 + 31]; };
    QCOMPARE(check(0), 0xFF);
    QVERIFY(check(1) != 0xFF);
    QCOMPARE(check(2), 0xFF);
}

void TstFaultScript::theCaptureTellsGivenNumbers()
{
    Rig rig;
    QVERIFY(rig.capture());
    QCOMPARE(added(rig.device, "info=1000:70000:0xFFFFFFF0"), QString());
    QCOMPARE(ask(rig.device, 0x20, 0x10, 12), little(1000, 4) + little(70000, 4) + little(0xFFFFFFF0, 4));
}

void TstFaultScript::aDeviceStaysAwayAfterItsFirmware()
{
    Instrument device{InstrumentOptions{}};
    QCOMPARE(added(device, "never-return"), QString());
    device.attach();
    QVERIFY(sendHexFirmware(device) || sendImageFirmware(device));
    device.tick(60'000 * millisecond);
    QVERIFY(!device.attached());
}

void TstFaultScript::aScriptHasManyWordsAndRemarks()
{
    Rig rig;
    const char *const script = "# what goes wrong\n"
                               "\n"
                               "  stall@transfer:0\tfail@transfer:1   # two on a line\r\n"
                               "status=1";
    QCOMPARE(QString::fromStdString(addFaults(rig.device, script)), QString());
    QCOMPARE(int(send(rig.device, 0x38, 0).outcome), int(Outcome::Stalled));
    QCOMPARE(int(send(rig.device, 0x38, 0).outcome), int(Outcome::Failed));
    QCOMPARE(int(send(rig.device, 0x38, 0).outcome), int(Outcome::Done));
    QCOMPARE(int(status(rig.device)), 1);
}

void TstFaultScript::theFirstBadLineOfAScriptIsTold()
{
    Rig rig;
    QCOMPARE(QString::fromStdString(addFaults(rig.device, "stall@transfer:0\n\nnonsense\nmore\n")),
             QStringLiteral("line 3: fault \"nonsense\": not understood"));
}

void TstFaultScript::aBadWordIsToldAndAddsNothing_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<QByteArray>("word");
    for (const char *word : {"",
                             "@",
                             "stall",
                             "stall@",
                             "@transfer:0",
                             "stall@transfer",
                             "stall@transfer:",
                             "stall@transfer:x",
                             "stall@transfer:-1",
                             "stall@transfer:1:2",
                             "stall@transfer:99999999999999999999",
                             "stall@transfer:0+",
                             "stall@nowhere:1",
                             "stop@transfer:0",
                             "stall=3@transfer:0",
                             "shorten@transfer:0",
                             "shorten=@transfer:0",
                             "shorten=1:2@transfer:0",
                             "shorten=1@read:0",
                             "delay=3600001@transfer:0",
                             "delay=1@read:0+",
                             "end@transfer:0",
                             "end@status",
                             "status",
                             "status=",
                             "status=65536",
                             "never-return=1",
                             "zero-count",
                             "wrong-check=0",
                             "byte=5",
                             "byte=5:256",
                             "info=1:2",
                             "info=1:2:4294967296"}) {
        QTest::addRow("%s", *word == 0 ? "nothing" : word) << 8 << QByteArray(word);
    }
    QTest::addRow("records of a stream") << 5 << QByteArray("zero-count=0");
    QTest::addRow("check bytes of a stream") << 1 << QByteArray("wrong-check=0");
    QTest::addRow("counts of samples") << 97 << QByteArray("zero-count=0");
}

void TstFaultScript::aBadWordIsToldAndAddsNothing()
{
    QFETCH(int, model);
    QFETCH(QByteArray, word);
    Instrument device(steadyOptions(model));
    const QString problem = added(device, word.constData());
    QVERIFY2(problem.startsWith(QStringLiteral("fault \"%1\": ").arg(QString::fromLatin1(word))), qPrintable(problem));
    device.attach();
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(int(send(device, 0x38, 0).outcome), int(Outcome::Done));
        QVERIFY(status(device) != 1);
    }
}

QTEST_APPLESS_MAIN(TstFaultScript)
#include "tst_FaultScript.moc"
