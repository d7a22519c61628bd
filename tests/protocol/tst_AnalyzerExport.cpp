#include "analyzer/AnalyzerDesk.h"
#include "analyzer/plugins/TextGate.h"
#include "controls/MyProgressDlg.h"
#include "files/CaptureFile.h"
#include "files/FileSizeLimit.h"
#include "protocol/AnalyzerExport.h"
#include "protocol/ExportDialog.h"
#include "protocol/FaceDesk.h"
#include "support/BoxCloser.h"
#include "support/GuiTestMain.h"
#include "support/StarredTexts.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QGroupBox>
#include <QLibrary>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <thread>

namespace {

QString text(const char *ascii)
{
    return QString::fromLatin1(ascii);
}

/// An analyzer of one of the tests' plug-ins, its menu, and a folder for its files.
class ExportDesk {
public:
    explicit ExportDesk(const char *plugin = "sound", std::int64_t samples = 100000) : desk({text(plugin)})
    {
        CaptureBuilder{samples}.fill(desk.capture);
        desk.manager->setCapture(&desk.capture, 0);
        ready = desk.add(0) && desk.waitForWorkers();
        answer = path("frames.txt");
    }
    [[nodiscard]] QString path(const char *name) const { return folder.filePath(text(name)); }
    /// Opens the menu and takes its only ending, or the given one.
    void take(int ending = 0)
    {
        menu.clear();
        exporter.extendMenu(menu, 0);
        const QMenu *endings = menu.actions().constFirst()->menu();
        QVERIFY(endings != nullptr && endings->actions().size() > ending);
        endings->actions().at(ending)->trigger();
    }
    /// Of the plug-in "text-waits": an export gets no further while it is held.
    [[nodiscard]] TextGate &texts() const
    {
        QLibrary file(desk.manager->foundLibraries().at(0).path);
        return *reinterpret_cast<TextGate *(*)()>(file.resolve("TextGateOf"))();
    }
    [[nodiscard]] MyProgressDlg *progress() const { return window.findChild<MyProgressDlg *>(); }
    [[nodiscard]] QByteArray read(const char *name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }
    void put(const char *name, const QByteArray &bytes) const
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    [[nodiscard]] QStringList files() const { return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden); }

    AnalyzerDesk desk;
    QWidget window;
    QMenu menu;
    QTemporaryDir folder;
    QString answer; ///< of the file dialog
    int asked = -1; ///< the kind that it was asked for; -1 for not asked
    QString askedEnding;
    bool ready = false;
    AnalyzerExport exporter{*desk.manager,
                            [this](QWidget *, int kind, const QString &wanted) {
                                asked = kind;
                                askedEnding = wanted;
                                return answer;
                            },
                            &window};
};

} // namespace

/// The export of decoded results as the user sees it.
class TstAnalyzerExport : public QObject {
    Q_OBJECT
private slots:
    void cleanup() { gOpenFile.clear(); }

    void anAnalyzerWithoutOptionsHasADisabledEntry();
    void oneOptionIsAListOfEndings();
    void severalOptionsAskInADialogAndAStrangeEndingIsAText();
    void optionsAndEndingsAreTranslated();
    void theDialogsFirstChoiceIsCheckedEachTime();
    void choicesOfOneIdAndEndingAreToldApartByTheirPlace();
    void theDialogIsLeftByEscape();
    void theChosenFileIsWrittenAndTold();
    void theKindOfTheEndingIsAskedFor();
    void aUserWhoGivesNoPathGetsNoProgress();
    void withoutFramesABoxSaysSo();
    void anAnalyzerThatIsGoneIsNotExported();
    void theBarOfAFinishedExportClosesByItselfAtTheNextTick();
    void theBarIsFullOnlyWhenTheFileHasItsName();
    void aStoppedExportLeavesNothing();
    void aFailedExportIsTold();
    void theWordsOfADecoderThatFailedAreTold();
    void aFolderWithoutRightsIsToldAsOne();
    void aFullDiskIsToldAsOne();
    void theOpenCaptureIsNotOverwritten();
    void resultsThatAreReplacedMeanwhileEndIt_data();
    void resultsThatAreReplacedMeanwhileEndIt();
};

void TstAnalyzerExport::anAnalyzerWithoutOptionsHasADisabledEntry()
{
    ExportDesk desk("marks");
    desk.exporter.extendMenu(desk.menu, 0);
    QCOMPARE(desk.menu.actions().size(), 1);
    QCOMPARE(desk.menu.actions().constFirst()->text(), text("Export Data"));
    QVERIFY(!desk.menu.actions().constFirst()->isEnabled());
}

void TstAnalyzerExport::oneOptionIsAListOfEndings()
{
    ExportDesk desk;
    QVERIFY(desk.ready);
    desk.exporter.extendMenu(desk.menu, 0);
    const QMenu *endings = desk.menu.actions().constFirst()->menu();
    QVERIFY(endings != nullptr);
    QCOMPARE(endings->title(), text("Export Data"));
    QCOMPARE(endings->actions().at(0)->text(), text("Text file (*.txt)"));
    QCOMPARE(endings->actions().at(1)->text(), text("CSV file (*.csv)"));
}

void TstAnalyzerExport::severalOptionsAskInADialogAndAStrangeEndingIsAText()
{
    ExportDesk desk("exports");
    desk.exporter.extendMenu(desk.menu, 0);
    QCOMPARE(desk.menu.actions().constFirst()->text(), text("Export Data..."));
    desk.menu.actions().constFirst()->trigger();
    QTRY_VERIFY(desk.window.findChild<ExportDialog *>() != nullptr);
    auto *dialog = desk.window.findChild<ExportDialog *>();
    QVERIFY(dialog->isVisible());
    QCOMPARE(dialog->windowTitle(), text("Export File Select"));
    QVERIFY(dialog->minimumWidth() >= dp(405));
    QStringList groups;
    for (const QGroupBox *group : dialog->findChildren<QGroupBox *>()) {
        groups.append(group->title());
    }
    QCOMPARE(groups, (QStringList{text("  Edges && more  "), text("  Levels  ")}));
    QCOMPARE(dialog->exportButtons.size(), 3);
    QCOMPARE(dialog->exportButtons.at(2)->text(), text("Log file (*.log)"));
    QTest::mouseClick(dialog->exportButtons.at(2), Qt::LeftButton);
    QVERIFY(!dialog->exportButtons.at(0)->isChecked()); // one of all groups
    desk.answer = desk.path("frames.log");
    desk.desk.manager->setDisplayFormat(0, int(DisplayBase::Decimal));
    dialog->exportSavedClicked();
    QTRY_VERIFY(desk.files().contains(text("frames.log")));
    QCOMPARE(desk.asked, 2); // a text, whatever its ending
    QCOMPARE(desk.askedEnding, text("log"));
    QTRY_VERIFY_WITH_TIMEOUT(!desk.progress()->isVisible(), 30000);
    QCOMPARE(desk.read("frames.log"), QByteArray("option 7, format 1\n"));
}

void TstAnalyzerExport::optionsAndEndingsAreTranslated()
{
    const StarredTexts language("Lie", {"Edges &amp; more", "CSV file", "Levels"});
    const ExportDesk desk("exports");
    const QVector<ExportOption> options = exportOptionsOf(*desk.desk.manager->analyzerAt(0));
    QCOMPARE(options.size(), 2);
    QCOMPARE(options.at(0).name, text("*Edges & more"));
    QCOMPARE(options.at(0).choices.at(1).text, text("*CSV file (*.csv)"));
    QCOMPARE(options.at(1).name, text("*Levels"));
}

void TstAnalyzerExport::theDialogsFirstChoiceIsCheckedEachTime()
{
    ExportDesk desk("exports");
    for (int i = 0; i < 2; ++i) {
        desk.menu.clear();
        desk.exporter.extendMenu(desk.menu, 0);
        desk.menu.actions().constFirst()->trigger();
        QTRY_VERIFY(desk.window.findChild<ExportDialog *>() != nullptr);
        auto *dialog = desk.window.findChild<ExportDialog *>();
        QVERIFY(dialog->exportButtons.at(0)->isChecked());
        dialog->exportButtons.at(1)->setChecked(true);
        dialog->exportCancelClicked();
        QTRY_VERIFY(desk.window.findChild<ExportDialog *>() == nullptr);
    }
    QCOMPARE(desk.asked, -1);
}

void TstAnalyzerExport::choicesOfOneIdAndEndingAreToldApartByTheirPlace()
{
    const ExportChoice first{3, text("txt"), text("First (*.txt)")};
    const ExportChoice second{3, text("txt"), text("Second (*.txt)")};
    const ExportChoice third{3, text("txt"), text("Third (*.txt)")};
    const QVector<ExportChoice> choices{first, second, third};
    for (int place = 0; place < choices.size(); ++place) {
        ExportDialog dialog({{text("One"), {first, second}}, {text("Other"), {third}}});
        const QSignalSpy chosen(&dialog, &ExportDialog::chosen);
        dialog.exportButtons.at(place)->setChecked(true);
        dialog.exportSavedClicked();
        QCOMPARE(chosen.size(), 1);
        QCOMPARE(chosen.at(0).at(0).value<ExportChoice>().text, choices.at(place).text);
    }
}

void TstAnalyzerExport::theDialogIsLeftByEscape()
{
    ExportDesk desk("exports");
    ExportDialog dialog(exportOptionsOf(*desk.desk.manager->analyzerAt(0)));
    const QSignalSpy chosen(&dialog, &ExportDialog::chosen);
    dialog.show();
    QTest::keyClick(&dialog, Qt::Key_Escape);
    QVERIFY(!dialog.isVisible());
    dialog.show();
    QTest::keyClick(&dialog, Qt::Key_Return); // OK
    QVERIFY(!dialog.isVisible());
    QCOMPARE(chosen.size(), 1);
    QCOMPARE(chosen.at(0).at(0).value<ExportChoice>().extension, text("txt"));
}

void TstAnalyzerExport::theChosenFileIsWrittenAndTold()
{
    ExportDesk desk;
    const QSignalSpy told(&desk.exporter, &AnalyzerExport::fileTold);
    desk.take();
    QTRY_COMPARE(told.size(), 1);
    QCOMPARE(told.at(0).at(0).toString(), text("Saved: frames.txt"));
    QCOMPARE(desk.read("frames.txt").count('\n'), 999);
    QVERIFY(!desk.progress()->isVisible());
    QCOMPARE(desk.progress()->windowTitle(), text("Save file"));
    QCOMPARE(desk.progress()->labelText(), text("Saving file, please wait..."));
    QCOMPARE(desk.progress()->findChild<QPushButton *>()->text(), text("Stop"));
    QCOMPARE(int(desk.progress()->windowModality()), int(Qt::ApplicationModal)); // no second export meanwhile
}

void TstAnalyzerExport::theKindOfTheEndingIsAskedFor()
{
    ExportDesk desk;
    desk.answer.clear();
    desk.take(0);
    QTRY_COMPARE(desk.asked, 2);
    desk.take(1);
    QTRY_COMPARE(desk.asked, 3);
}

void TstAnalyzerExport::aUserWhoGivesNoPathGetsNoProgress()
{
    ExportDesk desk;
    desk.answer.clear();
    desk.take();
    QTRY_COMPARE(desk.asked, 2);
    QVERIFY(desk.progress() == nullptr);
    QVERIFY(!desk.desk.manager->isExporting());
}

void TstAnalyzerExport::withoutFramesABoxSaysSo()
{
    FaceDesk desk("slow");
    QVERIFY(desk.add());
    QWidget window;
    QMenu menu;
    int asked = -1;
    AnalyzerExport exporter(
        *desk.manager,
        [&asked](QWidget *, int kind, const QString &) {
            asked = kind;
            return QString();
        },
        &window);
    exporter.extendMenu(menu, 0);
    BoxCloser boxes;
    menu.actions().constFirst()->menu()->actions().constFirst()->trigger();
    QTRY_COMPARE(boxes.seen.count, 1);
    QVERIFY(desk.manager->isWorkerRunning(0)); // there may be frames later
    QCOMPARE(boxes.seen.text, text("Sorry, there is no data that can be exported."));
    QCOMPARE(boxes.seen.title, QString());
    QCOMPARE(int(boxes.seen.icon), int(QMessageBox::Information));
    QCOMPARE(boxes.seen.button, text("Close"));
    QCOMPARE(asked, -1);
}

void TstAnalyzerExport::anAnalyzerThatIsGoneIsNotExported()
{
    ExportDesk desk;
    BoxCloser boxes;
    desk.take();
    desk.desk.manager->removeAnalyzer(0); // before the menu's entry is served
    QTRY_COMPARE(boxes.seen.count, 1);
    QCOMPARE(desk.asked, -1);
    QCOMPARE(desk.files(), QStringList());
}

void TstAnalyzerExport::theBarOfAFinishedExportClosesByItselfAtTheNextTick()
{
    ExportDesk desk;
    auto *ticks = desk.exporter.findChild<QTimer *>();
    desk.take();
    QCoreApplication::sendPostedEvents(&desk.exporter); // what was taken is queued; no timer runs meanwhile
    QVERIFY(desk.progress() != nullptr && desk.progress()->isVisible());
    QVERIFY(ticks != nullptr && ticks->isActive());
    QCOMPARE(ticks->interval(), 200); // the longest that the bar is there without need
    ticks->stop();                    // from here on the test ticks
    QTRY_VERIFY(!desk.desk.manager->isExporting());
    QVERIFY(desk.progress()->isVisible());
    QMetaObject::invokeMethod(&desk.exporter, "slotTimerOut");
    QVERIFY(!desk.progress()->isVisible());
    QCOMPARE(desk.progress()->result(), int(QDialog::Accepted));
}

void TstAnalyzerExport::theBarIsFullOnlyWhenTheFileHasItsName()
{
    ExportDesk desk;
    auto *ticks = desk.exporter.findChild<QTimer *>();
    desk.take();
    QCoreApplication::sendPostedEvents(&desk.exporter);
    ticks->stop(); // from here on the test ticks
    const QDeadlineTimer limit(20000);
    while (desk.desk.manager->exportProgress() < 1.0 && !limit.hasExpired()) {
        std::this_thread::yield(); // the end itself comes by an event
    }
    QVERIFY(desk.desk.manager->isExporting());
    QMetaObject::invokeMethod(&desk.exporter, "slotTimerOut");
    QVERIFY(desk.progress()->isVisible());
    QCOMPARE(desk.progress()->progress(), 99);
    QTRY_VERIFY(!desk.desk.manager->isExporting());
    QMetaObject::invokeMethod(&desk.exporter, "slotTimerOut");
    QVERIFY(!desk.progress()->isVisible());
    desk.take();
    QCoreApplication::sendPostedEvents(&desk.exporter);
    QVERIFY(desk.progress()->isVisible());
    QCOMPARE(desk.progress()->progress(), 0); // the next one begins at its begin
    QTRY_VERIFY(!desk.progress()->isVisible());
}

void TstAnalyzerExport::aStoppedExportLeavesNothing()
{
    ExportDesk desk("text-waits");
    BoxCloser boxes;
    desk.put("frames.txt", "before");
    desk.texts().held = true;
    desk.take();
    QTRY_COMPARE_WITH_TIMEOUT(desk.texts().inside.load(), 1, 30000);
    QVERIFY(desk.progress()->isVisible());
    QTest::keyClick(desk.progress(), Qt::Key_Escape);
    desk.texts().held = false;
    QTRY_VERIFY_WITH_TIMEOUT(!desk.progress()->isVisible(), 30000);
    QCOMPARE(desk.read("frames.txt"), QByteArray("before"));
    QCOMPARE(desk.files().size(), 1);
    QCOMPARE(boxes.seen.count, 0);
}

void TstAnalyzerExport::aFailedExportIsTold()
{
    ExportDesk desk;
    BoxCloser boxes;
    desk.answer = desk.path("nowhere/frames.txt");
    desk.take();
    QTRY_COMPARE(boxes.seen.count, 1);
    QVERIFY(boxes.seen.text.startsWith(text("File save failed.")));
    QVERIFY(boxes.seen.text.contains(desk.answer));
    QVERIFY(boxes.seen.text.endsWith(text("The folder does not exist.")));
    QVERIFY(!desk.progress()->isVisible());
}

void TstAnalyzerExport::theWordsOfADecoderThatFailedAreTold()
{
    ExportDesk desk("text-throws");
    BoxCloser boxes;
    desk.take();
    QTRY_COMPARE(boxes.seen.count, 1);
    QCOMPARE(boxes.seen.title, text("An error occurred"));
    QVERIFY(boxes.seen.text.startsWith(text("File save failed.")));
    QVERIFY(boxes.seen.text.endsWith(text("the plug-in threw")));
    QCOMPARE(desk.files(), QStringList());
}

void TstAnalyzerExport::aFolderWithoutRightsIsToldAsOne()
{
#ifdef Q_OS_UNIX
    ExportDesk desk;
    BoxCloser boxes;
    QVERIFY(QDir(desk.folder.path()).mkdir(text("closed")));
    QString closed = desk.path("closed");
    QVERIFY(QFile::setPermissions(closed, QFile::ReadOwner | QFile::ExeOwner));
    if (QFileInfo(closed).isWritable()) {
        closed = text("/sys"); // closed to root too
        QFile probe(closed + text("/frames.txt"));
        if (probe.open(QIODevice::WriteOnly)) {
            probe.remove();
            QSKIP("nothing is closed to this user");
        }
    }
    desk.answer = closed + text("/frames.txt");
    desk.take();
    QTRY_COMPARE(boxes.seen.count, 1);
    QVERIFY(boxes.seen.text.contains(desk.answer));
    QVERIFY2(boxes.seen.text.endsWith(fileReason({fileResultOf(WriteFault::NoRights)})), qPrintable(boxes.seen.text));
    QFile::setPermissions(desk.path("closed"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
#endif
}

void TstAnalyzerExport::aFullDiskIsToldAsOne()
{
#ifdef Q_OS_UNIX
    ExportDesk desk;
    BoxCloser boxes;
    const FileSizeLimit full(4096);
    desk.take();
    QTRY_COMPARE(boxes.seen.count, 1);
    QVERIFY(boxes.seen.text.endsWith(text("The disk is full.")));
    QCOMPARE(desk.files(), QStringList());
#endif
}

void TstAnalyzerExport::theOpenCaptureIsNotOverwritten()
{
    ExportDesk desk;
    BoxCloser boxes;
    desk.put("capture.cxdat", "data");
    gOpenFile = desk.path("capture.cxdat");
    desk.answer = desk.folder.path() + text("/./capture.cxdat");
    desk.take();
    QTRY_COMPARE(boxes.seen.count, 1);
    QVERIFY(boxes.seen.text.endsWith(text("The file is open in this program.")));
    QCOMPARE(desk.read("capture.cxdat"), QByteArray("data"));
}

void TstAnalyzerExport::resultsThatAreReplacedMeanwhileEndIt_data()
{
    QTest::addColumn<bool>("isBehindAStoppedOne");
    QTest::newRow("the first export") << false;
    QTest::newRow("an export behind a stopped one") << true;
}

void TstAnalyzerExport::resultsThatAreReplacedMeanwhileEndIt()
{
    ExportDesk desk("text-waits");
    BoxCloser boxes;
    TextGate &texts = desk.texts();
    QFETCH(bool, isBehindAStoppedOne);
    if (isBehindAStoppedOne) {
        texts.held = true;
        desk.take();
        QTRY_COMPARE_WITH_TIMEOUT(texts.inside.load(), 1, 30000);
        QTest::keyClick(desk.progress(), Qt::Key_Escape);
        texts.held = false;
        QTRY_VERIFY_WITH_TIMEOUT(!desk.progress()->isVisible(), 30000);
        QCOMPARE(boxes.seen.count, 0);
    }
    ResultsGate &gate = desk.desk.manager->gate();
    gate.patience = std::chrono::seconds(30); // the helper may be slow
    texts.held = true;
    desk.take();
    QTRY_COMPARE_WITH_TIMEOUT(texts.inside.load(), 1, 30000);
    std::thread helper([&] {
        while (!gate.isWanted()) {
            std::this_thread::yield();
        }
        texts.held = false;
    });
    desk.desk.manager->captureStarts();
    helper.join();
    QTRY_COMPARE(boxes.seen.count, 1);
    QVERIFY(boxes.seen.text.endsWith(text("The results have changed meanwhile.")));
    QCOMPARE(desk.files(), QStringList());
    QVERIFY(!desk.progress()->isVisible());
}

LUX_GUI_TEST(TstAnalyzerExport)
#include "tst_AnalyzerExport.moc"
