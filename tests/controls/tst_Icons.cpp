#include "controls/Icons.h"

#include <QtTest>

class TstIcons : public QObject {
    Q_OBJECT
private slots:
    void allWhoShowAnIconShareIt();
    void anIconThatDoesNotExistHasNoPicture();
};

void TstIcons::allWhoShowAnIconShareIt()
{
    const QString menu = QStringLiteral(":/res/btnMenu");
    QVERIFY(!sharedIcon(menu).pixmap(16).isNull());
    QCOMPARE(sharedIcon(menu).cacheKey(), sharedIcon(menu).cacheKey());
    QCOMPARE(sharedIcon(menu).pixmap(16).cacheKey(), sharedIcon(menu).pixmap(16).cacheKey());
    QVERIFY(sharedIcon(menu).cacheKey() != sharedIcon(QStringLiteral(":/res/btnSetting")).cacheKey());
}

void TstIcons::anIconThatDoesNotExistHasNoPicture()
{
    QVERIFY(sharedIcon(QStringLiteral(":/res/none")).pixmap(16).isNull());
}

QTEST_MAIN(TstIcons)
#include "tst_Icons.moc"
