// The shipped languages hold every text that the dialogs show of a decoder.

#include "analyzer/DecoderSentence.h"
#include "settings/Config.h"
#include "settings/Globals.h"
#include "settings/Language.h"
#include "support/PluginFiles.h"

#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QLocale>
#include <QRegularExpression>
#include <QSet>
#include <QStandardPaths>
#include <QtTest>

class TstDecoderTexts : public QObject {
    Q_OBJECT
private slots:
    void aTextWithoutWordsNeedsNoTranslation_data();
    void aTextWithoutWordsNeedsNoTranslation();
    void refusalsAreFoundInTheSource();
    void noTextIsTranslatedTwice_data();
    void noTextIsTranslatedTwice();
    void everyTextOfADecoderIsTranslated_data();
    void everyTextOfADecoderIsTranslated();
    void sentencesAreFoundInTheSource();
    void whatADecoderTellsOfARunIsTranslated_data() { everyTextOfADecoderIsTranslated_data(); }
    void whatADecoderTellsOfARunIsTranslated();

private:
    const std::vector<PluginFile> m_plugins = pluginsIn(QStringLiteral(LUX_PLUGIN_FOLDER));
};

namespace {

/// What is looked up for a text: a leading number and what follows it up to the words stays as it is.
QString lookedUp(const char *text)
{
    QString key = QString::fromUtf8(text);
    static const QRegularExpression number(QStringLiteral("^[0-9. ]*"));
    return key.remove(number);
}

/// Names of lines, of modes and of units are the same in all languages.
bool needsTranslation(const QString &text)
{
    static const QRegularExpression word(QStringLiteral("[a-z]{3}"));
    return text.contains(word);
}

QString read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// The sentences with which the settings of a decoder refuse, from its source.
QStringList refusals(const QString &source)
{
    static const QRegularExpression body(QStringLiteral("::check\\(\\) const\\n\\{(.*?)\\n\\}"),
                                         QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression literal(QStringLiteral("return \"([^\"]+)\";"));
    QStringList sentences;
    for (auto in = literal.globalMatch(body.match(source).captured(1)); in.hasNext();) {
        sentences.append(in.next().captured(1));
    }
    return sentences;
}

/// What a decoder tells of a run, from its source, with 12 for each number.
QStringList sentencesOfRuns(const QString &source)
{
    static const QRegularExpression call(QStringLiteral("\\b(?:fail|tell)\\(([^;]*)\\);"));
    static const QRegularExpression piece(QStringLiteral("\"([^\"]*)\"|std::to_string"));
    QStringList sentences;
    for (auto in = call.globalMatch(source); in.hasNext();) {
        const QString argument = in.next().captured(1);
        const bool isChoice = argument.contains(QLatin1Char('?'));
        QString sentence;
        for (auto part = piece.globalMatch(argument); part.hasNext();) {
            const QRegularExpressionMatch match = part.next();
            const QString text = match.capturedStart(1) >= 0 ? match.captured(1) : QStringLiteral("12");
            if (isChoice) {
                sentences.append(text);
            } else {
                sentence += text;
            }
        }
        if (!sentence.isEmpty()) {
            sentences.append(sentence);
        }
    }
    return sentences;
}

/// The folder of a decoder's source, by the name of its file.
QString folderOf(const std::string &file)
{
    const QDir decoders(QStringLiteral(LUX_DECODERS_DIR));
    const QString line = QStringLiteral(" FILE %1 SOURCES").arg(QString::fromStdString(file));
    for (const QString &folder : decoders.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        if (read(decoders.filePath(folder + QStringLiteral("/CMakeLists.txt"))).contains(line)) {
            return decoders.filePath(folder);
        }
    }
    return {};
}

void addSettings(const AnalyzerSettings &settings, QStringList &texts)
{
    for (std::uint32_t i = 0; i < settings.GetSettingsInterfacesCount(); ++i) {
        const AnalyzerSettingInterface *setting = settings.GetSettingsInterface(i);
        texts << lookedUp(setting->GetTitle()) << lookedUp(setting->GetToolTip());
        if (setting->GetType() == AnalyzerInterfaceTypeId::NumberList) {
            const auto *list = static_cast<const AnalyzerSettingInterfaceNumberList *>(setting);
            for (std::uint32_t entry = 0; entry < list->GetListboxNumbersCount(); ++entry) {
                texts << lookedUp(list->GetListboxString(entry)) << lookedUp(list->GetListboxToolTip(entry));
            }
        } else if (setting->GetType() == AnalyzerInterfaceTypeId::Bool) {
            texts << lookedUp(static_cast<const AnalyzerSettingInterfaceBool *>(setting)->GetCheckBoxText());
        }
    }
    for (std::uint32_t i = 0; i < settings.GetExportOptionsCount(); ++i) {
        std::uint32_t id = 0;
        const char *name = "";
        settings.GetExportOption(i, &id, &name);
        texts << lookedUp(name);
        for (std::uint32_t entry = 0; entry < settings.GetFileExtensionCount(id); ++entry) {
            const char *description = "";
            const char *extension = "";
            settings.GetFileExtension(id, entry, &description, &extension);
            texts << lookedUp(description);
        }
    }
}

/// Class and lower-cased text, as they are looked up.
using Entry = QPair<QString, QString>;

/// All entries of a language in order, those without a translation left out.
QVector<Entry> entriesOf(const QString &path)
{
    QDomDocument document;
    document.setContent(read(path));
    QVector<Entry> entries;
    const QDomElement analyzers = document.documentElement().firstChildElement(QStringLiteral("analyzers"));
    for (QDomElement entry = analyzers.firstChildElement(); !entry.isNull(); entry = entry.nextSiblingElement()) {
        if (!entry.text().trimmed().isEmpty()) {
            entries.append(
                {entry.attribute(QStringLiteral("class")), entry.attribute(QStringLiteral("src")).toLower()});
        }
    }
    return entries;
}

} // namespace

void TstDecoderTexts::aTextWithoutWordsNeedsNoTranslation_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("needs");
    QTest::newRow("a line") << QStringLiteral("MOSI") << false;
    QTest::newRow("nothing") << QString() << false;
    QTest::newRow("a word") << QStringLiteral("Bit rate") << true;
}

void TstDecoderTexts::aTextWithoutWordsNeedsNoTranslation()
{
    QFETCH(QString, text);
    QTEST(needsTranslation(text), "needs");
}

void TstDecoderTexts::refusalsAreFoundInTheSource()
{
    const QString source =
        QStringLiteral("std::string A::check() const\n{\n    if (x) {\n        return \"Too much\";\n"
                       "    }\n    return {};\n}\nconst char *b()\n{\n    return \"Not this\";\n}\n");
    QCOMPARE(refusals(source), QStringList{QStringLiteral("Too much")});
}

void TstDecoderTexts::noTextIsTranslatedTwice_data()
{
    QTest::addColumn<QString>("language");
    const QDir languages(QStringLiteral(LUX_LANGUAGE_DIR));
    for (const QString &file : languages.entryList({QStringLiteral("*.xml")}, QDir::Files)) {
        QTest::newRow(qPrintable(file)) << languages.filePath(file);
    }
}

void TstDecoderTexts::noTextIsTranslatedTwice()
{
    QFETCH(QString, language);
    QSet<Entry> seen;
    for (const Entry &entry : entriesOf(language)) {
        QVERIFY2(!seen.contains(entry), qPrintable(entry.first + QLatin1Char('|') + entry.second));
        seen.insert(entry);
    }
    QVERIFY(!seen.isEmpty());
}

void TstDecoderTexts::everyTextOfADecoderIsTranslated_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<int>("index");
    const QDir languages(QStringLiteral(LUX_LANGUAGE_DIR));
    for (const QString &file : languages.entryList({QStringLiteral("*.xml")}, QDir::Files)) {
        for (std::size_t i = 0; i < m_plugins.size(); ++i) {
            QTest::newRow(qPrintable(file + QLatin1Char(' ') + QString::fromStdString(m_plugins[i].name)))
                << languages.filePath(file) << int(i);
        }
    }
}

void TstDecoderTexts::everyTextOfADecoderIsTranslated()
{
    QFETCH(QString, language);
    QFETCH(int, index);
    const PluginFile &plugin = m_plugins[std::size_t(index)];
    const auto analyzer = plugin.make();
    QStringList texts;
    addSettings(*analyzer->GetAnalyzerSettings(), texts);
    const QDir source(folderOf(plugin.name));
    for (const QString &file : source.entryList({QStringLiteral("*.cpp")}, QDir::Files)) {
        texts += refusals(read(source.filePath(file)));
    }
    QVERIFY(texts.size() > 3);
    const QString name = QString::fromUtf8(analyzer->AnalyzerName());
    const auto entries = entriesOf(language);
    QStringList missing;
    for (const QString &text : qAsConst(texts)) {
        if (needsTranslation(text) && !entries.contains({name, text.toLower()}) && !missing.contains(text)) {
            missing.append(text);
        }
    }
    QVERIFY2(missing.isEmpty(), qPrintable(name + QStringLiteral("|") + missing.join(QLatin1Char('|'))));
}

void TstDecoderTexts::sentencesAreFoundInTheSource()
{
    const QString source = QStringLiteral("fail(\"Too low: \" + std::to_string(a * (b)) +\n     \" Hz\");\n"
                                          "return fail(Fault::End);\ntell(x == 1 ? \"One\" : \"Two\");\n");
    QCOMPARE(sentencesOfRuns(source),
             (QStringList{QStringLiteral("Too low: 12 Hz"), QStringLiteral("One"), QStringLiteral("Two")}));
}

void TstDecoderTexts::whatADecoderTellsOfARunIsTranslated()
{
    QFETCH(QString, language);
    QFETCH(int, index);
    QStandardPaths::setTestModeEnabled(true);
    configLoad();
    globalSet(QStringLiteral("userLang"), QFileInfo(language).completeBaseName());
    languageLoadFrom(QStringLiteral(LUX_LANGUAGE_DIR), QLocale::c());
    const PluginFile &plugin = m_plugins[std::size_t(index)];
    const QString name = QString::fromUtf8(plugin.make()->AnalyzerName());
    const QDir folder(folderOf(plugin.name));
    for (const QString &file : folder.entryList({QStringLiteral("*.cpp")}, QDir::Files)) {
        for (const QString &sentence : sentencesOfRuns(read(folder.filePath(file)))) {
            QVERIFY2(decoderSentence(sentence, name) != sentence, qPrintable(sentence));
        }
    }
}

QTEST_GUILESS_MAIN(TstDecoderTexts)
#include "tst_DecoderTexts.moc"
