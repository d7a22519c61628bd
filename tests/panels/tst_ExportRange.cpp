#include "panels/ExportRange.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"
#include "store/SmpWriter.h"
#include "support/CaptureBuilder.h"
#include "wave/MainView.h"

#include <QTest>

#include <cmath>

/// The numbers of the export dialog; nothing of it needs a display.
class TstExportRange : public QObject {
    Q_OBJECT
private slots:
    void aCompleteCaptureTellsItsNumbers();
    void aCaptureThatIsNotCompleteHasNoNumbers();
    void eachPairHasOneNameAndTwoPositions();
    void positionsHaveSixSignificantDigits_data();
    void positionsHaveSixSignificantDigits();
    void theIntervalBeginsAsTheWholeCapture_data();
    void theIntervalBeginsAsTheWholeCapture();
    void theWholeRangeIsTheCapture();
    void theSmallerMarkerIsTheStart();
    void aMarkerRangeHasThePrecisionOfItsTexts();
    void aPairThatThereIsNotGivesAnEmptyRange_data();
    void aPairThatThereIsNotGivesAnEmptyRange();
    void anIntervalCountsFromTheTrigger_data();
    void anIntervalCountsFromTheTrigger();
};

void TstExportRange::aCompleteCaptureTellsItsNumbers()
{
    memBudget = std::int64_t(1) << 30;
    SmpData data(8, 0);
    CaptureBuilder{1000, 5000, 100, 50}.fill(data);
    const ExportCapture capture = ExportCapture::of(data);
    QCOMPARE(capture.smpCount, 1000);
    QCOMPARE(capture.smpFrequ, 5000);
    QCOMPARE(capture.trgPos, 50);
}

void TstExportRange::aCaptureThatIsNotCompleteHasNoNumbers()
{
    SmpData data(8, 0);
    const std::vector<std::uint8_t> enable(8, 1);
    data.begin(0, 5000, enable);
    SmpWriter(data).setSmpCount(1000);
    SmpWriter(data).setTrgPos(50);
    const ExportCapture capture = ExportCapture::of(data);
    QCOMPARE(capture.smpCount, 0);
    QCOMPARE(capture.smpFrequ, 0);
    QCOMPARE(capture.trgPos, 0);
}

void TstExportRange::eachPairHasOneNameAndTwoPositions()
{
    const auto markers = ExportMarkers::of({{0, QStringLiteral("A1"), QStringLiteral("A2"), 10, 25.5},
                                            {3, QStringLiteral("D1"), QStringLiteral("D2"), 900, 0}});
    QCOMPARE(markers.names, QStringList({QStringLiteral("A1 - A2"), QStringLiteral("D1 - D2")}));
    QCOMPARE(markers.positions,
             QStringList({QStringLiteral("10"), QStringLiteral("25.5"), QStringLiteral("900"), QStringLiteral("0")}));
    QVERIFY(ExportMarkers::of({}).names.isEmpty());
    QVERIFY(ExportMarkers::of({}).positions.isEmpty());
}

void TstExportRange::positionsHaveSixSignificantDigits_data()
{
    QTest::addColumn<double>("position");
    QTest::addColumn<QString>("text");
    QTest::newRow("small") << 123456.0 << QStringLiteral("123456");
    QTest::newRow("a fraction") << 12345.678 << QStringLiteral("12345.7");
    QTest::newRow("a digit too much") << 1234567.0 << QStringLiteral("1.23457e+06");
    QTest::newRow("longest capture") << 1099511627775.0 << QStringLiteral("1.09951e+12");
    QTest::newRow("before the capture") << -5.0 << QStringLiteral("-5");
}

void TstExportRange::positionsHaveSixSignificantDigits()
{
    QFETCH(double, position);
    QFETCH(QString, text);
    QCOMPARE(ExportMarkers::of({{0, QString(), QString(), position, 0}}).positions[0], text);
}

void TstExportRange::theIntervalBeginsAsTheWholeCapture_data()
{
    QTest::addColumn<qint64>("samples");
    QTest::addColumn<qint64>("rate");
    QTest::addColumn<qint64>("trigger");
    QTest::addColumn<QStringList>("texts");
    QTest::newRow("without a trigger") << qint64(1000) << qint64(1000) << qint64(0)
                                       << QStringList({QStringLiteral("0"), QStringLiteral("1")});
    QTest::newRow("with one") << qint64(1000) << qint64(1000) << qint64(250)
                              << QStringList({QStringLiteral("-0.25"), QStringLiteral("0.75")});
    QTest::newRow("fast") << qint64(5000) << qint64(500'000'000) << qint64(250)
                          << QStringList({QStringLiteral("-5e-07"), QStringLiteral("9.5e-06")});
    QTest::newRow("six digits") << qint64(10'000'000'000) << qint64(3'000'000) << qint64(1)
                                << QStringList({QStringLiteral("-3.33333e-07"), QStringLiteral("3333.33")});
    QTest::newRow("no capture") << qint64(0) << qint64(1000) << qint64(0)
                                << QStringList({QStringLiteral("0"), QStringLiteral("0")});
    QTest::newRow("no rate") << qint64(1000) << qint64(0) << qint64(5)
                             << QStringList({QStringLiteral("0"), QStringLiteral("0")});
    QTest::newRow("trigger behind the end")
        << qint64(100) << qint64(100) << qint64(200) << QStringList({QStringLiteral("-2"), QStringLiteral("-1")});
}

void TstExportRange::theIntervalBeginsAsTheWholeCapture()
{
    QFETCH(qint64, samples);
    QFETCH(qint64, rate);
    QFETCH(qint64, trigger);
    QFETCH(QStringList, texts);
    QCOMPARE(exportIntervalTexts({samples, rate, trigger}), texts);
}

void TstExportRange::theWholeRangeIsTheCapture()
{
    QVERIFY(exportWholeRange({1000, 5, 7}) == (ExportRange{0, 1000}));
    QVERIFY(exportWholeRange({}) == (ExportRange{0, 0}));
    QVERIFY(exportWholeRange({1099511627775, 5, 7}) == (ExportRange{0, 1099511627775.0}));
}

void TstExportRange::theSmallerMarkerIsTheStart()
{
    const auto markers = ExportMarkers::of({{0, QString(), QString(), 10, 25.5}, {1, QString(), QString(), 900, 3}});
    QVERIFY(exportMarkerRange(markers, 0) == (ExportRange{10, 25.5}));
    QVERIFY(exportMarkerRange(markers, 1) == (ExportRange{3, 900}));
}

void TstExportRange::aMarkerRangeHasThePrecisionOfItsTexts()
{
    const auto markers = ExportMarkers::of({{0, QString(), QString(), 1234567, 98765432.1}});
    QVERIFY(exportMarkerRange(markers, 0) == (ExportRange{1234570, 98765400}));
}

void TstExportRange::aPairThatThereIsNotGivesAnEmptyRange_data()
{
    QTest::addColumn<int>("pair");
    QTest::newRow("none chosen") << -1;
    QTest::newRow("behind the last one") << 1;
}

void TstExportRange::aPairThatThereIsNotGivesAnEmptyRange()
{
    QFETCH(int, pair);
    QVERIFY(exportMarkerRange(ExportMarkers::of({{0, QString(), QString(), 10, 20}}), pair) == ExportRange());
}

void TstExportRange::anIntervalCountsFromTheTrigger_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("position"); // at 1 kHz, trigger at 200
    QTest::newRow("zero") << QStringLiteral("0") << 200.0;
    QTest::newRow("before the trigger") << QStringLiteral("-0.1") << 100.0;
    QTest::newRow("behind it") << QStringLiteral("0.5") << 700.0;
    QTest::newRow("before the capture") << QStringLiteral("-5") << -4800.0;
    QTest::newRow("behind the capture") << QStringLiteral("1000") << 1000200.0;
    QTest::newRow("an exponent, as the field begins with") << QStringLiteral("-1e-01") << 100.0;
    QTest::newRow("empty") << QString() << 200.0;
    QTest::newRow("a bar") << QStringLiteral("1|2") << 200.0;
    QTest::newRow("a sign alone") << QStringLiteral("-") << 200.0;
    QTest::newRow("two signs") << QStringLiteral("--1") << 200.0;
    QTest::newRow("two points") << QStringLiteral("1.2.3") << 200.0;
    QTest::newRow("a point alone") << QStringLiteral(".") << 200.0;
    QTest::newRow("a plus") << QStringLiteral("+0.1") << 300.0;
    QTest::newRow("a comma") << QStringLiteral("0,1") << 300.0;
    QTest::newRow("a word") << QStringLiteral("all") << 200.0;
}

void TstExportRange::anIntervalCountsFromTheTrigger()
{
    QFETCH(QString, text);
    QFETCH(double, position);
    const ExportCapture capture{1000, 1000, 200};
    QCOMPARE(exportInterval(text, QStringLiteral("0"), capture).start, position);
    QCOMPARE(exportInterval(QStringLiteral("0"), text, capture).end, position);
}

QTEST_GUILESS_MAIN(TstExportRange)
#include "tst_ExportRange.moc"
