#include "controls/Look.h"
#include "controls/MyButton.h"
#include "controls/NumberField.h"
#include "wave/SmpZoom.h"

#include <QApplication>
#include <QImage>
#include <QLineEdit>
#include <QShortcut>
#include <QSignalSpy>
#include <QTest>

class TstSmpZoom : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void eachButtonAsksForItsZoom_data();
    void eachButtonAsksForItsZoom();
    void theButtonsStandInTheirOrderWithTipsAndNames();
    void aTypedRatioIsAskedForOnceByReturn();
    void aTypedRatioIsAskedForWhenTheFocusLeaves();
    void aTextThatIsNoNumberIsToldAtTheField();
    void aTextThatIsNoNumberKeepsTheFocusUntilItIsOne();
    void escapeTakesBackWhatIsTyped();
    void upAndDownInTheFieldAreNoShortcutsOfTheWindow();
    void aCommaIsADecimalPoint();
    void aShownRatioIsNotAskedFor();
    void aShownRatioDoesNotDisturbTyping();
    void badRatiosClearTheField();
    void everyControlIsReachedByTab();
    void theFrameSurroundsTheButtons();
};

namespace {
QLineEdit *field(SmpZoom &zoom)
{
    return zoom.findChild<QLineEdit *>();
}

void activate(SmpZoom &zoom)
{
    zoom.resize(zoom.sizeHint().width(), 44);
    zoom.show();
    QVERIFY(QTest::qWaitForWindowActive(&zoom));
}
} // namespace

void TstSmpZoom::initTestCase()
{
    globalsFillTables();
    gDpi = 96;
}

void TstSmpZoom::eachButtonAsksForItsZoom_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("asked");
    QTest::newRow("trigger") << "btnZoomTrg"
                             << "Trg";
    QTest::newRow("all") << "btnZoomAll"
                         << "All";
    QTest::newRow("out") << "btnZoomOut"
                         << "Out";
    QTest::newRow("in") << "btnZoomIn"
                        << "In";
}

void TstSmpZoom::eachButtonAsksForItsZoom()
{
    QFETCH(QString, name);
    QFETCH(QString, asked);
    SmpZoom zoom;
    QSignalSpy told(&zoom, &SmpZoom::zoomValueChanged);
    QTest::mouseClick(zoom.findChild<MyButton *>(name), Qt::LeftButton);
    QCOMPARE(told.size(), 1);
    QCOMPARE(told.at(0).at(0).toString(), asked);
}

void TstSmpZoom::theButtonsStandInTheirOrderWithTipsAndNames()
{
    SmpZoom zoom;
    zoom.resize(zoom.sizeHint());
    zoom.show();
    const QList<MyButton *> buttons = zoom.findChildren<MyButton *>();
    const QStringList tips{QStringLiteral("Trigger position centered"), QStringLiteral("Zoom to screen"),
                           QStringLiteral("Zoom out"), QStringLiteral("Zoom in")};
    QCOMPARE(buttons.size(), tips.size());
    for (int i = 0; i < tips.size(); ++i) {
        QCOMPARE(buttons[i]->toolTip(), tips[i]);
        QCOMPARE(buttons[i]->accessibleName(), tips[i]);
        QVERIFY(i == 0 || buttons[i]->x() > buttons[i - 1]->x());
    }
    QVERIFY(field(zoom)->x() > buttons.last()->x());
    QVERIFY(!field(zoom)->accessibleName().isEmpty());
}

void TstSmpZoom::aTypedRatioIsAskedForOnceByReturn()
{
    SmpZoom zoom;
    activate(zoom);
    QSignalSpy told(&zoom, &SmpZoom::zoomValueChanged);
    field(zoom)->setFocus();
    QTest::keyClicks(field(zoom), QStringLiteral("12.5"));
    QCOMPARE(told.size(), 0);
    QTest::keyClick(field(zoom), Qt::Key_Return);
    QCOMPARE(told.size(), 1);
    QCOMPARE(told.at(0).at(0).toString(), QStringLiteral("12.5"));
    QVERIFY(!field(zoom)->hasFocus());
}

void TstSmpZoom::aTypedRatioIsAskedForWhenTheFocusLeaves()
{
    SmpZoom zoom;
    activate(zoom);
    QSignalSpy told(&zoom, &SmpZoom::zoomValueChanged);
    field(zoom)->setFocus();
    QTest::keyClicks(field(zoom), QStringLiteral("3"));
    zoom.findChild<MyButton *>(QStringLiteral("btnZoomIn"))->setFocus(Qt::TabFocusReason);
    QCOMPARE(told.size(), 1);
    QCOMPARE(told.at(0).at(0).toString(), QStringLiteral("3"));
}

void TstSmpZoom::aTextThatIsNoNumberIsToldAtTheField()
{
    SmpZoom zoom;
    QSignalSpy told(&zoom, &SmpZoom::zoomValueChanged);
    field(zoom)->setText(QStringLiteral("fast!"));
    zoom.slotZoomFixed();
    QCOMPARE(told.size(), 0);
    QVERIFY(hasFault(*field(zoom)));
    QCOMPARE(field(zoom)->text(), QStringLiteral("fast!"));
    zoom.showRatio(2.0);
    QVERIFY(!hasFault(*field(zoom)));
    QCOMPARE(field(zoom)->text(), QStringLiteral("2"));
}

void TstSmpZoom::aTextThatIsNoNumberKeepsTheFocusUntilItIsOne()
{
    SmpZoom zoom;
    activate(zoom);
    QSignalSpy told(&zoom, &SmpZoom::zoomValueChanged);
    field(zoom)->setFocus();
    QTest::keyClicks(field(zoom), QStringLiteral("fast"));
    QTest::keyClick(field(zoom), Qt::Key_Return);
    QVERIFY(hasFault(*field(zoom)));
    QVERIFY(field(zoom)->hasFocus());
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("5"));
    QCOMPARE(field(zoom)->text(), QStringLiteral("5")); // in the wrong one's place
    QVERIFY(!hasFault(*field(zoom)));
    QTest::keyClick(field(zoom), Qt::Key_Return);
    QCOMPARE(told.size(), 1);
    QCOMPARE(told.at(0).at(0).toString(), QStringLiteral("5"));
    QVERIFY(!field(zoom)->hasFocus());
}

void TstSmpZoom::escapeTakesBackWhatIsTyped()
{
    SmpZoom zoom;
    activate(zoom);
    zoom.showRatio(2.0);
    QSignalSpy told(&zoom, &SmpZoom::zoomValueChanged);
    for (const char *typed : {"fast", "7"}) {
        field(zoom)->setFocus();
        field(zoom)->selectAll();
        QTest::keyClicks(field(zoom), QString::fromLatin1(typed));
        zoom.showRatio(4.0); // meanwhile
        QCOMPARE(field(zoom)->text(), QString::fromLatin1(typed));
        QTest::keyClick(field(zoom), Qt::Key_Escape);
        QCOMPARE(field(zoom)->text(), QStringLiteral("4"));
        QVERIFY(!field(zoom)->hasFocus());
        QVERIFY(!hasFault(*field(zoom)));
    }
    QCOMPARE(told.size(), 0);
}

void TstSmpZoom::upAndDownInTheFieldAreNoShortcutsOfTheWindow()
{
    SmpZoom zoom;
    const QShortcut up(Qt::Key_Up, &zoom);
    const QShortcut down(Qt::Key_Down, &zoom);
    QSignalSpy raised(&up, &QShortcut::activated);
    QSignalSpy lowered(&down, &QShortcut::activated);
    activate(zoom);
    field(zoom)->setFocus();
    QTest::keyClicks(field(zoom), QStringLiteral("12"));
    QTest::keyClick(field(zoom), Qt::Key_Up);
    QTest::keyClick(field(zoom), Qt::Key_Down);
    QCOMPARE(raised.size() + lowered.size(), 0);
    QVERIFY(field(zoom)->hasFocus());
    QTest::keyClick(field(zoom), Qt::Key_Return); // gives the focus away
    QTest::keyClick(&zoom, Qt::Key_Up);
    QCOMPARE(raised.size(), 1);
}

void TstSmpZoom::aCommaIsADecimalPoint()
{
    SmpZoom zoom;
    QSignalSpy told(&zoom, &SmpZoom::zoomValueChanged);
    field(zoom)->setText(QStringLiteral("2,5"));
    zoom.slotZoomFixed();
    QCOMPARE(told.size(), 1);
    QCOMPARE(told.at(0).at(0).toString(), QStringLiteral("2.5"));
}

void TstSmpZoom::aShownRatioIsNotAskedFor()
{
    SmpZoom zoom;
    activate(zoom);
    QSignalSpy told(&zoom, &SmpZoom::zoomValueChanged);
    zoom.showRatio(1234.56789);
    QCOMPARE(field(zoom)->text(), QStringLiteral("1234.57"));
    field(zoom)->setFocus();
    field(zoom)->clearFocus(); // only passed through
    QCOMPARE(told.size(), 0);
    field(zoom)->setText(QString());
    zoom.slotZoomFixed(); // emptied on purpose
    QCOMPARE(told.size(), 1);
}

void TstSmpZoom::aShownRatioDoesNotDisturbTyping()
{
    SmpZoom zoom;
    activate(zoom);
    field(zoom)->setFocus();
    QTest::keyClicks(field(zoom), QStringLiteral("9"));
    zoom.showRatio(2.0);
    QCOMPARE(field(zoom)->text(), QStringLiteral("9"));
    QTest::keyClick(field(zoom), Qt::Key_Return);
    zoom.showRatio(2.0);
    QCOMPARE(field(zoom)->text(), QStringLiteral("2"));
}

void TstSmpZoom::badRatiosClearTheField()
{
    SmpZoom zoom;
    zoom.showRatio(5.0);
    zoom.showRatio(0.0);
    QCOMPARE(field(zoom)->text(), QString());
    zoom.showRatio(5.0);
    zoom.showRatio(qQNaN());
    QCOMPARE(field(zoom)->text(), QString());
}

void TstSmpZoom::everyControlIsReachedByTab()
{
    SmpZoom zoom;
    activate(zoom);
    const QList<MyButton *> buttons = zoom.findChildren<MyButton *>();
    buttons[0]->setFocus();
    for (int i = 1; i < buttons.size(); ++i) {
        QTest::keyClick(zoom.focusWidget(), Qt::Key_Tab);
        QCOMPARE(zoom.focusWidget(), buttons[i]);
    }
    QTest::keyClick(zoom.focusWidget(), Qt::Key_Tab);
    QCOMPARE(zoom.focusWidget(), field(zoom));
}

void TstSmpZoom::theFrameSurroundsTheButtons()
{
    SmpZoom zoom;
    zoom.resize(zoom.sizeHint().width(), 44);
    QImage image(zoom.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    zoom.render(&image, {}, {}, {});
    const int top = zoom.findChild<MyButton *>()->y();
    const int middle = zoom.width() / 2;
    QCOMPARE(image.pixelColor(middle, top - 1), QColor(0xaf, 0xaf, 0xaf));
    QCOMPARE(image.pixelColor(middle, top - 3).alpha(), 0);
    QCOMPARE(image.pixelColor(1, 22), QColor(0xaf, 0xaf, 0xaf));
    QCOMPARE(image.pixelColor(zoom.width() - 4, 22), QColor(0x1f, 0x1f, 0x23));
}

QTEST_MAIN(TstSmpZoom)
#include "tst_SmpZoom.moc"
