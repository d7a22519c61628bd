#include "controls/Look.h"
#include "settings/Globals.h"

#include <QFile>
#include <QFontDatabase>
#include <QFontInfo>
#include <QTemporaryDir>
#include <QtTest>

#include <limits>

class TstLook : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void theScreensDpiIsTruncatedAndAtLeast96_data();
    void theScreensDpiIsTruncatedAndAtLeast96();
    void sizesAreScaledInIntegersAndTruncated();
    void theTimeAxisScaleIsAWholeNumber();
    void theWaveColoursAreEightOpaqueOnes();
    void theGreysGoFromLightToDark();
    void thereAreSeventeenMeasurementsInTheirOrder();
    void fillingTheTablesTwiceChangesNothing();
    void theFirstSuitableFileArgumentCounts();
    void aFileArgumentMustExistAndBeAPlainFile();
    void theSuffixOfAFileArgumentIsComparedWithCase();
    void otherProgramsCapturesAreFileArguments();
    void withoutASuitableArgumentThereIsNoFile();
    void aFamilyFromTheLanguageFileIsTaken();
    void sysDefaultLeavesTheSystemFamily();
    void anEmptyFamilyKeepsTheSystemOneWhenTheOwnFontIsMissing();
    void theThreeFontsDifferBySize();
    void aSystemFontInPixelsIsConvertedToPoints();
    void aTinySystemFontStaysValid();

private:
    QString makeFile(const QString &name);

    QTemporaryDir m_dir;
};

void TstLook::init()
{
    globalsSetDpi(96);
}

void TstLook::cleanup()
{
    globalsSetDpi(96);
}

QString TstLook::makeFile(const QString &name)
{
    QFile file(m_dir.filePath(name));
    if (!file.open(QIODevice::WriteOnly)) {
        qFatal("no test file");
    }
    return file.fileName();
}

void TstLook::theScreensDpiIsTruncatedAndAtLeast96_data()
{
    QTest::addColumn<double>("screen");
    QTest::addColumn<int>("dpi");
    QTest::newRow("coarse screen") << 72.0 << 96;
    QTest::newRow("just below") << 95.999 << 96;
    QTest::newRow("usual") << 96.0 << 96;
    QTest::newRow("fraction") << 143.49 << 143;
    QTest::newRow("nearly a scale of a half more") << 143.5 << 144;
    QTest::newRow("nearly a scale of two") << 191.9 << 192;
    QTest::newRow("a little above a scale of two") << 192.5 << 192;
    QTest::newRow("no more that scale") << 191.4 << 191;
    QTest::newRow("between the scales") << 101.99 << 101;
    QTest::newRow("nearly a scale of three") << 287.6 << 288;
    QTest::newRow("fine screen") << 192.0 << 192;
    QTest::newRow("negative") << -1.0 << 96;
    QTest::newRow("no number") << std::numeric_limits<double>::quiet_NaN() << 96;
    QTest::newRow("endless") << std::numeric_limits<double>::infinity() << 9600;
}

void TstLook::theScreensDpiIsTruncatedAndAtLeast96()
{
    QFETCH(double, screen);
    QFETCH(int, dpi);
    globalsSetDpi(screen);
    QCOMPARE(gDpi, dpi);
}

void TstLook::sizesAreScaledInIntegersAndTruncated()
{
    QCOMPARE(dp(7), 7);
    globalsSetDpi(120);
    QCOMPARE(dp(0), 0);
    QCOMPARE(dp(1), 1);
    QCOMPARE(dp(3), 3);
    QCOMPARE(dp(4), 5);
    QCOMPARE(dp(-3), -3);
    QCOMPARE(dp(800), 1000);
}

void TstLook::theTimeAxisScaleIsAWholeNumber()
{
    QCOMPARE(uiScale(), 1);
    globalsSetDpi(191);
    QCOMPARE(uiScale(), 1);
    globalsSetDpi(192);
    QCOMPARE(uiScale(), 2);
}

void TstLook::theWaveColoursAreEightOpaqueOnes()
{
    globalsFillTables();
    const QStringList expected{QStringLiteral("#ffdf1fdf"), QStringLiteral("#ff2727ef"), QStringLiteral("#ff1fcf1f"),
                               QStringLiteral("#ffdfdf1f"), QStringLiteral("#ffdf771f"), QStringLiteral("#ffcf170f"),
                               QStringLiteral("#ff9f2f07"), QStringLiteral("#ff7f7f6f")};
    QStringList found;
    for (const QColor &color : qAsConst(gChnColors)) {
        found += color.name(QColor::HexArgb);
    }
    QCOMPARE(found, expected);
}

void TstLook::theGreysGoFromLightToDark()
{
    globalsFillTables();
    const QStringList expected{QStringLiteral("#f7f7f7"), QStringLiteral("#dfdfdf"), QStringLiteral("#afafaf"),
                               QStringLiteral("#9f9f9f"), QStringLiteral("#7f7f7f"), QStringLiteral("#575b5f"),
                               QStringLiteral("#3f3f3f"), QStringLiteral("#2f2f2f"), QStringLiteral("#1f1f23"),
                               QStringLiteral("#070707")};
    QStringList found;
    for (const QColor &color : qAsConst(gGreys)) {
        found += color.name();
    }
    QCOMPARE(found, expected);
}

void TstLook::thereAreSeventeenMeasurementsInTheirOrder()
{
    globalsFillTables();
    QCOMPARE(gMeasureNames.join(QLatin1Char(' ')),
             QStringLiteral("Period Frequency RiseTime FallTime +PulseWidth -PulseWidth DutyCycle Vmax Vmin Vpp Vamp "
                            "Vtop Vbase Overshoot Preshoot Vavg Vrms"));
    QCOMPARE(gMeasureNames.size(), 17);
}

void TstLook::fillingTheTablesTwiceChangesNothing()
{
    globalsFillTables();
    globalsFillTables();
    QCOMPARE(gChnColors.size(), 8);
    QCOMPARE(gGreys.size(), 10);
    QCOMPARE(gMeasureNames.size(), 17);
}

void TstLook::theFirstSuitableFileArgumentCounts()
{
    const QString data = makeFile(QStringLiteral("a.cxdat"));
    const QString settings = makeFile(QStringLiteral("b.cxset"));
    const QString text = makeFile(QStringLiteral("c.txt"));
    QCOMPARE(globalsFileArgument({QStringLiteral("--quiet"), text, settings, data}), settings);
    QCOMPARE(globalsFileArgument({data, settings}), data);
}

void TstLook::aFileArgumentMustExistAndBeAPlainFile()
{
    const QString folder = m_dir.filePath(QStringLiteral("folder.cxdat"));
    QVERIFY(QDir().mkpath(folder));
    const QString data = makeFile(QStringLiteral("real.cxdat"));
    QCOMPARE(globalsFileArgument({m_dir.filePath(QStringLiteral("absent.cxdat")), folder, data}), data);
}

void TstLook::theSuffixOfAFileArgumentIsComparedWithCase()
{
    const QString data = makeFile(QStringLiteral("loud.CXDAT"));
    const QString longer = makeFile(QStringLiteral("x.cxdat.bak"));
    QCOMPARE(globalsFileArgument({data, longer}), QString());
}

void TstLook::otherProgramsCapturesAreFileArguments()
{
    const QString archive = makeFile(QStringLiteral("a.sr"));
    const QString dump = makeFile(QStringLiteral("b.VCD"));
    const QString values = makeFile(QStringLiteral("c.csv")); // does not tell all that is needed
    QCOMPARE(globalsFileArgument({values, archive, dump}), archive);
    QCOMPARE(globalsFileArgument({values, dump}), dump);
    QCOMPARE(globalsFileArgument({values}), QString());
}

void TstLook::withoutASuitableArgumentThereIsNoFile()
{
    QCOMPARE(globalsFileArgument({}), QString());
    QCOMPARE(globalsFileArgument({QString(), QStringLiteral("cxdat"), QStringLiteral(".")}), QString());
}

void TstLook::aFamilyFromTheLanguageFileIsTaken()
{
    const QFont system(QStringLiteral("DejaVu Serif"), 9);
    globalsLoadFonts(system, QStringLiteral("DejaVu Sans Mono"));
    QCOMPARE(gFontMain.family(), QStringLiteral("DejaVu Sans Mono"));
}

void TstLook::sysDefaultLeavesTheSystemFamily()
{
    const QFont system(QStringLiteral("DejaVu Serif"), 9);
    globalsLoadFonts(system, QStringLiteral("SysDefault"));
    QCOMPARE(gFontMain.family(), QStringLiteral("DejaVu Serif"));
}

void TstLook::anEmptyFamilyKeepsTheSystemOneWhenTheOwnFontIsMissing()
{
    QVERIFY(!QFile::exists(QStringLiteral(":/res/Tahoma.ttf"))); // this test is built without the resources
    const QFont system(QStringLiteral("DejaVu Serif"), 9);
    globalsLoadFonts(system, QString());
    QCOMPARE(gFontMain.family(), QStringLiteral("DejaVu Serif"));
    QCOMPARE(gFontSmall.family(), gFontMain.family());
    QCOMPARE(gFontLarge.family(), gFontMain.family());
}

void TstLook::theThreeFontsDifferBySize()
{
    QFont system(QStringLiteral("DejaVu Sans"));
    system.setPointSizeF(9.0);
    globalsLoadFonts(system, QString());
    QCOMPARE(gFontMain.pointSizeF(), 9.5);
    QCOMPARE(gFontSmall.pointSizeF(), 8.5);
    QCOMPARE(gFontLarge.pointSizeF(), 11.0);
}

void TstLook::aSystemFontInPixelsIsConvertedToPoints()
{
    QFont system(QStringLiteral("DejaVu Sans"));
    system.setPixelSize(20);
    const double points = QFontInfo(system).pointSizeF();
#ifdef Q_OS_WIN
    if (points <= 5) {
        QSKIP("the offscreen platform of this system has no font of that name");
    }
#endif
    QVERIFY(points > 5);
    globalsLoadFonts(system, QString());
    QCOMPARE(gFontMain.pointSizeF(), points + 0.5);
    QCOMPARE(gFontLarge.pointSizeF(), points + 2.0);
}

void TstLook::aTinySystemFontStaysValid()
{
    QFont system(QStringLiteral("DejaVu Sans"));
    system.setPointSizeF(0.25);
    globalsLoadFonts(system, QString());
    QCOMPARE(gFontSmall.pointSizeF(), 0.5);
}

QTEST_MAIN(TstLook)
#include "tst_Look.moc"
