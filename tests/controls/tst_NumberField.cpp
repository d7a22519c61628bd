#include "controls/Contrast.h"
#include "controls/ElidedEdit.h"
#include "controls/Look.h"
#include "controls/NumberField.h"
#include "controls/Style.h"

#include <QApplication>
#include <QImage>
#include <QMenu>
#include <QTest>
#include <QToolTip>

class TstNumberField : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { globalsFillTables(); }
    void cleanup() { QToolTip::hideText(); }
    void aTypedNumberHasAPointOrAComma_data();
    void aTypedNumberHasAPointOrAComma();
    void aFaultIsToldAtTheFieldUntilTheNextEdit();
    void aFaultIsSeenOnBothGrounds();
    void aLongTextEndsWithAnEllipsisUntilItIsEdited();
};

void TstNumberField::aTypedNumberHasAPointOrAComma_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isNumber");
    QTest::addColumn<double>("number");
    const auto number = [](const char *text, double value) { QTest::newRow(text) << text << true << value; };
    number("1.5", 1.5);
    number("1,5", 1.5);
    number(" -0,25 ", -0.25);
    number(",5", 0.5);
    number("2e3", 2000.0);
    number("1,5e-1", 0.15);
    for (const char *text : {"", " ", "1.5.2", "1,000.5", "1,5,2", ",", "1,5V", "1 5", "nan", "inf", "1e400", "0x1"}) {
        QTest::newRow(*text == 0 ? "nothing" : text) << text << false << 0.0;
    }
}

void TstNumberField::aTypedNumberHasAPointOrAComma()
{
    QFETCH(QString, text);
    QFETCH(bool, isNumber);
    QCOMPARE(typedNumber(text).has_value(), isNumber);
    if (isNumber) {
        QTEST(*typedNumber(text), "number");
    }
}

void TstNumberField::aFaultIsToldAtTheFieldUntilTheNextEdit()
{
    QLineEdit field;
    field.setToolTip(QStringLiteral("what it is for"));
    field.show();
    QVERIFY(QTest::qWaitForWindowExposed(&field));
    QVERIFY(!hasFault(field));
    for (int times = 0; times < 2; ++times) {
        showFault(field, QStringLiteral("no number"));
        QVERIFY(hasFault(field));
        QCOMPARE(field.toolTip(), QStringLiteral("no number"));
        QCOMPARE(field.accessibleDescription(), QStringLiteral("no number"));
        QTRY_COMPARE(QToolTip::text(), QStringLiteral("no number"));
    }
    QTest::keyClick(&field, Qt::Key_1);
    QVERIFY(!hasFault(field));
    QCOMPARE(field.toolTip(), QStringLiteral("what it is for"));
    QCOMPARE(field.accessibleDescription(), QString());
}

void TstNumberField::aFaultIsSeenOnBothGrounds()
{
    for (const bool light : {false, true}) {
        QMenu menu;
        QWidget panel;
        QWidget &parent = light ? static_cast<QWidget &>(menu) : panel;
        parent.setStyleSheet(light ? menuDialogStyle() : programStyle());
        QLineEdit field(&parent);
        field.resize(60, 24);
        showFault(field, QStringLiteral("no number"));
        QImage image(field.size(), QImage::Format_RGB32);
        image.fill(light ? QColor(0xf0, 0xf0, 0xf0) : gGreys[5]);
        field.render(&image, {}, {}, QWidget::DrawChildren);
        QVERIFY(contrastRatio(image.pixelColor(30, 0), light ? QColor(0xf0, 0xf0, 0xf0) : gGreys[5]) >=
                leastControlContrast);
        QVERIFY(image.pixelColor(30, 0).red() > image.pixelColor(30, 0).blue());
    }
}

void TstNumberField::aLongTextEndsWithAnEllipsisUntilItIsEdited()
{
    QWidget window;
    QLineEdit other(&window);
    ElidedEdit field(&window);
    field.setGeometry(0, 40, 60, 24);
    const QString text = QStringLiteral("a name that does not fit");
    field.setText(text);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    other.setFocus();
    QVERIFY(field.shownText().endsWith(QChar(0x2026)));
    QCOMPARE(field.text(), text);
    QVERIFY(!field.grab().isNull());
    field.setFocus();
    QCOMPARE(field.shownText(), text);
    other.setFocus();
    field.setText(QStringLiteral("a"));
    QCOMPARE(field.shownText(), QStringLiteral("a"));
}

QTEST_MAIN(TstNumberField)
#include "tst_NumberField.moc"
