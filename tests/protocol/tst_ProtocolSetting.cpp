#include "controls/Icons.h"
#include "controls/MyButton.h"
#include "controls/PopupPlace.h"
#include "protocol/AllAnalyzers.h"
#include "protocol/DecodeProgress.h"
#include "protocol/FaceDesk.h"
#include "protocol/ProtocolEdit.h"
#include "protocol/ProtocolSetting.h"
#include "protocol/SupportTable.h"
#include "settings/Config.h"
#include "support/DialogDriver.h"
#include "support/GuiTestMain.h"
#include "support/MenuDriver.h"

#include <QComboBox>
#include <QLabel>
#include <QListWidget>
#include <QMenu>

namespace {

/// A shown panel over a manager.
struct Panel {
    explicit Panel(const QStringList &faces) : desk(faces)
    {
        globalSet(QStringLiteral("recentAnalyzers"), QString());
        panel.resize(240, 400);
        panel.show();
    }
    explicit Panel(const char *face) : Panel(QStringList{QString::fromLatin1(face)}) {}

    [[nodiscard]] QVector<ProtocolItem *> rows() const
    {
        QVector<ProtocolItem *> shown;
        for (ProtocolItem *row : panel.findChildren<ProtocolItem *>()) {
            if (!row->isHidden()) {
                shown.append(row);
            }
        }
        return shown;
    }
    template<class Part>
    [[nodiscard]] Part *part(const char *name, int row = 0) const
    {
        return rows().at(row)->findChild<Part *>(QLatin1String(name));
    }
    [[nodiscard]] QMenu *menu() const { return panel.findChild<QMenu *>(QStringLiteral("addAnalyzerMenu")); }
    [[nodiscard]] QStringList menuTexts() const
    {
        QStringList texts;
        for (const QAction *action : menu()->actions()) {
            texts.append(action->isSeparator() ? QStringLiteral("-") : action->text());
        }
        return texts;
    }
    bool add(int channel = 0)
    {
        const int before = desk.manager->count();
        Analyzer *analyzer = desk.manager->createAnalyzer(0);
        AnalyzerDesk::lineOf(*analyzer)->SetChannel(Channel(0, std::uint32_t(channel)));
        (void)analyzer->GetAnalyzerSettings()->ApplyInterfaces();
        desk.manager->addLibIndex = 0;
        desk.manager->addAnalyzer(analyzer);
        return desk.manager->count() == before + 1;
    }

    AnalyzerDesk desk;
    ProtocolSetting panel{desk.manager.get()};
};

} // namespace

class TstProtocolSetting : public QObject {
    Q_OBJECT
private slots:
    void beforeTheListIsLoadedTheMenuHoldsNone();
    void whereNoDecoderIsFoundTheMenuHoldsNone();
    void theMenuOffersTheRecentOnesFirst();
    void aRowTellsNameAndChannels();
    void rowsFollowTheList();
    void theFocusStaysInItsPlaceWhenRowsAreMadeAnew();
    void aKeyBehindARemovalByMouseRemovesNoOther();
    void theHeaderFoldsTheSection();
    void removingKeepsTheRecentOnes();
    void removingBeforeAnyUpdateReadsWhatIsStored();
    void anEntryOpensTheDialogForANewAnalyzer();
    void allAnalyzersAreChosenByName();
    void theTableOfModelsOpens();
    void theMenuOfARowIsAsTold();
    void theMenuIsThatOfTheAnalyzerThatStandsThereNow();
    void aFormatOutsideTheListCountsAsHexadecimal();
    void aChosenFormatIsStored();
    void menusOpenAtThePointerOrBelowTheirButton();
    void aRowsMenuOpensItsSettings();
    void aRightClickOnARowOpensItsMenu();
    void aDoubleClickOnARowOpensItsSettings();
    void aLineTellsHowFarALongDecodeIs();
    void theLineComesAfter300Milliseconds();
    void aSignTellsThatADecodeEndedEarly();
    void namesFollowTheModel();
};

void TstProtocolSetting::beforeTheListIsLoadedTheMenuHoldsNone()
{
    const Panel p("kinds");
    QCOMPARE(p.menuTexts(), QStringList{QStringLiteral("None")});
}

void TstProtocolSetting::whereNoDecoderIsFoundTheMenuHoldsNone()
{
    const Panel p{QStringList()};
    p.desk.manager->loadFromConfig();
    QCOMPARE(p.menuTexts().join(QLatin1Char('|')),
             QStringLiteral("None|-|More Analyzers...|-|Device Supported List..."));
}

void TstProtocolSetting::theMenuOffersTheRecentOnesFirst()
{
    Panel p({QStringLiteral("kinds"), QStringLiteral("plain"), QStringLiteral("slow")});
    globalSet(QStringLiteral("recentAnalyzers"), QStringLiteral("slow.dll,unknown.dll,plain.dll"));
    p.desk.manager->loadFromConfig();
    QCOMPARE(p.menuTexts().join(QLatin1Char('|')),
             QStringLiteral("Face|Face|-|More Analyzers...|-|Device Supported List..."));
    QCOMPARE(globalGet(QStringLiteral("recentAnalyzers")), QStringLiteral("slow.dll,plain.dll"));
    const auto fileOf = [&p](int entry) {
        const int library = p.menu()->actions().at(entry)->data().toInt();
        return p.desk.manager->foundLibraries().at(library).fileName;
    };
    QCOMPARE(fileOf(0), QStringLiteral("plain.dll")); // two of one display name are told apart by their files
    QCOMPARE(fileOf(1), QStringLiteral("slow.dll"));
}

void TstProtocolSetting::aRowTellsNameAndChannels()
{
    Panel p("kinds");
    QVERIFY(p.add(3));
    QCOMPARE(p.rows().size(), 1);
    QCOMPARE(p.rows().first()->objectName(), QStringLiteral("kinds.dll"));
    QCOMPARE(p.part<QLabel>("title")->text(), QStringLiteral("Face"));
    QCOMPARE(p.part<QLabel>("title")->styleSheet(), QStringLiteral("QLabel{color:#f7f7f7;}"));
    QCOMPARE(p.part<QLabel>("channels")->text(), QStringLiteral("Line 3"));
    QCOMPARE(p.part<MyButton>("remove")->accessibleName(), QStringLiteral("Remove Face"));
    const auto iconOf = [](const MyButton *button) { return button->icon().cacheKey(); };
    const auto *add = p.panel.findChild<MyButton *>(QStringLiteral("addAnalyzer"));
    QCOMPARE(iconOf(add), sharedIcon(QStringLiteral(":/res/btnAddItem")).cacheKey());
    QCOMPARE(iconOf(p.part<MyButton>("setting")), sharedIcon(QStringLiteral(":/res/btnSetting")).cacheKey());
    QCOMPARE(iconOf(p.part<MyButton>("remove")), sharedIcon(QStringLiteral(":/res/btnRemove")).cacheKey());
    QVERIFY(p.rows().first()->toolTip().contains(QStringLiteral("Line 3")));
}

void TstProtocolSetting::rowsFollowTheList()
{
    Panel p("kinds");
    QVERIFY(p.add(1) && p.add(2));
    QCOMPARE(p.rows().size(), 2);
    QTest::mouseClick(p.part<MyButton>("remove"), Qt::LeftButton);
    QCOMPARE(p.rows().size(), 1);
    QCOMPARE(p.part<QLabel>("channels")->text(), QStringLiteral("Line 2"));
    QTest::keyClick(p.part<MyButton>("remove"), Qt::Key_Space);
    QCOMPARE(p.rows().size(), 0);
    QCOMPARE(p.desk.manager->count(), 0);
    QVERIFY(p.desk.stored.isEmpty());
}

void TstProtocolSetting::theFocusStaysInItsPlaceWhenRowsAreMadeAnew()
{
    Panel p("kinds");
    QVERIFY(QTest::qWaitForWindowActive(&p.panel));
    QVERIFY(p.add(1) && p.add(2) && p.add(3));
    p.part<MyButton>("setting", 1)->setFocus(Qt::TabFocusReason);
    p.desk.manager->setDisplayFormat(1, int(DisplayBase::Ascii));
    QCOMPARE(p.panel.focusWidget(), p.part<MyButton>("setting", 1));
    p.part<MyButton>("remove", 1)->setFocus(Qt::TabFocusReason);
    p.desk.manager->removeAnalyzer(1);
    QCOMPARE(p.panel.focusWidget(), p.part<MyButton>("remove", 1)); // of the next one
    p.desk.manager->removeAnalyzer(1);
    QCOMPARE(p.panel.focusWidget(), p.part<MyButton>("remove", 0)); // there is no next one
    p.desk.manager->removeAnalyzer(0);
    QCOMPARE(p.panel.focusWidget(), p.panel.findChild<MyButton *>(QStringLiteral("addAnalyzer")));
    QVERIFY(p.add(4));
    QCOMPARE(p.panel.focusWidget(), p.panel.findChild<MyButton *>(QStringLiteral("addAnalyzer")));
}

void TstProtocolSetting::aKeyBehindARemovalByMouseRemovesNoOther()
{
    Panel p("kinds");
    QVERIFY(QTest::qWaitForWindowActive(&p.panel));
    QVERIFY(p.add(1) && p.add(2) && p.add(3));
    QTest::mouseClick(p.part<MyButton>("remove", 0), Qt::LeftButton);
    QTRY_COMPARE(p.desk.manager->count(), 2);
    QCOMPARE(p.panel.focusWidget(), p.panel.findChild<MyButton *>(QStringLiteral("addAnalyzer")));
}

void TstProtocolSetting::theHeaderFoldsTheSection()
{
    Panel p("kinds");
    QVERIFY(p.add());
    auto *add = p.panel.findChild<MyButton *>(QStringLiteral("addAnalyzer"));
    const auto look = [&p] { return p.panel.findChildren<MyButton *>().first()->icon().cacheKey(); };
    QCOMPARE(look(), sharedIcon(QStringLiteral(":/res/btnExpand")).cacheKey());
    p.panel.staChangedSlot();
    QCOMPARE(look(), sharedIcon(QStringLiteral(":/res/btnCollapse")).cacheKey());
    QVERIFY(add->isHidden() && !p.part<MyButton>("remove")->isVisible());
    p.panel.staChangedSlot();
    QVERIFY(add->isVisible() && p.part<MyButton>("remove")->isVisible());
}

void TstProtocolSetting::removingKeepsTheRecentOnes()
{
    Panel p("kinds");
    QVERIFY(p.add());
    const QString stored = globalGet(QStringLiteral("recentAnalyzers"));
    QCOMPARE(stored, QStringLiteral("kinds.dll"));
    p.desk.manager->removeAnalyzer(0);
    QCOMPARE(globalGet(QStringLiteral("recentAnalyzers")), stored);
    QCOMPARE(p.menuTexts().first(), QStringLiteral("Face"));
}

void TstProtocolSetting::removingBeforeAnyUpdateReadsWhatIsStored()
{
    AnalyzerDesk desk({QStringLiteral("kinds"), QStringLiteral("plain")});
    QVERIFY(desk.add()); // before there is a panel
    globalSet(QStringLiteral("recentAnalyzers"), QStringLiteral("plain.dll,gone.dll"));
    const ProtocolSetting panel(desk.manager.get());
    desk.manager->removeAnalyzer(0);
    QCOMPARE(globalGet(QStringLiteral("recentAnalyzers")), QStringLiteral("plain.dll")); // of those that are there
}

void TstProtocolSetting::anEntryOpensTheDialogForANewAnalyzer()
{
    Panel p("kinds");
    p.desk.manager->loadFromConfig();
    QVERIFY(p.add()); // now it is recent
    const DialogDriver<ProtocolEdit> dialog([](ProtocolEdit &shown) { pressButton(shown, QStringLiteral("OK")); });
    p.menu()->actions().constFirst()->trigger();
    QTRY_COMPARE(p.rows().size(), 2);
    QCOMPARE(p.part<QLabel>("channels", 1)->text(), QStringLiteral("Line 1   Other 2"));
}

void TstProtocolSetting::allAnalyzersAreChosenByName()
{
    Panel p({QStringLiteral("kinds"), QStringLiteral("plain")});
    p.desk.manager->loadFromConfig();
    const DialogDriver<AllAnalyzers> list([](AllAnalyzers &shown) {
        QVERIFY(QTest::qWaitForWindowActive(&shown));
        QTRY_VERIFY(shown.isAncestorOf(QApplication::focusWidget()));
        while (qobject_cast<QListWidget *>(QApplication::focusWidget()) == nullptr) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space); // the first one, which has the focus
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    });
    const DialogDriver<ProtocolEdit> dialog([](ProtocolEdit &shown) { pressButton(shown, QStringLiteral("OK")); });
    p.panel.slotMoreProtocolClicked();
    QCOMPARE(list.count, 1);
    QCOMPARE(dialog.count, 1);
    QCOMPARE(p.rows().first()->objectName(), QStringLiteral("kinds.dll"));
}

void TstProtocolSetting::theTableOfModelsOpens()
{
    Panel p("kinds");
    const DialogDriver<SupportTable> table([](SupportTable &shown) { pressButton(shown, QStringLiteral("Close")); });
    p.panel.slotDevicSupportListClicked();
    p.panel.slotDevicSupportListClicked();
    QCOMPARE(table.count, 2);
    QCOMPARE(p.panel.findChildren<SupportTable *>().size(), 1);
}

void TstProtocolSetting::theMenuOfARowIsAsTold()
{
    Panel p("kinds");
    p.panel.extendMenu = [](QMenu &menu, int index) { menu.addAction(QStringLiteral("more of %1").arg(index)); };
    QVERIFY(p.add());
    QStringList texts;
    QStringList formats;
    const MenuDriver<QMenu> driver([&](QMenu &menu) {
        for (const QAction *action : menu.actions()) {
            texts.append(action->text());
        }
        for (const QAction *action : menu.actions().at(1)->menu()->actions()) {
            formats.append(action->text() + (action->isChecked() ? QStringLiteral(" *") : QString()));
        }
    });
    QTest::mouseClick(p.part<MyButton>("setting"), Qt::LeftButton);
    QTRY_COMPARE(driver.count, 1);
    QTRY_COMPARE(texts.join(QLatin1Char('|')), QStringLiteral("Edit|Display Format|more of 0"));
    QCOMPARE(formats.join(QLatin1Char('|')), QStringLiteral("Bin|Dec|Hex *|ASCII|ASCII && Hex"));
}

void TstProtocolSetting::theMenuIsThatOfTheAnalyzerThatStandsThereNow()
{
    Panel p("kinds");
    const AnalyzerManager &manager = *p.desk.manager;
    QVector<const Analyzer *> extended;
    p.panel.extendMenu = [&](QMenu &, int index) { extended.append(manager.analyzerAt(index)); };
    TextGate &gate = FaceDesk::workerGateOf(QStringLiteral("kinds"));
    gate.held = true;
    QVERIFY(p.add());
    p.rows().constFirst()->slotMenuPopup();
    p.desk.manager->stopAllWorkers(); // its worker does not leave, and goes with its analyzer
    gate.held = false;
    QCOMPARE(extended.size(), 1);
    QVERIFY(extended.constFirst() != manager.analyzerAt(0));
    p.rows().constFirst()->slotMenuPopup();
    QCOMPARE(extended.size(), 2);
    QCOMPARE(extended.constLast(), manager.analyzerAt(0));
}

void TstProtocolSetting::aFormatOutsideTheListCountsAsHexadecimal()
{
    Panel p("kinds");
    QVERIFY(p.add());
    p.desk.manager->setDisplayFormat(0, 77);
    QString checked;
    const MenuDriver<QMenu> driver([&checked](QMenu &menu) {
        for (const QAction *action : menu.actions().at(1)->menu()->actions()) {
            checked += action->isChecked() ? action->text() : QString();
        }
    });
    p.rows().first()->slotMenuPopup();
    QTRY_COMPARE(checked, QStringLiteral("Hex"));
}

void TstProtocolSetting::aChosenFormatIsStored()
{
    Panel p("kinds");
    QVERIFY(p.add());
    const MenuDriver<QMenu> driver([](QMenu &menu) { menu.actions().at(1)->menu()->actions().at(3)->trigger(); });
    QTest::keyClick(p.part<MyButton>("setting"), Qt::Key_Space);
    QTRY_COMPARE(p.desk.manager->displayFormat(0), 3);
    QCOMPARE(p.desk.stored.first().at(2), QStringLiteral("3"));
}

void TstProtocolSetting::menusOpenAtThePointerOrBelowTheirButton()
{
    Panel p("kinds");
    QVERIFY(p.add());
    QPoint opened;
    const MenuDriver<QMenu> driver([&opened](QMenu &menu) { opened = menu.pos(); });
    const QVector<MyButton *> buttons = {p.part<MyButton>("setting"),
                                         p.panel.findChild<MyButton *>(QStringLiteral("addAnalyzer"))};
    int menus = 0;
    for (MyButton *button : buttons) {
        QCursor::setPos(p.panel.mapToGlobal(QPoint(20, 380)));
        QTest::keyClick(button, Qt::Key_Space);
        ++menus;
        QTRY_COMPARE(driver.count, menus);
        QTRY_COMPARE(opened, button->mapToGlobal(button->rect().bottomLeft()));
        QTRY_VERIFY(QApplication::activePopupWidget() == nullptr);
        const QPoint onButton = button->mapToGlobal(button->rect().center());
        QCursor::setPos(onButton);
        QCOMPARE(popupPlace(*button), onButton);
    }
}

void TstProtocolSetting::aRowsMenuOpensItsSettings()
{
    Panel p("kinds");
    QVERIFY(p.add());
    const MenuDriver<QMenu> menu([](QMenu &shown) { shown.actions().constFirst()->trigger(); });
    const DialogDriver<ProtocolEdit> dialog([](ProtocolEdit &shown) {
        shown.findChildren<QComboBox *>().first()->setCurrentIndex(5);
        pressButton(shown, QStringLiteral("OK"));
    });
    QTest::mouseClick(p.part<MyButton>("setting"), Qt::LeftButton);
    QTRY_COMPARE(dialog.count, 1);
    QTRY_COMPARE(p.part<QLabel>("channels")->text(), QStringLiteral("Line 5"));
    p.panel.slotEditWanted(-1);
    p.panel.slotEditWanted(1);
    QCOMPARE(dialog.count, 1);
}

void TstProtocolSetting::aRightClickOnARowOpensItsMenu()
{
    Panel p("kinds");
    QVERIFY(p.add());
    QPoint at;
    QString first;
    const MenuDriver<QMenu> driver([&](QMenu &menu) {
        at = menu.pos();
        first = menu.actions().constFirst()->text();
    });
    QWidget *title = p.part<QLabel>("title");
    QVERIFY(QTest::qWaitForWindowExposed(&p.panel));
    const QPoint place = title->mapTo(&p.panel, title->rect().center());
    QTest::mouseClick(p.panel.windowHandle(), Qt::RightButton, {}, place);
    QTRY_COMPARE(first, QStringLiteral("Edit"));
    QCOMPARE(at, p.panel.mapToGlobal(place));
    first.clear();
    QContextMenuEvent byKey(QContextMenuEvent::Keyboard, QPoint());
    QApplication::sendEvent(p.part<MyButton>("remove"), &byKey);
    QTRY_COMPARE(first, QStringLiteral("Edit"));
}

void TstProtocolSetting::aDoubleClickOnARowOpensItsSettings()
{
    Panel p("kinds");
    QVERIFY(p.add());
    const DialogDriver<ProtocolEdit> dialog([](ProtocolEdit &shown) { shown.reject(); });
    QTest::mouseDClick(p.part<QLabel>("title"), Qt::LeftButton);
    QTRY_COMPARE(dialog.count, 1);
    QTest::mouseDClick(p.part<QLabel>("title"), Qt::RightButton);
    QCoreApplication::processEvents();
    QCOMPARE(dialog.count, 1);
}

void TstProtocolSetting::aLineTellsHowFarALongDecodeIs()
{
    Panel p("slow");
    int advanced = 0;
    connect(&p.panel, &ProtocolSetting::decodeAdvanced, this, [&advanced] { ++advanced; });
    QVERIFY(p.add());
    const auto *line = p.rows().first()->findChild<DecodeProgress *>();
    QVERIFY(line->share() < 0.0);
    QTRY_VERIFY(line->share() >= 0.0);
    QTRY_VERIFY(advanced >= 2);
    p.desk.manager->stopWorker(0);
    QTRY_VERIFY(line->share() < 0.0);
    QTRY_VERIFY(!p.panel.findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly)->isActive());
}

void TstProtocolSetting::theLineComesAfter300Milliseconds()
{
    Panel p("slow");
    QVERIFY(p.add());
    QVERIFY(p.desk.manager->isWorkerRunning(0));
    const auto *steps = p.panel.findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
    QCOMPARE(steps->interval(), ProtocolItem::progressStepMs);
    ProtocolItem row(p.desk.manager.get(), 0, {});
    const auto *line = row.findChild<DecodeProgress *>();
    for (int passed = steps->interval(); passed < 300; passed += steps->interval()) {
        row.refresh();
        QVERIFY(line->share() < 0.0);
    }
    row.refresh();
    QVERIFY(line->share() >= 0.0);
}

void TstProtocolSetting::aSignTellsThatADecodeEndedEarly()
{
    Panel p("fails");
    QVERIFY(p.add());
    const auto *sign = p.part<QLabel>("sign");
    QTRY_VERIFY(!sign->isHidden());
    QTRY_VERIFY(p.rows().first()->toolTip().contains(QStringLiteral("The line is of no use")));
    QVERIFY(!sign->pixmap(Qt::ReturnByValue).isNull());

    Panel sound("kinds");
    QVERIFY(sound.add());
    QTRY_VERIFY(!sound.desk.manager->isWorkerRunning(0));
    QVERIFY(sound.part<QLabel>("sign")->isHidden());
}

void TstProtocolSetting::namesFollowTheModel()
{
    Panel p("sound");
    p.panel.reload(); // before anything is loaded
    QCOMPARE(p.menuTexts(), QStringList{QStringLiteral("None")});
    QVERIFY(p.add());
    QCOMPARE(p.menuTexts().first(), QStringLiteral("Lie (Not Supported)"));
    p.desk.model = 5;
    p.panel.reload();
    QCOMPARE(p.menuTexts().first(), QStringLiteral("Lie"));
}

LUX_GUI_TEST(TstProtocolSetting)
#include "tst_ProtocolSetting.moc"
