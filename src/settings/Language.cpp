#include "settings/Language.h"

#include "settings/Config.h"
#include "settings/XmlText.h"

#include <QCoreApplication>
#include <QDir>
#include <QDomDocument>
#include <QHash>
#include <QLocale>

#include <algorithm>

namespace {

/// What a look-up needs of a language document. A DOM tree must not be read by two threads at once, so the tree goes
/// once this index is made; nothing changes it afterwards. Where texts repeat, the first counts.
struct LanguageIndex {
    QHash<QString, QString> head;                          ///< tag to text
    QHash<QString, QString> lux;                           ///< lower-cased English to translation
    QHash<QString, QHash<QString, QString>> analyzerTexts; ///< analyzer to the same
};

QDomDocument builtIn()
{
    QDomDocument document;
    document.setContent(QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?><language><head><code>en-US</code>"
                                       "<name>English</name></head><lux/><analyzers/></language>"));
    return document;
}

/// The root's children count by place, whatever their tags.
QDomElement rootChild(const QDomDocument &document, int place)
{
    QDomElement child = document.documentElement().firstChildElement();
    for (int i = 0; i < place; ++i) {
        child = child.nextSiblingElement();
    }
    return child;
}

void addFirst(QHash<QString, QString> &texts, const QString &key, const QString &text)
{
    if (!texts.contains(key)) {
        texts.insert(key, text);
    }
}

LanguageIndex indexOf(const QDomDocument &document)
{
    const QString src = QStringLiteral("src");
    LanguageIndex index;
    for (QDomElement e = rootChild(document, 0).firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        addFirst(index.head, e.tagName(), e.text());
    }
    for (QDomElement e = rootChild(document, 1).firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        if (e.hasAttribute(src)) {
            addFirst(index.lux, e.attribute(src).toLower(), e.text());
        }
    }
    for (QDomElement e = rootChild(document, 2).firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        if (e.hasAttribute(src)) {
            addFirst(index.analyzerTexts[e.attribute(QStringLiteral("class"))], e.attribute(src).toLower(), e.text());
        }
    }
    return index;
}

LanguageIndex &current()
{
    static LanguageIndex index = indexOf(builtIn());
    return index;
}

/// A code names a file of the directory, never one elsewhere.
bool isPlainName(const QString &code)
{
    const QString separators = QStringLiteral("/\\:");
    return !code.isEmpty() && std::none_of(code.cbegin(), code.cend(), [&](QChar c) { return separators.contains(c); });
}

/// Length of the leading part of digits, points and blanks.
int numberLength(const QString &text)
{
    int length = 0;
    while (length < text.size()) {
        const QChar c = text.at(length);
        const bool isDigit = c >= QLatin1Char('0') && c <= QLatin1Char('9');
        if (!isDigit && c != QLatin1Char('.') && c != QLatin1Char(' ')) {
            break;
        }
        ++length;
    }
    return length;
}

QString headText(const QDomDocument &document, const QString &tag)
{
    return rootChild(document, 0).firstChildElement(tag).text();
}

LanguageInfo infoOf(const QDomDocument &document)
{
    LanguageInfo language{headText(document, QStringLiteral("code")), headText(document, QStringLiteral("name")),
                          headText(document, QStringLiteral("info"))};
    const QHash<QString, QString> texts = indexOf(document).lux;
    for (QString *text : {&language.title, &language.accept, &language.reject}) {
        const QString translation = texts.value(text->toLower());
        *text = translation.isEmpty() ? *text : translation;
    }
    const QString provider = headText(document, QStringLiteral("provider"));
    if (!provider.isEmpty()) {
        language.info += QStringLiteral("\r\n") + provider;
    }
    return language;
}

/// The two Chinese entries stand behind the English one, as far as the list reaches when they are met.
void insertLanguage(QVector<LanguageInfo> &languages, const LanguageInfo &language)
{
    int place = languages.size();
    if (language.code == QLatin1String("zh-CN")) {
        place = 1;
    } else if (language.code == QLatin1String("zh-TW")) {
        place = qMin(2, languages.size());
    }
    languages.insert(place, language);
}

} // namespace

QString languageDirectory()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/Language/");
}

QString languageOfLocale(const QLocale &locale)
{
    if (locale.language() != QLocale::Chinese) {
        return QStringLiteral("en-US");
    }
    return locale.country() == QLocale::Taiwan ? QStringLiteral("zh-TW") : QStringLiteral("zh-CN");
}

void languageLoad()
{
    languageLoadFrom(languageDirectory(), QLocale::system());
}

void languageLoadFrom(const QString &directory, const QLocale &system)
{
    const QString stored = globalGet(QStringLiteral("userLang"));
    QString code = stored;
    if (code.isEmpty()) {
        code = languageOfLocale(system);
        globalSet(QStringLiteral("userLang"), code);
    }
    QDomDocument document;
    const bool wanted = stored != QLatin1String("en-US") && isPlainName(code);
    if (!wanted || !xmlParseFile(document, QDir(directory).filePath(code + QStringLiteral(".xml")))) {
        document = builtIn();
    }
    current() = indexOf(document);
}

QString tr(const QString &text)
{
    const QString translation = current().lux.value(text.toLower());
    return translation.isEmpty() ? text : translation;
}

QString tr(const char *text)
{
    return tr(QString::fromUtf8(text));
}

QString trAnalyzer(const QString &text, const QString &className)
{
    const auto texts = current().analyzerTexts.constFind(className);
    if (texts == current().analyzerTexts.constEnd()) {
        return text;
    }
    const int length = numberLength(text);
    const QString translation = texts->value(text.mid(length).toLower());
    return translation.isEmpty() ? text : text.left(length) + translation;
}

QString languageHead(const QString &tag)
{
    return current().head.value(tag);
}

QVector<LanguageInfo> languageList()
{
    return languageListFrom(languageDirectory());
}

QVector<LanguageInfo> languageListFrom(const QString &directory)
{
    QVector<LanguageInfo> languages{{QStringLiteral("en-US"), QStringLiteral("English"),
                                     QStringLiteral("You need to restart to make the language settings take effect!")}};
    const QDir dir(directory);
    const QStringList names = dir.entryList({QStringLiteral("*.xml")}, QDir::Files);
    for (const QString &name : names) {
        QDomDocument document;
        if (!xmlParseFile(document, dir.filePath(name))) {
            continue;
        }
        const LanguageInfo language = infoOf(document);
        if (language.code + QStringLiteral(".xml") == name) {
            insertLanguage(languages, language);
        }
    }
    return languages;
}
