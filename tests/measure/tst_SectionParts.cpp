#include "controls/MyButton.h"
#include "measure/SectionParts.h"
#include "measure/TimingMarkerTip.h"
#include "support/GuiTestMain.h"

#include <QCursor>
#include <QHBoxLayout>
#include <QToolTip>

/// What the sections are made of, values that are too long for their place among them.
class TstSectionParts : public QObject {
    Q_OBJECT
private slots:
    void cleanup() { QToolTip::hideText(); }

    void aValueThatFitsIsWhole();
    void aValueThatIsTooLongLosesDigitsAndKeepsItsUnit();
    void aTextWithoutNumberLosesItsEnd();
    void aLongValueAsksForNoMoreRoomThanAnUnknownOne();
    void thePointerOverALongValueBringsTheWholeText();
    void thePointerOverAValueThatFitsHidesTheToolTip();
    void theFoldButtonTellsItsStateByIconAndName();
    void iconButtonsHaveANameForThoseWhoCannotSee();
    void aHeaderPutsTheTitleBetweenItsButtons();
};

void TstSectionParts::aValueThatFitsIsWhole()
{
    const QFontMetrics metrics(QApplication::font());
    const QString text = QStringLiteral("-12.5ms");
    QCOMPARE(elidedValue(text, metrics, metrics.horizontalAdvance(text) + 2), text);
    QCOMPARE(elidedValue(QString(), metrics, 10), QString());
}

void TstSectionParts::aValueThatIsTooLongLosesDigitsAndKeepsItsUnit()
{
    const QFontMetrics metrics(QApplication::font());
    const QString text = QStringLiteral("-54975581.388775001ms");
    const int room = metrics.horizontalAdvance(text) / 2;
    const QString shown = elidedValue(text, metrics, room);
    QVERIFY(shown.startsWith(QStringLiteral("-5497")));
    QVERIFY(shown.endsWith(QChar(0x2026) + QStringLiteral("ms")));
    QVERIFY(metrics.horizontalAdvance(shown) <= room);
}

void TstSectionParts::aTextWithoutNumberLosesItsEnd()
{
    const QFontMetrics metrics(QApplication::font());
    const QString shown = elidedValue(QStringLiteral("Measurements"), metrics, 50);
    QVERIFY(shown.startsWith(QStringLiteral("Me")));
    QVERIFY(shown.endsWith(QChar(0x2026)));
}

void TstSectionParts::aLongValueAsksForNoMoreRoomThanAnUnknownOne()
{
    TimingMarkerTip tip;
    QCOMPARE(tip.text(), QStringLiteral("###"));
    const QSize before = tip.minimumSizeHint();
    tip.setText(QString(10000, QLatin1Char('9')));
    QCOMPARE(tip.minimumSizeHint(), before);
    tip.resize(60, 20);
    QVERIFY(!tip.grab().isNull());
}

void TstSectionParts::thePointerOverALongValueBringsTheWholeText()
{
    TimingMarkerTip tip;
    tip.resize(40, 20);
    tip.move(100, 100);
    tip.setText(QStringLiteral("-54975581.388775001s"));
    tip.show();
    QVERIFY(QTest::qWaitForWindowExposed(&tip));
    QCursor::setPos(tip.mapToGlobal(QPoint(5, 5)));
    QTRY_COMPARE(QToolTip::text(), QStringLiteral("-54975581.388775001s"));
}

void TstSectionParts::thePointerOverAValueThatFitsHidesTheToolTip()
{
    QCursor::setPos(0, 0);
    TimingMarkerTip tip;
    tip.resize(300, 20);
    tip.move(100, 100);
    tip.setText(QStringLiteral("1s"));
    tip.show();
    QVERIFY(QTest::qWaitForWindowExposed(&tip));
    QToolTip::showText(QPoint(10, 10), QStringLiteral("of another widget"));
    QVERIFY(QToolTip::isVisible());
    QCursor::setPos(tip.mapToGlobal(QPoint(5, 5)));
    QTRY_VERIFY(!QToolTip::isVisible());
}

void TstSectionParts::theFoldButtonTellsItsStateByIconAndName()
{
    QWidget parent;
    MyButton *button = makeExpandButton(QStringLiteral("Measurements"), &parent);
    const auto picture = [button] { return button->icon().pixmap(16, 16).toImage(); };
    QCOMPARE(picture(), QIcon(QStringLiteral(":/res/btnExpand")).pixmap(16, 16).toImage());
    QCOMPARE(button->accessibleName(), QStringLiteral("Collapse Measurements"));
    showExpanded(*button, false);
    QCOMPARE(picture(), QIcon(QStringLiteral(":/res/btnCollapse")).pixmap(16, 16).toImage());
    QCOMPARE(button->accessibleName(), QStringLiteral("Expand Measurements"));
}

void TstSectionParts::iconButtonsHaveANameForThoseWhoCannotSee()
{
    QWidget parent;
    const MyButton *button = makeIconButton(QStringLiteral(":/res/btnRemove"), QStringLiteral("Remove"), &parent);
    QCOMPARE(button->accessibleName(), QStringLiteral("Remove"));
    QCOMPARE(button->iconSize(), QSize(16, 16));
    QVERIFY(!button->icon().isNull());
    QVERIFY((button->focusPolicy() & Qt::TabFocus) != 0);
}

void TstSectionParts::aHeaderPutsTheTitleBetweenItsButtons()
{
    QWidget section;
    auto *expand = makeExpandButton(QStringLiteral("Section"), &section);
    auto *title = makeSectionTitle(QStringLiteral("A title that is far too long for a panel of this width"), &section);
    auto *action = makeIconButton(QStringLiteral(":/res/btnAddItem"), QStringLiteral("Add"), &section);
    section.setLayout(makeSectionHeader(expand, title, action));
    section.resize(200, 24);
    section.show();
    QVERIFY(QTest::qWaitForWindowExposed(&section));
    QVERIFY(expand->geometry().right() < title->geometry().left());
    QVERIFY(title->geometry().right() < action->geometry().left());
    QCOMPARE(action->geometry().right(), section.width() - 1);
}

LUX_GUI_TEST(TstSectionParts)
#include "tst_SectionParts.moc"
