#include "controls/Look.h"
#include "protocol/SearchEdit.h"
#include "support/GuiTestMain.h"

#include <QLabel>
#include <QShortcut>
#include <QSignalSpy>
#include <QtTest>

/// The line in which something is searched for.
class TstSearchEdit : public QObject {
    Q_OBJECT
private slots:
    void itLooksAsTold();
    void aCountIsShownAtTheRightEndAndTheTextKeepsClearOfIt();
    void noCountIsShownForNothing();
    void escapeEmptiesTheLineAndOnlyAnEmptyOneLetsItThrough();
    void upAndDownGoThroughWhatWasFoundAndAreNoShortcutsOfTheWindow();
    void theTextBeginsRightOfTheGlass();
};

void TstSearchEdit::itLooksAsTold()
{
    const SearchEdit line({});
    QCOMPARE(line.placeholderText(), QStringLiteral("Search"));
    const QString rule = QStringLiteral("QLineEdit{background-color:#1f1f23;border:%1px solid #1f1f23;").arg(dp(1));
    QVERIFY(line.styleSheet().startsWith(rule));
    QVERIFY(line.styleSheet().section(QLatin1Char('}'), 0, 0).endsWith(QStringLiteral("color:#f7f7f7;")));
    const SearchEdit other({Qt::red, Qt::green, Qt::blue});
    QVERIFY(other.styleSheet().startsWith(QStringLiteral("QLineEdit{background-color:#ff0000;")));
}

void TstSearchEdit::aCountIsShownAtTheRightEndAndTheTextKeepsClearOfIt()
{
    SearchEdit line({});
    line.resize(200, line.height());
    line.show();
    line.setCount(10'000'000);
    QCOMPARE(line.countText(), QStringLiteral("10000000"));
    const QLabel *count = line.findChildren<QLabel *>().constLast();
    QVERIFY(count->geometry().right() < line.width());
    QVERIFY(count->width() >= count->sizeHint().width());
    QVERIFY(line.textMargins().right() >= count->width());
}

void TstSearchEdit::noCountIsShownForNothing()
{
    SearchEdit line({});
    line.setCount(5);
    line.setCount(0);
    QCOMPARE(line.countText(), QString());
    QCOMPARE(line.textMargins().right(), 0);
    line.setCount(-1);
    QCOMPARE(line.countText(), QString());
}

void TstSearchEdit::escapeEmptiesTheLineAndOnlyAnEmptyOneLetsItThrough()
{
    QWidget window;
    SearchEdit line({}, &window);
    window.show();
    QTest::keyClicks(&line, QStringLiteral("ack"));
    const QSignalSpy changes(&line, &QLineEdit::textChanged);
    QKeyEvent first(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    QCoreApplication::sendEvent(&line, &first);
    QVERIFY(first.isAccepted());
    QCOMPARE(line.text(), QString());
    QCOMPARE(changes.size(), 1);
    QKeyEvent second(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    QCoreApplication::sendEvent(&line, &second);
    QVERIFY(!second.isAccepted());
}

void TstSearchEdit::upAndDownGoThroughWhatWasFoundAndAreNoShortcutsOfTheWindow()
{
    QWidget window;
    SearchEdit line({}, &window);
    const QShortcut up(Qt::Key_Up, &window);
    const QShortcut down(Qt::Key_Down, &window);
    const QSignalSpy zoomedIn(&up, &QShortcut::activated);
    const QSignalSpy zoomedOut(&down, &QShortcut::activated);
    const QSignalSpy moved(&line, &SearchEdit::keyMoved);
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    line.setFocus();
    QTest::keyClick(&line, Qt::Key_Down);
    QTest::keyClick(&line, Qt::Key_Up);
    QCOMPARE(zoomedIn.size() + zoomedOut.size(), 0);
    QCOMPARE(moved.size(), 2);
    QCOMPARE(moved.at(0).at(0).toInt(), int(Qt::Key_Down));
    QCOMPARE(moved.at(1).at(0).toInt(), int(Qt::Key_Up));
}

void TstSearchEdit::theTextBeginsRightOfTheGlass()
{
    const SearchEdit line({});
    const QLabel *glass = line.findChildren<QLabel *>().constFirst();
    QVERIFY(line.textMargins().left() > glass->geometry().right());
}

LUX_GUI_TEST(TstSearchEdit)
#include "tst_SearchEdit.moc"
