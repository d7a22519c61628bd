#include "app/FileDialogs.h"
#include "controls/Contrast.h"
#include "controls/Look.h"
#include "controls/Style.h"
#include "support/DialogDriver.h"
#include "support/GuiTestMain.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QLocale>
#include <QTemporaryDir>
#include <QTreeView>

/// The two file dialogs, answered in Qt's own form of them.
class TstFileDialogs : public QObject {
    Q_OBJECT
private slots:
    void init();

    void eachKindHasItsFilterAndSuffix_data();
    void eachKindHasItsFilterAndSuffix();
    void anUnknownKindAsksNothing();
    void theProposedNameIsTheTimeAndLegalOnAllSystems();
    void theDialogBeginsInTheLastDirectory();
    void aLastDirectoryThatIsGoneGivesTheDocuments();
    void withoutDocumentsTheDialogBeginsAtHome();
    void theSaveDialogOffersTheKindInADetailView();
    void theSuffixIsAddedToATypedName();
    void anEndingThatIsGivenTakesThePlaceOfTheKinds();
    void theDirectoryIsRememberedOnlyWhenAFileIsChosen();
    void aFileThatExistsIsReplacedOnlyOnRequest();
    void theDialogsSpeakTheProgramsLanguage();
    void theDialogHasRoomWhateverTheLastOneHad();
    void theCompletionsOfATypedNameAreDark();
    void theOpenDialogTakesExistingFilesOnly();
    void theOpenDialogsFilterStandsAsItIs();

private:
    QString last() const { return globalGet(QStringLiteral("lastPath")); }
    QString save(int kind = 0) { return FileDialogs::askSavePath(nullptr, kind, m_time); }
    QString path(const char *name) const { return m_dir->filePath(QLatin1String(name)); }
    void touch(const char *name) const
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }

    const QDateTime m_time{QDate(2026, 3, 9), QTime(7, 5, 1)};
    std::unique_ptr<QTemporaryDir> m_dir;
};

void TstFileDialogs::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    globalSet(QStringLiteral("lastPath"), m_dir->path());
}

void TstFileDialogs::eachKindHasItsFilterAndSuffix_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QString>("suffix");
    QTest::newRow("data") << 0 << QStringLiteral("LUX data file (*.cxdat)") << QStringLiteral("cxdat");
    QTest::newRow("settings") << 1 << QStringLiteral("LUX settings file (*.cxset)") << QStringLiteral("cxset");
    QTest::newRow("text") << 2 << QStringLiteral("Text file (*.txt)") << QStringLiteral("txt");
    QTest::newRow("CSV") << 3 << QStringLiteral("CSV file (*.csv)") << QStringLiteral("csv");
    QTest::newRow("binary") << 4 << QStringLiteral("Binary file (*.bin)") << QStringLiteral("bin");
    QTest::newRow("VCD") << 6 << QStringLiteral("VCD file (*.vcd)") << QStringLiteral("vcd");
    QTest::newRow("archive") << 7 << QStringLiteral("Session archive (*.sr)") << QStringLiteral("sr");
}

void TstFileDialogs::eachKindHasItsFilterAndSuffix()
{
    QFETCH(int, kind);
    QFETCH(QString, filter);
    QFETCH(QString, suffix);
    QCOMPARE(FileDialogs::saveKind(kind).filter, filter);
    QCOMPARE(FileDialogs::saveKind(kind).suffix, suffix);
    QString shown;
    DialogDriver<QFileDialog> dialogs([&](QFileDialog &dialog) {
        shown = dialog.selectedNameFilter();
        chooseFile(dialog, {});
    });
    const QString chosen = save(kind);
    QCOMPARE(shown, filter);
    QCOMPARE(chosen, path("2026-03-09_07-05-01.") + suffix);
}

void TstFileDialogs::anUnknownKindAsksNothing()
{
    DialogDriver<QFileDialog> dialogs([](QFileDialog &dialog) { chooseFile(dialog, {}); });
    for (const int kind : {-1, 99, 1000}) {
        QCOMPARE(save(kind), QString());
    }
    QCOMPARE(dialogs.count, 0);
}

void TstFileDialogs::theProposedNameIsTheTimeAndLegalOnAllSystems()
{
    const QString name = FileDialogs::proposedName(m_time);
    QCOMPARE(name, QStringLiteral("2026-03-09_07-05-01"));
    for (const QChar illegal : QStringLiteral("<>:\"/\\|?*. ")) {
        QVERIFY(!name.contains(illegal));
    }
}

void TstFileDialogs::theDialogBeginsInTheLastDirectory()
{
    QCOMPARE(FileDialogs::startDirectory(), m_dir->path());
    DialogDriver<QFileDialog> dialogs([this](QFileDialog &dialog) {
        QCOMPARE(dialog.directory().absolutePath(), m_dir->path());
        dialog.reject();
    });
    QCOMPARE(save(), QString());
    QCOMPARE(FileDialogs::askOpenPath(nullptr), QString());
    QCOMPARE(dialogs.count, 2);
}

void TstFileDialogs::aLastDirectoryThatIsGoneGivesTheDocuments()
{
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    QVERIFY(QDir().mkpath(documents));
    touch("file");
    for (const QString &gone : {QString(), path("gone"), path("file")}) {
        globalSet(QStringLiteral("lastPath"), gone);
        QCOMPARE(FileDialogs::startDirectory(), documents);
    }
}

void TstFileDialogs::withoutDocumentsTheDialogBeginsAtHome()
{
#ifdef Q_OS_WIN
    QSKIP("this system always has a folder of documents");
#endif
    const QByteArray home = qgetenv("HOME");
    qputenv("HOME", QFile::encodeName(m_dir->path()));
    globalSet(QStringLiteral("lastPath"), QString());
    const QString start = FileDialogs::startDirectory();
    qputenv("HOME", home);
    QCOMPARE(start, m_dir->path());
}

void TstFileDialogs::theSaveDialogOffersTheKindInADetailView()
{
    DialogDriver<QFileDialog> dialogs([](QFileDialog &dialog) {
        QCOMPARE(dialog.acceptMode(), QFileDialog::AcceptSave);
        QCOMPARE(dialog.viewMode(), QFileDialog::Detail);
        QCOMPARE(dialog.defaultSuffix(), QStringLiteral("cxset"));
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Save Settings"));
        dialog.reject();
    });
    QCOMPARE(save(1), QString());
    QCOMPARE(dialogs.count, 1);
}

void TstFileDialogs::theSuffixIsAddedToATypedName()
{
    QString typed = QStringLiteral("typed");
    DialogDriver<QFileDialog> dialogs([&](QFileDialog &dialog) { chooseFile(dialog, typed); });
    QCOMPARE(save(), path("typed.cxdat"));
    typed = QStringLiteral("other.dat");
    QCOMPARE(save(), path("other.dat"));
}

void TstFileDialogs::anEndingThatIsGivenTakesThePlaceOfTheKinds()
{
    QString typed;
    QString filter;
    DialogDriver<QFileDialog> dialogs([&](QFileDialog &dialog) {
        filter = dialog.selectedNameFilter();
        emit dialog.filterSelected(filter); // the user looks at the only one that there is
        chooseFile(dialog, typed);
    });
    const auto ask = [this] { return FileDialogs::askSavePath(nullptr, 2, m_time, QStringLiteral("pcap")); };
    QCOMPARE(ask(), path("2026-03-09_07-05-01.pcap"));
    QCOMPARE(filter, QStringLiteral("Text file (*.txt)"));
    typed = QStringLiteral("typed");
    QCOMPARE(ask(), path("typed.pcap"));
    typed = QStringLiteral("typed.txt");
    QCOMPARE(ask(), path("typed.txt"));
}

void TstFileDialogs::theDirectoryIsRememberedOnlyWhenAFileIsChosen()
{
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("below")));
    QString typed;
    DialogDriver<QFileDialog> dialogs([&](QFileDialog &dialog) {
        if (typed.isEmpty()) {
            dialog.setDirectory(path("below"));
            dialog.reject();
        } else {
            chooseFile(dialog, typed);
        }
    });
    QCOMPARE(save(), QString());
    QCOMPARE(FileDialogs::askOpenPath(nullptr), QString());
    QCOMPARE(last(), m_dir->path());
    typed = path("below/a");
    QCOMPARE(save(), path("below/a.cxdat"));
    QCOMPARE(last(), path("below"));
    touch("b.cxset");
    typed = path("b.cxset");
    QCOMPARE(FileDialogs::askOpenPath(nullptr), path("b.cxset"));
    QCOMPARE(last(), m_dir->path());
}

void TstFileDialogs::aFileThatExistsIsReplacedOnlyOnRequest()
{
    touch("old.cxdat");
    DialogDriver<QFileDialog> dialogs([&](QFileDialog &dialog) {
        // The name without its suffix is what a system's dialog would ask about, and it does not exist.
        chooseFile(dialog, dialogs.count == 1 ? QStringLiteral("old") : QString());
    });
    QString text;
    int boxes = 0;
    DialogDriver<QMessageBox> box([&](QMessageBox &question) {
        text = question.text();
        pressButton(question, ++boxes == 1 ? QStringLiteral("Cancel") : QStringLiteral("Replace"));
    });
    QCOMPARE(save(), path("old.cxdat"));
    QCOMPARE(dialogs.count, 2);
    QCOMPARE(boxes, 2);
    QCOMPARE(text, QStringLiteral("The file already exists. Do you want to replace it?\r\n") + path("old.cxdat"));
}

void TstFileDialogs::theDialogsSpeakTheProgramsLanguage()
{
    QFile file(path("de.xml"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("<language><head><code>de</code></head><lux>"
               "<t src='File name:'>Dateiname:</t><t src='Save'>Speichern</t><t src='Cancel'>Abbrechen</t></lux>"
               "<analyzers/></language>");
    file.close();
    globalSet(QStringLiteral("userLang"), QStringLiteral("de"));
    languageLoadFrom(m_dir->path(), QLocale::c());
    QStringList texts;
    DialogDriver<QFileDialog> dialogs([&](QFileDialog &dialog) {
        for (const QAbstractButton *button : dialog.findChildren<QAbstractButton *>()) {
            texts += button->text();
        }
        for (const QLabel *label : dialog.findChildren<QLabel *>()) {
            texts += label->text();
        }
        dialog.reject();
    });
    QCOMPARE(save(), QString());
    globalSet(QStringLiteral("userLang"), QStringLiteral("en-US"));
    languageLoad();
    for (const char *text : {"Dateiname:", "Speichern", "Abbrechen"}) {
        QVERIFY2(texts.contains(QLatin1String(text)), text);
    }
}

void TstFileDialogs::theDialogHasRoomWhateverTheLastOneHad()
{
    const auto headerOf = [](const QFileDialog &dialog) {
        return dialog.findChild<QTreeView *>(QStringLiteral("treeView"))->header();
    };
    globalsSetDpi(192);
    {
        // Qt remembers the columns, also from a coarser screen and another language.
        const DialogDriver<QFileDialog> narrow([&headerOf](QFileDialog &dialog) {
            dialog.resize(200, 200);
            for (int column = 0; column < headerOf(dialog)->count(); ++column) {
                headerOf(dialog)->resizeSection(column, 24);
            }
        });
        QVERIFY(save().isEmpty());
    }
    const DialogDriver<QFileDialog> driver([&headerOf](QFileDialog &dialog) {
        for (int column = 0; column < headerOf(dialog)->count(); ++column) {
            QVERIFY(headerOf(dialog)->sectionSize(column) >= headerOf(dialog)->sectionSizeHint(column));
        }
        QVERIFY(dialog.width() >= dp(640));
        QVERIFY(dialog.findChild<QListView *>(QStringLiteral("sidebar"))->width() >= dp(110));
    });
    QVERIFY(save().isEmpty());
    QCOMPARE(driver.count, 1);
    globalsSetDpi(96);
}

void TstFileDialogs::theCompletionsOfATypedNameAreDark()
{
    touch("capture.cxdat");
    qApp->setStyleSheet(programStyle());
    QColor ground;
    QColor text;
    const DialogDriver<QFileDialog> driver([&](QFileDialog &dialog) {
        auto *name = dialog.findChild<QLineEdit *>();
        QAbstractItemView *list = name->completer()->popup();
        list->ensurePolished();
        list->resize(100, 100);
        const QImage image = list->grab().toImage();
        ground = image.pixelColor(50, 90);
        text = list->palette().color(QPalette::Text);
        dialog.reject();
    });
    QCOMPARE(FileDialogs::askOpenPath(nullptr), QString());
    qApp->setStyleSheet(QString());
    QCOMPARE(ground, gGreys[8]);
    QVERIFY(contrastRatio(text, ground) >= leastTextContrast);
}

void TstFileDialogs::theOpenDialogTakesExistingFilesOnly()
{
    touch("there.cxdat");
    QString typed = path("missing.cxdat");
    DialogDriver<QFileDialog> dialogs([&](QFileDialog &dialog) {
        QCOMPARE(dialog.fileMode(), QFileDialog::ExistingFile);
        QCOMPARE(dialog.acceptMode(), QFileDialog::AcceptOpen);
        dialog.selectFile(typed);
        static_cast<QDialog &>(dialog).accept(); // as the Enter key does
    });
    DialogDriver<QMessageBox> box([](QMessageBox &question) { question.reject(); });
    QCOMPARE(FileDialogs::askOpenPath(nullptr), QString());
    QCOMPARE(box.count, 1);
    typed = path("there.cxdat");
    QCOMPARE(FileDialogs::askOpenPath(nullptr), typed);
}

void TstFileDialogs::theOpenDialogsFilterStandsAsItIs()
{
    DialogDriver<QFileDialog> dialogs([](QFileDialog &dialog) {
        QCOMPARE(dialog.nameFilters(), QStringList({QStringLiteral("LUX file (*.cxset *cxdat)"),
                                                    QStringLiteral("Captures of other programs (*.sr *.vcd)")}));
        dialog.reject();
    });
    QCOMPARE(FileDialogs::askOpenPath(nullptr), QString());
    QCOMPARE(dialogs.count, 1);
}

LUX_GUI_TEST(TstFileDialogs)
#include "tst_FileDialogs.moc"
