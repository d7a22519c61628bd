#include "controls/ColorLump.h"
#include "controls/Look.h"
#include "controls/MyButton.h"

#include <QApplication>
#include <QImage>
#include <QTest>

class TstMyButton : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void aCornerIsRoundOnlyWhereItHasARadius();
    void radiiLargerThanTheButtonAreCutToIt();
    void theFaceTellsNormalHoverAndSelected();
    void hoverChangesNothingOnADisabledButton();
    void theGradientLightensTheEndsAndDarkensThemWhenSelected();
    void theBorderIsStrokedOnlyWithAPenWidth();
    void theCheckedIconTakesOverWhenSelectedOrAskedFor();
    void aTextIsLightAndGreyWhenDisabled();
    void theFocusIsShownWhenItCameByKey();
    void aButtonInAnothersPlaceTakesItsFocusAsItCame();
    void aLumpLeavesItsMarginsFree();
};

namespace {
const QColor face(10, 20, 30);
const QColor hover(90, 20, 30);
const QColor checked(10, 120, 30);

void plain(MyButton &button)
{
    button.resize(40, 40);
    button.gradient = false;
    button.faceColor = face;
    button.hoverColor = hover;
    button.checkedColor = checked;
}

QImage painted(QWidget &widget)
{
    QImage image(widget.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    widget.render(&image, {}, {}, {});
    return image;
}

QIcon filledIcon(const QColor &color)
{
    QPixmap pixmap(16, 16);
    pixmap.fill(color);
    return QIcon(pixmap);
}

void sendHover(MyButton &button, QEvent::Type type)
{
    QEvent event(type);
    QApplication::sendEvent(&button, &event);
}
} // namespace

void TstMyButton::initTestCase()
{
    globalsFillTables();
    gDpi = 96;
}

void TstMyButton::aCornerIsRoundOnlyWhereItHasARadius()
{
    const QRectF rect(0, 0, 40, 40);
    const QPointF topRight(39.5, 0.5);
    const QPointF topLeft(0.5, 0.5);
    const QPointF bottomLeft(0.5, 39.5);
    const QPointF bottomRight(39.5, 39.5);
    const QPainterPath square = roundedOutline(rect, {});
    for (const QPointF &corner : {topRight, topLeft, bottomLeft, bottomRight}) {
        QVERIFY(square.contains(corner));
    }
    const QPainterPath one = roundedOutline(rect, {8, 0, 0, 0});
    QVERIFY(!one.contains(topRight) && one.contains(topLeft) && one.contains(bottomLeft) && one.contains(bottomRight));
    const QPainterPath two = roundedOutline(rect, {0, 8, 0, 0});
    QVERIFY(two.contains(topRight) && !two.contains(topLeft) && two.contains(bottomLeft) && two.contains(bottomRight));
    const QPainterPath three = roundedOutline(rect, {0, 0, 8, 0});
    QVERIFY(three.contains(topRight) && three.contains(topLeft) && !three.contains(bottomLeft));
    const QPainterPath four = roundedOutline(rect, {0, 0, 0, 8});
    QVERIFY(four.contains(bottomLeft) && !four.contains(bottomRight));
    QCOMPARE(four.boundingRect(), rect);
}

void TstMyButton::radiiLargerThanTheButtonAreCutToIt()
{
    const QPainterPath path = roundedOutline(QRectF(0, 0, 40, 20), {500, 500, 500, 500});
    QCOMPARE(path.boundingRect(), QRectF(0, 0, 40, 20));
    QVERIFY(path.contains(QPointF(20, 1)));
    QVERIFY(!path.contains(QPointF(1, 1)));
    QVERIFY(roundedOutline(QRectF(), {5, 5, 5, 5}).boundingRect().isEmpty());
}

void TstMyButton::theFaceTellsNormalHoverAndSelected()
{
    MyButton button;
    plain(button);
    QCOMPARE(painted(button).pixelColor(20, 20), face);
    sendHover(button, QEvent::Enter);
    QVERIFY(button.hovered);
    QCOMPARE(painted(button).pixelColor(20, 20), hover);
    button.setSelected(true);
    QCOMPARE(painted(button).pixelColor(20, 20), checked);
    button.setSelected(false);
    sendHover(button, QEvent::Leave);
    QVERIFY(!button.hovered);
    QCOMPARE(painted(button).pixelColor(20, 20), face);
}

void TstMyButton::hoverChangesNothingOnADisabledButton()
{
    MyButton button;
    plain(button);
    button.hovered = true;
    button.setEnabled(false);
    QCOMPARE(painted(button).pixelColor(20, 20), face);
}

void TstMyButton::theGradientLightensTheEndsAndDarkensThemWhenSelected()
{
    MyButton button;
    plain(button);
    button.gradient = true;
    const QImage normal = painted(button);
    QVERIFY(normal.pixelColor(20, 0).lightness() > face.lightness());
    QVERIFY(normal.pixelColor(20, 39).lightness() > face.lightness());
    QCOMPARE(normal.pixelColor(20, 20), face);
    QCOMPARE(normal.pixelColor(20, 13), face);
    button.setSelected(true);
    const QImage pressed = painted(button);
    QVERIFY(pressed.pixelColor(20, 0).lightness() < checked.lightness());
    QVERIFY(pressed.pixelColor(20, 39).lightness() < checked.lightness());
    QCOMPARE(pressed.pixelColor(20, 20), checked);
}

void TstMyButton::theBorderIsStrokedOnlyWithAPenWidth()
{
    MyButton button;
    plain(button);
    button.borderColor = QColor(200, 0, 0);
    QCOMPARE(painted(button).pixelColor(0, 20), face);
    button.penWidth = 4;
    const QImage image = painted(button);
    QCOMPARE(image.pixelColor(1, 20), QColor(200, 0, 0));
    QCOMPARE(image.pixelColor(3, 20), QColor(200, 0, 0));
    QCOMPARE(image.pixelColor(5, 20), face);
    QCOMPARE(image.pixelColor(38, 20), QColor(200, 0, 0));
}

void TstMyButton::theCheckedIconTakesOverWhenSelectedOrAskedFor()
{
    MyButton button;
    plain(button);
    button.setIconSize(QSize(16, 16));
    button.setIcon(filledIcon(Qt::red));
    const QImage normal = painted(button);
    QCOMPARE(normal.pixelColor(20, 20), QColor(Qt::red));
    QCOMPARE(normal.pixelColor(12, 12), QColor(Qt::red));
    QCOMPARE(normal.pixelColor(10, 20), face);
    button.setSelected(true);
    QCOMPARE(painted(button).pixelColor(20, 20), QColor(Qt::red)); // there is none yet
    button.checkedIcon = filledIcon(Qt::green);
    QCOMPARE(painted(button).pixelColor(20, 20), QColor(Qt::green));
    button.setSelected(false);
    QCOMPARE(painted(button).pixelColor(20, 20), QColor(Qt::red));
    button.setUseCheckedIcon(true);
    QCOMPARE(painted(button).pixelColor(20, 20), QColor(Qt::green));
    QCOMPARE(painted(button).pixelColor(5, 5), face); // the face stays that of a button not selected
}

void TstMyButton::aTextIsLightAndGreyWhenDisabled()
{
    const auto lightest = [](const QImage &image) {
        int most = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                most = std::max(most, image.pixelColor(x, y).lightness());
            }
        }
        return most;
    };
    MyButton button(QStringLiteral("HHHH"));
    plain(button);
    button.resize(80, 40);
    const int light = lightest(painted(button));
    button.setEnabled(false);
    const int grey = lightest(painted(button));
    QVERIFY(light > 0xaf);
    QVERIFY(grey <= 0xaf && grey > face.lightness());
}

void TstMyButton::theFocusIsShownWhenItCameByKey()
{
    QWidget window;
    auto *button = new MyButton(&window);
    plain(*button);
    window.resize(60, 60);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QVERIFY(button->hasFocus()); // the window itself gave it
    QCOMPARE(painted(*button).pixelColor(0, 20), face);
    button->clearFocus();
    button->setFocus(Qt::MouseFocusReason);
    QCOMPARE(painted(*button).pixelColor(0, 20), face);
    button->clearFocus();
    button->setFocus(Qt::TabFocusReason);
    QCOMPARE(painted(*button).pixelColor(0, 20), gGreys[0]);
    QCOMPARE(painted(*button).pixelColor(20, 20), face);
    button->clearFocus();
    QCOMPARE(painted(*button).pixelColor(0, 20), face);
}

void TstMyButton::aButtonInAnothersPlaceTakesItsFocusAsItCame()
{
    QWidget window;
    auto *before = new MyButton(&window);
    auto *after = new MyButton(&window);
    plain(*before);
    plain(*after);
    window.resize(60, 60);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    before->setFocus(Qt::MouseFocusReason);
    after->takeFocusFrom(*before);
    QVERIFY(after->hasFocus());
    QCOMPARE(painted(*after).pixelColor(0, 20), face);
    before->setFocus(Qt::TabFocusReason);
    after->takeFocusFrom(*before);
    QVERIFY(after->hasFocus());
    QCOMPARE(painted(*after).pixelColor(0, 20), gGreys[0]);
}

void TstMyButton::aLumpLeavesItsMarginsFree()
{
    ColorLump lump(6, QColor(1, 2, 3), 5, 4);
    QCOMPARE(lump.height(), 14);
    QCOMPARE(lump.minimumHeight(), lump.maximumHeight());
    QCOMPARE(lump.sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    lump.resize(50, 14);
    QImage image(50, 14, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    lump.render(&image, {}, {}, {});
    QCOMPARE(image.pixelColor(5, 4), QColor(1, 2, 3));
    QCOMPARE(image.pixelColor(44, 9), QColor(1, 2, 3));
    QCOMPARE(image.pixelColor(4, 5).alpha(), 0);
    QCOMPARE(image.pixelColor(45, 5).alpha(), 0);
    QCOMPARE(image.pixelColor(20, 3).alpha(), 0);
    QCOMPARE(image.pixelColor(20, 10).alpha(), 0);
}

QTEST_MAIN(TstMyButton)
#include "tst_MyButton.moc"
