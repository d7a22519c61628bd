// The fonts with the program's resources; tst_Globals has the case without them.

#include "controls/Look.h"

#include <QFile>
#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QRawFont>
#include <QtTest>

#include <numeric>

class TstLookFonts : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void theOwnFontsGiveTheFamilies();
    void theLanguageFileDecidesTheMainFamilyOnly_data();
    void theLanguageFileDecidesTheMainFamilyOnly();
    void ofSeveralFamiliesTheFirstThatTheSystemHasIsShown();
    void loadingTheFontsAgainGivesTheSame();
    void theMainFontIsAsNarrowAsItsFile();

private:
    static QString familyOf(const QString &path);

    QString m_tahoma;
    QString m_verdana;
    QFont m_system;
};

QString TstLookFonts::familyOf(const QString &path)
{
    const QStringList families = QFontDatabase::applicationFontFamilies(QFontDatabase::addApplicationFont(path));
    return families.isEmpty() ? QString() : families.first();
}

void TstLookFonts::initTestCase()
{
    if (!QFile::exists(QStringLiteral(":/res/Tahoma.ttf")) || !QFile::exists(QStringLiteral(":/res/Verdana.ttf"))) {
        QSKIP("built without fonts");
    }
    m_tahoma = familyOf(QStringLiteral(":/res/Tahoma.ttf"));
    m_verdana = familyOf(QStringLiteral(":/res/Verdana.ttf"));
    QVERIFY(!m_tahoma.isEmpty());
    QVERIFY(!m_verdana.isEmpty());
    m_system = QFont(QStringLiteral("Some System Font"));
    m_system.setPointSizeF(9.0);
}

void TstLookFonts::theOwnFontsGiveTheFamilies()
{
    globalsLoadFonts(m_system, QString());
    QCOMPARE(gFontMain.family(), m_tahoma);
    QCOMPARE(gFontSmall.family(), m_tahoma);
    QCOMPARE(gFontLarge.family(), m_verdana);
    QCOMPARE(gFontMain.pointSizeF(), 9.5);
    QCOMPARE(gFontSmall.pointSizeF(), 8.5);
    QCOMPARE(gFontLarge.pointSizeF(), 11.0);
}

void TstLookFonts::theLanguageFileDecidesTheMainFamilyOnly_data()
{
    QTest::addColumn<QString>("asked");
    QTest::addColumn<QString>("family");
    QTest::newRow("a family") << QStringLiteral("Some Other Font") << QStringLiteral("Some Other Font");
    QTest::newRow("the system's") << QStringLiteral("SysDefault") << QStringLiteral("Some System Font");
}

void TstLookFonts::theLanguageFileDecidesTheMainFamilyOnly()
{
    QFETCH(QString, asked);
    QFETCH(QString, family);
    globalsLoadFonts(m_system, asked);
    QCOMPARE(gFontMain.family(), family);
    QCOMPARE(gFontSmall.family(), m_tahoma);
    QCOMPARE(gFontLarge.family(), m_verdana);
}

void TstLookFonts::ofSeveralFamiliesTheFirstThatTheSystemHasIsShown()
{
    const QString missing = QStringLiteral("No Such Family");
    const QString replacement = QFontInfo(QFont(missing)).family();
    QString present;
    for (const QString &family : QFontDatabase().families()) {
        const bool named =
            !family.contains(QLatin1Char('[')) && !family.contains(QLatin1Char(',')); // and by nobody else
        if (named && family != replacement && QFontInfo(QFont(family)).family() == family) {
            present = family;
            break;
        }
    }
    if (present.isEmpty()) {
        QSKIP("the system has but one font");
    }
    globalsLoadFonts(m_system, missing + QStringLiteral(", ") + present + QStringLiteral(", ") + replacement);
    QCOMPARE(QFontInfo(gFontMain).family(), present);
}

void TstLookFonts::theMainFontIsAsNarrowAsItsFile()
{
    // Both files bear one family name, and the full family may be installed beside them.
    globalsLoadFonts(m_system, QString());
    const QString text = QStringLiteral("+100us +200us +300us");
    const auto widthIn = [&text](const QString &path) {
        QRawFont font(path, QFontInfo(gFontMain).pixelSize());
        const QVector<QPointF> advances = font.advancesForGlyphIndexes(font.glyphIndexesForString(text));
        return std::accumulate(advances.cbegin(), advances.cend(), QPointF()).x();
    };
    const double narrow = widthIn(QStringLiteral(":/res/Tahoma.ttf"));
    const double plain = widthIn(QStringLiteral(":/res/Verdana.ttf"));
    QVERIFY(narrow < 0.95 * plain);
    const double shown = QFontMetricsF(gFontMain).horizontalAdvance(text);
    QVERIFY2(shown < 1.04 * narrow, qPrintable(QStringLiteral("%1 instead of %2").arg(shown).arg(narrow)));
}

void TstLookFonts::loadingTheFontsAgainGivesTheSame()
{
    globalsLoadFonts(m_system, QString());
    const QFont main = gFontMain;
    globalsLoadFonts(m_system, QString());
    QCOMPARE(gFontMain, main);
}

QTEST_MAIN(TstLookFonts)
#include "tst_LookFonts.moc"
