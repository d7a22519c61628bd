#include "analyzer/AnalyzerManager.h"
#include "app/WindowDesk.h"
#include "controls/MyButton.h"
#include "measure/AnalyzerView.h"
#include "protocol/ExportDialog.h"
#include "protocol/ProtocolEdit.h"
#include "protocol/ProtocolItem.h"
#include "protocol/ProtocolResult.h"
#include "protocol/ProtocolSetting.h"
#include "protocol/ResultView.h"
#include "protocol/SearchEdit.h"
#include "support/DialogDriver.h"
#include "support/MenuDriver.h"
#include "wave/MainView.h"
#include "wave/WaveView.h"

#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QStringListModel>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>

namespace {

constexpr int samplesOfABit = 100;

/// Characters of a serial line that rests high: start bit, eight data bits, stop bit, and a pause.
std::vector<std::int32_t> serialWidths(const QByteArray &characters)
{
    std::vector<std::int32_t> widths;
    bool level = true;
    std::int32_t run = 5 * samplesOfABit;
    const auto hold = [&](bool high, int bits) {
        if (high != level) {
            widths.push_back(run);
            run = 0;
            level = high;
        }
        run += bits * samplesOfABit;
    };
    for (const char character : characters) {
        hold(false, 1);
        for (int bit = 0; bit < 8; ++bit) {
            hold((character >> bit & 1) != 0, 1);
        }
        hold(true, 6);
    }
    widths.push_back(run);
    return widths;
}

/// The frames of such a capture: the characters, and that of the low level at its end.
int framesOf(const QByteArray &characters)
{
    return characters.size() + 1;
}

/// How often a widget is painted.
class PaintCounter : public QObject {
public:
    explicit PaintCounter(QWidget &widget) { widget.installEventFilter(this); }
    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
    int count = 0;
};

} // namespace

/// Analyzers in the window, with the decoders that come with the program: from the menu to the boxes on the wave.
class TstMainWindowAnalyzers : public QObject, private WindowDesk {
    Q_OBJECT
private slots:
    void initTestCase();
    void init()
    {
        setUp();
        bind();
    }
    void cleanup() { tearDown(); }

    void anAnalyzerAddedByMouseShowsItsFramesOnTheWave();
    void anAnalyzerAddedByKeysAloneShowsItsFramesOnTheWave();
    void theAnalyzersAreThereAgainAtTheNextStart();
    void channelsTellWhoDecodesThem();
    void aDecoderThatHasGoneIsToldOnce();
    void anotherModelClosesTheOpenDialog();
    void framesAreListedFoundAndBroughtIntoView();
    void aDoubleClickOnAFrameOpensItsSettings();
    void aNewCaptureEmptiesTheListAndFillsItAgain();
    void framesAreBroughtWhileTheDecodersOfANewCaptureWork();
    void anotherModelEmptiesTheListAndItsSearch();
    void theWavesArePaintedAnewWhenADecoderHasFoundMore();
    void framesOfTheLastCaptureComeBackWhenTheNextOneFails();
    void aSimulatedCaptureCarriesTheTrafficOfItsAnalyzers();
    void framesAreExportedFromTheRowsMenu();
    void aDecoderDuringWhichTheProgramDiedIsOfferedToBeTriedAgain();

private:
    /// The user's.
    static QString pluginFolder() { return QFileInfo(configPath()).path() + QStringLiteral("/Analyzer/"); }
    void bind()
    {
        m_panel = m_window->findChild<ProtocolSetting *>();
        QVERIFY(m_panel != nullptr);
    }
    /// Adds the serial decoder as the menu does.
    void addSerial()
    {
        const DialogDriver<ProtocolEdit> dialog([](ProtocolEdit &shown) { setUpSerial(shown); });
        for (QAction *entry : m_panel->findChild<QMenu *>(QStringLiteral("addAnalyzerMenu"))->actions()) {
            if (entry->text().startsWith(QLatin1String("UART"))) {
                entry->trigger();
                QTRY_COMPARE(dialog.count, 1);
                return;
            }
        }
    }
    static void serialCapture(const QByteArray &characters)
    {
        SmpData &data = *gDev->smpData;
        const std::vector<std::uint8_t> enable(std::size_t(data.chnCount), 1);
        data.begin(0, 1'000'000, enable);
        SmpWriter(data).setStartLevel(0, true);
        std::int64_t pos = 0;
        (void)data.addPulses(serialWidths(characters), 0, pos);
        SmpWriter(data).setSmpCount(pos + 10 * samplesOfABit);
        data.finish(data.smpCount());
        emit gDev->sigSmpDataReady();
    }
    [[nodiscard]] ResultView *list() const { return m_window->findChild<ResultView *>(); }
    [[nodiscard]] QStringList listed() const { return qobject_cast<QStringListModel *>(list()->model())->stringList(); }
    void clickRow(int row) const
    {
        QTest::mouseClick(list()->viewport(), Qt::LeftButton, Qt::NoModifier, placeOf(row));
    }
    [[nodiscard]] QPoint placeOf(int row) const { return list()->visualRect(list()->model()->index(row, 0)).center(); }
    [[nodiscard]] MyButton *addButton() const { return m_panel->findChild<MyButton *>(QStringLiteral("addAnalyzer")); }
    [[nodiscard]] QVector<ProtocolItem *> rows() const
    {
        QVector<ProtocolItem *> shown;
        for (ProtocolItem *row : m_panel->findChildren<ProtocolItem *>()) {
            if (!row->isHidden()) {
                shown.append(row);
            }
        }
        return shown;
    }
    /// Sets the rate of the serial dialog and presses its button.
    static void setUpSerial(ProtocolEdit &dialog)
    {
        const auto fields = dialog.findChildren<QLineEdit *>();
        QVERIFY(!fields.isEmpty());
        fields.first()->setText(QStringLiteral("10000"));
        pressButton(dialog, QStringLiteral("OK"));
    }
    /// The pixels of a row's box edges, in the colour of its channel.
    [[nodiscard]] int edgePixels() const
    {
        auto *waves = m_window->findChild<WaveView *>();
        const QImage image = waves->grab().toImage();
        int count = 0;
        for (int y = 0; y < 3; ++y) {
            for (int x = 0; x < image.width(); ++x) {
                count += image.pixelColor(x, y) == gChnColors[0] ? 1 : 0;
            }
        }
        return count;
    }

    ProtocolSetting *m_panel = nullptr;
};

void TstMainWindowAnalyzers::initTestCase()
{
    const QString folder = pluginFolder();
    QVERIFY(QDir().mkpath(folder));
    for (const char *name : {"CAN.so", "I2C.so", "SPI.so", "UART.so"}) {
        const QString file = folder + QLatin1String(name);
        QFile::remove(file);
        QVERIFY(QFile::copy(QStringLiteral(LUX_PLUGINS "/") + QLatin1String(name), file));
    }
}

void TstMainWindowAnalyzers::anAnalyzerAddedByMouseShowsItsFramesOnTheWave()
{
    serialCapture("Hello");
    QCOMPARE(edgePixels(), 0);
    {
        MenuDriver<QMenu> menu([](QMenu &shown) {
            QCOMPARE(shown.actions().constFirst()->text(), QStringLiteral("UART/RS232/485"));
            QTest::mouseClick(&shown, Qt::LeftButton, {}, shown.actionGeometry(shown.actions().constFirst()).center());
        });
        DialogDriver<ProtocolEdit> dialog([](ProtocolEdit &shown) { setUpSerial(shown); });
        QTest::mouseClick(addButton(), Qt::LeftButton);
        QTRY_COMPARE(rows().size(), 1);
        QCOMPARE(dialog.count, 1);
    }
    QTRY_VERIFY(edgePixels() > 100);
    QCOMPARE(rows().first()->objectName(), QStringLiteral("UART.dll"));
}

void TstMainWindowAnalyzers::anAnalyzerAddedByKeysAloneShowsItsFramesOnTheWave()
{
    serialCapture("Hello");
    addButton()->setFocus(Qt::TabFocusReason);
    {
        MenuDriver<QMenu> menu([](QMenu &shown) {
            while (shown.activeAction() != shown.actions().constFirst()) {
                QTest::keyClick(&shown, Qt::Key_Down);
            }
            QTest::keyClick(&shown, Qt::Key_Return);
        });
        DialogDriver<ProtocolEdit> dialog([](ProtocolEdit &shown) {
            QVERIFY(QTest::qWaitForWindowActive(&shown));
            QTRY_VERIFY(shown.isAncestorOf(QApplication::focusWidget()));
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab); // behind the two channels
            auto *field = qobject_cast<QLineEdit *>(QApplication::focusWidget());
            QVERIFY(field != nullptr);
            field->selectAll();
            QTest::keyClicks(field, QStringLiteral("10000"));
            QTest::keyClick(field, Qt::Key_Return);
            QVERIFY(!shown.isVisible());
        });
        QTest::keyClick(addButton(), Qt::Key_Space);
        QTRY_COMPARE(rows().size(), 1);
    }
    QTRY_VERIFY(edgePixels() > 100);
}

void TstMainWindowAnalyzers::theAnalyzersAreThereAgainAtTheNextStart()
{
    addSerial();
    QCOMPARE(rows().size(), 1);
    tearDown();
    m_session = makeSession(0);
    makeWindow();
    bind();
    QCOMPARE(rows().size(), 1);
    QCOMPARE(edgePixels(), 0); // without a capture there is nothing to show
    serialCapture("Hello");
    QTRY_VERIFY(edgePixels() > 100);
    QCOMPARE(globalGet(QStringLiteral("recentAnalyzers")), QStringLiteral("CAN.dll,I2C.dll,SPI.dll,UART.dll"));
    rows().first()->findChild<MyButton *>(QStringLiteral("remove"))->click();
    QCOMPARE(rows().size(), 0);
    QTRY_COMPARE(edgePixels(), 0);
    QCOMPARE(analyzersAll(), QString());
}

void TstMainWindowAnalyzers::channelsTellWhoDecodesThem()
{
    addSerial();
    QStringList labels;
    for (const auto *label : m_window->findChildren<QLineEdit *>(QStringLiteral("analyzer"))) {
        labels.append(label->text());
    }
    QVERIFY(labels.contains(QStringLiteral("UART/RS232/485 - RX")));
    QVERIFY(labels.contains(QStringLiteral("UART/RS232/485 - TX")));
}

void TstMainWindowAnalyzers::aDecoderThatHasGoneIsToldOnce()
{
    analyzersClear();
    analyzerPut(0, QStringLiteral("Gone.dll"), QStringLiteral("line=1"), QStringLiteral("2"));
    tearDown();
    m_session = makeSession(0);
    makeWindow();
    bind();
    const QString told = QStringLiteral("Decoder not found: Gone.dll");
    const auto isTold = [this, &told] {
        for (const auto *label : m_window->findChildren<QLabel *>()) {
            if (label->toolTip() == told) {
                return true;
            }
        }
        return false;
    };
    QVERIFY(isTold());
    QCOMPARE(rows().size(), 0);
    m_window->slotDevPreConnect(gDev->model == 8 ? 9 : 8);
    QVERIFY(!isTold());
}

void TstMainWindowAnalyzers::anotherModelClosesTheOpenDialog()
{
    addSerial();
    const DialogDriver<ProtocolEdit> dialog([this](ProtocolEdit &shown) {
        m_window->slotDevPreConnect(gDev->model == 8 ? 9 : 8);
        QVERIFY(!shown.isVisible());
    });
    m_panel->slotEditWanted(0);
    QCOMPARE(dialog.count, 1);
    QCOMPARE(rows().size(), 1);
}

void TstMainWindowAnalyzers::framesAreListedFoundAndBroughtIntoView()
{
    serialCapture("Hello");
    addSerial();
    QTRY_COMPARE(listed().size(), framesOf("Hello"));
    clickRow(3);
    QCOMPARE(list()->currentRow(), 3);
    // The fourth character begins behind a pause and three characters of fifteen bits.
    const double middle = m_gen->viewStart() + m_gen->ratioSasPix() * m_gen->viewWidth() / 2;
    QVERIFY(qAbs(middle - (5 + 3 * 15 + 5) * samplesOfABit) < samplesOfABit);

    auto *search = m_window->findChild<SearchEdit *>();
    const QString last = listed().constLast();
    QTest::keyClicks(search, last.toLower());
    QTRY_COMPARE(listed(), QStringList{last});
    QCOMPARE(search->countText(), QStringLiteral("1"));
    QTest::keyClick(search, Qt::Key_Escape);
    QTRY_COMPARE(listed().size(), framesOf("Hello"));
}

void TstMainWindowAnalyzers::aDoubleClickOnAFrameOpensItsSettings()
{
    serialCapture("Hello");
    addSerial();
    QTRY_COMPARE(listed().size(), framesOf("Hello"));
    const DialogDriver<ProtocolEdit> dialog([](ProtocolEdit &shown) { shown.reject(); });
    clickRow(1);
    QTest::mouseDClick(list()->viewport(), Qt::LeftButton, Qt::NoModifier, placeOf(1));
    QTRY_COMPARE(dialog.count, 1);
    QCOMPARE(listed().size(), framesOf("Hello"));
}

void TstMainWindowAnalyzers::aNewCaptureEmptiesTheListAndFillsItAgain()
{
    serialCapture("Hello");
    addSerial();
    QTRY_COMPARE(listed().size(), framesOf("Hello"));
    emit gDev->sigCaptureStarts();
    m_window->slotDevSmpStaShow(0, 0, 0);
    QVERIFY(listed().isEmpty());
    serialCapture("Hi");
    QTRY_COMPARE(listed().size(), framesOf("Hi"));
    m_dialog->hide();
}

void TstMainWindowAnalyzers::framesAreBroughtWhileTheDecodersOfANewCaptureWork()
{
    serialCapture("Hello");
    addSerial();
    QTRY_COMPARE(listed().size(), framesOf("Hello"));
    const auto *results = m_window->findChild<ProtocolResult *>();
    const auto *newFrames = results->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
    QTRY_VERIFY(!newFrames->isActive()); // all have come
    serialCapture("Hi");
    QVERIFY(newFrames->isActive());
}

void TstMainWindowAnalyzers::anotherModelEmptiesTheListAndItsSearch()
{
    serialCapture("Hello");
    addSerial();
    QTRY_COMPARE(listed().size(), framesOf("Hello"));
    auto *search = m_window->findChild<SearchEdit *>();
    QTest::keyClicks(search, QStringLiteral("0x48"));
    QTRY_COMPARE(listed().size(), 1);
    m_window->slotDevPreConnect(gDev->model == 8 ? 9 : 8);
    QVERIFY(listed().isEmpty());
    QCOMPARE(search->text(), QString());
    QCOMPARE(search->countText(), QString());
}

void TstMainWindowAnalyzers::theWavesArePaintedAnewWhenADecoderHasFoundMore()
{
    serialCapture("Hello");
    addSerial();
    QTRY_COMPARE(listed().size(), framesOf("Hello"));
    PaintCounter paints(*m_window->findChild<WaveView *>()->viewport());
    const auto comeToRest = [&paints] {
        do {
            paints.count = 0;
            QTest::qWait(0);
        } while (paints.count > 0);
    };
    comeToRest();
    emit m_window->findChild<AnalyzerManager *>()->analyzerDecodedChanged();
    QTRY_VERIFY(paints.count > 0);
    comeToRest();
    emit m_panel->decodeAdvanced();
    QTRY_VERIFY(paints.count > 0);
}

void TstMainWindowAnalyzers::framesOfTheLastCaptureComeBackWhenTheNextOneFails()
{
    serialCapture("Hello");
    addSerial();
    QTRY_COMPARE(listed().size(), framesOf("Hello"));
    emit gDev->sigCaptureStarts();
    m_window->slotDevSmpStaShow(0, 0, 0);
    QVERIFY(listed().isEmpty());
    m_window->slotDevSmpStaShow(2, 7, 0); // an instrument that waits for its trigger, and is told off
    QTRY_COMPARE(listed().size(), framesOf("Hello"));

    emit gDev->sigCaptureStarts();
    m_window->slotDevSmpStaShow(0, 0, 0);
    QVERIFY(listed().isEmpty());
    m_window->slotDevSmpStaShow(smpState::done, 0, 0); // one that is stopped while it is being set up
    QTRY_COMPARE(listed().size(), framesOf("Hello"));
    m_dialog->hide();
}

void TstMainWindowAnalyzers::aSimulatedCaptureCarriesTheTrafficOfItsAnalyzers()
{
    addSerial();
    int rate = 0;
    while (gDev->setSmpFrequIndex(rate) && gDev->smpFrequ() != 1'000'000) {
        ++rate;
    }
    QCOMPARE(gDev->smpFrequ(), 1'000'000);
    gDev->setSmpDepthIndex(0);
    QVERIFY(m_session->startCapture());
    QTRY_VERIFY(listed().size() > 5);
    QCOMPARE(gDev->smpData->sampleCount(), gDev->smpDepth());
    for (const QString &frame : listed()) {
        QVERIFY2(!frame.contains(QLatin1String("rror")), qPrintable(frame)); // as waves at random would have it
    }
    m_dialog->hide();
}

void TstMainWindowAnalyzers::framesAreExportedFromTheRowsMenu()
{
    serialCapture("Hello");
    addSerial();
    QTRY_COMPARE(listed().size(), framesOf("Hello"));
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("frames.txt"));
    const DialogDriver<ExportDialog> choice([](ExportDialog &dialog) { dialog.exportSavedClicked(); });
    const DialogDriver<QFileDialog> target([&path](QFileDialog &dialog) { chooseFile(dialog, path); });
    const MenuDriver<QMenu> menu([](QMenu &shown) {
        for (QAction *entry : shown.actions()) {
            if (entry->text().startsWith(QStringLiteral("Export Data"))) {
                entry->trigger();
            }
        }
    });
    rows().constFirst()->slotMenuPopup();
    QTRY_VERIFY(QFile::exists(path));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QList<QByteArray> lines = file.readAll().trimmed().split('\n');
    QCOMPARE(lines.size(), framesOf("Hello"));
    QVERIFY(QString::fromUtf8(lines.at(4)).endsWith(listed().at(4)));
    const auto isTold = [this] {
        const auto labels = m_window->findChildren<QLabel *>();
        return std::any_of(labels.cbegin(), labels.cend(), [](const QLabel *label) {
            return label->toolTip() == QLatin1String("Saved: frames.txt"); // the status line's
        });
    };
    QTRY_VERIFY(isTold());
    QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);
}

void TstMainWindowAnalyzers::aDecoderDuringWhichTheProgramDiedIsOfferedToBeTriedAgain()
{
    const auto isOffered = [this] {
        const auto *manager = m_window->findChild<AnalyzerManager *>();
        return !manager->libraryDisplayName(QStringLiteral("UART.dll")).isEmpty();
    };
    const auto startAndPress = [this](const char *button) {
        QString text;
        const DialogDriver<QMessageBox> notice([&](QMessageBox &box) {
            text = box.text();
            pressButton(box, QString::fromLatin1(button));
        });
        makeWindow();
        bind();
        QTest::qWait(0); // the box comes when the event loop runs
        QTest::qWait(0);
        return text;
    };
    QVERIFY(isOffered());
    const QString guards = PluginFolder::standardGuardFolder();
    const QFileInfo plugin(pluginFolder() + QStringLiteral("UART.so"));
    QVERIFY(QDir().mkpath(guards));
    m_window.reset();
    {
        QFile left(guards + QStringLiteral("/1.trying")); // as a program that died leaves it
        QVERIFY(left.open(QIODevice::WriteOnly));
        left.write(QStringLiteral("UART.dll\t%1\t%2")
                       .arg(plugin.size())
                       .arg(plugin.lastModified().toMSecsSinceEpoch())
                       .toUtf8());
    }
    const QString told = startAndPress("Close");
    QVERIFY2(told.contains(QLatin1String("UART.dll")), qPrintable(told));
    QVERIFY(!isOffered());
    QVERIFY(!startAndPress("Try again at the next start").isEmpty());
    QVERIFY(!isOffered());
    QCOMPARE(startAndPress("Close"), QString());
    QVERIFY(isOffered());
}

LUX_GUI_TEST(TstMainWindowAnalyzers)
#include "tst_MainWindowAnalyzers.moc"
