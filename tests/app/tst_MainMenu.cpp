#include "app/AboutLUX.h"
#include "app/MainMenu.h"
#include "app/WindowDesk.h"
#include "controls/MyButton.h"
#include "panels/Options.h"
#include "support/BoxCloser.h"
#include "support/DialogDriver.h"

#include <QAction>
#include <QMenu>

/// The menu: its entries, its keys, and what they open.
class TstMainMenu : public QObject, private WindowDesk {
    Q_OBJECT
private slots:
    void init();
    void cleanup() { tearDown(); }

    void theFirstClickBuildsTheMenuAndLaterOnesReuseIt();
    void theEntriesStandInTheirOrder();
    void theKeysStandBesideTheirEntries();
    void aKeyRunsItsActionOnceBeforeAndAfterTheMenuWasOpened_data();
    void aKeyRunsItsActionOnceBeforeAndAfterTheMenuWasOpened();
    void aKeyThatIsHeldRunsItsActionOnce();
    void theMenuIsOpenedAndWalkedByKeys();
    void theClickThatClosesTheMenuDoesNotOpenItAgain();
    void theEntryForUpdatesAsksForThem();
    void optionsAndAboutOpenAsModalDialogs();
    void theButtonTellsItsNameAndTakesTheKeyboard();

private:
    QMenu *openMenu();
    void pressKey(Qt::Key key, bool repeated = false);
    QAction *entry(const QString &text);

    MainMenu *m_menu = nullptr;
    MyButton *m_button = nullptr;
    QVector<LanguageInfo> m_languages;
};

void TstMainMenu::init()
{
    setUp();
    m_menu = m_window->findChild<MainMenu *>();
    m_button = m_menu->findChild<MyButton *>();
    m_languages = {{QStringLiteral("en-US"), QStringLiteral("English"), QString()}};
    m_menu->languages = [this] { return m_languages; };
}

void TstMainMenu::pressKey(Qt::Key key, bool repeated)
{
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    qt_handleKeyEvent(m_window->windowHandle(), QEvent::KeyPress, key, Qt::ControlModifier, QString(), repeated);
    qt_handleKeyEvent(m_window->windowHandle(), QEvent::KeyRelease, key, Qt::ControlModifier, QString(), repeated);
}

QMenu *TstMainMenu::openMenu()
{
    QTest::mouseClick(m_button, Qt::LeftButton);
    return qobject_cast<QMenu *>(QApplication::activePopupWidget());
}

QAction *TstMainMenu::entry(const QString &text)
{
    for (QAction *action : openMenu()->actions()) {
        if (action->text() == text) {
            return action;
        }
    }
    return nullptr;
}

void TstMainMenu::theFirstClickBuildsTheMenuAndLaterOnesReuseIt()
{
    int asked = 0;
    m_menu->languages = [&] {
        ++asked;
        return m_languages;
    };
    QVERIFY(m_menu->findChildren<QMenu *>().isEmpty());
    QMenu *first = openMenu();
    QVERIFY(first != nullptr && first->isVisible());
    const int entries = first->findChildren<QAction *>().size();
    first->close();
    m_languages.append({QStringLiteral("de"), QStringLiteral("Deutsch"), QString()});
    QCOMPARE(openMenu(), first);
    QCOMPARE(first->findChildren<QAction *>().size(), entries);
    QCOMPARE(asked, 1);
}

void TstMainMenu::theEntriesStandInTheirOrder()
{
    QStringList texts;
    QStringList exported;
    QList<int> kinds;
    for (const QAction *action : openMenu()->actions()) {
        texts += action->isSeparator() ? QStringLiteral("-") : action->text();
        if (action->text() == QStringLiteral("Export Data")) {
            for (const QAction *format : action->menu()->actions()) {
                exported += format->text();
                kinds += format->data().toInt();
            }
        }
    }
    QCOMPARE(texts,
             QStringList({QStringLiteral("Open..."), QStringLiteral("Recent"), QStringLiteral("Save Settings..."),
                          QStringLiteral("Save Data..."), QStringLiteral("-"), QStringLiteral("Export Data"),
                          QStringLiteral("Save Picture..."), QStringLiteral("-"), QStringLiteral("Language..."),
                          QStringLiteral("-"), QStringLiteral("Options..."), QStringLiteral("-"),
                          QStringLiteral("Check for updates..."), QStringLiteral("About CorvanLUX..."),
                          QStringLiteral("-")}));
    QCOMPARE(exported, QStringList({QStringLiteral("Text file (*.txt)"), QStringLiteral("CSV file (*.csv)"),
                                    QStringLiteral("Binary file (*.bin)"), QStringLiteral("VCD file (*.vcd)"),
                                    QStringLiteral("Session archive (*.sr)")}));
    QCOMPARE(kinds, QList<int>({2, 3, 4, 6, 7}));
}

void TstMainMenu::theKeysStandBesideTheirEntries()
{
    QMap<QString, QString> keys;
    for (const QAction *action : openMenu()->actions()) {
        if (!action->shortcut().isEmpty()) {
            keys.insert(action->text(), action->shortcut().toString());
            QVERIFY(action->isShortcutVisibleInContextMenu());
        }
    }
    QCOMPARE(keys, (QMap<QString, QString>{{QStringLiteral("Open..."), QStringLiteral("Ctrl+O")},
                                           {QStringLiteral("Save Data..."), QStringLiteral("Ctrl+S")}}));
}

void TstMainMenu::aKeyRunsItsActionOnceBeforeAndAfterTheMenuWasOpened_data()
{
    QTest::addColumn<bool>("opened");
    QTest::newRow("before") << false;
    QTest::newRow("after") << true;
}

void TstMainMenu::aKeyRunsItsActionOnceBeforeAndAfterTheMenuWasOpened()
{
    QFETCH(bool, opened);
    if (opened) {
        openMenu()->close();
        QTRY_VERIFY(QApplication::activePopupWidget() == nullptr);
    }
    DialogDriver<QFileDialog> files([](QFileDialog &dialog) { dialog.reject(); });
    BoxCloser boxes;
    pressKey(Qt::Key_S);
    QCOMPARE(boxes.seen.count, 1);
    QCOMPARE(boxes.seen.text, QStringLiteral("Sorry, there is no data that can be saved."));
    QCOMPARE(files.count, 0);
    pressKey(Qt::Key_O);
    QCOMPARE(files.count, 1);
    QCOMPARE(boxes.seen.count, 1);
    pressKey(Qt::Key_O); // and again, with the menu as it is
    QCOMPARE(files.count, 2);
}

void TstMainMenu::aKeyThatIsHeldRunsItsActionOnce()
{
    for (const bool opened : {false, true}) {
        if (opened) {
            openMenu()->close();
        }
        BoxCloser boxes;
        for (const bool repeated : {false, true, true}) {
            pressKey(Qt::Key_S, repeated);
        }
        QCOMPARE(boxes.seen.count, 1);
    }
}

void TstMainMenu::theMenuIsOpenedAndWalkedByKeys()
{
    m_button->setFocus(Qt::TabFocusReason);
    QTest::keyClick(m_button, Qt::Key_Space);
    auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    QVERIFY(menu != nullptr);
    QTest::keyClick(menu, Qt::Key_Down);
    QCOMPARE(menu->activeAction()->text(), QStringLiteral("Open..."));
    for (int i = 0; i < 3; ++i) {
        QTest::keyClick(menu, Qt::Key_Down);
    }
    QCOMPARE(menu->activeAction()->text(), QStringLiteral("Export Data"));
    QTest::keyClick(menu, Qt::Key_Right);
    auto *formats = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    QVERIFY(formats != menu);
    QTest::keyClick(formats, Qt::Key_Down);
    BoxCloser boxes;
    QTest::keyClick(formats, Qt::Key_Return);
    QCOMPARE(boxes.seen.text, QStringLiteral("Sorry, there is no data that can be exported."));
    QVERIFY(QApplication::activePopupWidget() == nullptr);
}

void TstMainMenu::theClickThatClosesTheMenuDoesNotOpenItAgain()
{
    QMenu *menu = openMenu();
    QVERIFY(menu->testAttribute(Qt::WA_NoMouseReplay));
    const QPoint onButton = menu->mapFromGlobal(m_button->mapToGlobal(m_button->rect().center()));
    QTest::mouseClick(menu, Qt::LeftButton, {}, onButton);
    QVERIFY(!menu->isVisible());
    QVERIFY(openMenu()->testAttribute(Qt::WA_NoMouseReplay));
}

void TstMainMenu::theEntryForUpdatesAsksForThem()
{
    int asked = 0;
    connect(m_menu, &MainMenu::checkUpdateWanted, this, [&] { ++asked; });
    entry(QStringLiteral("Check for updates..."))->trigger();
    QCOMPARE(asked, 1);
    disconnect(m_menu, &MainMenu::checkUpdateWanted, this, nullptr);
}

void TstMainMenu::optionsAndAboutOpenAsModalDialogs()
{
    bool modal = false;
    DialogDriver<Options> options([&](Options &dialog) { modal = dialog.isModal(); });
    entry(QStringLiteral("Options..."))->trigger();
    QCOMPARE(options.count, 1);
    QVERIFY(modal);
    modal = false;
    DialogDriver<AboutLUX> about([&](AboutLUX &dialog) { modal = dialog.isModal(); });
    entry(QStringLiteral("About CorvanLUX..."))->trigger();
    QCOMPARE(about.count, 1);
    QVERIFY(modal);
}

void TstMainMenu::theButtonTellsItsNameAndTakesTheKeyboard()
{
    QCOMPARE(m_button->accessibleName(), QStringLiteral("Main menu"));
    QVERIFY(m_button->focusPolicy() & Qt::TabFocus);
    QVERIFY(!m_button->icon().isNull());
}

LUX_GUI_TEST(TstMainMenu)
#include "tst_MainMenu.moc"
