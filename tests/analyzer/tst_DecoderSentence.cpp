#include "analyzer/DecoderSentence.h"
#include "settings/Config.h"
#include "settings/Globals.h"
#include "settings/Language.h"

#include <QLocale>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

/// The sentences of decoders and of their runtime, in the user's language.
class TstDecoderSentence : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanup() { load(QStringLiteral("en-US"), m_own.path()); }

    void inEnglishASentenceStaysAsItIs();
    void titlesAndNumbersAreNoPartOfTheTextThatIsLookedUp_data();
    void titlesAndNumbersAreNoPartOfTheTextThatIsLookedUp();
    void numbersThatBelongToAWordStay();
    void theDecodersOwnTextGoesFirst();
    void valuesThatLookLikePlacesStay();
    void eachLineIsASentence();
    void theShippedLanguagesHaveWhatTheRuntimeSays_data();
    void theShippedLanguagesHaveWhatTheRuntimeSays();

private:
    static void load(const QString &code, const QString &folder)
    {
        globalSet(QStringLiteral("userLang"), code);
        languageLoadFrom(folder, QLocale::c());
    }
    static QString said(const char *text) { return decoderSentence(QString::fromUtf8(text), QStringLiteral("Own")); }
    QTemporaryDir m_own;
};

void TstDecoderSentence::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    configLoad();
    QFile file(m_own.filePath(QStringLiteral("de.xml")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("<language><head/><lux>"
               "<t src='\"%1\" must be from %2 to %3.'>%3 >= „%1“ >= %2</t>"
               "<t src='Found: %1 kHz'>%1 kHz gefunden</t>"
               "<t src='1-Wire needs %1 Hz'>1-Wire braucht %1 Hz</t>"
               "<t src='\"%1\" or \"%2\"'>„%2“ oder „%1“</t>"
               "<t src='It failed.'>Fehlschlag.</t>"
               "</lux><analyzers>"
               "<t class='Own' src='It failed.'>Eigener Fehlschlag.</t>"
               "<t class='Own' src='Bit rate'>Bitrate</t>"
               "<t class='Own' src='It needs 8 bits'>Es braucht 8 Bits</t>"
               "</analyzers></language>");
}

void TstDecoderSentence::inEnglishASentenceStaysAsItIs()
{
    for (const char *text : {"", "\"A\" must be from -5 to 10.", "It failed.\nTwice.", "%1 \"%2\" 3", "\"", "\n\n"}) {
        QCOMPARE(said(text), QString::fromUtf8(text));
    }
}

void TstDecoderSentence::titlesAndNumbersAreNoPartOfTheTextThatIsLookedUp_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *text, const char *expected) {
        QTest::newRow(text) << QString::fromUtf8(text) << QString::fromUtf8(expected);
    };
    row("\"Rate\" must be from -5 to 100.", "100 >= „Rate“ >= -5");
    row("\"Bit rate\" must be from 0 to 1.", "1 >= „Bitrate“ >= 0");
    row("\"\" must be from 0 to 1.", "1 >= „“ >= 0");
    row("Found: 38.5 kHz", "38.5 kHz gefunden");
    row("It needs 8 bits", "Es braucht 8 Bits");
    row("\"A\" or \"7\"", "„7“ oder „A“");
    row("Nothing like it: 5", "Nothing like it: 5");
}

void TstDecoderSentence::titlesAndNumbersAreNoPartOfTheTextThatIsLookedUp()
{
    load(QStringLiteral("de"), m_own.path());
    QFETCH(QString, text);
    QTEST(decoderSentence(text, QStringLiteral("Own")), "expected");
}

void TstDecoderSentence::numbersThatBelongToAWordStay()
{
    load(QStringLiteral("de"), m_own.path());
    QCOMPARE(said("1-Wire needs 100000 Hz"), QStringLiteral("1-Wire braucht 100000 Hz"));
}

void TstDecoderSentence::theDecodersOwnTextGoesFirst()
{
    load(QStringLiteral("de"), m_own.path());
    QCOMPARE(said("It failed."), QStringLiteral("Eigener Fehlschlag."));
    QCOMPARE(decoderSentence(QStringLiteral("It failed."), QStringLiteral("Other")), QStringLiteral("Fehlschlag."));
}

void TstDecoderSentence::valuesThatLookLikePlacesStay()
{
    load(QStringLiteral("de"), m_own.path());
    QCOMPARE(said("\"%2\" or \"%1\""), QString::fromUtf8("„%1“ oder „%2“"));
    QString many(QStringLiteral("No such text"));
    for (int i = 0; i < 40; ++i) {
        many += QStringLiteral(" \"%1\"").arg(i);
    }
    QCOMPARE(said(many.toUtf8().constData()), many);
}

void TstDecoderSentence::eachLineIsASentence()
{
    load(QStringLiteral("de"), m_own.path());
    QCOMPARE(said("Found: 38 kHz\nSomething else.\nIt failed."),
             QStringLiteral("38 kHz gefunden\nSomething else.\nEigener Fehlschlag."));
}

void TstDecoderSentence::theShippedLanguagesHaveWhatTheRuntimeSays_data()
{
    QTest::addColumn<QString>("code");
    for (const char *code : {"de", "ja", "zh-CN", "zh-TW"}) {
        QTest::newRow(code) << QString::fromLatin1(code);
    }
}

void TstDecoderSentence::theShippedLanguagesHaveWhatTheRuntimeSays()
{
    QFETCH(QString, code);
    load(code, QStringLiteral(LUX_LANGUAGE_DIR));
    for (const char *text :
         {"Please select a channel for \"RX\".", "\"RX\" and \"TX\" must be different channels.",
          "\"Bit rate\" must be from 0 to 1000000.", "\"Parity\" must be one of the list.",
          "Channel 16 is not in this capture.", "Out of memory, the decode ended early.", "The decoder failed.",
          "2 frames or markers reached out of the capture and were cut.",
          "1 frames or markers were not in the order of time.",
          "The sample rate is too low: 9600 bits/s need at least 38400 Hz", "Bit rate found: 9600 bits/s"}) {
        const QString shown = said(text);
        QVERIFY2(shown != QString::fromUtf8(text), text);
        QVERIFY2(!shown.contains(QLatin1Char('%')), qPrintable(shown));
    }
}

QTEST_GUILESS_MAIN(TstDecoderSentence)
#include "tst_DecoderSentence.moc"
