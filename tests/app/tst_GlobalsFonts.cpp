// The fonts with the program's resources; tst_Globals has the case without them.

#include "app/Globals.h"

#include <QFile>
#include <QFontDatabase>
#include <QtTest>

class TstGlobalsFonts : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void theOwnFontsGiveTheFamilies();
    void theLanguageFileDecidesTheMainFamilyOnly_data();
    void theLanguageFileDecidesTheMainFamilyOnly();
    void loadingTheFontsAgainGivesTheSame();

private:
    static QString familyOf(const QString &path);

    QString m_tahoma;
    QString m_verdana;
    QFont m_system;
};

QString TstGlobalsFonts::familyOf(const QString &path)
{
    const QStringList families = QFontDatabase::applicationFontFamilies(QFontDatabase::addApplicationFont(path));
    return families.isEmpty() ? QString() : families.first();
}

void TstGlobalsFonts::initTestCase()
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

void TstGlobalsFonts::theOwnFontsGiveTheFamilies()
{
    globalsLoadFonts(m_system, QString());
    QCOMPARE(gFontMain.family(), m_tahoma);
    QCOMPARE(gFontSmall.family(), m_tahoma);
    QCOMPARE(gFontLarge.family(), m_verdana);
    QCOMPARE(gFontMain.pointSizeF(), 9.5);
    QCOMPARE(gFontSmall.pointSizeF(), 8.5);
    QCOMPARE(gFontLarge.pointSizeF(), 11.0);
}

void TstGlobalsFonts::theLanguageFileDecidesTheMainFamilyOnly_data()
{
    QTest::addColumn<QString>("asked");
    QTest::addColumn<QString>("family");
    QTest::newRow("a family") << QStringLiteral("Some Other Font") << QStringLiteral("Some Other Font");
    QTest::newRow("the system's") << QStringLiteral("SysDefault") << QStringLiteral("Some System Font");
}

void TstGlobalsFonts::theLanguageFileDecidesTheMainFamilyOnly()
{
    QFETCH(QString, asked);
    QFETCH(QString, family);
    globalsLoadFonts(m_system, asked);
    QCOMPARE(gFontMain.family(), family);
    QCOMPARE(gFontSmall.family(), m_tahoma);
    QCOMPARE(gFontLarge.family(), m_verdana);
}

void TstGlobalsFonts::loadingTheFontsAgainGivesTheSame()
{
    globalsLoadFonts(m_system, QString());
    const QFont main = gFontMain;
    globalsLoadFonts(m_system, QString());
    QCOMPARE(gFontMain, main);
}

QTEST_MAIN(TstGlobalsFonts)
#include "tst_GlobalsFonts.moc"
