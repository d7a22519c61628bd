#pragma once

#include <QString>
#include <QVector>

class QLocale;

/// The language document: English text to translation, one XML file per language, see docs/formats.md.
///
/// Loaded once at start on the main thread and never changed afterwards, so the look-ups may be called from any thread.
/// A text without an entry comes back as it is. A missing or malformed file gives English, silently.

/// One language of the menu.
struct LanguageInfo {
    QString code; ///< such as "de"
    QString name; ///< the menu entry
    QString info; ///< the text of the restart notice
    // Title and buttons of that notice, in the same language.
    QString title = QStringLiteral("Language");
    QString accept = QStringLiteral("OK");
    QString reject = QStringLiteral("Cancel");
};

/// Reads "userLang" (or sets it from the system's locale) and loads that language's file.
void languageLoad();

/// The same with the files of `directory` and for the locale `system`.
void languageLoadFrom(const QString &directory, const QLocale &system);

/// The language for a first start under `locale`: "zh-TW", "zh-CN" or "en-US".
[[nodiscard]] QString languageOfLocale(const QLocale &locale);

/// The directory of the language files: "/Language/" below the program's own.
[[nodiscard]] QString languageDirectory();

/// The translation of an English text; the look-up ignores case. Within QObject classes call it as `::tr`.
QString tr(const QString &text);
QString tr(const char *text);

/// Marks the literal of a table whose texts are handed to `tr` when they are shown; returns it as it is. A test
/// collects the literals of both and looks them up in the shipped languages.
constexpr const char *trLater(const char *text)
{
    return text;
}

/// As `tr` for a text of the analyzer `className`; a leading number stays as it is.
QString trAnalyzer(const QString &text, const QString &className);

/// The text of the head's child `tag`; empty when absent.
QString languageHead(const QString &tag);

/// All languages for the menu, "en-US" first. Reads the directory anew.
QVector<LanguageInfo> languageList();

/// The same for the files of `directory`.
QVector<LanguageInfo> languageListFrom(const QString &directory);
