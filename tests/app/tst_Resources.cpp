#include "controls/Look.h"
#include "controls/Style.h"

#include <QCheckBox>
#include <QFile>
#include <QFontDatabase>
#include <QIcon>
#include <QImage>
#include <QRegularExpression>
#include <QStyleOptionButton>
#include <QtTest>

namespace {

const char *const kSvgIcons[] = {
    "btnAddItem", "btnCollapse", "btnExpand",    "btnHighLevel",   "btnHighLevel_s", "btnLowLevel",  "btnLowLevel_s",
    "btnMenu",    "btnNegEdge",  "btnNegEdge_s", "btnNegPulse",    "btnPosEdge",     "btnPosEdge_s", "btnPosPulse",
    "btnRemove",  "btnSearch",   "btnSetting",   "btnSmpAuto",     "btnSmpAuto2",    "btnSmpSingle", "btnSmpSingle2",
    "btnSmpStop", "btnZoomAll",  "btnZoomIn",    "btnZoomOut",     "btnZoomTrg",     "icoArrowLeft", "icoArrowRight",
    "icoCheck",   "icoDeviceLA", "icoDropDown",  "icoTimingMarker"};

QString resource(const char *name)
{
    return QStringLiteral(":/res/") + QLatin1String(name);
}

QImage rendered(const QString &path, int size)
{
    return QIcon(path).pixmap(size, size).toImage().convertToFormat(QImage::Format_ARGB32);
}

/// Pixels that are seen: at least half opaque.
int inkedPixels(const QImage &image)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            count += qAlpha(image.pixel(x, y)) >= 128 ? 1 : 0;
        }
    }
    return count;
}

} // namespace

/// The compiled-in resources, as the widgets ask for them: by names without a suffix.
class TstResources : public QObject {
    Q_OBJECT

private slots:
    void everySvgIconShowsInksAtEverySizeInUse_data();
    void everySvgIconShowsInksAtEverySizeInUse();
    void noSvgIconPaintsOverItsWholeSquare_data();
    void noSvgIconPaintsOverItsWholeSquare();
    void svgIconsGrowSharpWithTheAskedSize();
    void aSelectedLookDiffersFromItsBase_data();
    void aSelectedLookDiffersFromItsBase();
    void everyIconHasASecondNameThatTellsItsKind();
    void picturesOfStyleSheetsTellTheirKindByTheirNames();
    void aCheckedBoxLooksChecked();
    void theUnconnectedLookHasNoColour_data();
    void theUnconnectedLookHasNoColour();
    void theWindowIconHoldsTheSizesThatDesktopsAskFor();
    void theImagesLoadWithoutASuffix_data();
    void theImagesLoadWithoutASuffix();
    void theFontsLoadWhereTheyWereBuiltIn_data();
    void theFontsLoadWhereTheyWereBuiltIn();
};

void TstResources::everySvgIconShowsInksAtEverySizeInUse_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("size");
    for (const char *name : kSvgIcons) {
        for (const int size : {16, 32, 48}) {
            QTest::addRow("%s at %d px", name, size) << resource(name) << size;
        }
    }
}

void TstResources::everySvgIconShowsInksAtEverySizeInUse()
{
    QFETCH(QString, path);
    QFETCH(int, size);
    QVERIFY(QFile::exists(path));
    const QImage image = rendered(path, size);
    QCOMPARE(image.size(), QSize(size, size));
    QVERIFY(inkedPixels(image) >= size); // less than one full stroke across the icon is not readable
}

void TstResources::noSvgIconPaintsOverItsWholeSquare_data()
{
    QTest::addColumn<QString>("path");
    for (const char *name : kSvgIcons) {
        QTest::newRow(name) << resource(name);
    }
}

void TstResources::noSvgIconPaintsOverItsWholeSquare()
{
    QFETCH(QString, path);
    const QImage image = rendered(path, 32);
    for (const QPoint corner : {QPoint(0, 0), QPoint(31, 0), QPoint(0, 31), QPoint(31, 31)}) {
        QCOMPARE(qAlpha(image.pixel(corner)), 0);
    }
}

void TstResources::svgIconsGrowSharpWithTheAskedSize()
{
    // An icon taken for a plain image would stay at its natural 24 pixels.
    QCOMPARE(QIcon(resource("btnMenu")).pixmap(96, 96).size(), QSize(96, 96));
}

void TstResources::aSelectedLookDiffersFromItsBase_data()
{
    QTest::addColumn<QString>("base");
    for (const char *name : {"btnPosEdge", "btnNegEdge", "btnHighLevel", "btnLowLevel"}) {
        QTest::newRow(name) << resource(name);
    }
}

void TstResources::aSelectedLookDiffersFromItsBase()
{
    QFETCH(QString, base);
    for (const int size : {16, 32}) {
        const QImage plain = rendered(base, size);
        const QImage selected = rendered(base + QStringLiteral("_s"), size);
        QVERIFY(!selected.isNull());
        QVERIFY(plain != selected);
    }
}

void TstResources::everyIconHasASecondNameThatTellsItsKind()
{
    const auto bytesOf = [](const QString &path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    for (const char *name : kSvgIcons) {
        QVERIFY2(!bytesOf(resource(name)).isEmpty(), name);
        QCOMPARE(bytesOf(resource(name) + QStringLiteral(".svg")), bytesOf(resource(name)));
    }
    QCOMPARE(bytesOf(resource("reset.png")), bytesOf(resource("reset")));
}

void TstResources::picturesOfStyleSheetsTellTheirKindByTheirNames()
{
    // Without a suffix Qt looks into the file, each time that a control is painted at first.
    const QRegularExpression url(QStringLiteral("[^-]image:url\\(([^)]*)\\)"));
    int found = 0;
    for (const QString &sheet : {programStyle(), menuDialogStyle(), menuStyle()}) {
        for (auto matches = url.globalMatch(sheet); matches.hasNext(); ++found) {
            const QString path = matches.next().captured(1);
            QVERIFY2(path.endsWith(QLatin1String(".svg")), qPrintable(path));
            QVERIFY2(inkedPixels(rendered(path, 16)) >= 16, qPrintable(path));
        }
    }
    QVERIFY(found > 0);
}

/// A dark tick on a light ground, where an unchecked box is dark.
void TstResources::aCheckedBoxLooksChecked()
{
    globalsFillTables();
    QCheckBox box;
    box.setStyleSheet(programStyle());
    box.resize(box.sizeHint());
    const auto lightAndDark = [&box](bool checked) {
        box.setChecked(checked);
        QStyleOptionButton option;
        option.initFrom(&box);
        const QRect side = box.style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, &box);
        const QImage image = box.grab(side.adjusted(2, 2, -2, -2)).toImage(); // within its border
        int light = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                light += qGray(image.pixel(x, y)) >= 128 ? 1 : 0;
            }
        }
        return QPair<int, int>(light, image.width() * image.height() - light);
    };
    QCOMPARE(lightAndDark(false).first, 0);
    const QPair<int, int> checked = lightAndDark(true);
    QVERIFY(checked.first > checked.second); // the ground
    QVERIFY(checked.second >= 10);           // the tick
}

void TstResources::theUnconnectedLookHasNoColour_data()
{
    QTest::addColumn<QString>("connected");
    QTest::newRow("single") << resource("btnSmpSingle");
    QTest::newRow("auto") << resource("btnSmpAuto");
}

void TstResources::theUnconnectedLookHasNoColour()
{
    QFETCH(QString, connected);
    const auto coloured = [](const QImage &image) {
        int count = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor colour = image.pixelColor(x, y);
                count += colour.alpha() >= 128 && colour.saturation() > 40 ? 1 : 0;
            }
        }
        return count;
    };
    QVERIFY(coloured(rendered(connected, 32)) > 50);
    QCOMPARE(coloured(rendered(connected + QStringLiteral("2"), 32)), 0);
}

void TstResources::theWindowIconHoldsTheSizesThatDesktopsAskFor()
{
    const QIcon icon(QStringLiteral(":/res/Logo.ico"));
    const QList<QSize> sizes = icon.availableSizes();
    for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
        QVERIFY2(sizes.contains(QSize(size, size)), qPrintable(QString::number(size)));
        QVERIFY(inkedPixels(rendered(QStringLiteral(":/res/Logo.ico"), size)) > size * size / 2);
    }
}

void TstResources::theImagesLoadWithoutASuffix_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("imgLogo") << resource("imgLogo");
    QTest::newRow("reset") << resource("reset");
    // A style sheet's border-image reads this one as an image, not as an icon.
    QTest::newRow("icoDeviceLA") << resource("icoDeviceLA");
}

void TstResources::theImagesLoadWithoutASuffix()
{
    QFETCH(QString, path);
    const QImage image(path);
    QVERIFY(!image.isNull());
    QVERIFY(image.width() >= 48);
    QCOMPARE(image.width(), image.height());
    QVERIFY(inkedPixels(image) > image.width());
}

void TstResources::theFontsLoadWhereTheyWereBuiltIn_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("Tahoma") << resource("Tahoma.ttf");
    QTest::newRow("Verdana") << resource("Verdana.ttf");
}

void TstResources::theFontsLoadWhereTheyWereBuiltIn()
{
    QFETCH(QString, path);
    if (!QFile::exists(path)) {
        QSKIP("Built on a system without these fonts.");
    }
    const int id = QFontDatabase::addApplicationFont(path);
    QVERIFY(id >= 0);
    QCOMPARE(QFontDatabase::applicationFontFamilies(id).size(), 1);
}

QTEST_MAIN(TstResources)
#include "tst_Resources.moc"
