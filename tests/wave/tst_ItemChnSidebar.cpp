#include "app/Globals.h"
#include "wave/ItemChnSidebar.h"

#include <QLabel>
#include <QtTest>

namespace {

QLabel *label(const ItemChnSidebar &sidebar, const char *name)
{
    return sidebar.findChild<QLabel *>(QLatin1String(name));
}

QImage picture(ItemChnSidebar &sidebar, int height)
{
    sidebar.resize(sidebar.width(), height);
    return sidebar.grab().toImage();
}

} // namespace

class TstItemChnSidebar : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void theFrameIsABevelOfWholePixels_data();
    void theFrameIsABevelOfWholePixels();
    void theNumbersColumnRunsFromLightToDarkThroughTheChannelsColour();
    void colourRepeatsAfterTheLastOfTheTable();
    void theWidthIsFixed();
    void twoDigitsFitTheNumbersColumn_data();
    void twoDigitsFitTheNumbersColumn();
    void aNameAloneStandsInTheMiddle();
    void aDecodersNameStandsBelowTheName();
    void aNameThatIsTooLongIsCutAndWholeInTheToolTip();
    void textIsReadableOnEveryChannelsColour();
};

void TstItemChnSidebar::initTestCase()
{
    globalsSetDpi(96);
    globalsFillTables();
}

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
    globalsSetDpi(96);
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
    const QLabel *number = label(sidebar, "number");
    QCOMPARE(number->width(), dp(18));
    QCOMPARE(number->text(), QStringLiteral("30"));
    QVERIFY(number->fontMetrics().horizontalAdvance(number->text()) <= number->contentsRect().width());
    globalsSetDpi(96);
}

void TstItemChnSidebar::aNameAloneStandsInTheMiddle()
{
    ItemChnSidebar sidebar(0, 0, 1, nullptr);
    sidebar.setChnName(QStringLiteral("Clock"));
    (void)picture(sidebar, 120);
    const QLabel *name = label(sidebar, "name");
    QVERIFY(qAbs(name->geometry().center().y() - label(sidebar, "number")->geometry().center().y()) <= 1);
    QVERIFY(name->alignment().testFlag(Qt::AlignVCenter));
}

void TstItemChnSidebar::aDecodersNameStandsBelowTheName()
{
    ItemChnSidebar sidebar(0, 0, 1, nullptr);
    sidebar.setChnName(QStringLiteral("Clock"));
    sidebar.setAnalyzerLabel(QStringLiteral("SPI - SCK"));
    (void)picture(sidebar, 120);
    const QLabel *analyzer = label(sidebar, "analyzer");
    QVERIFY(analyzer->isVisibleTo(&sidebar));
    QVERIFY(analyzer->y() >= label(sidebar, "name")->geometry().bottom());
    sidebar.setAnalyzerLabel(QString());
    QVERIFY(!analyzer->isVisibleTo(&sidebar));
}

void TstItemChnSidebar::aNameThatIsTooLongIsCutAndWholeInTheToolTip()
{
    ItemChnSidebar sidebar(0, 0, 1, nullptr);
    const QString longName(200, QLatin1Char('W'));
    sidebar.setChnName(longName);
    (void)picture(sidebar, 60);
    const QLabel *name = label(sidebar, "name");
    QVERIFY(name->text() != longName);
    QVERIFY(name->fontMetrics().horizontalAdvance(name->text()) <= name->width());
    QCOMPARE(name->toolTip(), longName.toHtmlEscaped());
    sidebar.setChnName(QStringLiteral("W"));
    QCOMPARE(name->text(), QStringLiteral("W"));
    QCOMPARE(name->toolTip(), QString());
}

void TstItemChnSidebar::textIsReadableOnEveryChannelsColour()
{
    QCOMPARE(readableOn(Qt::white), QColor(Qt::black));
    QCOMPARE(readableOn(Qt::black), QColor(Qt::white));
    QCOMPARE(readableOn(gChnColors[1]), QColor(Qt::white)); // blue
    QCOMPARE(readableOn(gChnColors[3]), QColor(Qt::black)); // yellow
}

QTEST_MAIN(TstItemChnSidebar)
#include "tst_ItemChnSidebar.moc"
