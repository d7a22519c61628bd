#include "controls/Style.h"
#include "protocol/FaceDesk.h"
#include "protocol/ProtocolEdit.h"
#include "support/BoxCloser.h"
#include "support/DialogDriver.h"
#include "support/GuiTestMain.h"
#include "support/StarredTexts.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>

#include <atomic>
#include <memory>
#include <thread>

namespace {

template<class Editor>
Editor *editor(const ProtocolEdit &dialog, const char *name)
{
    for (auto *found : dialog.findChildren<Editor *>()) {
        if (found->accessibleName() == QLatin1String(name)) {
            return found;
        }
    }
    return nullptr;
}

QComboBox *combo(const ProtocolEdit &dialog, const char *name)
{
    return editor<QComboBox>(dialog, name);
}

QLineEdit *field(const ProtocolEdit &dialog, const char *name)
{
    return editor<QLineEdit>(dialog, name);
}

QStringList entriesOf(const QComboBox *box)
{
    QStringList texts;
    for (int i = 0; i < box->count(); ++i) {
        texts.append(box->itemText(i));
    }
    return texts;
}

QGridLayout *gridOf(const ProtocolEdit &dialog)
{
    return dialog.findChild<QGridLayout *>();
}

/// The row of the grid in which a widget stands.
int rowOf(const ProtocolEdit &dialog, QWidget *widget)
{
    QGridLayout *grid = gridOf(dialog);
    int row = -1;
    int column = 0;
    int rows = 0;
    int columns = 0;
    grid->getItemPosition(grid->indexOf(widget), &row, &column, &rows, &columns);
    return row;
}

void press(ProtocolEdit &dialog, const char *button)
{
    pressButton(dialog, QString::fromLatin1(button));
}

QString savedText(const FaceDesk &desk, int index = 0)
{
    return QString::fromLatin1(desk.manager->analyzerAt(index)->GetAnalyzerSettings()->SaveText());
}

} // namespace

class TstProtocolEdit : public QObject {
    Q_OBJECT
private slots:
    void init() { globalsSetDpi(96); }

    void eachKindOfSettingHasItsEditor();
    void theRowsStandAsTold();
    void withoutChannelsTheSpacerStandsFirst();
    void withChannelsAloneThereIsOneSpacer();
    void theFrameIsAsTold_data();
    void theFrameIsAsTold();
    void ofEqualNumbersTheLastIsShown();
    void editorsBelowEachOtherAreOfOneWidth();
    void allTextsButThoseOfChannelsAreTranslated();
    void aChannelEditorTellsTheUsers();
    void aSecondAnalyzerStartsOnFreeChannels();
    void anEditorShowsTheStoredChannel();
    void aDeviceWithoutChannelsOffersNone_data();
    void aDeviceWithoutChannelsOffersNone();

    void okAddsTheAnalyzer();
    void lettersBeyondAsciiAreKept();
    void cancelGivesTheNewInstanceBack();
    void aNewInstanceWithoutAChangeIsGivenBack();
    void okRestartsAChangedAnalyzer();
    void okWithoutAChangeLeavesTheResults();
    void aStoppedWorkerRunsAgainWhenNothingChanged();
    void aStoppedWorkerRunsAgainAfterARefusalAndCancel();
    void settingsAreNotWrittenWhileResultsAreRead();
    void settingsThatAReaderDoesNotLeaveAreNotWritten();

    void numbersOutOfTheirRangeAreTold_data();
    void numbersOutOfTheirRangeAreTold();
    void settingsThatThrowAreToldAndKeepTheDialogOpen();
    void aNumberThatIsTooLongIsNotTakenForZero_data();
    void aNumberThatIsTooLongIsNotTakenForZero();
    void twoBadNumbersGiveTwoBoxes();
    void anAnalyzerThatIsReplacedBehindABoxIsNotTouchedAgain();
    void aRefusalIsToldInTheWordsOfTheDecoder();
    void oneChannelTwiceIsRefused();
    void anEmptyChannelIsRefused();
    void whatWasRefusedIsNotShownAgain();

    void anotherModelClosesTheDialog_data();
    void anotherModelClosesTheDialog();
    void fortySettingsScroll_data();
    void fortySettingsScroll();
    void noBoxHasAListBeforeItIsOpened();
    void theKeyboardReachesAll();
};

void TstProtocolEdit::eachKindOfSettingHasItsEditor()
{
    const FaceDesk desk("kinds");
    const ProtocolEdit dialog(false, desk.manager.get(), 0);
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Analyzer - Face"));
    QCOMPARE(entriesOf(combo(dialog, "List")),
             (QStringList{QStringLiteral("First"), QStringLiteral("Second"), QStringLiteral("Third")}));
    QCOMPARE(combo(dialog, "List")->currentIndex(), 1);
    QCOMPARE(field(dialog, "Number")->text(), QStringLiteral("5"));
    QCOMPARE(field(dialog, "Number")->toolTip(), QStringLiteral("A count"));
    QCOMPARE(field(dialog, "Text")->text(), QStringLiteral("word"));
    const auto *box = editor<QCheckBox>(dialog, "Check this & that");
    QVERIFY(box != nullptr && box->isChecked());
    QCOMPARE(box->text(), QStringLiteral("Check this && that"));
    QCOMPARE(combo(dialog, "Line")->maxVisibleItems(), 20);
}

void TstProtocolEdit::theRowsStandAsTold()
{
    const FaceDesk desk("kinds");
    const ProtocolEdit dialog(false, desk.manager.get(), 0);
    QCOMPARE(rowOf(dialog, combo(dialog, "Line")), 0);
    QCOMPARE(rowOf(dialog, combo(dialog, "Other")), 1);
    QCOMPARE(gridOf(dialog)->itemAtPosition(2, 0)->widget()->height(), 4);
    QCOMPARE(rowOf(dialog, combo(dialog, "List")), 3);
    QCOMPARE(rowOf(dialog, field(dialog, "Text")), 6);
    QCOMPARE(rowOf(dialog, editor<QCheckBox>(dialog, "Check this & that")), 7);
    QVERIFY(gridOf(dialog)->itemAtPosition(7, 0) == nullptr); // without a title there is no label
    QCOMPARE(gridOf(dialog)->itemAtPosition(8, 0)->widget()->height(), 2);
    const auto *label = qobject_cast<QLabel *>(gridOf(dialog)->itemAtPosition(0, 0)->widget());
    QCOMPARE(label->text(), QStringLiteral("Line"));
    QCOMPARE(label->buddy(), combo(dialog, "Line"));
}

void TstProtocolEdit::withoutChannelsTheSpacerStandsFirst()
{
    const FaceDesk desk("plain");
    const ProtocolEdit dialog(false, desk.manager.get(), 0);
    QCOMPARE(gridOf(dialog)->itemAtPosition(0, 0)->widget()->height(), 4);
    QCOMPARE(rowOf(dialog, combo(dialog, "List")), 1);
}

void TstProtocolEdit::withChannelsAloneThereIsOneSpacer()
{
    const FaceDesk desk("channels");
    const ProtocolEdit dialog(false, desk.manager.get(), 0);
    QCOMPARE(rowOf(dialog, combo(dialog, "Line")), 0);
    QVERIFY(gridOf(dialog)->itemAtPosition(1, 0) != nullptr);
    QVERIFY(gridOf(dialog)->itemAtPosition(2, 0) == nullptr);
}

void TstProtocolEdit::theFrameIsAsTold_data()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96 dpi") << 96;
    QTest::newRow("192 dpi") << 192;
}

void TstProtocolEdit::theFrameIsAsTold()
{
    QFETCH(int, dpi);
    globalsSetDpi(dpi);
    const FaceDesk desk("kinds");
    const ProtocolEdit dialog(false, desk.manager.get(), 0);
    QVERIFY(dialog.windowFlags().testFlag(Qt::WindowCloseButtonHint));
    QVERIFY(!dialog.windowFlags().testFlag(Qt::WindowContextHelpButtonHint));
    QCOMPARE(dialog.layout()->contentsMargins(), QMargins(dp(10), dp(16), dp(10), dp(10)));
    QCOMPARE(gridOf(dialog)->spacing(), dp(6));
    for (const char *name : {"Number", "Small", "Text"}) {
        QCOMPARE(field(dialog, name)->minimumHeight(),
                 std::max(dp(22), controlHeight(field(dialog, name)->fontMetrics())));
        QCOMPARE(field(dialog, name)->minimumHeight(), field(dialog, name)->maximumHeight());
    }
    QCOMPARE(gridOf(dialog)->itemAtPosition(0, 0)->alignment(), Qt::AlignLeft | Qt::AlignVCenter);
    QCOMPARE(gridOf(dialog)->itemAtPosition(0, 1)->alignment(), Qt::Alignment(Qt::AlignLeft));
}

void TstProtocolEdit::ofEqualNumbersTheLastIsShown()
{
    const FaceDesk desk("plain");
    const ProtocolEdit dialog(false, desk.manager.get(), 0);
    QCOMPARE(combo(dialog, "List")->currentText(), QStringLiteral("Third"));
}

void TstProtocolEdit::editorsBelowEachOtherAreOfOneWidth()
{
    FaceDesk desk("kinds");
    const auto expectWidth = [&desk](auto isAsWanted) {
        const ProtocolEdit dialog(false, desk.manager.get(), 0);
        const int width = combo(dialog, "List")->minimumWidth();
        QVERIFY2(isAsWanted(width), qPrintable(QString::number(width)));
        for (const char *name : {"Line", "Other"}) {
            QCOMPARE(combo(dialog, name)->minimumWidth(), width);
        }
        for (const char *name : {"Number", "Small", "Text"}) {
            QCOMPARE(field(dialog, name)->minimumWidth(), width);
        }
    };
    expectWidth([](int width) { return width == 150; });
    QVERIFY(desk.add(2)); // who uses a channel stands beside it
    expectWidth([](int width) { return width > 150 && width <= 320; });
}

void TstProtocolEdit::allTextsButThoseOfChannelsAreTranslated()
{
    const StarredTexts language("Face", {"Line", "The line &amp; its edges", "List", "Second", "Number", "A count",
                                         "Text", "word", "Check this &amp; that", "A flag"});
    const FaceDesk desk("kinds");
    const ProtocolEdit dialog(false, desk.manager.get(), 0);
    QVERIFY(combo(dialog, "Line") != nullptr); // its name is that of the line
    QCOMPARE(combo(dialog, "Line")->toolTip(), QStringLiteral("*The line & its edges"));
    QCOMPARE(combo(dialog, "*List")->currentText(), QStringLiteral("*Second"));
    QCOMPARE(field(dialog, "*Number")->toolTip(), QStringLiteral("*A count"));
    QCOMPARE(field(dialog, "*Text")->text(), QStringLiteral("*word"));
    QCOMPARE(editor<QCheckBox>(dialog, "*Check this & that")->toolTip(), QStringLiteral("*A flag"));
}

void TstProtocolEdit::aChannelEditorTellsTheUsers()
{
    FaceDesk desk("kinds");
    desk.disabledChannel = 1;
    QVERIFY(desk.add(2));
    const ProtocolEdit dialog(false, desk.manager.get(), 0);
    const QStringList entries = entriesOf(combo(dialog, "Other"));
    QCOMPARE(entries.size(), 8); // seven channels and "None"
    QCOMPARE(entries.at(0), QStringLiteral("0 - 'Channel 0'"));
    QCOMPARE(entries.at(1), QStringLiteral("2 - 'Channel 2'    (Face - Line)"));
    QCOMPARE(entries.last(), QStringLiteral("None"));
    QCOMPARE(combo(dialog, "Line")->count(), 7);
}

void TstProtocolEdit::aSecondAnalyzerStartsOnFreeChannels()
{
    FaceDesk desk("kinds");
    QVERIFY(desk.add(0));
    const ProtocolEdit dialog(false, desk.manager.get(), 0);
    QCOMPARE(combo(dialog, "Line")->currentIndex(), 1);
    QCOMPARE(combo(dialog, "Other")->currentIndex(), 2);
}

void TstProtocolEdit::anEditorShowsTheStoredChannel()
{
    FaceDesk desk("kinds");
    QVERIFY(desk.add(4));
    const ProtocolEdit dialog(true, desk.manager.get(), 0);
    QCOMPARE(combo(dialog, "Line")->currentIndex(), 4);
    QVERIFY(!combo(dialog, "Line")->currentText().contains(QLatin1String("Face"))); // itself is left out
    QCOMPARE(combo(dialog, "Other")->currentText(), QStringLiteral("None"));
}

void TstProtocolEdit::aDeviceWithoutChannelsOffersNone_data()
{
    QTest::addColumn<int>("channels");
    QTest::newRow("none at all") << 0;
    QTest::newRow("all disabled") << 8;
}

void TstProtocolEdit::aDeviceWithoutChannelsOffersNone()
{
    QFETCH(int, channels);
    AnalyzerHost host;
    host.channelCount = [channels] { return channels; };
    host.isChannelEnabled = [](int) { return false; };
    AnalyzerManager bare(host, {AnalyzerDesk::folderOf(QStringLiteral("kinds"))}, QString());
    ProtocolEdit dialog(false, &bare, 0);
    QCOMPARE(combo(dialog, "Line")->count(), 0);
    QCOMPARE(entriesOf(combo(dialog, "Other")), QStringList{QStringLiteral("None")});
    const DialogDriver<QMessageBox> boxes([](QMessageBox &) {});
    press(dialog, "OK");
    QCOMPARE(boxes.count, 1);
    QCOMPARE(bare.count(), 0);
}

void TstProtocolEdit::okAddsTheAnalyzer()
{
    const FaceDesk desk("kinds");
    {
        ProtocolEdit dialog(false, desk.manager.get(), 0);
        dialog.show();
        combo(dialog, "Line")->setCurrentIndex(3);
        combo(dialog, "Other")->setCurrentIndex(8);
        combo(dialog, "List")->setCurrentIndex(0);
        field(dialog, "Number")->setText(QStringLiteral(" 10 "));
        field(dialog, "Small")->setText(QStringLiteral("-3"));
        field(dialog, "Text")->setText(QStringLiteral("letters"));
        editor<QCheckBox>(dialog, "Check this & that")->setChecked(false);
        press(dialog, "OK");
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
    }
    QCOMPARE(desk.manager->count(), 1);
    QCOMPARE(savedText(desk), QStringLiteral("line=3,other=none,list=a,number=10,small=-3,text=letters,flag=false"));
    QVERIFY(desk.waitForWorkers());
    QVERIFY(desk.frames() > 0);
    QCOMPARE(desk.stored.size(), 1);
}

void TstProtocolEdit::lettersBeyondAsciiAreKept()
{
    const FaceDesk desk("kinds");
    {
        ProtocolEdit dialog(false, desk.manager.get(), 0);
        field(dialog, "Text")->setText(QStringLiteral("Größe"));
        press(dialog, "OK");
    }
    QVERIFY(savedText(desk).contains(QStringLiteral("text=Gr%F6%DFe")));
    const ProtocolEdit dialog(true, desk.manager.get(), 0);
    QCOMPARE(field(dialog, "Text")->text(), QStringLiteral("Größe"));
}

void TstProtocolEdit::cancelGivesTheNewInstanceBack()
{
    const FaceDesk desk("kinds");
    const int before = desk.living();
    {
        ProtocolEdit dialog(false, desk.manager.get(), 0);
        QCOMPARE(desk.living(), before + 1);
        dialog.show();
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QVERIFY(!dialog.isVisible());
    }
    QCOMPARE(desk.living(), before);
    QCOMPARE(desk.manager->count(), 0);
}

void TstProtocolEdit::aNewInstanceWithoutAChangeIsGivenBack()
{
    const FaceDesk desk("plain");
    const int before = desk.living();
    {
        ProtocolEdit dialog(false, desk.manager.get(), 0);
        press(dialog, "OK");
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
    }
    QCOMPARE(desk.manager->count(), 0);
    QCOMPARE(desk.living(), before);
}

void TstProtocolEdit::okRestartsAChangedAnalyzer()
{
    FaceDesk desk("kinds");
    QVERIFY(desk.add(0));
    QVERIFY(desk.waitForWorkers());
    const std::uint64_t before = desk.frames();
    ProtocolEdit dialog(true, desk.manager.get(), 0);
    combo(dialog, "Line")->setCurrentIndex(1); // half as many edges
    press(dialog, "OK");
    QVERIFY(desk.waitForWorkers());
    QVERIFY(desk.frames() > 0 && desk.frames() < before);
    QCOMPARE(desk.stored.first().at(1), savedText(desk));
}

void TstProtocolEdit::okWithoutAChangeLeavesTheResults()
{
    FaceDesk desk("kinds");
    QVERIFY(desk.add(0));
    QVERIFY(desk.waitForWorkers());
    const AnalyzerResults *results = desk.results();
    int changes = 0;
    connect(desk.manager.get(), &AnalyzerManager::analyzerItemChanged, this, [&changes] { ++changes; });
    ProtocolEdit dialog(true, desk.manager.get(), 0);
    press(dialog, "OK");
    QCOMPARE(desk.results(), results);
    QCOMPARE(changes, 0);
}

void TstProtocolEdit::aStoppedWorkerRunsAgainWhenNothingChanged()
{
    FaceDesk desk("slow");
    QVERIFY(desk.add(0));
    QVERIFY(desk.manager->isWorkerRunning(0));
    int starts = 0;
    connect(desk.manager.get(), &AnalyzerManager::analyzerStarted, this, [&starts] { ++starts; });
    ProtocolEdit dialog(true, desk.manager.get(), 0);
    press(dialog, "OK");
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QVERIFY(desk.manager->isWorkerRunning(0));
    QCOMPARE(starts, 1);
}

void TstProtocolEdit::aStoppedWorkerRunsAgainAfterARefusalAndCancel()
{
    FaceDesk desk("slow");
    QVERIFY(desk.add(0));
    ProtocolEdit dialog(true, desk.manager.get(), 0);
    dialog.show();
    combo(dialog, "Other")->setCurrentIndex(0); // the channel of the other setting
    const DialogDriver<QMessageBox> boxes([](QMessageBox &) {});
    press(dialog, "OK");
    QCOMPARE(boxes.count, 1);
    QVERIFY(dialog.isVisible());
    QVERIFY(!desk.manager->isWorkerRunning(0));
    press(dialog, "Cancel");
    QVERIFY(desk.manager->isWorkerRunning(0));
}

void TstProtocolEdit::settingsAreNotWrittenWhileResultsAreRead()
{
    FaceDesk desk("kinds");
    QVERIFY(desk.add(0));
    QVERIFY(desk.waitForWorkers());
    ProtocolEdit dialog(true, desk.manager.get(), 0);
    field(dialog, "Text")->setText(QStringLiteral("refuse")); // so that no new run asks for the results
    ResultsGate &gate = desk.manager->gate();
    std::atomic<bool> reads{false};
    std::atomic<bool> isTold{false};
    bool wasAsked = false;
    std::thread reader([&] {
        const ResultsPass pass(gate);
        reads = true;
        while (!gate.isWanted() && !isTold) {
            std::this_thread::yield();
        }
        wasAsked = gate.isWanted();
    });
    QTRY_VERIFY(reads);
    const DialogDriver<QMessageBox> boxes([&](QMessageBox &) {
        isTold = true;
        QVERIFY(ResultsPass(gate)); // behind the box they are read again
    });
    press(dialog, "OK");
    reader.join();
    QCOMPARE(boxes.count, 1);
    QVERIFY(wasAsked);
}

void TstProtocolEdit::settingsThatAReaderDoesNotLeaveAreNotWritten()
{
    FaceDesk desk("kinds");
    QVERIFY(desk.add(3));
    QVERIFY(desk.waitForWorkers());
    const QString before = savedText(desk);
    const Analyzer *old = desk.manager->analyzerAt(0);
    const auto stuck = std::make_shared<ResultsReader>();
    std::atomic<bool> reads{false};
    std::atomic<bool> held{true};
    std::thread reader([&, results = desk.results()] {
        const ResultsPass pass(desk.manager->gate(), stuck);
        (void)stuck->inside(results, [&] {
            reads = true;
            while (held) {
                std::this_thread::yield();
            }
        });
    });
    QTRY_VERIFY(reads);
    ProtocolEdit dialog(true, desk.manager.get(), 0);
    press(dialog, "OK"); // without a change
    const bool isOther = desk.manager->analyzerAt(0) != old;
    held = false;
    reader.join();
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QVERIFY(isOther);
    QCOMPARE(savedText(desk), before);
    QVERIFY(desk.waitForWorkers());
    QVERIFY(desk.frames() > 0);
}

void TstProtocolEdit::numbersOutOfTheirRangeAreTold_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text : {"", "0", "11", "-1", "five", "3.5", "99999999999", "0x5"}) {
        QTest::newRow(text) << QString::fromLatin1(text);
    }
}

void TstProtocolEdit::numbersOutOfTheirRangeAreTold()
{
    QFETCH(QString, text);
    const FaceDesk desk("kinds");
    ProtocolEdit dialog(false, desk.manager.get(), 0);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    field(dialog, "Number")->setText(text);
    const DialogDriver<QMessageBox> boxes([](QMessageBox &box) {
        QCOMPARE(box.windowTitle(), QStringLiteral("A Setting is Invalid"));
        QCOMPARE(box.text(), QStringLiteral("Please enter an integer in the range [1, 10]"));
        QCOMPARE(box.icon(), QMessageBox::Warning);
        pressButton(box, QStringLiteral("Close"));
    });
    press(dialog, "OK");
    QCOMPARE(boxes.count, 1);
    QVERIFY(dialog.isVisible());
    QCOMPARE(desk.manager->count(), 0);
    QCOMPARE(dialog.focusWidget(), static_cast<QWidget *>(field(dialog, "Number")));
}

void TstProtocolEdit::settingsThatThrowAreToldAndKeepTheDialogOpen()
{
    const FaceDesk desk("settings-throw");
    ProtocolEdit dialog(false, desk.manager.get(), 0);
    dialog.show();
    const DialogDriver<QMessageBox> boxes([](QMessageBox &box) {
        QCOMPARE(box.windowTitle(), QStringLiteral("A Setting is Invalid"));
        QCOMPARE(box.text(), QStringLiteral("the plug-in threw"));
        pressButton(box, QStringLiteral("Close"));
    });
    press(dialog, "OK");
    QCOMPARE(boxes.count, 1);
    QVERIFY(dialog.isVisible());
    QCOMPARE(desk.manager->count(), 0);
}

void TstProtocolEdit::aNumberThatIsTooLongIsNotTakenForZero_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text :
         {"2147483648", "-2147483649", "99999999999", "99999999999999999999", "-99999999999999999999"}) {
        QTest::newRow(text) << QString::fromLatin1(text);
    }
}

void TstProtocolEdit::aNumberThatIsTooLongIsNotTakenForZero()
{
    QFETCH(QString, text);
    const FaceDesk desk("kinds");
    ProtocolEdit dialog(false, desk.manager.get(), 0);
    dialog.show();
    field(dialog, "Small")->setText(text);
    const DialogDriver<QMessageBox> boxes([](QMessageBox &box) {
        QCOMPARE(box.text(), QStringLiteral("Please enter an integer in the range [-3, 3]"));
        box.reject();
    });
    press(dialog, "OK");
    QCOMPARE(boxes.count, 1);
    QVERIFY(dialog.isVisible());
}

void TstProtocolEdit::twoBadNumbersGiveTwoBoxes()
{
    const FaceDesk desk("kinds");
    ProtocolEdit dialog(false, desk.manager.get(), 0);
    field(dialog, "Number")->setText(QStringLiteral("11"));
    field(dialog, "Small")->setText(QStringLiteral("-4"));
    QStringList texts;
    const DialogDriver<QMessageBox> boxes([&texts](QMessageBox &box) {
        texts.append(box.text());
        box.reject();
    });
    press(dialog, "OK");
    QCOMPARE(texts, (QStringList{QStringLiteral("Please enter an integer in the range [1, 10]"),
                                 QStringLiteral("Please enter an integer in the range [-3, 3]")}));
}

void TstProtocolEdit::anAnalyzerThatIsReplacedBehindABoxIsNotTouchedAgain()
{
    FaceDesk desk("kinds");
    const int before = desk.living();
    TextGate &gate = FaceDesk::workerGateOf(QStringLiteral("kinds"));
    gate.held = true;
    QVERIFY(desk.add());
    ProtocolEdit dialog(true, desk.manager.get(), 0);
    field(dialog, "Number")->setText(QStringLiteral("11"));
    field(dialog, "Small")->setText(QStringLiteral("-4"));
    const DialogDriver<QMessageBox> boxes([&](QMessageBox &box) {
        desk.manager->stopAllWorkers(); // as a capture does: the worker does not leave, and goes with its analyzer
        gate.held = false;
        QTRY_COMPARE_WITH_TIMEOUT(desk.living(), before + 1, 20000);
        box.reject();
    });
    press(dialog, "OK");
    QCOMPARE(boxes.count, 2);
    field(dialog, "Number")->setText(QStringLiteral("7"));
    field(dialog, "Small")->setText(QStringLiteral("3"));
    press(dialog, "OK");
    QVERIFY2(savedText(desk).contains(QStringLiteral("number=7,small=3")), qPrintable(savedText(desk)));
}

void TstProtocolEdit::aRefusalIsToldInTheWordsOfTheDecoder()
{
    const FaceDesk desk("kinds");
    ProtocolEdit dialog(false, desk.manager.get(), 0);
    combo(dialog, "Other")->setCurrentIndex(8);
    field(dialog, "Text")->setText(QStringLiteral("refuse"));
    QString told;
    const DialogDriver<QMessageBox> boxes([&told](QMessageBox &box) { told = box.text(); });
    press(dialog, "OK");
    QCOMPARE(told, QStringLiteral("This \"Text\" is refused"));
    QCOMPARE(desk.manager->count(), 0);
}

void TstProtocolEdit::oneChannelTwiceIsRefused()
{
    const FaceDesk desk("kinds");
    ProtocolEdit dialog(false, desk.manager.get(), 0);
    combo(dialog, "Line")->setCurrentIndex(2);
    combo(dialog, "Other")->setCurrentIndex(2);
    QString told;
    const DialogDriver<QMessageBox> boxes([&told](QMessageBox &box) { told = box.text(); });
    press(dialog, "OK");
    QCOMPARE(told, QStringLiteral("\"Line\" and \"Other\" must be different channels."));
    QCOMPARE(desk.manager->count(), 0);
}

void TstProtocolEdit::anEmptyChannelIsRefused()
{
    const FaceDesk desk("kinds");
    ProtocolEdit dialog(false, desk.manager.get(), 0);
    combo(dialog, "Line")->setCurrentIndex(-1);
    combo(dialog, "Other")->setCurrentIndex(8);
    QString told;
    const DialogDriver<QMessageBox> boxes([&told](QMessageBox &box) { told = box.text(); });
    press(dialog, "OK");
    QCOMPARE(told, QStringLiteral("Please select a channel for \"Line\"."));
}

void TstProtocolEdit::whatWasRefusedIsNotShownAgain()
{
    FaceDesk desk("kinds");
    QVERIFY(desk.add(0));
    {
        ProtocolEdit dialog(true, desk.manager.get(), 0);
        field(dialog, "Text")->setText(QStringLiteral("refuse"));
        const DialogDriver<QMessageBox> boxes([](QMessageBox &) {});
        press(dialog, "OK");
        press(dialog, "Cancel");
    }
    const ProtocolEdit dialog(true, desk.manager.get(), 0);
    QCOMPARE(field(dialog, "Text")->text(), QStringLiteral("word"));
}

void TstProtocolEdit::anotherModelClosesTheDialog_data()
{
    QTest::addColumn<bool>("editMode");
    QTest::newRow("while adding") << false;
    QTest::newRow("while editing") << true;
}

void TstProtocolEdit::anotherModelClosesTheDialog()
{
    QFETCH(bool, editMode);
    FaceDesk desk("slow");
    QVERIFY(desk.add(0));
    ProtocolEdit dialog(editMode, desk.manager.get(), 0);
    dialog.show();
    desk.manager->setCapture(nullptr, 0);
    desk.manager->loadFromConfig();
    QVERIFY(!dialog.isVisible());
    dialog.savedClicked(); // a click that was under way
    QCOMPARE(desk.manager->count(), 1);
}

void TstProtocolEdit::fortySettingsScroll_data()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96 dpi") << 96;
    QTest::newRow("192 dpi") << 192;
}

void TstProtocolEdit::fortySettingsScroll()
{
    QFETCH(int, dpi);
    globalsSetDpi(dpi);
    const FaceDesk desk("forty");
    ProtocolEdit dialog(false, desk.manager.get(), 0);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QVERIFY(dialog.height() <= QGuiApplication::primaryScreen()->availableSize().height());
    auto *area = dialog.findChild<QScrollArea *>();
    QVERIFY(area->verticalScrollBar()->maximum() > 0);
    QCOMPARE(area->horizontalScrollBar()->maximum(), 0);
    QCOMPARE(QApplication::focusWidget(), static_cast<QWidget *>(combo(dialog, "Line")));
    for (int i = 0; i < 39; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    QWidget *last = QApplication::focusWidget();
    QCOMPARE(last->accessibleName(), QStringLiteral("Number 37"));
    const QRect place(last->mapTo(area->viewport(), QPoint()), last->size());
    QVERIFY(area->viewport()->rect().contains(place));
    const QString file = qEnvironmentVariable("LUX_TEST_PICTURES");
    if (!file.isEmpty()) {
        dialog.grab().save(file + QStringLiteral("/forty-%1.png").arg(dpi));
    }
}

void TstProtocolEdit::noBoxHasAListBeforeItIsOpened()
{
    FaceDesk desk("kinds");
    QVERIFY(desk.add(3));
    ProtocolEdit dialog(true, desk.manager.get(), 0);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QCOMPARE(dialog.findChildren<QComboBox *>().size(), 3);
    QVERIFY(dialog.findChild<QListView *>() == nullptr); // they are most of what a dialog of a bus would take
    QComboBox *line = combo(dialog, "Line");
    QTest::keyClick(line, Qt::Key_Down, Qt::AltModifier);
    QTRY_VERIFY(line->view()->isVisible());
    QCOMPARE(line->view()->currentIndex().row(), 3);
    QTest::keyClick(line->view(), Qt::Key_Up);
    QTest::keyClick(line->view(), Qt::Key_Return);
    QCOMPARE(line->currentIndex(), 2);
    QCOMPARE(combo(dialog, "Other")->currentText(), QStringLiteral("None")); // though both offer the same channels
}

void TstProtocolEdit::theKeyboardReachesAll()
{
    const FaceDesk desk("kinds");
    ProtocolEdit dialog(false, desk.manager.get(), 0);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QStringList seen;
    for (int i = 0; i < 9; ++i) {
        seen.append(QApplication::focusWidget()->accessibleName());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    QCOMPARE(seen.mid(0, 7).join(QLatin1Char('|')),
             QStringLiteral("Line|Other|List|Number|Small|Text|Check this & that"));
    QTest::keyClick(field(dialog, "Text"), Qt::Key_Return);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(desk.manager->count(), 1);
}

LUX_GUI_TEST(TstProtocolEdit)
#include "tst_ProtocolEdit.moc"
