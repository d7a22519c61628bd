#include "controls/NumberField.h"
#include "device/DeviceGlobals.h"
#include "panels/ExportDesk.h"

using namespace ExportDesk;

/// The dialog of channels and range: which part of the capture is chosen.
class TstExportDataSetTimes : public QObject {
    Q_OBJECT
private slots:
    void allTimeIsChosenAtFirst();
    void allTimeIsNothingWhileTheCaptureIsNotComplete();
    void markersCanOnlyBeChosenWhenThereIsAPair();
    void thePairsAreListedOnlyForMarkers();
    void theFieldsAreEnabledOnlyForTheInterval();
    void theChosenPairIsTheRange();
    void aPairRemovedMeanwhileStaysChosen();
    void theIntervalBeginsAsTheWholeCapture();
    void theIntervalIsReadFromTheTrigger();
    void aReversedIntervalComesAsItIs();
    void anEmptyFieldIsTheTrigger();
    void theFieldsTakeDigitsPointsCommasSignsAndBars_data();
    void theFieldsTakeDigitsPointsCommasSignsAndBars();
    void aFieldThatBeganWithAnExponentCanBeTypedOver();
    void aCaptureOfOneSampleAndTheLongestOneAreWhole_data();
    void aCaptureOfOneSampleAndTheLongestOneAreWhole();
};

void TstExportDataSetTimes::allTimeIsChosenAtFirst()
{
    const PanelDevice device(storage16Model);
    CaptureBuilder{12345}.fill(*gDev->smpData);
    const Desk desk(twoPairs());
    QVERIFY(desk.radio("All time")->isChecked());
    const Selection selection(desk.dialog);
    QCOMPARE(selection.start, 0.0);
    QCOMPARE(selection.end, 12345.0);
}

void TstExportDataSetTimes::allTimeIsNothingWhileTheCaptureIsNotComplete()
{
    const PanelDevice device(storage16Model);
    CaptureBuilder{12345}.fill(*gDev->smpData);
    gDev->smpData->closeToReaders();
    const Desk desk;
    QCOMPARE(desk.start()->text(), QStringLiteral("0"));
    QCOMPARE(desk.end()->text(), QStringLiteral("0"));
    const Selection selection(desk.dialog);
    QCOMPARE(selection.start, 0.0);
    QCOMPARE(selection.end, 0.0);
    gDev->smpData->readmit();
}

void TstExportDataSetTimes::markersCanOnlyBeChosenWhenThereIsAPair()
{
    const PanelDevice device(storage16Model);
    {
        const Desk desk;
        QVERIFY(!desk.radio("Timing markers")->isEnabled());
        QVERIFY(desk.radio("Specify time interval")->isEnabled());
        QCOMPARE(desk.pairs()->count(), 0);
        Desk::click(desk.radio("Timing markers"));
        QVERIFY(desk.radio("All time")->isChecked());
    }
    const Desk desk(twoPairs());
    QVERIFY(desk.radio("Timing markers")->isEnabled());
    QVERIFY(!desk.radio("Timing markers")->isChecked());
    QCOMPARE(desk.pairs()->count(), 2);
    QCOMPARE(desk.pairs()->itemText(0), QStringLiteral("A1 - A2"));
    QCOMPARE(desk.pairs()->itemText(1), QStringLiteral("C1 - C2"));
    QCOMPARE(desk.pairs()->minimumContentsLength(), 10);
}

void TstExportDataSetTimes::thePairsAreListedOnlyForMarkers()
{
    const PanelDevice device(storage16Model);
    const Desk desk(twoPairs());
    QVERIFY(!desk.pairs()->isEnabled());
    Desk::click(desk.radio("Timing markers"));
    QVERIFY(desk.pairs()->isEnabled());
    QVERIFY(!desk.start()->isEnabled());
    Desk::click(desk.radio("All time"));
    QVERIFY(!desk.pairs()->isEnabled());
}

void TstExportDataSetTimes::theFieldsAreEnabledOnlyForTheInterval()
{
    const PanelDevice device(storage16Model);
    const Desk desk(twoPairs());
    const QVector<QWidget *> fields{desk.start(), desk.end(), desk.label("Starting Time[s]"),
                                    desk.label("Ending Time[s]")};
    for (const QWidget *field : fields) {
        QVERIFY(!field->isEnabled());
    }
    Desk::click(desk.radio("Specify time interval"));
    for (const QWidget *field : fields) {
        QVERIFY(field->isEnabled());
    }
    QVERIFY(!desk.pairs()->isEnabled());
    Desk::click(desk.radio("Timing markers"));
    for (const QWidget *field : fields) {
        QVERIFY(!field->isEnabled());
    }
}

void TstExportDataSetTimes::theChosenPairIsTheRange()
{
    const PanelDevice device(storage16Model);
    CaptureBuilder{5000}.fill(*gDev->smpData);
    const Desk desk(twoPairs());
    Desk::click(desk.radio("Timing markers"));
    QCOMPARE(Selection(desk.dialog).start, 100.0);
    QCOMPARE(Selection(desk.dialog).end, 2000.0);
    desk.pairs()->setFocus();
    QTest::keyClick(desk.pairs(), Qt::Key_Down);
    QCOMPARE(Selection(desk.dialog).start, 400.0); // the second marker of this pair is the earlier one
    QCOMPARE(Selection(desk.dialog).end, 3000.0);
}

void TstExportDataSetTimes::aPairRemovedMeanwhileStaysChosen()
{
    const PanelDevice device(storage16Model);
    CaptureBuilder{5000}.fill(*gDev->smpData);
    QVector<ShownPair> pairs = twoPairs();
    const Desk desk(pairs);
    Desk::click(desk.radio("Timing markers"));
    desk.pairs()->setCurrentIndex(1);
    pairs[1].firstSample = 4999;
    pairs.clear();
    QCOMPARE(desk.pairs()->count(), 2);
    QCOMPARE(Selection(desk.dialog).start, 400.0);
    QCOMPARE(Selection(desk.dialog).end, 3000.0);
}

void TstExportDataSetTimes::theIntervalBeginsAsTheWholeCapture()
{
    const PanelDevice device(storage16Model);
    CaptureBuilder{1000, 1000, 10, 250}.fill(*gDev->smpData);
    const Desk desk;
    QCOMPARE(desk.start()->text(), QStringLiteral("-0.25"));
    QCOMPARE(desk.end()->text(), QStringLiteral("0.75"));
    Desk::click(desk.radio("Specify time interval"));
    QCOMPARE(Selection(desk.dialog).start, 0.0);
    QCOMPARE(Selection(desk.dialog).end, 1000.0);
}

void TstExportDataSetTimes::theIntervalIsReadFromTheTrigger()
{
    const PanelDevice device(storage16Model);
    CaptureBuilder{1000, 1000, 10, 250}.fill(*gDev->smpData);
    const Desk desk;
    desk.typeInterval("-0.1", "12.5");
    QCOMPARE(Selection(desk.dialog).start, 150.0);
    QCOMPARE(Selection(desk.dialog).end, 12750.0); // limited where it is used
}

void TstExportDataSetTimes::aReversedIntervalComesAsItIs()
{
    const PanelDevice device(storage16Model);
    CaptureBuilder{1000, 1000, 10, 250}.fill(*gDev->smpData);
    const Desk desk;
    desk.typeInterval("0.5", "-0.1");
    QCOMPARE(Selection(desk.dialog).start, 750.0);
    QCOMPARE(Selection(desk.dialog).end, 150.0);
}

void TstExportDataSetTimes::anEmptyFieldIsTheTrigger()
{
    const PanelDevice device(storage16Model);
    CaptureBuilder{1000, 1000, 10, 250}.fill(*gDev->smpData);
    const Desk desk;
    desk.typeInterval("", "");
    QCOMPARE(desk.start()->text(), QString());
    QCOMPARE(Selection(desk.dialog).start, 250.0);
    QCOMPARE(Selection(desk.dialog).end, 250.0);
    QTest::keyClick(desk.end(), Qt::Key_Return);
    QCOMPARE(desk.dialog.result(), int(QDialog::Accepted));
}

void TstExportDataSetTimes::theFieldsTakeDigitsPointsCommasSignsAndBars_data()
{
    QTest::addColumn<QByteArray>("typed");
    QTest::addColumn<QString>("shown");
    QTest::newRow("a number") << QByteArray("-12.75") << QStringLiteral("-12.75");
    QTest::newRow("letters") << QByteArray("1a2b") << QStringLiteral("12");
    QTest::newRow("an exponent") << QByteArray("1e-3") << QStringLiteral("1-3");
    QTest::newRow("a plus and blanks") << QByteArray("+1 2") << QStringLiteral("12");
    QTest::newRow("a comma") << QByteArray("1,5") << QStringLiteral("1,5");
    QTest::newRow("bars") << QByteArray("1|2") << QStringLiteral("1|2");
    QTest::newRow("signs") << QByteArray("--1-") << QStringLiteral("--1-");
    QTest::newRow("points") << QByteArray("1.2.3") << QStringLiteral("1.2.3");
}

void TstExportDataSetTimes::theFieldsTakeDigitsPointsCommasSignsAndBars()
{
    QFETCH(QByteArray, typed);
    QFETCH(QString, shown);
    const PanelDevice device(storage16Model);
    CaptureBuilder{1000, 1000, 10, 250}.fill(*gDev->smpData);
    const Desk desk;
    desk.typeInterval(typed.constData(), typed.constData());
    QCOMPARE(desk.start()->text(), shown);
    QCOMPARE(desk.end()->text(), shown);
    const std::optional<double> seconds = typedNumber(shown);
    const double position = seconds.value_or(0.0) * 1000 + 250;
    QCOMPARE(Selection(desk.dialog).start, position);
    QCOMPARE(Selection(desk.dialog).end, position);
    QTest::keyClick(desk.end(), Qt::Key_Return);
    // What is no number is told at its field, and the dialog stays.
    QCOMPARE(desk.dialog.isVisible(), !seconds);
    QCOMPARE(hasFault(*desk.start()), !seconds);
}

void TstExportDataSetTimes::aFieldThatBeganWithAnExponentCanBeTypedOver()
{
    const PanelDevice device(storage16Model);
    CaptureBuilder{5000, 500'000'000, 10, 250}.fill(*gDev->smpData);
    const Desk desk;
    QCOMPARE(desk.start()->text(), QStringLiteral("-5e-07"));
    Desk::click(desk.radio("Specify time interval"));
    QCOMPARE(Selection(desk.dialog).start, 0.0);
    desk.radio("Specify time interval")->setFocus();
    QTest::keyClick(desk.radio("Specify time interval"), Qt::Key_Tab); // selects the field's text
    QVERIFY(desk.start()->hasFocus());
    QTest::keyClicks(desk.start(), QStringLiteral("0"));
    QCOMPARE(desk.start()->text(), QStringLiteral("0"));
    QCOMPARE(Selection(desk.dialog).start, 250.0);
}

void TstExportDataSetTimes::aCaptureOfOneSampleAndTheLongestOneAreWhole_data()
{
    QTest::addColumn<qint64>("samples");
    QTest::newRow("one sample") << qint64(1);
    QTest::newRow("longest") << (qint64(1) << 40) - 1;
}

void TstExportDataSetTimes::aCaptureOfOneSampleAndTheLongestOneAreWhole()
{
    QFETCH(qint64, samples);
    const PanelDevice device(storage32Model);
    CaptureBuilder{samples, 100'000'000, 2'000'000'000}.fill(*gDev->smpData);
    const Desk desk;
    QCOMPARE(Selection(desk.dialog).start, 0.0);
    QCOMPARE(Selection(desk.dialog).end, double(samples));
    QCOMPARE(Selection(desk.dialog).channels, std::vector<std::uint8_t>(32, 1));
}

LUX_GUI_TEST(TstExportDataSetTimes)
#include "tst_ExportDataSetTimes.moc"
