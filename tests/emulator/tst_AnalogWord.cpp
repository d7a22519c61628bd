#include "AnalogWord.h"

#include <QtTest>

using emulator::AnalogWord;
using Kind = emulator::AnalogWave::Kind;

class TstAnalogWord : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aWordIsKnownByItsChannel();
    void aKindAloneTakesTheUsualValues();
    void eachKeyIsTaken();
    void aFileIsItsNameWithCommas();
    void aBadWordIsToldWhatIsWrong_data();
    void aBadWordIsToldWhatIsWrong();
};

void TstAnalogWord::aWordIsKnownByItsChannel()
{
    QVERIFY(AnalogWord::isOne("ch1=sine"));
    QVERIFY(AnalogWord::isOne("ch20="));
    for (const char *file : {"", "ch", "ch1", "ch=1", "ch1x=sine", "Ch1=sine", "./ch1=sine", "capture.cxdat", "=ch1"}) {
        QVERIFY2(!AnalogWord::isOne(file), file);
    }
}

void TstAnalogWord::aKindAloneTakesTheUsualValues()
{
    const std::array<std::pair<const char *, Kind>, 5> kinds{{{"ch2=flat", Kind::Flat},
                                                              {"ch2=sine", Kind::Sine},
                                                              {"ch2=square", Kind::Square},
                                                              {"ch2=ramp", Kind::Ramp},
                                                              {"ch2=noise", Kind::Noise}}};
    for (const auto &[text, kind] : kinds) {
        const AnalogWord word = AnalogWord::parse(text);
        QCOMPARE(QString::fromStdString(word.problem), QString());
        QCOMPARE(word.channel, 1);
        QCOMPARE(word.settings.kind, kind);
        QCOMPARE(word.settings.frequency, 100e3);
        QCOMPARE(word.settings.peakToPeak, 3.0);
        QCOMPARE(word.settings.offset, 0.0);
        QCOMPARE(word.settings.noise, 0.0);
        QVERIFY(word.file.empty());
    }
}

void TstAnalogWord::eachKeyIsTaken()
{
    const AnalogWord word = AnalogWord::parse("ch1=ramp,noise=0.05,vpp=2.5,offset=-1e-1,frequency=1234.5");
    QCOMPARE(QString::fromStdString(word.problem), QString());
    QCOMPARE(word.channel, 0);
    QCOMPARE(word.settings.kind, Kind::Ramp);
    QCOMPARE(word.settings.frequency, 1234.5);
    QCOMPARE(word.settings.peakToPeak, 2.5);
    QCOMPARE(word.settings.offset, -0.1);
    QCOMPARE(word.settings.noise, 0.05);
}

void TstAnalogWord::aFileIsItsNameWithCommas()
{
    const AnalogWord word = AnalogWord::parse("ch1=wav,vpp=4,file=a=b,vpp=3.wav");
    QCOMPARE(QString::fromStdString(word.problem), QString());
    QCOMPARE(word.file, std::string("a=b,vpp=3.wav"));
    QCOMPARE(word.settings.peakToPeak, 4.0);
    QCOMPARE(AnalogWord::parse("ch1=wav,file=a").settings.peakToPeak, 10.0);
}

void TstAnalogWord::aBadWordIsToldWhatIsWrong_data()
{
    QTest::addColumn<QString>("problem");
    const auto add = [](const char *word, const char *problem) {
        QTest::addRow("%s", word) << QString::fromLatin1(problem);
    };
    add("ch0=sine", "no channel: ch0");
    add("ch99999999999=sine", "no channel: ch99999999999");
    add("ch1=", "no kind: ");
    add("ch1=sinus", "no kind: sinus");
    add("ch1=sine,", "sine has no ");
    add("ch1=sine,volume=3", "sine has no volume");
    add("ch1=sine,vpp", "no number: ");
    add("ch1=sine,vpp,offset=1", "sine has no vpp");
    add("ch1=sine,vpp=", "no number: ");
    add("ch1=sine,vpp=3V", "no number: 3V");
    add("ch1=sine,vpp=-1", "out of range: -1");
    add("ch1=sine,vpp=nan", "out of range: nan");
    add("ch1=sine,vpp=inf", "out of range: inf");
    add("ch1=sine,offset=1001", "out of range: 1001");
    add("ch1=sine,noise=-0.1", "out of range: -0.1");
    add("ch1=sine,frequency=0", "out of range: 0");
    add("ch1=sine,frequency=2e9", "out of range: 2e9");
    add("ch1=sine,vpp=1,vpp=2", "twice: vpp");
    add("ch1=sine,file=a.wav", "sine has no file");
    add("ch1=noise,frequency=5", "noise has no frequency");
    add("ch1=noise,noise=5", "noise has no noise");
    add("ch1=flat,vpp=5", "flat has no vpp");
    add("ch1=wav", "wav needs a file");
    add("ch1=wav,file=", "file needs a name");
    add("ch1=wav,frequency=1,file=a", "wav has no frequency");
}

void TstAnalogWord::aBadWordIsToldWhatIsWrong()
{
    const QString word = QString::fromLatin1(QTest::currentDataTag());
    QFETCH(QString, problem);
    QCOMPARE(QString::fromStdString(AnalogWord::parse(word.toStdString()).problem),
             QStringLiteral("signal \"%1\": %2").arg(word, problem));
}

QTEST_APPLESS_MAIN(TstAnalogWord)
#include "tst_AnalogWord.moc"
