// The shipped languages: each holds every text of the program, and nothing else.

#include "settings/Config.h"
#include "settings/Globals.h"
#include "settings/Language.h"
#include "support/TranslatedTexts.h"

#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QLocale>
#include <QStandardPaths>
#include <QTextCodec>
#include <QtTest>

namespace {

/// Calls whose text is no literal, as "file: argument". The texts of a table are marked by `trLater` where they stand.
QStringList computedCalls()
{
    return {QStringLiteral("analyzer/DecoderSentence.cpp: pattern.text"), // the table beside it is marked
            QStringLiteral("app/QtTexts.cpp: QString::fromUtf8(sourceText)"),
            QStringLiteral("measure/MeasureView.cpp: values.at(row)"), // numbers, which no file translates
            QStringLiteral("session/RunStatus.cpp: texts[sta]")};
}

const TranslatedTexts &programTexts()
{
    static const TranslatedTexts texts = translatedTexts(readSources(QStringLiteral(LUX_SOURCE_DIR)));
    return texts;
}

QString languagePath(const QString &code)
{
    return QStringLiteral(LUX_LANGUAGE_DIR "/") + code + QStringLiteral(".xml");
}

/// The root of a shipped file, whose document stays; the current test fails with the parser's message if there is none.
QDomElement rootOf(const QString &code)
{
    static QMap<QString, QDomDocument> documents;
    QFile file(languagePath(code));
    QString message = QStringLiteral("cannot be opened");
    if (!documents.contains(code) &&
        (!file.open(QIODevice::ReadOnly | QIODevice::Text) || !documents[code].setContent(&file, &message))) {
        QTest::qFail(qPrintable(file.fileName() + QStringLiteral(": ") + message), __FILE__, __LINE__);
    }
    return documents.value(code).documentElement();
}

QDomElement luxOf(const QString &code)
{
    return rootOf(code).firstChildElement().nextSiblingElement();
}

TranslatedTexts textsOf(const char *code)
{
    return translatedTexts({{QStringLiteral("wave/A.cpp"), QString::fromLatin1(code)}});
}

QStringList faultsIn(const char *entries, const QStringList &texts)
{
    QDomDocument document;
    document.setContent(QStringLiteral("<lux>%1</lux>").arg(QString::fromUtf8(entries)));
    TranslatedTexts wanted;
    for (const QString &text : texts) {
        wanted.places.insert(text, QStringLiteral("wave/A.cpp:1"));
    }
    return faultsOf(document.documentElement(), wanted);
}

QStringList shippedCodes()
{
    QStringList codes;
    for (const QString &name :
         QDir(QStringLiteral(LUX_LANGUAGE_DIR)).entryList({QStringLiteral("*.xml")}, QDir::Files)) {
        codes += name.left(name.size() - 4);
    }
    return codes;
}

void addLanguages()
{
    QTest::addColumn<QString>("code");
    for (const QString &code : shippedCodes()) {
        QTest::newRow(qPrintable(code)) << code;
    }
}

} // namespace

class TstTranslations : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void theSourceIsFound();
    void everyTextIsALiteralOrMarkedInItsTable();
    void fourLanguagesAreShipped();
    void everyLanguageIsOfferedInTheMenu();

    void everyFileNamesItselfWhole_data() { addLanguages(); }
    void everyFileNamesItselfWhole();
    void everyTextIsTranslatedOnceAndNothingElse_data() { addLanguages(); }
    void everyTextIsTranslatedOnceAndNothingElse();
    void theNamesOfAnalogParametersAreTheSameInEveryLanguage_data() { addLanguages(); }
    void theNamesOfAnalogParametersAreTheSameInEveryLanguage();
    void theProgramFindsEveryTranslation_data() { addLanguages(); }
    void theProgramFindsEveryTranslation();
    void everyTextIsWrittenInTheSignsOfItsLanguage_data();
    void everyTextIsWrittenInTheSignsOfItsLanguage();

    void theCollectionReadsLiterals_data();
    void theCollectionReadsLiterals();
    void theCollectionTellsWhatItCannotRead_data();
    void theCollectionTellsWhatItCannotRead();
    void theCollectionTellsThePlaceOfAText();
    void theCheckFindsFaults_data();
    void theCheckFindsFaults();
};

void TstTranslations::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    configLoad();
}

void TstTranslations::theSourceIsFound()
{
    QVERIFY(programTexts().places.size() > 40);
    QVERIFY(programTexts().places.contains(QStringLiteral("An error occurred")));
}

void TstTranslations::everyTextIsALiteralOrMarkedInItsTable()
{
    QStringList calls = programTexts().computed;
    calls.removeDuplicates();
    calls.sort();
    QCOMPARE(calls.join(QLatin1Char('\n')), computedCalls().join(QLatin1Char('\n')));
}

void TstTranslations::fourLanguagesAreShipped()
{
    QCOMPARE(shippedCodes().join(QLatin1Char(' ')), QStringLiteral("de ja zh-CN zh-TW"));
}

void TstTranslations::everyLanguageIsOfferedInTheMenu()
{
    QStringList codes;
    QStringList names;
    for (const LanguageInfo &language : languageListFrom(QStringLiteral(LUX_LANGUAGE_DIR))) {
        codes += language.code;
        names += language.name;
    }
    QCOMPARE(codes.join(QLatin1Char(' ')), QStringLiteral("en-US zh-CN zh-TW de ja"));
    QCOMPARE(names.join(QLatin1Char(' ')), QStringLiteral("English 简体中文 繁體中文 Deutsch 日本語"));
}

void TstTranslations::everyFileNamesItselfWhole()
{
    QFETCH(QString, code);
    const QDomElement head = rootOf(code).firstChildElement();
    const auto text = [&head](const char *tag) { return head.firstChildElement(QString::fromLatin1(tag)).text(); };
    QCOMPARE(text("code"), code);
    QVERIFY(!text("name").isEmpty());
    QVERIFY(text("info").size() > 10);
    // The program's own font has Latin signs only.
    QCOMPARE(text("font").isEmpty(), code == QLatin1String("de"));
    // The analyzers' texts have their place.
    QVERIFY(!luxOf(code).nextSiblingElement().isNull());
}

void TstTranslations::everyTextIsTranslatedOnceAndNothingElse()
{
    QFETCH(QString, code);
    const QStringList faults = faultsOf(luxOf(code), programTexts());
    QVERIFY2(faults.isEmpty(), qPrintable(code + QLatin1Char('\n') + faults.join(QLatin1Char('\n'))));
}

void TstTranslations::theNamesOfAnalogParametersAreTheSameInEveryLanguage()
{
    // They are an oscilloscope's terms, and the keys of the channels' texts. Three of them are words of the digital
    // measurements, too, which are translated; the panel of the analog ones does not ask for these.
    QFETCH(QString, code);
    const QStringList shared{QStringLiteral("Period"), QStringLiteral("Frequency"), QStringLiteral("DutyCycle")};
    globalsFillNames();
    QCOMPARE(gMeasureNames.size(), 17);
    QStringList translated;
    for (QDomElement e = luxOf(code).firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        const QString src = e.attribute(QStringLiteral("src"));
        if (gMeasureNames.contains(src, Qt::CaseInsensitive) && !shared.contains(src) && e.text() != src) {
            translated += src;
        }
    }
    QCOMPARE(translated.join(QLatin1Char(' ')), QString());
}

void TstTranslations::theProgramFindsEveryTranslation()
{
    QFETCH(QString, code);
    globalSet(QStringLiteral("userLang"), code);
    languageLoadFrom(QStringLiteral(LUX_LANGUAGE_DIR), QLocale::c());
    QCOMPARE(languageHead(QStringLiteral("code")), code);
    for (QDomElement e = luxOf(code).firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        QCOMPARE(::tr(e.attribute(QStringLiteral("src"))), e.text());
    }
    globalSet(QStringLiteral("userLang"), QStringLiteral("en-US"));
    languageLoadFrom(QStringLiteral(LUX_LANGUAGE_DIR), QLocale::c());
}

void TstTranslations::everyTextIsWrittenInTheSignsOfItsLanguage_data()
{
    // Each of these has only the signs of its own script: simplified Chinese is not in Big5, nor the other way round.
    QTest::addColumn<QString>("code");
    QTest::addColumn<QByteArray>("signs");
    QTest::newRow("zh-CN") << QStringLiteral("zh-CN") << QByteArray("GB2312");
    QTest::newRow("zh-TW") << QStringLiteral("zh-TW") << QByteArray("Big5");
    QTest::newRow("de") << QStringLiteral("de") << QByteArray("windows-1252");
    QTest::newRow("ja") << QStringLiteral("ja") << QByteArray("Shift_JIS");
}

void TstTranslations::everyTextIsWrittenInTheSignsOfItsLanguage()
{
    QFETCH(QString, code);
    QFETCH(QByteArray, signs);
    static const QRegularExpression eastern(QStringLiteral("[\\x{3040}-\\x{9fff}]"));
    const QStringList latinEverywhere{QStringLiteral("OK"), QStringLiteral("OS: ")};
    QTextCodec *codec = QTextCodec::codecForName(signs);
    QVERIFY2(codec != nullptr, "Qt does not know the encoding");
    QStringList wrong;
    for (QDomElement e = rootOf(code).firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        for (QDomElement text = e.firstChildElement(); !text.isNull(); text = text.nextSiblingElement()) {
            if (!codec->canEncode(text.text())) {
                wrong += text.text();
            }
            const QString src = text.attribute(QStringLiteral("src"));
            const bool latin = code == QLatin1String("de") || src.isEmpty() || latinEverywhere.contains(src);
            if (!latin && !eastern.match(text.text()).hasMatch()) {
                wrong += text.text();
            }
        }
    }
    QVERIFY2(wrong.isEmpty(), qPrintable(code + QLatin1Char('\n') + wrong.join(QLatin1Char('\n'))));
}

void TstTranslations::theCollectionReadsLiterals_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QStringList>("texts");
    const auto row = [](const char *name, const char *code, const QStringList &texts) {
        QTest::newRow(name) << QString::fromLatin1(code) << texts;
    };
    const QString open = QStringLiteral("Open");
    row("one", "f(::tr(\"Open\"));", {open});
    row("two in a line", "::tr(\"Open\") + ::tr(\"Close\")", {QStringLiteral("Close"), open});
    row("on a line of its own", "f(::tr(\n    \"Open\"  ));", {open});
    row("in pieces", "::tr(\"Op\"\n \"en\")", {open});
    row("of a table", "const char *t[] = {trLater(\"Open\"), trLater(\"Stop\")};", {open, QStringLiteral("Stop")});
    row("as QString", "::tr(QStringLiteral(\"Open\"))", {open});
    row("escapes", "::tr(\"a\\\\b \\\"c\\\"\\n\")", {QStringLiteral("a\\b \"c\"\n")});
    row("brackets within", "::tr(\"Depth(Sample time)\")", {QStringLiteral("Depth(Sample time)")});
    row("twice", "::tr(\"Open\"); ::tr(\"Open\");", {open});
    row("comments", "// ::tr(\"Old\")\n/* ::tr(\"Older\") */ ::tr(/* menu */ \"Open\")", {open});
    row("within a text", "f(\"::tr(\\\"Old\\\")\"); ::tr(\"Open\")", {open});
    row("longer names", "str(\"a\"); trAnalyzer(\"b\", \"c\"); ::tr(\"Open\")", {open});
}

void TstTranslations::theCollectionReadsLiterals()
{
    QFETCH(QString, code);
    QFETCH(QStringList, texts);
    const TranslatedTexts found = textsOf(qPrintable(code));
    QCOMPARE(QStringList(found.places.keys()), texts);
    QVERIFY(found.computed.isEmpty());
}

void TstTranslations::theCollectionTellsWhatItCannotRead_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("computed");
    const auto row = [](const char *name, const char *code, const char *computed) {
        QTest::newRow(name) << QString::fromLatin1(code) << QString::fromLatin1(computed);
    };
    row("variable", "::tr(text)", "wave/A.cpp: text");
    row("element", "::tr(texts.at(i)) + f()", "wave/A.cpp: texts.at(i)");
    row("choice", "::tr(a ? \"Open\"\n : \"Close\")", "wave/A.cpp: a ? \"Open\" : \"Close\"");
    row("sum", "::tr(\"Open\" + text)", "wave/A.cpp: \"Open\" + text");
    row("raw", "::tr(R\"(Open)\")", "wave/A.cpp: R\"(Open)\"");
    row("rare escape", "::tr(\"\\x41\")", "wave/A.cpp: \"\\x41\"");
    row("nothing", "::tr()", "wave/A.cpp: ");
}

void TstTranslations::theCollectionTellsWhatItCannotRead()
{
    QFETCH(QString, code);
    QFETCH(QString, computed);
    const TranslatedTexts found = textsOf(qPrintable(code));
    QCOMPARE(found.computed, QStringList{computed});
    QVERIFY(found.places.isEmpty());
}

void TstTranslations::theCollectionTellsThePlaceOfAText()
{
    QCOMPARE(textsOf("\n\n::tr(\"Open\");\n::tr(\"Open\");").places.value(QStringLiteral("Open")),
             QStringLiteral("wave/A.cpp:3"));
}

void TstTranslations::theCheckFindsFaults_data()
{
    QTest::addColumn<QString>("entries");
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<QStringList>("faults");
    const auto row = [](const char *name, const char *entries, const char *text, const QStringList &faults) {
        QTest::newRow(name) << QString::fromUtf8(entries) << QStringList{QString::fromLatin1(text)} << faults;
    };
    const auto other = [](const char *text) {
        return QStringList{
            QStringLiteral("other blanks, dots, colon, unit or placeholders: \"%1\"").arg(QString::fromLatin1(text))};
    };
    row("none", "<t src=\"Open\">Öffnen</t>", "Open", {});
    row("another case", "<t src=\"OPEN\">Öffnen</t>", "Open", {});
    row("missing", "", "Open", {QStringLiteral("missing: \"Open\" (wave/A.cpp:1)")});
    row("left over", "<t src=\"Open\">Öffnen</t><t src=\"Old\">Alt</t>", "Open",
        {QStringLiteral("not in the source: \"Old\"")});
    row("empty", "<t src=\"Open\"> </t>", "Open", {QStringLiteral("empty: \"Open\"")});
    row("twice", "<t src=\"Open\">Öffnen</t><t src=\"open\">Auf</t>", "Open", {QStringLiteral("twice: \"open\"")});
    row("lost placeholder", "<t src=\"%1 of %2\">%1 von 2</t>", "%1 of %2", other("%1 of %2"));
    row("other order", "<t src=\"%1 of %2\">%2: %1</t>", "%1 of %2", {});
    row("lost blank", "<t src=\"OS: \">OS:</t>", "OS: ", other("OS: "));
    row("blank in front", "<t src=\"Open\"> Öffnen</t>", "Open", other("Open"));
    row("full-width colon", "<t src=\"OS: \">系统： </t>", "OS: ", {});
    row("lost colon", "<t src=\"OS: \">OS </t>", "OS: ", other("OS: "));
    row("own dots", "<t src=\"Open\">Öffnen...</t>", "Open", other("Open"));
    row("own ellipsis", "<t src=\"Open\">Öffnen…</t>", "Open", other("Open"));
    row("ampersand", "<t src=\"Open\">&amp;Öffnen</t>", "Open", other("Open"));
    row("lost unit", "<t src=\"Time[s]\">Zeit</t>", "Time[s]", other("Time[s]"));
}

void TstTranslations::theCheckFindsFaults()
{
    QFETCH(QString, entries);
    QFETCH(QStringList, texts);
    QFETCH(QStringList, faults);
    QCOMPARE(faultsIn(entries.toUtf8().constData(), texts), faults);
}

QTEST_GUILESS_MAIN(TstTranslations)
#include "tst_Translations.moc"
