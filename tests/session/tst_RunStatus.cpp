#include "session/RunStatus.h"

#include <QtTest>

class TstRunStatus : public QObject {
    Q_OBJECT
private slots:
    void aCodeWithoutWordsNamesStateAndErrorInHexadecimal_data();
    void aCodeWithoutWordsNamesStateAndErrorInHexadecimal();
    void outOfMemoryGoesIntoTheDialogInItsOwnWords();
    void aStreamThatCannotKeepUpComesAsABox_data();
    void aStreamThatCannotKeepUpComesAsABox();
    void theSameErrorsOfAStorageModelAreCodes();
    void aCodeInTheDialogIsIntroduced();
    void progressIsShownFromOneToNinetyNine_data();
    void progressIsShownFromOneToNinetyNine();
    void everyRunningStateHasItsTextWithDots_data();
    void everyRunningStateHasItsTextWithDots();
    void theEndStateAndUnknownStatesHaveNoText();
};

void TstRunStatus::aCodeWithoutWordsNamesStateAndErrorInHexadecimal_data()
{
    QTest::addColumn<int>("sta");
    QTest::addColumn<int>("err");
    QTest::addColumn<QString>("text");
    QTest::newRow("waiting, stopped early") << 2 << 14 << QStringLiteral("S-20e");
    QTest::newRow("starting, not open") << 0 << 1 << QStringLiteral("S-1");
    QTest::newRow("reading, bad status") << 4 << 13 << QStringLiteral("S-40d");
}

void TstRunStatus::aCodeWithoutWordsNamesStateAndErrorInHexadecimal()
{
    QFETCH(int, sta);
    QFETCH(int, err);
    const RunStatus::ErrorText error = RunStatus::errorText(sta, err, 0);
    QTEST(error.text, "text");
    QVERIFY(error.isCode);
    QVERIFY(!error.box);
}

void TstRunStatus::outOfMemoryGoesIntoTheDialogInItsOwnWords()
{
    const RunStatus::ErrorText error = RunStatus::errorText(4, 4, 1);
    QCOMPARE(error.text, QStringLiteral("Out of memory, Sample abort."));
    QVERIFY(!error.box && !error.isCode);
    QCOMPARE(RunStatus::dialogErrorText(4, error), error.text);
}

void TstRunStatus::aStreamThatCannotKeepUpComesAsABox_data()
{
    QTest::addColumn<int>("err");
    QTest::newRow("bulk read timed out") << 3;
    QTest::newRow("the data stopped early") << 14;
}

void TstRunStatus::aStreamThatCannotKeepUpComesAsABox()
{
    QFETCH(int, err);
    const RunStatus::ErrorText error = RunStatus::errorText(3, err, 1);
    QVERIFY(error.box && !error.isCode);
    QCOMPARE(error.text, QStringLiteral("Cannot keep up with this sample rate.\r\n"
                                        "Please try to reduce the sample rate."));
}

void TstRunStatus::theSameErrorsOfAStorageModelAreCodes()
{
    QCOMPARE(RunStatus::errorText(3, 3, 0).text, QStringLiteral("S-303"));
    QCOMPARE(RunStatus::errorText(3, 14, 0).text, QStringLiteral("S-30e"));
}

void TstRunStatus::aCodeInTheDialogIsIntroduced()
{
    QCOMPARE(RunStatus::dialogErrorText(14, RunStatus::errorText(2, 14, 0)),
             QStringLiteral("An error occurred: S-20e"));
}

void TstRunStatus::progressIsShownFromOneToNinetyNine_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("shown");
    QTest::newRow("below zero") << -5 << 1;
    QTest::newRow("zero") << 0 << 1;
    QTest::newRow("between") << 42 << 42;
    QTest::newRow("hundred") << 100 << 99;
    QTest::newRow("beyond") << 120 << 99;
}

void TstRunStatus::progressIsShownFromOneToNinetyNine()
{
    QFETCH(int, value);
    QTEST(RunStatus::shownProgress(value), "shown");
}

void TstRunStatus::everyRunningStateHasItsTextWithDots_data()
{
    QTest::addColumn<int>("sta");
    QTest::addColumn<QString>("text");
    QTest::newRow("0") << 0 << QStringLiteral("Sample start...");
    QTest::newRow("1") << 1 << QStringLiteral("Pre-sampling...");
    QTest::newRow("2") << 2 << QStringLiteral("Waiting for trigger...");
    QTest::newRow("3") << 3 << QStringLiteral("Sampling...");
    QTest::newRow("4") << 4 << QStringLiteral("Data reading...");
}

void TstRunStatus::everyRunningStateHasItsTextWithDots()
{
    QFETCH(int, sta);
    QTEST(RunStatus::stateText(sta), "text");
}

void TstRunStatus::theEndStateAndUnknownStatesHaveNoText()
{
    for (const int sta : {-1, 5, 6, 1000}) {
        QVERIFY(RunStatus::stateText(sta).isEmpty());
    }
}

QTEST_APPLESS_MAIN(TstRunStatus)
#include "tst_RunStatus.moc"
