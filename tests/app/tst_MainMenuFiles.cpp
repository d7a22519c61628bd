#include "app/MenuDesk.h"
#include "device/DeviceGlobals.h"
#include "settings/Globals.h"
#include "store/SmpWriter.h"
#include "wave/MainView.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QRadioButton>

#include <algorithm>

/// Opening, saving and exporting by the menu's actions.
class TstMainMenuFiles : public QObject, private MenuDesk {
    Q_OBJECT
private slots:
    void init() { setUpMenu(); }
    void cleanup() { tearDownMenu(); }

    void withoutACaptureThereIsANoticeAndNoDialog();
    void aCaptureWithoutSamplesIsNoData();
    void aSavedCaptureOpensAgainAsItWas();
    void theProposedNameIsTaken();
    void aRejectedSelectionAsksForNoFile();
    void aCancelledFileDialogWritesNothing();
    void onlyTheChosenChannelsAreSaved();
    void theRangeBetweenTwoMarkersIsSaved();
    void theMarkersComeFromTheWindow();
    void aCaptureIsSavedOntoTheFileInView();
    void aTextFileHoldsALineForEachChange();
    void aCsvFileHoldsTheSameAsATextFile();
    void aBinaryFileHoldsARowForEachSample();
    void anExportReplacesALongerFile();
    void aCaptureOfOneSampleIsSavedAndExported();
    void settingsAreSavedAndOpenedAgain();
    void settingsThatCannotBeSavedGiveNoBox();
    void theStatusLineTellsWhatWasWritten();
    void saveAndExportHaveTitlesOfTheirOwn();

private:
    void smallCapture() { CaptureBuilder{1000, 1000000, 100, 200}.fill(*gDev->smpData); }
    /// Leaves only channel 0 checked.
    static void onlyChannel0(ExportDataSet &dialog)
    {
        for (QCheckBox *box : dialog.findChildren<QCheckBox *>()) {
            box->setChecked(box->text() == QStringLiteral("CH0"));
        }
    }
    static void chooseTime(const ExportDataSet &dialog, const char *text)
    {
        for (QRadioButton *choice : dialog.findChildren<QRadioButton *>()) {
            if (choice->text() == QLatin1String(text)) {
                choice->click();
            }
        }
    }
};

void TstMainMenuFiles::withoutACaptureThereIsANoticeAndNoDialog()
{
    m_menu->actSaveData();
    QCOMPARE(m_boxes->seen.count, 1);
    QCOMPARE(m_boxes->seen.title, QString());
    QCOMPARE(m_boxes->seen.text, QStringLiteral("Sorry, there is no data that can be saved."));
    QCOMPARE(m_boxes->seen.button, QStringLiteral("Close"));
    QCOMPARE(m_boxes->seen.icon, QMessageBox::Information);
    for (const int kind : {2, 3, 4}) {
        exportAs(kind);
        QCOMPARE(m_boxes->seen.count, kind);
        QCOMPARE(m_boxes->seen.text, QStringLiteral("Sorry, there is no data that can be exported."));
    }
    QCOMPARE(m_selections->count + m_files->count, 0);
}

void TstMainMenuFiles::aCaptureWithoutSamplesIsNoData()
{
    gDev->smpData->begin(0, 1000000, std::vector<std::uint8_t>(std::size_t(gDev->smpData->chnCount), 1));
    gDev->smpData->finish(0);
    m_menu->actSaveData();
    exportAs(4);
    QCOMPARE(m_boxes->seen.count, 2);
    QCOMPARE(m_selections->count, 0);
}

void TstMainMenuFiles::aSavedCaptureOpensAgainAsItWas()
{
    capture(50000);
    SmpWriter(*gDev->smpData).setTrgPos(4711);
    m_path = path("saved.cxdat");
    m_menu->actSaveData();
    QCOMPARE(m_selections->count, 1);
    QCOMPARE(m_boxes->seen.count, 0);
    QVERIFY(gOpenFile.isEmpty());
    m_window->slotDevPreConnect(9);
    m_menu->actOpenFile();
    QCOMPARE(m_boxes->seen.count, 0);
    QCOMPARE(gDev->model, 0);
    QCOMPARE(gDev->smpData->sampleCount(), 50000);
    QCOMPARE(gDev->smpData->trgPos(), 4711);
    QCOMPARE(gDev->smpData->edgeCount(3, 0, 49999), 124);
    QCOMPARE(gOpenFile, m_path);
    QCOMPARE(m_window->windowTitle(), m_path + QStringLiteral(" - CorvanLUX"));
}

void TstMainMenuFiles::theProposedNameIsTaken()
{
    smallCapture();
    m_menu->actSaveData();
    QVERIFY(QFile::exists(path("2026-03-09_07-05-01.cxdat")));
    exportAs(3);
    QVERIFY(QFile::exists(path("2026-03-09_07-05-01.csv")));
    QCOMPARE(m_boxes->seen.count, 0);
}

void TstMainMenuFiles::aRejectedSelectionAsksForNoFile()
{
    smallCapture();
    m_cancelSelection = true;
    m_menu->actSaveData();
    for (const int kind : {2, 3, 4}) {
        exportAs(kind);
    }
    QCOMPARE(m_selections->count, 4);
    QCOMPARE(m_files->count, 0);
    QCOMPARE(m_boxes->seen.count, 0);
}

void TstMainMenuFiles::aCancelledFileDialogWritesNothing()
{
    smallCapture();
    m_cancelFile = true;
    m_path = path("never");
    m_menu->actSaveData();
    m_menu->actSaveSettings();
    for (const int kind : {2, 3, 4}) {
        exportAs(kind);
    }
    QCOMPARE(m_selections->count, 4);
    QCOMPARE(m_files->count, 5);
    QCOMPARE(m_boxes->seen.count, 0);
    QVERIFY(QDir(m_dir->path()).isEmpty());
}

void TstMainMenuFiles::onlyTheChosenChannelsAreSaved()
{
    smallCapture();
    m_select = onlyChannel0;
    m_path = path("one.cxdat");
    m_menu->actSaveData();
    m_menu->actOpenFile();
    QCOMPARE(gDev->smpData->edgeCount(0, 0, 999), 9);
    QCOMPARE(gDev->smpData->edgeCount(1, 0, 999), -1);
}

void TstMainMenuFiles::theRangeBetweenTwoMarkersIsSaved()
{
    smallCapture();
    m_menu->shownPairs = [] {
        return QVector<ShownPair>{{0, QStringLiteral("A1"), QStringLiteral("A2"), 10, 20},
                                  {2, QStringLiteral("C1"), QStringLiteral("C2"), 750, 250}};
    };
    m_select = [](ExportDataSet &dialog) {
        chooseTime(dialog, "Timing markers");
        auto *pairs = dialog.findChild<QComboBox *>();
        QCOMPARE(pairs->count(), 2);
        pairs->setCurrentIndex(1);
    };
    m_path = path("range.cxdat");
    m_menu->actSaveData();
    m_menu->actOpenFile();
    QCOMPARE(gDev->smpData->sampleCount(), 500);
    QCOMPARE(gDev->smpData->trgPos(), 0); // it lay before the range
}

void TstMainMenuFiles::theMarkersComeFromTheWindow()
{
    QVERIFY(m_menu->shownPairs != nullptr);
    QCOMPARE(m_menu->shownPairs().size(), m_window->findChild<MainView *>()->shownPairs().size());
}

void TstMainMenuFiles::aCaptureIsSavedOntoTheFileInView()
{
    smallCapture();
    m_path = path("same.cxdat");
    m_menu->actSaveData();
    m_menu->actOpenFile();
    const QByteArray before = bytesOf(m_path);
    m_menu->actSaveData(); // the first button of the question replaces
    QCOMPARE(m_boxes->seen.count, 1);
    QVERIFY(m_boxes->seen.text.startsWith(QStringLiteral("The file already exists.")));
    QCOMPARE(gOpenFile, m_path);
    QCOMPARE(gDev->smpData->sampleCount(), 1000);
    const auto data = [](const QByteArray &file) { return file.mid(configHeadSize(file)); };
    QVERIFY(data(before).startsWith("cxdat"));
    QCOMPARE(data(bytesOf(m_path)), data(before));
    m_menu->actOpenFile();
    QCOMPARE(m_boxes->seen.count, 1);
    QCOMPARE(gDev->smpData->sampleCount(), 1000);
}

void TstMainMenuFiles::aTextFileHoldsALineForEachChange()
{
    smallCapture();
    m_select = onlyChannel0;
    m_path = path("text");
    exportAs(2);
    QCOMPARE(m_boxes->seen.count, 0);
    const QList<QByteArray> lines = bytesOf(path("text.txt")).replace('\r', QByteArray()).split('\n');
    QCOMPARE(lines.size(), 1 + 10 + 1);
    QCOMPARE(lines.at(0), QByteArray("Time[s], Channel 0"));
    QCOMPARE(lines.at(1), QByteArray("-0.000200000, 0"));
    QCOMPARE(lines.at(2), QByteArray("-0.000100000, 1"));
    QCOMPARE(lines.at(10), QByteArray("0.000700000, 1"));
}

void TstMainMenuFiles::aCsvFileHoldsTheSameAsATextFile()
{
    smallCapture();
    m_path = path("same");
    exportAs(2);
    exportAs(3);
    QVERIFY(!bytesOf(path("same.txt")).isEmpty());
    QCOMPARE(bytesOf(path("same.csv")), bytesOf(path("same.txt")));
}

void TstMainMenuFiles::aBinaryFileHoldsARowForEachSample()
{
    smallCapture();
    m_path = path("dump");
    exportAs(4);
    const QByteArray bytes = bytesOf(path("dump.bin"));
    QCOMPARE(bytes.size(), 2000); // 16 channels
    const auto rowOf = [&](int pos) { return (bytes.at(2 * pos) & 0xff) | (bytes.at(2 * pos + 1) & 0xff) << 8; };
    QCOMPARE(rowOf(0), 0xaaaa);
    QCOMPARE(rowOf(99), 0xaaaa);
    QCOMPARE(rowOf(100), 0xaaab);
    QCOMPARE(rowOf(200), 0xaaa8);
}

void TstMainMenuFiles::anExportReplacesALongerFile()
{
    QFile old(path("old.bin"));
    QVERIFY(old.open(QIODevice::WriteOnly));
    old.write(QByteArray(5000, 'x'));
    old.close();
    smallCapture();
    m_path = path("old.bin");
    exportAs(4);
    QCOMPARE(bytesOf(m_path).size(), 2000);
}

void TstMainMenuFiles::aCaptureOfOneSampleIsSavedAndExported()
{
    CaptureBuilder{1}.fill(*gDev->smpData);
    m_path = path("single");
    exportAs(2);
    exportAs(4);
    m_menu->actSaveData();
    QCOMPARE(m_boxes->seen.count, 0);
    QCOMPARE(bytesOf(path("single.bin")), QByteArray("\xaa\xaa"));
    QCOMPARE(bytesOf(path("single.txt")).count('\n'), 2);
    m_path = path("single.cxdat");
    m_menu->actOpenFile();
    QCOMPARE(gDev->smpData->sampleCount(), 1);
}

void TstMainMenuFiles::settingsAreSavedAndOpenedAgain()
{
    globalSet(QStringLiteral("chnShowName3"), QStringLiteral("MOSI"));
    m_path = path("mine.cxset");
    m_menu->actSaveSettings();
    globalSet(QStringLiteral("chnShowName3"), QStringLiteral("other"));
    m_menu->actOpenFile();
    QCOMPARE(globalGet(QStringLiteral("chnShowName3")), QStringLiteral("MOSI"));
    QCOMPARE(m_boxes->seen.count, 0);
    QVERIFY(gOpenFile.isEmpty());
}

void TstMainMenuFiles::settingsThatCannotBeSavedGiveNoBox()
{
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("gone")));
    m_files = std::make_unique<DialogDriver<QFileDialog>>([this](QFileDialog &dialog) {
        chooseFile(dialog, path("gone/mine.cxset"));
        QVERIFY(QDir(path("gone")).removeRecursively());
    });
    QStringList told;
    connect(m_menu, &MainMenu::fileTold, this, [&told](const QString &text) { told += text; });
    m_menu->actSaveSettings();
    QCOMPARE(m_boxes->seen.count, 0);
    QCOMPARE(told, QStringList{QStringLiteral("File save failed. The folder does not exist.")});
}

void TstMainMenuFiles::theStatusLineTellsWhatWasWritten()
{
    smallCapture();
    QStringList told;
    connect(m_menu, &MainMenu::fileTold, this, [&told](const QString &text) { told += text; });
    m_path = path("a.cxdat");
    m_menu->actSaveData();
    m_path = path("a.cxset");
    m_menu->actSaveSettings();
    m_path = path("a.csv");
    exportAs(3);
    QCOMPARE(told, (QStringList{QStringLiteral("Saved: a.cxdat"), QStringLiteral("Saved: a.cxset"),
                                QStringLiteral("Saved: a.csv")}));
    const QList<QLabel *> labels = m_window->findChildren<QLabel *>();
    QVERIFY(std::any_of(labels.begin(), labels.end(), [](const QLabel *label) {
        return label->toolTip() == QStringLiteral("Saved: a.csv") && !label->text().isEmpty();
    }));
    QCOMPARE(m_boxes->seen.count, 0);
}

void TstMainMenuFiles::saveAndExportHaveTitlesOfTheirOwn()
{
    smallCapture();
    QStringList titles;
    m_select = [&titles](ExportDataSet &dialog) { titles += dialog.windowTitle(); };
    m_path = path("a");
    m_menu->actSaveData();
    exportAs(2);
    exportAs(4);
    QCOMPARE(titles,
             (QStringList{QStringLiteral("Save Data"), QStringLiteral("Export Data"), QStringLiteral("Export Data")}));
}

LUX_GUI_TEST(TstMainMenuFiles)
#include "tst_MainMenuFiles.moc"
