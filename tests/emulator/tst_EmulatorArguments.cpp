// The command line of corvanlux-emulator.

#include "usbip/Arguments.h"

#include <QtTest>

#include <sstream>

using emulator::Speed;
using emulator::usbip::Arguments;
using emulator::usbip::parseArguments;

namespace {

/// The arguments of a line whose words are parted by blanks.
Arguments parsed(const std::string &line)
{
    std::istringstream in(line);
    return parseArguments({std::istream_iterator<std::string>(in), {}});
}

} // namespace

class TstEmulatorArguments : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aPortAndAModelAreEnough();
    void everyOptionIsTaken();
    void analogSignalsAreTakenBesideACapture();
    void aValueMayStandBehindAnEqualSign();
    void helpNeedsNothingElse();
    void everyOptionIsInTheHelp();
    void aBadLineIsToldWhatIsWrong_data();
    void aBadLineIsToldWhatIsWrong();
};

void TstEmulatorArguments::aPortAndAModelAreEnough()
{
    const Arguments got = parsed("--listen 3240 --model 8");
    QCOMPARE(QString::fromStdString(got.problem), QString());
    QCOMPARE(got.port, 3240);
    QCOMPARE(got.options.model, 8);
    QVERIFY(!got.vhci && !got.help && !got.options.direct && !got.options.firmwareInside);
    QVERIFY(got.options.speed == Speed::High);
    QCOMPARE(got.options.pace, 1.0);
    QVERIFY(got.signal.empty() && got.faults.empty() && got.script.empty());
}

void TstEmulatorArguments::everyOptionIsTaken()
{
    const Arguments got = parsed("--vhci --model 97 --signal a.cxdat --direct --pace 0.25 --firmware --full-speed "
                                 "--fault stall@status --fault status=1 --script b.txt");
    QCOMPARE(QString::fromStdString(got.problem), QString());
    QVERIFY(got.vhci && got.options.direct && got.options.firmwareInside);
    QCOMPARE(got.port, -1);
    QCOMPARE(got.options.model, 97);
    QVERIFY(got.options.speed == Speed::Full);
    QCOMPARE(got.options.pace, 0.25);
    QCOMPARE(got.signal, std::string("a.cxdat"));
    QCOMPARE(got.script, std::string("b.txt"));
    QCOMPARE(got.faults, (std::vector<std::string>{"stall@status", "status=1"}));
}

void TstEmulatorArguments::analogSignalsAreTakenBesideACapture()
{
    const Arguments got =
        parsed("--listen 0 --signal ch2=sine,vpp=2 --signal a.cxdat --signal=ch1=wav,file=b.wav --model 97");
    QCOMPARE(QString::fromStdString(got.problem), QString());
    QCOMPARE(got.signal, std::string("a.cxdat"));
    QCOMPARE(got.analog.size(), std::size_t(2));
    QCOMPARE(got.analog[0].channel, 1);
    QCOMPARE(got.analog[0].settings.peakToPeak, 2.0);
    QCOMPARE(got.analog[1].channel, 0);
    QCOMPARE(got.analog[1].file, std::string("b.wav"));
}

void TstEmulatorArguments::aValueMayStandBehindAnEqualSign()
{
    const Arguments got = parsed("--listen=0 --model=5 --fault=status=0xFFFF");
    QCOMPARE(QString::fromStdString(got.problem), QString());
    QCOMPARE(got.port, 0);
    QCOMPARE(got.options.model, 5);
    QCOMPARE(got.faults, std::vector<std::string>{"status=0xFFFF"});
}

void TstEmulatorArguments::helpNeedsNothingElse()
{
    const Arguments got = parsed("--help");
    QVERIFY(got.help);
    QVERIFY(got.problem.empty());
}

void TstEmulatorArguments::everyOptionIsInTheHelp()
{
    const QString help = QString::fromLatin1(emulator::usbip::usageText());
    for (const char *option : {"--listen PORT", "--vhci", "--model CODE", "--signal FILE", "--direct", "--pace FACTOR",
                               "--firmware", "--full-speed", "--fault WORD", "--script FILE", "--help"}) {
        QVERIFY2(help.contains(QLatin1String("\n  ") + QLatin1String(option)), option);
    }
}

void TstEmulatorArguments::aBadLineIsToldWhatIsWrong_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("problem");
    const QString needed = QStringLiteral("a model, and either --listen or --vhci, are needed");
    const auto add = [](const char *line, const QString &problem) {
        QTest::addRow("%s", line) << QString::fromLatin1(line) << problem;
    };
    add("", needed);
    add("--model 8", needed);
    add("--listen 3240", needed);
    add("--vhci --listen 3240 --model 8", needed);
    add("--listen 65536 --model 8", QStringLiteral("no port: 65536"));
    add("--listen -1 --model 8", QStringLiteral("no port: -1"));
    add("--listen 3240x --model 8", QStringLiteral("no port: 3240x"));
    add("--listen= --model 8", QStringLiteral("no port: "));
    add("--vhci --model 10", QStringLiteral("no model: 10"));
    add("--vhci --model 0", QStringLiteral("no model: 0"));
    add("--vhci --model eight", QStringLiteral("no model: eight"));
    add("--vhci --model", QStringLiteral("--model needs a value"));
    add("--vhci --model 8 --pace -1", QStringLiteral("no factor: -1"));
    add("--vhci --model 8 --pace nan", QStringLiteral("no factor: nan"));
    add("--vhci --model 8 --pace inf", QStringLiteral("no factor: inf"));
    add("--vhci --model 8 --pace 1,5", QStringLiteral("no factor: 1,5"));
    add("--vhci --model 8 --signal=", QStringLiteral("--signal needs a file"));
    add("--vhci --model 97 --signal ch1=cosine", QStringLiteral("signal \"ch1=cosine\": no kind: cosine"));
    add("--vhci --model 97 --signal ch3=sine", QStringLiteral("the model has no analog channel 3"));
    add("--vhci --model 8 --signal ch1=sine", QStringLiteral("the model has no analog channel 1"));
    add("--vhci --model 8 --script=", QStringLiteral("--script needs a file"));
    add("--vhci=yes --model 8", QStringLiteral("unknown: --vhci=yes"));
    add("--vhci --model 8 more", QStringLiteral("unknown: more"));
    add("--help more", QStringLiteral("unknown: more"));
}

void TstEmulatorArguments::aBadLineIsToldWhatIsWrong()
{
    QFETCH(QString, line);
    QFETCH(QString, problem);
    QCOMPARE(QString::fromStdString(parsed(line.toStdString()).problem), problem);
}

QTEST_APPLESS_MAIN(TstEmulatorArguments)
#include "tst_EmulatorArguments.moc"
