#include "controls/ElidedEdit.h"
#include "wave/SidebarDesk.h"

#include <QClipboard>
#include <QShortcut>
#include <QTemporaryDir>
#include <QtTest>

/// The name of a channel: when it is stored, and what any text does to field, tool tip and configuration.
class TstItemChnSidebarName : public QObject, private SidebarDesk {
    Q_OBJECT
private slots:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void enterStoresTheName();
    void losingTheFocusStoresTheName();
    void escapeBringsTheFormerNameBack();
    void passingThroughTheFieldStoresNothing();
    void theDefaultNameIsStoredAsEmpty();
    void aStoredNameThatIsTheDefaultIsStoredAsEmptyByTheNextEdit();
    void anEmptyNameIsStoredAsEmptyAndShowsTheDefault();
    void aNameIsStoredWhenTheWindowLosesTheFocus();
    void aNameIsStoredWhenTheWindowIsClosed();
    void shortcutsOfTheWindowSleepWhileANameIsTyped_data();
    void shortcutsOfTheWindowSleepWhileANameIsTyped();
    void oddNamesSurviveTheConfigurationFile_data();
    void oddNamesSurviveTheConfigurationFile();
    void lineEndsOfAPastedNameBecomeBlanks();
    void tenThousandPastedLettersAreCutSoThatAllNamesFitAFilesHead();
    void aStoredNameOfTenThousandLettersIsShownFromItsStartAndKept();
    void aNameThatDoesNotFitIsWholeInTheToolTip();
    void aToolTipShowsMarkupAsItIs();
    void aFieldThatGoesAwayWhileEditedStoresNothing();
};

void TstItemChnSidebarName::enterStoresTheName()
{
    const SidebarWindow window;
    QVERIFY(window.shown);
    window.type(QStringLiteral("Clock"));
    QCOMPARE(storedName(3), QString());
    QTest::keyClick(window.name(), Qt::Key_Return);
    QVERIFY(!window.name()->hasFocus());
    QCOMPARE(storedName(3), QStringLiteral("Clock"));
    QCOMPARE(chnShowNameGet(3), QStringLiteral("Clock"));
}

void TstItemChnSidebarName::losingTheFocusStoresTheName()
{
    const SidebarWindow window;
    window.type(QStringLiteral("Data"));
    QTest::mouseClick(window.other, Qt::LeftButton);
    QCOMPARE(storedName(3), QStringLiteral("Data"));
    window.type(QStringLiteral("Enable"));
    QTest::keyClick(window.name(), Qt::Key_Tab);
    QCOMPARE(storedName(3), QStringLiteral("Enable"));
}

void TstItemChnSidebarName::escapeBringsTheFormerNameBack()
{
    const SidebarWindow window;
    window.type(QStringLiteral("Clock"));
    QTest::keyClick(window.name(), Qt::Key_Return);
    window.type(QStringLiteral("wrong"));
    QTest::keyClick(window.name(), Qt::Key_Escape);
    QCOMPARE(window.name()->text(), QStringLiteral("Clock"));
    QVERIFY(!window.name()->hasFocus());
    QCOMPARE(storedName(3), QStringLiteral("Clock"));
}

void TstItemChnSidebarName::passingThroughTheFieldStoresNothing()
{
    const SidebarWindow window;
    const QString odd = QStringLiteral("two\nlines");
    globalSet(QStringLiteral("chnShowName3"), odd);
    window.sidebar->setChnName(chnShowNameGet(3));
    window.name()->setFocus(Qt::TabFocusReason);
    QTest::keyClick(window.name(), Qt::Key_Tab);
    QCOMPARE(storedName(3), odd);
}

void TstItemChnSidebarName::theDefaultNameIsStoredAsEmpty()
{
    const SidebarWindow window;
    window.type(QStringLiteral("Clock"));
    QTest::keyClick(window.name(), Qt::Key_Return);
    window.type(QStringLiteral("Channel 3"));
    QTest::keyClick(window.name(), Qt::Key_Return);
    QCOMPARE(storedName(3), QString());
    window.type(QStringLiteral("Channel 4"));
    QTest::keyClick(window.name(), Qt::Key_Return);
    QCOMPARE(storedName(3), QStringLiteral("Channel 4"));
}

void TstItemChnSidebarName::aStoredNameThatIsTheDefaultIsStoredAsEmptyByTheNextEdit()
{
    globalSet(QStringLiteral("chnShowName3"), QStringLiteral("Channel 3"));
    const SidebarWindow window;
    window.sidebar->setChnName(chnShowNameGet(3));
    window.type(QStringLiteral("Channel 3"));
    QTest::keyClick(window.name(), Qt::Key_Return);
    QCOMPARE(storedName(3), QString()); // another language translates it anew
}

void TstItemChnSidebarName::anEmptyNameIsStoredAsEmptyAndShowsTheDefault()
{
    const SidebarWindow window;
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

void TstItemChnSidebarName::aNameIsStoredWhenTheWindowLosesTheFocus()
{
    // Whoever closes or saves from another window finds the name; the edit goes on when this one comes back.
    const SidebarWindow window;
    window.type(QStringLiteral("Clock"));
    QWidget another;
    another.show();
    another.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&another));
    QCOMPARE(storedName(3), QStringLiteral("Clock"));
}

void TstItemChnSidebarName::aNameIsStoredWhenTheWindowIsClosed()
{
    SidebarWindow window;
    window.type(QStringLiteral("Clock"));
    window.close();
    QCOMPARE(storedName(3), QStringLiteral("Clock"));
}

void TstItemChnSidebarName::shortcutsOfTheWindowSleepWhileANameIsTyped_data()
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

void TstItemChnSidebarName::shortcutsOfTheWindowSleepWhileANameIsTyped()
{
    QFETCH(Qt::Key, key);
    SidebarWindow window;
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

void TstItemChnSidebarName::oddNamesSurviveTheConfigurationFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("commas") << QStringLiteral("a,b,,c,");
    QTest::newRow("quotes") << QStringLiteral("\"a\" 'b' <c> & </settings>");
    QTest::newRow("non-Latin") << QString::fromUtf8("時鐘 Тактовый ρολόι 🕒");
    QTest::newRow("right to left") << QString::fromUtf8("שעון ١٢٣");
    QTest::newRow("blanks at the ends") << QStringLiteral("  x  ");
}

void TstItemChnSidebarName::oddNamesSurviveTheConfigurationFile()
{
    QFETCH(QString, name);
    const SidebarWindow window;
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

void TstItemChnSidebarName::lineEndsOfAPastedNameBecomeBlanks()
{
    const SidebarWindow window;
    window.paste(QStringLiteral("a\nb\r\nc\td\u2028e\u2029f") + QChar(7));
    QTest::keyClick(window.name(), Qt::Key_Return);
    QCOMPARE(storedName(3), QStringLiteral("a b  c d e f "));
    QCOMPARE(window.name()->text(), storedName(3));
}

void TstItemChnSidebarName::tenThousandPastedLettersAreCutSoThatAllNamesFitAFilesHead()
{
    for (int chn = 0; chn < 32; ++chn) {
        const SidebarWindow window(chn);
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

void TstItemChnSidebarName::aStoredNameOfTenThousandLettersIsShownFromItsStartAndKept()
{
    const QString stored = QStringLiteral("start") + QString(10000, QLatin1Char('W'));
    globalSet(QStringLiteral("chnShowName3"), stored);
    const SidebarWindow window;
    window.sidebar->setChnName(chnShowNameGet(3));
    QVERIFY(window.name()->text().startsWith(QStringLiteral("start")));
    QCOMPARE(window.name()->cursorPosition(), 0);
    QVERIFY(window.name()->toolTip().size() <= 401);
    QCOMPARE(window.sidebar->width(), 190);
    window.name()->setFocus(Qt::TabFocusReason);
    QTest::keyClick(window.name(), Qt::Key_Return);
    QCOMPARE(storedName(3), stored);
}

void TstItemChnSidebarName::aNameThatDoesNotFitIsWholeInTheToolTip()
{
    const SidebarWindow window;
    const QString name = QStringLiteral("A name that is longer than its field");
    window.type(name);
    QTest::keyClick(window.name(), Qt::Key_Return);
    QCOMPARE(window.name()->cursorPosition(), 0);
    QCOMPARE(window.name()->toolTip(), name);
    QVERIFY(static_cast<const ElidedEdit *>(window.name())->shownText().endsWith(QChar(0x2026)));
    window.type(QStringLiteral("W"));
    QTest::keyClick(window.name(), Qt::Key_Return);
    QCOMPARE(window.name()->toolTip(), QString());
}

void TstItemChnSidebarName::aToolTipShowsMarkupAsItIs()
{
    ItemChnSidebar sidebar(0, 0, 1, nullptr);
    sidebar.setChnName(QStringLiteral("<b>bold</b> and a long tail"));
    QVERIFY(nameOf(sidebar)->toolTip().contains(QStringLiteral("&lt;b&gt;bold")));
    sidebar.setChnName(QStringLiteral("read & write with a long tail"));
    QCOMPARE(nameOf(sidebar)->toolTip(), QStringLiteral("read & write with a long tail"));
}

void TstItemChnSidebarName::aFieldThatGoesAwayWhileEditedStoresNothing()
{
    {
        const SidebarWindow window;
        window.type(QStringLiteral("half"));
        delete window.sidebar;
    }
    QCOMPARE(storedName(3), QString());
}

QTEST_MAIN(TstItemChnSidebarName)
#include "tst_ItemChnSidebarName.moc"
