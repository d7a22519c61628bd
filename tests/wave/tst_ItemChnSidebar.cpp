#include "app/Config.h"
#include "app/Globals.h"
#include "device/DevBase.h"
#include "device/DevModels.h"
#include "wave/ItemChnSidebar.h"
#include "wave/LabelMove.h"
#include "wave/MyButton.h"

#include <QClipboard>
#include <QFontInfo>
#include <QFrame>
#include <QLineEdit>
#include <QMenu>
#include <QSaveFile>
#include <QShortcut>
#include <QTemporaryDir>
#include <QVBoxLayout>
#include <QtTest>

#include <memory>

namespace {

const QStringList triggerButtons{QStringLiteral("btnPosEdge"), QStringLiteral("btnHighLevel"),
                                 QStringLiteral("btnNegEdge"), QStringLiteral("btnLowLevel")};

template<typename Widget>
Widget *part(const ItemChnSidebar &sidebar, const QString &name)
{
    return sidebar.findChild<Widget *>(name);
}

QLineEdit *nameOf(const ItemChnSidebar &sidebar)
{
    return part<QLineEdit>(sidebar, QStringLiteral("name"));
}

MyButton *buttonOf(const ItemChnSidebar &sidebar, const QString &name)
{
    return part<MyButton>(sidebar, name);
}

QImage picture(ItemChnSidebar &sidebar, int height)
{
    sidebar.resize(sidebar.width(), height);
    return sidebar.grab().toImage();
}

QString storedName(int chn)
{
    return globalGet(QStringLiteral("chnShowName%1").arg(chn));
}

/// A move of the pointer while a button is down.
void moveHeld(QWidget &widget, QPoint place, Qt::MouseButton held)
{
    QMouseEvent event(QEvent::MouseMove, place, widget.mapToGlobal(place), Qt::NoButton, held, Qt::NoModifier);
    QApplication::sendEvent(&widget, &event);
}

/// A window with a sidebar, and a field for the focus to go to.
struct Window : QWidget {
    explicit Window(int chn = 3) : sidebar(new ItemChnSidebar(chn, chn, 1, this)), other(new QLineEdit(this))
    {
        auto *column = new QVBoxLayout(this);
        column->addWidget(sidebar);
        column->addWidget(other);
        sidebar->setFixedHeight(dp(60));
        show();
        activateWindow();
        shown = QTest::qWaitForWindowActive(this);
    }
    /// What a user does to rename: a click into the field, all of it replaced.
    void type(const QString &text) const
    {
        QTest::mouseClick(name(), Qt::LeftButton);
        name()->selectAll();
        QTest::keyClicks(name(), text);
    }
    void paste(const QString &text) const
    {
        QGuiApplication::clipboard()->setText(text);
        QTest::mouseClick(name(), Qt::LeftButton);
        name()->selectAll();
        name()->paste();
    }
    [[nodiscard]] QLineEdit *name() const { return nameOf(*sidebar); }

    ItemChnSidebar *sidebar;
    QLineEdit *other;
    bool shown = false;
};

} // namespace

class TstItemChnSidebar : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void theFrameIsABevelOfWholePixels_data();
    void theFrameIsABevelOfWholePixels();
    void theNumbersColumnRunsFromLightToDarkThroughTheChannelsColour();
    void colourRepeatsAfterTheLastOfTheTable();
    void theWidthIsFixed();
    void theNumberIsBlackAtTheRightOfItsColumn();
    void twoDigitsFitTheNumbersColumn_data();
    void twoDigitsFitTheNumbersColumn();
    void theControlsStandAtTheirStatedPlaces_data();
    void theControlsStandAtTheirStatedPlaces();
    void theLowestRowShowsAllOfItsTexts_data();
    void theLowestRowShowsAllOfItsTexts();
    void aDecodersNameStandsBelowTheNameAndTakesNoFocus();
    void aTriggerButtonIsTransparentAtRestAndDarkWhenChecked();
    void everyControlHasANameOfItsOwn();

    void enterStoresTheName();
    void losingTheFocusStoresTheName();
    void escapeBringsTheFormerNameBack();
    void passingThroughTheFieldStoresNothing();
    void theDefaultNameIsStoredAsEmpty();
    void anEmptyNameIsStoredAsEmptyAndShowsTheDefault();
    void aNameIsStoredWhenTheWindowLosesTheFocus();
    void shortcutsOfTheWindowStayAsleepWhileAName_data();
    void shortcutsOfTheWindowStayAsleepWhileAName();
    void oddNamesSurviveTheConfigurationFile_data();
    void oddNamesSurviveTheConfigurationFile();
    void lineEndsOfAPastedNameBecomeBlanks();
    void tenThousandPastedLettersAreCutSoThatAllNamesFitAFilesHead();
    void aStoredNameOfTenThousandLettersIsShownFromItsStartAndKept();
    void aNameThatDoesNotFitIsWholeInTheToolTip();
    void aToolTipShowsMarkupAsItIs();
    void aFieldThatGoesAwayWhileEditedStoresNothing();

    void aClickTogglesTheTriggerAndOnlyOneIsOn();
    void anEdgeTellsTheOthersALevelDoesNot();
    void settingACodeChecksItsButtonWithoutASignal();
    void spaceTogglesATrigger();

    void theMenuHoldsFourHeightsAndTheReset();
    void theMenuChecksTheTruncatedLogarithmOfTheHeight_data();
    void theMenuChecksTheTruncatedLogarithmOfTheHeight();
    void theMenuOpensBelowTheButtonByKeyAndAtThePointerByMouse();
    void resetStoresAnEmptyNameAndNoTrigger();

    void theHandTellsPressMoveAndRelease();
    void otherButtonsDoNotDrag();
    void aMoveAfterALostReleaseLetsGo();
    void aHandleThatIsHiddenLetsGoOnce();
    void theHandsShapeTellsWhatItDoes();
    void theFocusOfTheNumberIsSeenOnlyWhenItCameByKey();

private:
    std::unique_ptr<DevBase> m_device;
};

void TstItemChnSidebar::init()
{
    globalsSetDpi(96);
    globalsFillTables();
    QFile::remove(configPath());
    configLoad();
    m_device = createDevice(0);
    gDev = m_device.get();
    QCursor::setPos(5000, 5000);
}

void TstItemChnSidebar::cleanup()
{
    gDev = nullptr;
}

void TstItemChnSidebar::theFrameIsABevelOfWholePixels_data()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96") << 96;
    QTest::newRow("192") << 192;
}

void TstItemChnSidebar::theFrameIsABevelOfWholePixels()
{
    QFETCH(int, dpi);
    globalsSetDpi(dpi);
    const int s = uiScale();
    ItemChnSidebar sidebar(3, 3, 1, nullptr);
    const int height = 60 * s;
    const QImage image = picture(sidebar, height);
    const int middle = dp(150);
    const int last = dp(190) - 1;
    QCOMPARE(image.pixelColor(middle, s - 1), gGreys[4]);
    QCOMPARE(image.pixelColor(middle, s), gGreys[6]);
    QCOMPARE(image.pixelColor(middle, height - s - 1), gGreys[6]);
    QCOMPARE(image.pixelColor(middle, height - s), gGreys[8]);
    QCOMPARE(image.pixelColor(last - s, height / 2), gGreys[6]);
    QCOMPARE(image.pixelColor(last - s + 1, height / 2), gGreys[9]);
    QCOMPARE(image.pixelColor(last, 0), gGreys[9]);
    QVERIFY(image.pixelColor(dp(18) - 1, s) != gGreys[6]);
    QCOMPARE(image.pixelColor(dp(18), s), gGreys[6]);
}

void TstItemChnSidebar::theNumbersColumnRunsFromLightToDarkThroughTheChannelsColour()
{
    ItemChnSidebar sidebar(4, 4, 1, nullptr);
    const QImage image = picture(sidebar, 121); // 120 rows of gradient
    const QColor color = gChnColors[4];
    const auto near = [&image](int y, const QColor &wanted) {
        const QColor seen = image.pixelColor(1, y);
        return qAbs(seen.red() - wanted.red()) < 6 && qAbs(seen.green() - wanted.green()) < 6 &&
               qAbs(seen.blue() - wanted.blue()) < 6;
    };
    QVERIFY(near(0, color.lighter(180)));
    QVERIFY(near(60, color));
    QVERIFY(near(119, color.darker(200)));
    QCOMPARE(image.pixelColor(1, 120), gGreys[8]);
}

void TstItemChnSidebar::colourRepeatsAfterTheLastOfTheTable()
{
    ItemChnSidebar second(1, 1, 1, nullptr);
    ItemChnSidebar tenth(9, 9, 1, nullptr);
    QCOMPARE(picture(second, 61).pixelColor(1, 30), picture(tenth, 61).pixelColor(1, 30));
}

void TstItemChnSidebar::theWidthIsFixed()
{
    const ItemChnSidebar sidebar(0, 0, 1, nullptr);
    QCOMPARE(sidebar.minimumWidth(), 190);
    QCOMPARE(sidebar.maximumWidth(), 190);
}

void TstItemChnSidebar::theNumberIsBlackAtTheRightOfItsColumn()
{
    ItemChnSidebar sidebar(3, 3, 1, nullptr); // on yellow
    const QImage image = picture(sidebar, 60);
    QCOMPARE(sidebar.handle()->alignment(), Qt::AlignRight | Qt::AlignVCenter);
    int darkest = 255;
    int right = 0;
    for (int x = 0; x < 18; ++x) {
        for (int y = 20; y < 45; ++y) {
            const int lightness = image.pixelColor(x, y).lightness();
            darkest = qMin(darkest, lightness);
            right = lightness < 40 ? x : right;
        }
    }
    QVERIFY(darkest < 20);
    QVERIFY(right > 12);
}

void TstItemChnSidebar::twoDigitsFitTheNumbersColumn_data()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96") << 96;
    QTest::newRow("144") << 144;
    QTest::newRow("192") << 192;
}

void TstItemChnSidebar::twoDigitsFitTheNumbersColumn()
{
    QFETCH(int, dpi);
    globalsSetDpi(dpi);
    ItemChnSidebar sidebar(30, 30, 1, nullptr);
    (void)picture(sidebar, dp(42));
    const QLabel *number = sidebar.handle();
    QCOMPARE(number->width(), dp(18));
    QCOMPARE(number->text(), QStringLiteral("30"));
    QVERIFY(number->fontMetrics().horizontalAdvance(number->text()) <= number->contentsRect().width());
}

void TstItemChnSidebar::theControlsStandAtTheirStatedPlaces_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<int>("height");
    for (const int dpi : {96, 120, 144, 192}) {
        QTest::addRow("the lowest row at %d dpi", dpi) << dpi << 42 * dpi / 96;
        QTest::addRow("eight times that at %d dpi", dpi) << dpi << 8 * 42 * dpi / 96;
    }
}

void TstItemChnSidebar::theControlsStandAtTheirStatedPlaces()
{
    QFETCH(int, dpi);
    QFETCH(int, height);
    globalsSetDpi(dpi);
    const int s = uiScale();
    ItemChnSidebar sidebar(0, 0, 1, nullptr);
    (void)picture(sidebar, height);
    const int top = dp(3) + s;
    const int line = 2 * s + dp(16);
    const int trigWidth = (s + 2 * dp(16)) * 2;
    const int trigLeft = dp(190) - dp(3) - trigWidth;
    const int settingLeft = trigLeft - dp(3) - line;
    const int nameLeft = dp(18) + dp(3);
    QCOMPARE(sidebar.handle()->geometry(), QRect(0, top, dp(18), height - top - dp(3)));
    QCOMPARE(nameOf(sidebar)->geometry(), QRect(nameLeft, top, settingLeft - dp(3) - nameLeft, line));
    QCOMPARE(buttonOf(sidebar, QStringLiteral("setting"))->geometry(), QRect(settingLeft, top, line, line));
    QCOMPARE(buttonOf(sidebar, QStringLiteral("setting"))->iconSize(), QSize(dp(16), dp(16)));
    QCOMPARE(part<QFrame>(sidebar, QStringLiteral("trigger"))->geometry(), QRect(trigLeft, top, trigWidth, line));
    for (int i = 0; i < 4; ++i) {
        const MyButton *button = buttonOf(sidebar, triggerButtons[i]);
        QCOMPARE(button->geometry(), QRect(s + i * dp(16), s, dp(16), dp(16)));
        QCOMPARE(button->iconSize(), QSize(dp(16), dp(16)));
        QVERIFY(!button->checkedIcon.isNull());
        QCOMPARE(button->radii.topLeft, i == 0 ? dp(3) : 0);
        QCOMPARE(button->radii.bottomLeft, i == 0 ? dp(3) : 0);
        QCOMPARE(button->radii.topRight, i == 3 ? dp(3) : 0);
        QCOMPARE(button->radii.bottomRight, i == 3 ? dp(3) : 0);
    }
    const QRect label = part<QLineEdit>(sidebar, QStringLiteral("analyzer"))->geometry();
    QCOMPARE(label.topLeft(), QPoint(nameLeft, top + line + dp(3)));
    QCOMPARE(label.bottomRight(), QPoint(dp(190) - dp(3) - 1, height - dp(3) - 1));
}

void TstItemChnSidebar::theLowestRowShowsAllOfItsTexts_data()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96") << 96;
    QTest::newRow("144") << 144;
    QTest::newRow("192") << 192;
}

void TstItemChnSidebar::theLowestRowShowsAllOfItsTexts()
{
    QFETCH(int, dpi);
    globalsSetDpi(dpi);
    gFontSmall.setPixelSize(dp(16)); // larger than there is room for
    ItemChnSidebar sidebar(31, 31, 1, nullptr);
    (void)picture(sidebar, dp(42));
    const QLineEdit *name = nameOf(sidebar);
    QVERIFY(name->fontMetrics().height() <= name->height() - 2 * uiScale());
    QVERIFY(name->fontMetrics().horizontalAdvance(QStringLiteral("Channel 31")) < name->width() - 2 * dp(5));
    const QLineEdit *label = part<QLineEdit>(sidebar, QStringLiteral("analyzer"));
    QVERIFY(label->fontMetrics().height() <= label->height());
    gFontSmall = QFont();
}

void TstItemChnSidebar::aDecodersNameStandsBelowTheNameAndTakesNoFocus()
{
    Window window;
    window.sidebar->setAnalyzerLabel(QStringLiteral("SPI - SCK"));
    auto *label = part<QLineEdit>(*window.sidebar, QStringLiteral("analyzer"));
    QCOMPARE(label->text(), QStringLiteral("SPI - SCK"));
    QCOMPARE(label->toolTip(), QStringLiteral("SPI - SCK"));
    QCOMPARE(label->alignment(), Qt::AlignLeft | Qt::AlignTop);
    QVERIFY(label->y() > window.name()->geometry().bottom());
    QTest::mouseClick(label, Qt::LeftButton);
    QVERIFY(!label->hasFocus());
    window.sidebar->setAnalyzerLabel(QString(3000, QLatin1Char('W')));
    QCOMPARE(label->cursorPosition(), 0);
    QVERIFY(label->toolTip().size() < 500);
    window.sidebar->setAnalyzerLabel(QString());
    QCOMPARE(label->text(), QString());
    QCOMPARE(label->toolTip(), QString());
}

void TstItemChnSidebar::aTriggerButtonIsTransparentAtRestAndDarkWhenChecked()
{
    const ItemChnSidebar sidebar(0, 0, 1, nullptr);
    for (const QString &name : triggerButtons) {
        const MyButton *button = buttonOf(sidebar, name);
        QCOMPARE(button->faceColor.alpha(), 0);
        QCOMPARE(button->hoverColor, gGreys[5]);
        QCOMPARE(button->checkedColor, gGreys[9]);
    }
}

void TstItemChnSidebar::everyControlHasANameOfItsOwn()
{
    const ItemChnSidebar sidebar(3, 3, 1, nullptr);
    QSet<QString> names;
    for (const QWidget *stop : sidebar.tabStops()) {
        QVERIFY2(stop->accessibleName().contains(QStringLiteral("Channel 3")), qPrintable(stop->objectName()));
        QVERIFY(stop->focusPolicy() & Qt::TabFocus);
        names.insert(stop->accessibleName());
    }
    QCOMPARE(names.size(), 7);
    QVERIFY(names.contains(QStringLiteral("Channel 3, Rising edge trigger")));
}

void TstItemChnSidebar::enterStoresTheName()
{
    const Window window;
    QVERIFY(window.shown);
    window.type(QStringLiteral("Clock"));
    QCOMPARE(storedName(3), QString());
    QTest::keyClick(window.name(), Qt::Key_Return);
    QVERIFY(!window.name()->hasFocus());
    QCOMPARE(storedName(3), QStringLiteral("Clock"));
    QCOMPARE(chnShowNameGet(3), QStringLiteral("Clock"));
}

void TstItemChnSidebar::losingTheFocusStoresTheName()
{
    const Window window;
    window.type(QStringLiteral("Data"));
    QTest::mouseClick(window.other, Qt::LeftButton);
    QCOMPARE(storedName(3), QStringLiteral("Data"));
    window.type(QStringLiteral("Enable"));
    QTest::keyClick(window.name(), Qt::Key_Tab);
    QCOMPARE(storedName(3), QStringLiteral("Enable"));
}

void TstItemChnSidebar::escapeBringsTheFormerNameBack()
{
    const Window window;
    window.type(QStringLiteral("Clock"));
    QTest::keyClick(window.name(), Qt::Key_Return);
    window.type(QStringLiteral("wrong"));
    QTest::keyClick(window.name(), Qt::Key_Escape);
    QCOMPARE(window.name()->text(), QStringLiteral("Clock"));
    QVERIFY(!window.name()->hasFocus());
    QCOMPARE(storedName(3), QStringLiteral("Clock"));
}

void TstItemChnSidebar::passingThroughTheFieldStoresNothing()
{
    const Window window;
    const QString odd = QStringLiteral("two\nlines");
    globalSet(QStringLiteral("chnShowName3"), odd);
    window.sidebar->setChnName(chnShowNameGet(3));
    window.name()->setFocus(Qt::TabFocusReason);
    QTest::keyClick(window.name(), Qt::Key_Tab);
    QCOMPARE(storedName(3), odd);
}

void TstItemChnSidebar::theDefaultNameIsStoredAsEmpty()
{
    const Window window;
    window.type(QStringLiteral("Clock"));
    QTest::keyClick(window.name(), Qt::Key_Return);
    window.type(QStringLiteral("Channel 3"));
    QTest::keyClick(window.name(), Qt::Key_Return);
    QCOMPARE(storedName(3), QString());
    window.type(QStringLiteral("Channel 4"));
    QTest::keyClick(window.name(), Qt::Key_Return);
    QCOMPARE(storedName(3), QStringLiteral("Channel 4"));
}

void TstItemChnSidebar::anEmptyNameIsStoredAsEmptyAndShowsTheDefault()
{
    const Window window;
    for (const QString &nothing : {QString(), QStringLiteral("   ")}) {
        window.type(QStringLiteral("Clock"));
        QTest::keyClick(window.name(), Qt::Key_Return);
        window.type(nothing);
        QTest::keyClick(window.name(), Qt::Key_Backspace);
        QTest::keyClick(window.name(), Qt::Key_Return);
        QCOMPARE(storedName(3), QString());
        QCOMPARE(window.name()->text(), QStringLiteral("Channel 3"));
    }
}

void TstItemChnSidebar::aNameIsStoredWhenTheWindowLosesTheFocus()
{
    // Whoever closes or saves from another window finds the name; the edit goes on when this one comes back.
    const Window window;
    window.type(QStringLiteral("Clock"));
    QWidget another;
    another.show();
    another.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&another));
    QCOMPARE(storedName(3), QStringLiteral("Clock"));
}

void TstItemChnSidebar::shortcutsOfTheWindowStayAsleepWhileAName_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("digit") << Qt::Key_1;
    QTest::newRow("zero") << Qt::Key_0;
    QTest::newRow("plus") << Qt::Key_Plus;
    QTest::newRow("minus") << Qt::Key_Minus;
    QTest::newRow("equal") << Qt::Key_Equal;
    QTest::newRow("up") << Qt::Key_Up;
    QTest::newRow("down") << Qt::Key_Down;
    QTest::newRow("home") << Qt::Key_Home;
    QTest::newRow("end") << Qt::Key_End;
    QTest::newRow("escape") << Qt::Key_Escape;
}

void TstItemChnSidebar::shortcutsOfTheWindowStayAsleepWhileAName()
{
    QFETCH(Qt::Key, key);
    Window window;
    QShortcut shortcut(QKeySequence(key), &window);
    int calls = 0;
    connect(&shortcut, &QShortcut::activated, this, [&calls] { ++calls; });
    window.type(QStringLiteral("a"));
    QTest::keyClick(window.name(), key);
    QCOMPARE(calls, 0);
    buttonOf(*window.sidebar, QStringLiteral("setting"))->setFocus();
    QTest::keyClick(&window, key);
    QCOMPARE(calls, 1);
}

void TstItemChnSidebar::oddNamesSurviveTheConfigurationFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("commas") << QStringLiteral("a,b,,c,");
    QTest::newRow("quotes") << QStringLiteral("\"a\" 'b' <c> & </settings>");
    QTest::newRow("non-Latin") << QString::fromUtf8("時鐘 Тактовый ρολόι 🕒");
    QTest::newRow("right to left") << QString::fromUtf8("שעון ١٢٣");
    QTest::newRow("blanks at the ends") << QStringLiteral("  x  ");
}

void TstItemChnSidebar::oddNamesSurviveTheConfigurationFile()
{
    QFETCH(QString, name);
    const Window window;
    window.paste(name);
    QTest::keyClick(window.name(), Qt::Key_Return);
    QCOMPARE(storedName(3), name);
    QVERIFY(configSave(configPath()));
    configLoad();
    QCOMPARE(chnShowNameGet(3), name);
    window.sidebar->setChnName(chnShowNameGet(3));
    QCOMPARE(window.name()->text(), name);
    QCOMPARE(window.sidebar->width(), 190);
}

void TstItemChnSidebar::lineEndsOfAPastedNameBecomeBlanks()
{
    const Window window;
    window.paste(QStringLiteral("a\nb\r\nc\td\u2028e\u2029f") + QChar(7));
    QTest::keyClick(window.name(), Qt::Key_Return);
    QCOMPARE(storedName(3), QStringLiteral("a b  c d e f "));
    QCOMPARE(window.name()->text(), storedName(3));
}

void TstItemChnSidebar::tenThousandPastedLettersAreCutSoThatAllNamesFitAFilesHead()
{
    for (int chn = 0; chn < 32; ++chn) {
        const Window window(chn);
        window.paste(QString(10000, QChar(0x6642))); // three bytes each
        QTest::keyClick(window.name(), Qt::Key_Return);
        QCOMPARE(storedName(chn).size(), 200);
        QVERIFY(window.name()->toolTip().size() <= 401);
        QCOMPARE(window.sidebar->width(), 190);
    }
    QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("names.cxset"));
    QVERIFY(configSave(path));
    QByteArray block;
    QVERIFY(configHeadOfFile(path, block));
}

void TstItemChnSidebar::aStoredNameOfTenThousandLettersIsShownFromItsStartAndKept()
{
    const QString stored = QStringLiteral("start") + QString(10000, QLatin1Char('W'));
    globalSet(QStringLiteral("chnShowName3"), stored);
    const Window window;
    window.sidebar->setChnName(chnShowNameGet(3));
    QVERIFY(window.name()->text().startsWith(QStringLiteral("start")));
    QCOMPARE(window.name()->cursorPosition(), 0);
    QVERIFY(window.name()->toolTip().size() <= 401);
    QCOMPARE(window.sidebar->width(), 190);
    window.name()->setFocus(Qt::TabFocusReason);
    QTest::keyClick(window.name(), Qt::Key_Return);
    QCOMPARE(storedName(3), stored);
}

void TstItemChnSidebar::aNameThatDoesNotFitIsWholeInTheToolTip()
{
    const Window window;
    const QString name = QStringLiteral("A name that is longer than its field");
    window.type(name);
    QTest::keyClick(window.name(), Qt::Key_Return);
    QCOMPARE(window.name()->cursorPosition(), 0);
    QCOMPARE(window.name()->toolTip(), name);
    window.type(QStringLiteral("W"));
    QTest::keyClick(window.name(), Qt::Key_Return);
    QCOMPARE(window.name()->toolTip(), QString());
}

void TstItemChnSidebar::aToolTipShowsMarkupAsItIs()
{
    ItemChnSidebar sidebar(0, 0, 1, nullptr);
    sidebar.setChnName(QStringLiteral("<b>bold</b> and a long tail"));
    QVERIFY(nameOf(sidebar)->toolTip().contains(QStringLiteral("&lt;b&gt;bold")));
    sidebar.setChnName(QStringLiteral("read & write with a long tail"));
    QCOMPARE(nameOf(sidebar)->toolTip(), QStringLiteral("read & write with a long tail"));
}

void TstItemChnSidebar::aFieldThatGoesAwayWhileEditedStoresNothing()
{
    {
        const Window window;
        window.type(QStringLiteral("half"));
        delete window.sidebar;
    }
    QCOMPARE(storedName(3), QString());
}

void TstItemChnSidebar::aClickTogglesTheTriggerAndOnlyOneIsOn()
{
    const Window window;
    const QVector<int> codes{3, 2, 4, 1};
    for (int i = 0; i < 4; ++i) {
        QTest::mouseClick(buttonOf(*window.sidebar, triggerButtons[i]), Qt::LeftButton);
        QCOMPARE(gDev->chnTrig[3], codes[i]);
        for (int k = 0; k < 4; ++k) {
            QCOMPARE(buttonOf(*window.sidebar, triggerButtons[k])->selected, k == i);
        }
    }
    QTest::mouseClick(buttonOf(*window.sidebar, triggerButtons[3]), Qt::LeftButton);
    QCOMPARE(gDev->chnTrig[3], 0);
    QVERIFY(!buttonOf(*window.sidebar, triggerButtons[3])->selected);
}

void TstItemChnSidebar::anEdgeTellsTheOthersALevelDoesNot()
{
    const Window window;
    const QSignalSpy told(window.sidebar, &ItemChnSidebar::trigEdgeChanged);
    QTest::mouseClick(buttonOf(*window.sidebar, QStringLiteral("btnHighLevel")), Qt::LeftButton);
    QTest::mouseClick(buttonOf(*window.sidebar, QStringLiteral("btnLowLevel")), Qt::LeftButton);
    QCOMPARE(told.size(), 0);
    QTest::mouseClick(buttonOf(*window.sidebar, QStringLiteral("btnPosEdge")), Qt::LeftButton);
    QCOMPARE(told.size(), 1);
    QTest::mouseClick(buttonOf(*window.sidebar, QStringLiteral("btnNegEdge")), Qt::LeftButton);
    QCOMPARE(told.size(), 2);
    QTest::mouseClick(buttonOf(*window.sidebar, QStringLiteral("btnNegEdge")), Qt::LeftButton); // off
    QCOMPARE(told.size(), 2);
}

void TstItemChnSidebar::settingACodeChecksItsButtonWithoutASignal()
{
    ItemChnSidebar sidebar(3, 3, 1, nullptr);
    const QSignalSpy told(&sidebar, &ItemChnSidebar::trigEdgeChanged);
    const QVector<int> codes{3, 2, 4, 1};
    for (const int code : {3, 1, 0, 4, 2, 5, -1}) {
        sidebar.setTrigCode(code);
        for (int i = 0; i < 4; ++i) {
            QCOMPARE(buttonOf(sidebar, triggerButtons[i])->selected, codes[i] == code);
        }
    }
    QCOMPARE(told.size(), 0);
    QCOMPARE(gDev->chnTrig[3], 0);
}

void TstItemChnSidebar::spaceTogglesATrigger()
{
    const Window window;
    MyButton *button = buttonOf(*window.sidebar, QStringLiteral("btnNegEdge"));
    button->setFocus(Qt::TabFocusReason);
    QTest::keyClick(button, Qt::Key_Space);
    QCOMPARE(gDev->chnTrig[3], 4);
    QTest::keyClick(button, Qt::Key_Space);
    QCOMPARE(gDev->chnTrig[3], 0);
}

void TstItemChnSidebar::theMenuHoldsFourHeightsAndTheReset()
{
    ItemChnSidebar sidebar(0, 0, 1, nullptr);
    sidebar.createMenu();
    const QList<QAction *> actions = sidebar.findChild<QMenu *>()->actions();
    const QVector<int> data{1, 2, 4, 8};
    QCOMPARE(actions.size(), 6);
    for (int i = 0; i < 4; ++i) {
        QCOMPARE(actions[i]->text(), QStringLiteral("Channel Height x%1").arg(data[i]));
        QCOMPARE(actions[i]->data().toInt(), data[i]);
        QVERIFY(actions[i]->isCheckable());
        QVERIFY(actions[i]->actionGroup()->isExclusive());
    }
    QVERIFY(actions[4]->isSeparator());
    QCOMPARE(actions[5]->text(), QStringLiteral("Reset All Channels"));
    QCOMPARE(actions[5]->data().toInt(), 9);
    QVERIFY(!actions[5]->isCheckable());
}

void TstItemChnSidebar::theMenuChecksTheTruncatedLogarithmOfTheHeight_data()
{
    QTest::addColumn<int>("multiplier");
    QTest::addColumn<int>("entry");
    QTest::newRow("1") << 1 << 0;
    QTest::newRow("2") << 2 << 1;
    QTest::newRow("3") << 3 << 1;
    QTest::newRow("4") << 4 << 2;
    QTest::newRow("7") << 7 << 2;
    QTest::newRow("8") << 8 << 3;
    QTest::newRow("15") << 15 << 3;
}

void TstItemChnSidebar::theMenuChecksTheTruncatedLogarithmOfTheHeight()
{
    QFETCH(int, multiplier);
    QFETCH(int, entry);
    Window window;
    window.sidebar->setMultiplier(multiplier);
    window.sidebar->openMenuDig();
    auto *menu = window.sidebar->findChild<QMenu *>();
    QCOMPARE(menu->actions().indexOf(menu->actions().at(0)->actionGroup()->checkedAction()), entry);
    menu->close();
    window.sidebar->setMultiplier(1);
    window.sidebar->openMenuDig();
    QVERIFY(menu->actions().at(0)->isChecked());
    QCOMPARE(window.sidebar->findChildren<QMenu *>().size(), 1);
}

void TstItemChnSidebar::theMenuOpensBelowTheButtonByKeyAndAtThePointerByMouse()
{
    const Window window;
    MyButton *button = buttonOf(*window.sidebar, QStringLiteral("setting"));
    button->setFocus(Qt::TabFocusReason);
    QTest::keyClick(button, Qt::Key_Space);
    auto *menu = window.sidebar->findChild<QMenu *>();
    QVERIFY(menu != nullptr && menu->isVisible());
    QCOMPARE(menu->pos(), button->mapToGlobal(button->rect().bottomLeft()));
    QCOMPARE(menu->activeAction(), menu->actions().at(0));
    qRegisterMetaType<QAction *>();
    const QSignalSpy told(window.sidebar, &ItemChnSidebar::trigerMenu);
    QTest::keyClick(menu, Qt::Key_Down);
    QTest::keyClick(menu, Qt::Key_Return);
    QVERIFY(!menu->isVisible());
    QCOMPARE(told.size(), 1);
    QCOMPARE(told.first().first().value<QAction *>(), menu->actions().at(1));

    const QPoint place = button->mapToGlobal(QPoint(3, 4));
    QCursor::setPos(place);
    QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(3, 4));
    QVERIFY(menu->isVisible());
    QCOMPARE(menu->pos(), place);
    menu->close();
}

void TstItemChnSidebar::resetStoresAnEmptyNameAndNoTrigger()
{
    ItemChnSidebar sidebar(3, 7, 4, nullptr);
    globalSet(QStringLiteral("chnShowName3"), QStringLiteral("Clock"));
    sidebar.setChnName(QStringLiteral("Clock"));
    gDev->setChnTrig(3, 2);
    sidebar.setTrigCode(2);
    sidebar.reset();
    QCOMPARE(storedName(3), QString());
    QCOMPARE(nameOf(sidebar)->text(), QStringLiteral("Channel 3"));
    QCOMPARE(sidebar.row(), 3);
    QCOMPARE(sidebar.multiplier(), 1);
    QCOMPARE(gDev->chnTrig[3], 0);
    QVERIFY(!buttonOf(sidebar, QStringLiteral("btnHighLevel"))->selected);
}

void TstItemChnSidebar::theHandTellsPressMoveAndRelease()
{
    const Window window;
    LabelMove *number = window.sidebar->handle();
    const QSignalSpy told(number, &LabelMove::channelMoveCallback);
    QTest::mousePress(number, Qt::LeftButton, {}, {5, 10});
    moveHeld(*number, {90, 37}, Qt::LeftButton);
    moveHeld(*number, {5, 3}, Qt::LeftButton);
    QTest::mouseRelease(number, Qt::LeftButton, {}, {5, 3});
    moveHeld(*number, {5, 8}, Qt::LeftButton);
    const QVector<QVariantList> wanted{{1, 3, 0}, {3, 3, 27}, {3, 3, -7}, {2, 3, 0}};
    QCOMPARE(told.size(), wanted.size());
    for (int i = 0; i < wanted.size(); ++i) {
        QCOMPARE(told[i], wanted[i]);
    }
}

void TstItemChnSidebar::otherButtonsDoNotDrag()
{
    const Window window;
    LabelMove *number = window.sidebar->handle();
    const QSignalSpy told(number, &LabelMove::channelMoveCallback);
    QTest::mousePress(number, Qt::RightButton, {}, {5, 10});
    moveHeld(*number, {5, 37}, Qt::RightButton);
    QTest::mouseRelease(number, Qt::RightButton, {}, {5, 37});
    QCOMPARE(told.size(), 0);
    QTest::mousePress(number, Qt::LeftButton, {}, {5, 10});
    QTest::mouseClick(number, Qt::RightButton, {}, {5, 10});
    QCOMPARE(told.size(), 1);
    QTest::mouseRelease(number, Qt::LeftButton, {}, {5, 10});
    QCOMPARE(told.size(), 2);
}

void TstItemChnSidebar::aMoveAfterALostReleaseLetsGo()
{
    const Window window;
    LabelMove *number = window.sidebar->handle();
    const QSignalSpy told(number, &LabelMove::channelMoveCallback);
    QTest::mousePress(number, Qt::LeftButton, {}, {5, 10});
    moveHeld(*number, {5, 37}, Qt::NoButton);
    QCOMPARE(told.size(), 2);
    QCOMPARE(told.last(), (QVariantList{2, 3, 0}));
}

void TstItemChnSidebar::aHandleThatIsHiddenLetsGoOnce()
{
    const Window window;
    LabelMove *number = window.sidebar->handle();
    const QSignalSpy told(number, &LabelMove::channelMoveCallback);
    QTest::mousePress(number, Qt::LeftButton, {}, {5, 10});
    window.sidebar->hide();
    QCOMPARE(told.size(), 2);
    QCOMPARE(told.last().first().toInt(), 2);
    window.sidebar->show();
    QTest::mouseRelease(number, Qt::LeftButton, {}, {5, 10});
    QCOMPARE(told.size(), 2);
}

void TstItemChnSidebar::theHandsShapeTellsWhatItDoes()
{
    const Window window;
    LabelMove *number = window.sidebar->handle();
    QEvent enter(QEvent::Enter);
    QApplication::sendEvent(number, &enter);
    QCOMPARE(number->cursor().shape(), Qt::OpenHandCursor);
    QTest::mousePress(number, Qt::LeftButton);
    QCOMPARE(number->cursor().shape(), Qt::ClosedHandCursor);
    QTest::mouseRelease(number, Qt::LeftButton);
    QCOMPARE(number->cursor().shape(), Qt::OpenHandCursor);
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(number, &leave);
    QCOMPARE(number->cursor().shape(), Qt::ArrowCursor);
}

void TstItemChnSidebar::theFocusOfTheNumberIsSeenOnlyWhenItCameByKey()
{
    const Window window;
    LabelMove *number = window.sidebar->handle();
    const auto corner = [number] { return number->grab().toImage().pixelColor(1, 0); };
    window.other->setFocus();
    number->setFocus(Qt::TabFocusReason);
    QCOMPARE(corner(), gGreys[0]);
    window.other->setFocus();
    QVERIFY(corner() != gGreys[0]);
    QTest::mouseClick(number, Qt::LeftButton);
    QVERIFY(number->hasFocus());
    QVERIFY(corner() != gGreys[0]);
}

QTEST_MAIN(TstItemChnSidebar)
#include "tst_ItemChnSidebar.moc"
