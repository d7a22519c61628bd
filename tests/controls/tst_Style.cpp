#include "controls/Look.h"
#include "controls/MyButton.h"
#include "controls/Style.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QImage>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QStyleOptionButton>
#include <QTest>
#include <QVBoxLayout>

class TstStyle : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanup();
    void everySheetIsFilledCompletely_data();
    void everySheetIsFilledCompletely();
    void sizesFollowTheScreen();
    void theProgramsSheetLeavesGivenSizesAlone();
    void radioButtonsAreRoundOnEveryScreen_data();
    void radioButtonsAreRoundOnEveryScreen();
    void buttonsOfDialogsAreAsHighAsAHandNeeds();
    void theFaceOfAFocusedButtonIsOfOneColour();
    void theBorderAloneTellsThatAChoiceHasTheFocus();
    void aComboBoxShowsAtMostTwentyEntriesAndFitsItsText_data();
    void aComboBoxShowsAtMostTwentyEntriesAndFitsItsText();
};

void TstStyle::initTestCase()
{
    globalsFillTables();
}

void TstStyle::cleanup()
{
    qApp->setStyleSheet(QString());
    globalsSetDpi(96);
}

void TstStyle::everySheetIsFilledCompletely_data()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96") << 96;
    QTest::newRow("144") << 144;
    QTest::newRow("192") << 192;
}

void TstStyle::everySheetIsFilledCompletely()
{
    QFETCH(int, dpi);
    globalsSetDpi(dpi);
    for (const QString &sheet : {programStyle(), menuDialogStyle()}) {
        QVERIFY(!sheet.contains(QLatin1Char('@')));
        QVERIFY(!sheet.contains(QRegularExpression(QStringLiteral("#[0-9]+#"))));
        QCOMPARE(sheet.count(QLatin1Char('{')), sheet.count(QLatin1Char('}')));
        QVERIFY(sheet.contains(gGreys[8].name()));
    }
}

void TstStyle::sizesFollowTheScreen()
{
    globalsSetDpi(96);
    QVERIFY(lineEditStyle().contains(QStringLiteral("border-radius:3px")));
    globalsSetDpi(192);
    QVERIFY(lineEditStyle().contains(QStringLiteral("border-radius:6px")));
}

void TstStyle::theProgramsSheetLeavesGivenSizesAlone()
{
    // A minimum in a sheet would win over the size that a panel gives its small controls.
    qApp->setStyleSheet(programStyle());
    QWidget panel;
    auto *column = new QVBoxLayout(&panel);
    QWidgetList controls{new MyButton(&panel), new QPushButton(&panel), new QLineEdit(&panel), new QComboBox(&panel)};
    for (QWidget *control : controls) {
        control->setFixedSize(18, 18);
        column->addWidget(control);
    }
    panel.show();
    QCoreApplication::processEvents();
    for (const QWidget *control : controls) {
        QCOMPARE(control->size(), QSize(18, 18));
    }
}

void TstStyle::radioButtonsAreRoundOnEveryScreen_data()
{
    QTest::addColumn<bool>("inMenu");
    QTest::addColumn<bool>("checked");
    QTest::newRow("dark") << false << false;
    QTest::newRow("dark, checked") << false << true;
    QTest::newRow("light") << true << false;
    QTest::newRow("light, checked") << true << true;
}

void TstStyle::radioButtonsAreRoundOnEveryScreen()
{
    QFETCH(bool, inMenu);
    QFETCH(bool, checked);
    for (int dpi = 96; dpi <= 400; ++dpi) {
        globalsSetDpi(dpi);
        QMenu menu;
        QWidget panel;
        QRadioButton button(inMenu ? static_cast<QWidget *>(&menu) : &panel);
        button.window()->setStyleSheet(inMenu ? menuDialogStyle() : programStyle());
        button.setChecked(checked);
        button.resize(button.sizeHint());
        QStyleOptionButton option;
        option.initFrom(&button);
        const QRect side = button.style()->subElementRect(QStyle::SE_RadioButtonIndicator, &option, &button);
        QImage image(button.size(), QImage::Format_RGB32);
        image.fill(Qt::green);
        button.render(&image, {}, {}, QWidget::RenderFlags());
        const QColor ground = Qt::green;
        // A corner of the square around a circle of radius r is 0.41 r away from it.
        for (const QPoint &corner : {side.topLeft(), side.topRight(), side.bottomLeft(), side.bottomRight()}) {
            QVERIFY2(image.pixelColor(corner) == ground, qPrintable(QStringLiteral("a square at %1 dpi").arg(dpi)));
        }
        QVERIFY(image.pixelColor(side.center().x(), side.top() + 1) != ground);
    }
}

void TstStyle::buttonsOfDialogsAreAsHighAsAHandNeeds()
{
    qApp->setStyleSheet(programStyle());
    QDialog dialog;
    auto *column = new QVBoxLayout(&dialog);
    auto *button = new QPushButton(QStringLiteral("OK"), &dialog);
    column->addWidget(button);
    dialog.show();
    QCoreApplication::processEvents();
    QVERIFY(button->height() >= dp(22));
    QVERIFY(button->width() >= dp(64));
}

/// The border alone tells of the focus: the system's style would put a rectangle of its own behind the text.
void TstStyle::theFaceOfAFocusedButtonIsOfOneColour()
{
    qApp->setStyleSheet(programStyle());
    QDialog dialog;
    auto *column = new QVBoxLayout(&dialog);
    auto *button = new QPushButton(QStringLiteral("        "), &dialog);
    column->addWidget(button);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QTest::keyClick(&dialog, Qt::Key_Tab); // by the keyboard, so that styles show where it is
    QVERIFY(button->hasFocus());
    const QImage image = button->grab().toImage();
    QCOMPARE(image.pixelColor(0, image.height() / 2), gGreys[0]);
    const QRect face = image.rect().adjusted(4, 4, -4, -4);
    for (int y = face.top(); y <= face.bottom(); ++y) {
        for (int x = face.left(); x <= face.right(); ++x) {
            QCOMPARE(image.pixelColor(x, y).name(), gGreys[7].name());
        }
    }
}

void TstStyle::theBorderAloneTellsThatAChoiceHasTheFocus()
{
    QDialog dialog;
    dialog.setStyleSheet(checkBoxStyle());
    auto *column = new QVBoxLayout(&dialog);
    column->addWidget(new QPushButton(&dialog));
    QAbstractButton *box = new QCheckBox(QStringLiteral("One"), &dialog);
    QAbstractButton *radio = new QRadioButton(QStringLiteral("Two"), &dialog);
    for (QAbstractButton *choice : {box, radio}) {
        column->addWidget(choice);
    }
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    for (QAbstractButton *choice : {box, radio}) {
        const QImage before = choice->grab().toImage();
        QTest::keyClick(&dialog, Qt::Key_Tab); // by the keyboard, so that styles show where it is
        QVERIFY(choice->hasFocus());
        const QImage focused = choice->grab().toImage();
        QVERIFY(focused != before);
        const QRect inside = focused.rect().adjusted(3, 3, -3, -3);
        QCOMPARE(focused.copy(inside), before.copy(inside));
    }
}

void TstStyle::aComboBoxShowsAtMostTwentyEntriesAndFitsItsText_data()
{
    everySheetIsFilledCompletely_data();
}

void TstStyle::aComboBoxShowsAtMostTwentyEntriesAndFitsItsText()
{
    QFETCH(int, dpi);
    globalsSetDpi(dpi);
    QComboBox box;
    QFont font = box.font();
    font.setPixelSize(dp(13));
    box.setFont(font);
    box.setStyleSheet(comboBoxStyle());
    dressComboBox(box);
    QCOMPARE(box.maxVisibleItems(), 20);
    QVERIFY(box.minimumHeight() >= box.fontMetrics().height() + 2);
    QCOMPARE(box.minimumHeight(), box.maximumHeight());
}

QTEST_MAIN(TstStyle)
#include "tst_Style.moc"
