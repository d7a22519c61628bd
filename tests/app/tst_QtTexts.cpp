// Qt's own texts in the language of the program.

#include "app/QtTexts.h"
#include "settings/Config.h"
#include "settings/Language.h"

#include <QFileDialog>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QStandardPaths>
#include <QtTest>

#include <memory>

class TstQtTexts : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void theFileDialogSpeaksTheProgramsLanguage();
    void theMenuOfAFieldSpeaksTheProgramsLanguage();
    void inEnglishQtSpeaksForItself();
    void theNamesOfKeysStayInEnglish();
    void textsOfOtherClassesStayInEnglish();
    void aTextKeepsItsPlaceholders();
    void asManyStartsAsThereAreInstallOne();

private:
    static void speak(const char *code);
    static QString labelOf(const QFileDialog &dialog, const char *name)
    {
        return dialog.findChild<QLabel *>(QString::fromLatin1(name))->text();
    }
};

void TstQtTexts::speak(const char *code)
{
    globalSet(QStringLiteral("userLang"), QString::fromLatin1(code));
    languageLoadFrom(QStringLiteral(LUX_LANGUAGE_DIR), QLocale::c());
}

void TstQtTexts::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    configLoad();
    QtTexts::install();
}

void TstQtTexts::init()
{
    speak("de");
}

void TstQtTexts::theFileDialogSpeaksTheProgramsLanguage()
{
    QFileDialog dialog;
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    QCOMPARE(labelOf(dialog, "lookInLabel"), QStringLiteral("Suchen in:"));
    QCOMPARE(labelOf(dialog, "fileNameLabel"), QStringLiteral("Datei&name:"));
    QCOMPARE(labelOf(dialog, "fileTypeLabel"), QStringLiteral("Dateityp:"));
}

void TstQtTexts::theMenuOfAFieldSpeaksTheProgramsLanguage()
{
    QLineEdit field(QStringLiteral("text"));
    const std::unique_ptr<QMenu> menu(field.createStandardContextMenu());
    QStringList texts;
    for (const QAction *action : menu->actions()) {
        if (!action->isSeparator()) {
            texts += action->text().section(QLatin1Char('\t'), 0, 0);
        }
    }
    QCOMPARE(
        texts.join(QStringLiteral(", ")),
        QStringLiteral("&Rückgängig, &Wiederholen, &Ausschneiden, &Kopieren, &Einfügen, Löschen, Alles auswählen"));
}

void TstQtTexts::inEnglishQtSpeaksForItself()
{
    speak("en-US");
    QFileDialog dialog;
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    QCOMPARE(labelOf(dialog, "lookInLabel"), QStringLiteral("Look in:"));
    QCOMPARE(labelOf(dialog, "fileNameLabel"), QStringLiteral("File &name:"));
}

void TstQtTexts::theNamesOfKeysStayInEnglish()
{
    QCOMPARE(QCoreApplication::translate("QShortcut", "Delete"), QStringLiteral("Delete"));
    QCOMPARE(QKeySequence(QStringLiteral("Ctrl+Del")).toString(QKeySequence::NativeText), QStringLiteral("Ctrl+Del"));
}

void TstQtTexts::textsOfOtherClassesStayInEnglish()
{
    QCOMPARE(QCoreApplication::translate("QFileDialog", "Remove"), QStringLiteral("Entfernen"));
    QCOMPARE(QCoreApplication::translate("QWizard", "Cancel"), QStringLiteral("Cancel"));
    // A text of the program is none of Qt's, even in a class of Qt.
    QCOMPARE(QCoreApplication::translate("QFileDialog", "Options"), QStringLiteral("Options"));
}

void TstQtTexts::aTextKeepsItsPlaceholders()
{
    QCOMPARE(QCoreApplication::translate("QFileDialog", "%1\nFile not found.\nPlease verify the correct file name was "
                                                        "given.")
                 .arg(QStringLiteral("/a.cxdat")),
             QStringLiteral("/a.cxdat\nDatei nicht gefunden.\nBitte prüfen Sie den Dateinamen."));
}

void TstQtTexts::asManyStartsAsThereAreInstallOne()
{
    QtTexts::install();
    QtTexts::install();
    QCOMPARE(qApp->findChildren<QtTexts *>().size(), 1);
}

QTEST_MAIN(TstQtTexts)
#include "tst_QtTexts.moc"
