// "luxcli measure" and "luxcli diff", as they were built.

#include "cli/LuxcliRun.h"
#include "settings/Config.h"
#include "store/MemBudget.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

using luxcliRun::luxcli;
using luxcliRun::Outcome;

class TstLuxcliMeasure : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void aChannelIsMeasuredAsText();
    void aChannelIsMeasuredAsJson();
    void aRangeOfTimeIsMeasured();
    void aRangeWithoutSamplesIsTold_data();
    void aRangeWithoutSamplesIsTold();
    void severalChannelsAreMeasured();
    void optionsAreWrittenAsElsewhere_data();
    void optionsAreWrittenAsElsewhere();
    void whatIsExpectedMakesTheExitCode_data();
    void whatIsExpectedMakesTheExitCode();
    void wrongUsageOfMeasureIsTold_data();
    void wrongUsageOfMeasureIsTold();
    void aMissingChannelLeavesNoOutput();
    void equalCapturesAreTheSame();
    void differencesAreToldPerChannel();
    void aToleranceMayBeATime();
    void triggersAreLaidOnEachOther();
    void capturesOfDifferentRatesAreTrouble();
    void troubleOfDiffIsTold_data();
    void troubleOfDiffIsTold();
    void helpIsGood();

private:
    FileFolder m_folder;
    QString m_clock; ///< 100 kHz with 30 % high on channel 3, at 1 MHz; channel 5 quiet
    QString m_late;  ///< the same a sample later, with a pulse more; without channel 5
    QString m_shifted;
};

namespace {

std::vector<std::int64_t> clockEdges(std::int64_t start)
{
    std::vector<std::int64_t> edges;
    for (int i = 0; i < 50; ++i) {
        edges.push_back(start + 10 * i);
        edges.push_back(start + 10 * i + 3);
    }
    return edges;
}

} // namespace

void TstLuxcliMeasure::initTestCase()
{
    memBudget = std::int64_t(4) << 30;
    configLoad();
    m_clock =
        luxcliRun::save(m_folder, QStringLiteral("clock.cxdat"),
                        CaptureBuilder(16).samples(1000).trigger(100).channel(3, 0, clockEdges(100)).channel(5, 1));
    auto late = clockEdges(101);
    late.push_back(800);
    late.push_back(820);
    m_late =
        luxcliRun::save(m_folder, QStringLiteral("late.cxdat"), CaptureBuilder(16).samples(1000).channel(3, 0, late));
    m_shifted =
        luxcliRun::save(m_folder, QStringLiteral("shifted.cxdat"),
                        CaptureBuilder(16).samples(900).trigger(60).channel(3, 0, clockEdges(60)).channel(5, 1));
    QVERIFY(!m_clock.isEmpty() && !m_late.isEmpty() && !m_shifted.isEmpty());
}

void TstLuxcliMeasure::aChannelIsMeasuredAsText()
{
    const Outcome outcome = luxcli("measure %1 --channel 3", m_clock);
    QCOMPARE(outcome.err, QByteArray());
    QCOMPARE(outcome.code, 0);
    QCOMPARE(outcome.out, QByteArray("channel 3: Clock\n"
                                     "from 0.000000 s to 0.001000 s\n"
                                     "edges       100 (50 rising, 50 falling)\n"
                                     "pulses      50 high, 49 low\n"
                                     "            minimum        mean           maximum        deviation\n"
                                     "frequency   100 kHz        100 kHz        100 kHz        0 Hz\n"
                                     "period      10 us          10 us          10 us          0 s\n"
                                     "duty        30 %           30 %           30 %           0 %\n"
                                     "high        3 us           3 us           3 us           0 s\n"
                                     "low         7 us           7 us           7 us           0 s\n"));
    QVERIFY(luxcli("measure %1 -c 5", m_clock).out.contains("frequency   none\n"));
}

void TstLuxcliMeasure::aChannelIsMeasuredAsJson()
{
    const Outcome outcome = luxcli("measure %1 --channel 3 --json --expect frequency=100kHz -e edges=7", m_clock);
    QCOMPARE(outcome.code, 3);
    QCOMPARE(outcome.err, QByteArray("luxcli: channel 3: expected edges=7, but it is 100\n"));
    const QJsonObject json = QJsonDocument::fromJson(outcome.out).object();
    QCOMPARE(json[QStringLiteral("channel")].toInt(), 3);
    QCOMPARE(json[QStringLiteral("name")].toString(), QStringLiteral("Clock"));
    QCOMPARE(json[QStringLiteral("rate")].toInt(), 1000000);
    QCOMPARE(json[QStringLiteral("to")].toInt(), 1000);
    QCOMPARE(json[QStringLiteral("edges")].toInt(), 100);
    const QJsonObject frequency = json[QStringLiteral("frequency")].toObject();
    QCOMPARE(frequency[QStringLiteral("count")].toInt(), 49);
    QCOMPARE(frequency[QStringLiteral("mean")].toDouble(), 100000.0);
    QCOMPARE(json[QStringLiteral("low")].toObject()[QStringLiteral("max")].toDouble(), 7e-6);
    const QJsonArray expect = json[QStringLiteral("expect")].toArray();
    QCOMPARE(expect.size(), 2);
    QCOMPARE(expect.at(0).toObject()[QStringLiteral("holds")].toBool(), true);
    QCOMPARE(expect.at(1).toObject()[QStringLiteral("holds")].toBool(true), false);
    QCOMPARE(expect.at(1).toObject()[QStringLiteral("value")].toInt(), 100);
    const QJsonObject quiet = QJsonDocument::fromJson(luxcli("measure %1 -c 5 --json", m_clock).out).object();
    QVERIFY(quiet[QStringLiteral("frequency")].isNull() && quiet.contains(QStringLiteral("frequency")));
}

void TstLuxcliMeasure::aRangeOfTimeIsMeasured()
{
    const Outcome outcome = luxcli("measure %1 --channel 3 --from 200us --to 0.3ms --json", m_clock);
    const QJsonObject json = QJsonDocument::fromJson(outcome.out).object();
    QCOMPARE(json[QStringLiteral("edges")].toInt(), 20);
    QCOMPARE(json[QStringLiteral("from")].toInt(), 200);
    const Outcome beyond = luxcli("measure %1 --channel 3 --from 0.9ms --to 9s --json", m_clock);
    QCOMPARE(beyond.code, 0);
    QCOMPARE(QJsonDocument::fromJson(beyond.out).object()[QStringLiteral("to")].toInt(-1), 1000);
}

void TstLuxcliMeasure::aRangeWithoutSamplesIsTold_data()
{
    QTest::addColumn<QString>("times");
    for (const char *times : {"--from 5s --to 9s", "--from 300us --to 200us", "--from 200us --to 200us", "--to 0"})
        QTest::newRow(times) << QString::fromLatin1(times);
}

/// What is expected would hold of nothing.
void TstLuxcliMeasure::aRangeWithoutSamplesIsTold()
{
    QFETCH(QString, times);
    const QString arguments = QStringLiteral("measure %1 --channel 3 --expect edges=0 ") + times;
    const Outcome outcome = luxcli(arguments.toLatin1().constData(), m_clock);
    QCOMPARE(outcome.code, 1);
    QVERIFY2(outcome.err.contains("nothing between these times"), outcome.err);
    QCOMPARE(outcome.out, QByteArray());
}

void TstLuxcliMeasure::severalChannelsAreMeasured()
{
    const Outcome outcome =
        luxcli("measure %1 -c 3,5 --json -o %2", m_clock, m_folder.path(QStringLiteral("out.json")));
    QCOMPARE(outcome.code, 0);
    QCOMPARE(outcome.out, QByteArray());
    QCOMPARE(m_folder.read(QStringLiteral("out.json")).count('\n'), 2);
}

void TstLuxcliMeasure::optionsAreWrittenAsElsewhere_data()
{
    QTest::addColumn<QByteArray>("error");
    QTest::newRow("%1 --channel 3 --json") << QByteArray();
    QTest::newRow("--json --channel=3 %1") << QByteArray();
    QTest::newRow("-c3 %1 --json") << QByteArray();
    QTest::newRow("--json -c 3 -- %1") << QByteArray();
    QTest::newRow("%1 -c") << QByteArray("missing value after '-c'");
    QTest::newRow("%1 --channel= --json") << QByteArray("--channel needs a value");
    QTest::newRow("%1 -c3 --json=1") << QByteArray("unexpected value after '--json'");
    QTest::newRow("%1 -c3 --loud") << QByteArray("unknown option 'loud'");
}

void TstLuxcliMeasure::optionsAreWrittenAsElsewhere()
{
    QFETCH(QByteArray, error);
    const Outcome outcome = luxcli(("measure " + QByteArray(QTest::currentDataTag())).constData(), m_clock);
    if (error.isEmpty()) {
        QCOMPARE(outcome.err, QByteArray());
        QCOMPARE(outcome.out, luxcli("measure %1 --channel 3 --json", m_clock).out);
        QVERIFY(!outcome.out.isEmpty());
        return;
    }
    QCOMPARE(outcome.err, "luxcli: " + error + "; \"luxcli measure --help\" tells more\n");
    QCOMPARE(outcome.code, 2);
}

void TstLuxcliMeasure::whatIsExpectedMakesTheExitCode_data()
{
    QTest::addColumn<int>("code");
    QTest::newRow("frequency=100kHz+-1%") << 0;
    QTest::newRow("frequency=101kHz+-0.5%") << 3;
    QTest::newRow("duty=30%") << 0;
    QTest::newRow("high.max<3us") << 3;
    QTest::newRow("frequency=fast") << 2;
    QTest::newRow("speed>3") << 2;
}

void TstLuxcliMeasure::whatIsExpectedMakesTheExitCode()
{
    QFETCH(int, code);
    const Outcome outcome =
        luxcli("measure %1 --channel 3 --expect %2", m_clock, QString::fromLatin1(QTest::currentDataTag()));
    QCOMPARE(outcome.code, code);
    QCOMPARE(outcome.err.isEmpty(), code == 0);
    QCOMPARE(luxcli("measure %1 --channel 5 --expect frequency>0", m_clock).code, 3);
}

void TstLuxcliMeasure::wrongUsageOfMeasureIsTold_data()
{
    QTest::addColumn<QString>("arguments");
    for (const char *arguments :
         {"measure", "measure %1", "measure --channel 3", "measure %1 %1 --channel 3", "measure %1 --channel x",
          "measure %1 --channel 3 --from noon", "measure %1 --channel 3 --json=1", "measure %1 --channel 3 --loud"})
        QTest::newRow(arguments) << QString::fromLatin1(arguments);
}

void TstLuxcliMeasure::wrongUsageOfMeasureIsTold()
{
    QFETCH(QString, arguments);
    const Outcome outcome = luxcli(arguments.toLatin1().constData(), m_clock);
    QCOMPARE(outcome.code, 2);
    QVERIFY2(outcome.err.startsWith("luxcli: "), outcome.err);
    QCOMPARE(outcome.out, QByteArray());
}

void TstLuxcliMeasure::aMissingChannelLeavesNoOutput()
{
    const QString path = m_folder.path(QStringLiteral("none.txt"));
    const Outcome outcome = luxcli("measure %1 --channel 3,9 -o %2", m_clock, path);
    QCOMPARE(outcome.code, 1);
    QVERIFY2(outcome.err.contains("no channel 9"), outcome.err);
    QVERIFY(!QFileInfo::exists(path));
    QCOMPARE(luxcli("measure %1 --channel 3", m_folder.path(QStringLiteral("no.cxdat"))).code, 1);
}

void TstLuxcliMeasure::equalCapturesAreTheSame()
{
    const Outcome outcome = luxcli("diff %1 %1", m_clock);
    QCOMPARE(outcome.code, 0);
    QCOMPARE(outcome.out, QByteArray());
    QCOMPARE(outcome.err, QByteArray());
}

void TstLuxcliMeasure::differencesAreToldPerChannel()
{
    const Outcome outcome = luxcli("diff %1 %2", m_clock, m_late);
    QCOMPARE(outcome.code, 1);
    QCOMPARE(outcome.out, QByteArray("channel 3: first difference at sample 100 (0.000100 s), an edge of the first; "
                                     "202 edges differ of 100 and 102\n"
                                     "channel 5: only in the first\n"));
    QCOMPARE(luxcli("diff %1 %2 --channels 5", m_late, m_clock).out, QByteArray("channel 5: only in the second\n"));
}

void TstLuxcliMeasure::aToleranceMayBeATime()
{
    for (const char *arguments : {"diff %1 %2 --tolerance 1 -c 3", "diff %1 %2 --tolerance=1us --channels 3"}) {
        const Outcome outcome = luxcli(arguments, m_clock, m_late);
        QCOMPARE(outcome.code, 1);
        QVERIFY2(outcome.out.contains("at sample 800 (0.000800 s), an edge of the second; 2 edges differ"),
                 outcome.out);
    }
    const QString longer = luxcliRun::save(m_folder, QStringLiteral("longer.cxdat"),
                                           CaptureBuilder(16).samples(1001).channel(3, 0, clockEdges(100)));
    QCOMPARE(luxcli("diff %1 %2 -c 3", m_clock, longer).out, QByteArray("length: 1000 and 1001 samples\n"));
    QCOMPARE(luxcli("diff %1 %2 -c 3 --tolerance 1", m_clock, longer).code, 0);
}

void TstLuxcliMeasure::triggersAreLaidOnEachOther()
{
    const Outcome plain = luxcli("diff %1 %2", m_clock, m_shifted);
    QCOMPARE(plain.code, 1);
    QVERIFY2(plain.out.startsWith("length: 1000 and 900 samples\n"), plain.out);
    const Outcome aligned = luxcli("diff %1 %2 --at-trigger", m_clock, m_shifted);
    QCOMPARE(aligned.out, QByteArray());
    QCOMPARE(aligned.code, 0);
    const Outcome other = luxcli("diff %1 %2 --at-trigger", m_shifted, m_clock);
    QCOMPARE(other.out, QByteArray());
    QCOMPARE(other.code, 0);
}

void TstLuxcliMeasure::capturesOfDifferentRatesAreTrouble()
{
    const QString fast = m_folder.write("$timescale 1 ns $end $var wire 1 ! A $end $enddefinitions $end #0 0! #9 1!\n",
                                        QStringLiteral("fast.vcd"));
    const Outcome outcome = luxcli("diff %1 %2", m_clock, fast);
    QCOMPARE(outcome.err, QByteArray("luxcli: the captures have different rates: 1000000 and 1000000000 Hz\n"));
    QCOMPARE(outcome.out, QByteArray());
    QCOMPARE(outcome.code, 2);
}

void TstLuxcliMeasure::troubleOfDiffIsTold_data()
{
    QTest::addColumn<QString>("arguments");
    for (const char *arguments :
         {"diff", "diff %1", "diff %1 %1 %1", "diff %1 %2", "diff %2 %1", "diff %1 %1 --tolerance x",
          "diff %1 %1 --tolerance -1", "diff %1 %1 -c 9", "diff %1 %1 -c x", "diff %1 %1 --loud"})
        QTest::newRow(arguments) << QString::fromLatin1(arguments);
}

void TstLuxcliMeasure::troubleOfDiffIsTold()
{
    QFETCH(QString, arguments);
    const Outcome outcome =
        luxcli(arguments.toLatin1().constData(), m_clock, m_folder.path(QStringLiteral("missing.cxdat")));
    QCOMPARE(outcome.code, 2);
    QVERIFY2(outcome.err.startsWith("luxcli: "), outcome.err);
    QCOMPARE(outcome.out, QByteArray());
}

void TstLuxcliMeasure::helpIsGood()
{
    for (const char *arguments : {"measure --help", "diff -h"}) {
        const Outcome outcome = luxcli(arguments);
        QCOMPARE(outcome.code, 0);
        QVERIFY(outcome.out.startsWith("Usage: luxcli "));
    }
}

QTEST_GUILESS_MAIN(TstLuxcliMeasure)
#include "tst_LuxcliMeasure.moc"
