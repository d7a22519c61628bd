#include "controls/Look.h"
#include "device/DeviceGlobals.h"
#include "wave/SidebarDesk.h"

#include <QFrame>
#include <QLineEdit>
#include <QMenu>
#include <QtTest>

namespace {

const QStringList triggerButtons{QStringLiteral("btnPosEdge"), QStringLiteral("btnHighLevel"),
                                 QStringLiteral("btnNegEdge"), QStringLiteral("btnLowLevel")};

QImage picture(ItemChnSidebar &sidebar, int height)
{
    sidebar.resize(sidebar.width(), height);
    return sidebar.grab().toImage();
}

/// A move of the pointer while a button is down.
void moveHeld(QWidget &widget, QPoint place, Qt::MouseButton held)
{
    QMouseEvent event(QEvent::MouseMove, place, widget.mapToGlobal(place), Qt::NoButton, held, Qt::NoModifier);
    QApplication::sendEvent(&widget, &event);
}

} // namespace

class TstItemChnSidebar : public QObject, private SidebarDesk {
    Q_OBJECT
private slots:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void theFrameIsABevelOfWholePixels_data();
    void theFrameIsABevelOfWholePixels();
    void theNumbersColumnRunsFromLightToDarkThroughTheChannelsColour();
    void colourRepeatsAfterTheLastOfTheTable();
    void theWidthIsFixed();
    void theNumberIsBlackAtTheRightOfItsColumn();
    void theNumberTakesNoTextDocument();
    void twoDigitsFitTheNumbersColumn_data();
    void twoDigitsFitTheNumbersColumn();
    void theControlsStandAtTheirStatedPlaces_data();
    void theControlsStandAtTheirStatedPlaces();
    void theLowestRowShowsAllOfItsTexts_data();
    void theLowestRowShowsAllOfItsTexts();
    void aDecodersNameStandsBelowTheNameAndTakesNoFocus();
    void aTriggerButtonIsTransparentAtRestAndDarkWhenChecked();
    void everyControlHasANameOfItsOwn();
    void theNamesBeginWithTheChannelsOwnName();
    void aScreenReaderIsToldWhichTriggerIsSet();

    void aClickTogglesTheTriggerAndOnlyOneIsOn();
    void anEdgeTellsTheOthersALevelDoesNot();
    void settingACodeChecksItsButtonWithoutASignal();
    void spaceTogglesATrigger();

    void theMenuHoldsFourHeightsAndTheReset();
    void theMenuChecksTheTruncatedLogarithmOfTheHeight_data();
    void theMenuChecksTheTruncatedLogarithmOfTheHeight();
    void theMenuOpensBelowTheButtonByKeyAndAtThePointerByMouse();
    void resetStoresAnEmptyNameAndTellsOfNoTrigger();

    void theHandTellsPressMoveAndRelease();
    void otherButtonsDoNotDrag();
    void aMoveAfterALostReleaseLetsGo();
    void aHandleThatIsHiddenLetsGoOnce();
    void theHandsShapeTellsWhatItDoes();
    void theFocusOfTheNumberIsSeenOnlyWhenItCameByKey();
};

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

void TstItemChnSidebar::theNumberTakesNoTextDocument()
{
    const ItemChnSidebar sidebar(3, 3, 1, nullptr);
    sidebar.handle()->ensurePolished();
    QCOMPARE(sidebar.handle()->children().size(), 0); // of 32 rows they would be seen when the model is changed
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
    SidebarWindow window;
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

void TstItemChnSidebar::theNamesBeginWithTheChannelsOwnName()
{
    ItemChnSidebar sidebar(3, 3, 1, nullptr);
    const MyButton *trigger = buttonOf(sidebar, triggerButtons.first());
    sidebar.setChnName(QStringLiteral("Clock"));
    QCOMPARE(trigger->accessibleName(), QStringLiteral("Clock (Channel 3), Rising edge trigger"));
    sidebar.setChnName(QStringLiteral("Channel 3"));
    QCOMPARE(trigger->accessibleName(), QStringLiteral("Channel 3, Rising edge trigger"));
    for (const QLineEdit *edit : sidebar.findChildren<QLineEdit *>()) {
        QVERIFY(!edit->accessibleName().isEmpty());
    }
}

void TstItemChnSidebar::aScreenReaderIsToldWhichTriggerIsSet()
{
    SidebarWindow window;
    for (const int code : {3, 0}) {
        window.sidebar->setTrigCode(code);
        const MyButton *button = buttonOf(*window.sidebar, triggerButtons.first());
        QCOMPARE(button->isChecked(), code == 3);
        QCOMPARE(button->selected, code == 3);
    }
    QTest::mouseClick(buttonOf(*window.sidebar, triggerButtons.first()), Qt::LeftButton);
    for (const QString &name : triggerButtons) {
        const MyButton *button = buttonOf(*window.sidebar, name);
        QCOMPARE(button->isChecked(), button->selected);
    }
}

void TstItemChnSidebar::aClickTogglesTheTriggerAndOnlyOneIsOn()
{
    const SidebarWindow window;
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
    const SidebarWindow window;
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
    const QSignalSpy chosen(&sidebar, &ItemChnSidebar::trigChosen);
    const QVector<int> codes{3, 2, 4, 1};
    for (const int code : {3, 1, 0, 4, 2, 5, -1}) {
        sidebar.setTrigCode(code);
        for (int i = 0; i < 4; ++i) {
            QCOMPARE(buttonOf(sidebar, triggerButtons[i])->selected, codes[i] == code);
        }
    }
    QCOMPARE(told.size() + chosen.size(), 0);
}

void TstItemChnSidebar::spaceTogglesATrigger()
{
    const SidebarWindow window;
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
    QCOMPARE(actions.size(), 7);
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
    QCOMPARE(actions[6]->text(), QStringLiteral("Undo Reset"));
    QVERIFY(!actions[6]->isVisible()); // there is nothing to take back
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
    SidebarWindow window;
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
    const SidebarWindow window;
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

void TstItemChnSidebar::resetStoresAnEmptyNameAndTellsOfNoTrigger()
{
    ItemChnSidebar sidebar(3, 7, 4, nullptr);
    globalSet(QStringLiteral("chnShowName3"), QStringLiteral("Clock"));
    sidebar.setChnName(QStringLiteral("Clock"));
    sidebar.setTrigCode(2);
    const QSignalSpy told(&sidebar, &ItemChnSidebar::trigChosen);
    sidebar.reset();
    QCOMPARE(storedName(3), QString());
    QCOMPARE(nameOf(sidebar)->text(), QStringLiteral("Channel 3"));
    QCOMPARE(sidebar.row(), 3);
    QCOMPARE(sidebar.multiplier(), 1);
    QCOMPARE(told, (QList<QList<QVariant>>{{3, 0}}));
    QVERIFY(!buttonOf(sidebar, QStringLiteral("btnHighLevel"))->selected);
}

void TstItemChnSidebar::theHandTellsPressMoveAndRelease()
{
    const SidebarWindow window;
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
    const SidebarWindow window;
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
    const SidebarWindow window;
    LabelMove *number = window.sidebar->handle();
    const QSignalSpy told(number, &LabelMove::channelMoveCallback);
    QTest::mousePress(number, Qt::LeftButton, {}, {5, 10});
    moveHeld(*number, {5, 37}, Qt::NoButton);
    QCOMPARE(told.size(), 2);
    QCOMPARE(told.last(), (QVariantList{2, 3, 0}));
}

void TstItemChnSidebar::aHandleThatIsHiddenLetsGoOnce()
{
    const SidebarWindow window;
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
    const SidebarWindow window;
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
    const SidebarWindow window;
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
