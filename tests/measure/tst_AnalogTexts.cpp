#include "measure/AnalogTexts.h"

#include <QtTest>

/// The measured values of an analog channel in one text.
class TstAnalogTexts : public QObject {
    Q_OBJECT
private slots:
    void aTextWithoutValuesHasNoParts_data();
    void aTextWithoutValuesHasNoParts();
    void aPartIsTakenByItsWholeName();
    void whatIsNotThereLeavesEverything();
    void whatIsNoNumberCountsAsUnknown_data();
    void whatIsNoNumberCountsAsUnknown();
};

void TstAnalogTexts::aTextWithoutValuesHasNoParts_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QString();
    QTest::newRow("one part") << QStringLiteral("Period:1ms");
}

void TstAnalogTexts::aTextWithoutValuesHasNoParts()
{
    QFETCH(QString, text);
    QVERIFY(AnalogTexts::partsOf(text).isEmpty());
}

void TstAnalogTexts::aPartIsTakenByItsWholeName()
{
    QStringList parts = AnalogTexts::partsOf(QStringLiteral("+PulseWidth:1ms,-PulseWidth:2ms,Vmax:3.00V"));
    QString value;
    QVERIFY(AnalogTexts::takeValue(parts, QStringLiteral("-PulseWidth"), value));
    QCOMPARE(value, QStringLiteral("2ms"));
    QCOMPARE(parts, (QStringList{QStringLiteral("+PulseWidth:1ms"), QStringLiteral("Vmax:3.00V")}));
}

void TstAnalogTexts::whatIsNotThereLeavesEverything()
{
    QStringList parts{QStringLiteral("Vmax:1.00V"), QStringLiteral("Vmin"), QString()};
    const QStringList before = parts;
    QString value = QStringLiteral("as it was");
    for (const char *name : {"Vma", "vmax", "Vmin", "", "1.00V"}) {
        QVERIFY(!AnalogTexts::takeValue(parts, QString::fromLatin1(name), value));
    }
    QCOMPARE(value, QStringLiteral("as it was"));
    QCOMPARE(parts, before);
}

void TstAnalogTexts::whatIsNoNumberCountsAsUnknown_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("shown");
    for (const char *text : {"nan", "-nan", "inf", "-inf", "+inf", "nanmV", "-nanmV", "nanV", "inf%", "-inf%", "nan%",
                             "NaN", "INFV", "infinity"}) {
        QTest::newRow(text) << QString::fromLatin1(text) << QStringLiteral("--");
    }
    for (const char *text : {"0.00%", "-12.00mV", "+1", "333333Hz", "", "in"}) {
        QTest::newRow(text) << QString::fromLatin1(text) << QString::fromLatin1(text);
    }
}

void TstAnalogTexts::whatIsNoNumberCountsAsUnknown()
{
    QFETCH(QString, value);
    QFETCH(QString, shown);
    QStringList parts{QStringLiteral("Preshoot:") + value};
    QString found;
    QVERIFY(AnalogTexts::takeValue(parts, QStringLiteral("Preshoot"), found));
    QCOMPARE(found, shown);
}

QTEST_GUILESS_MAIN(TstAnalogTexts)
#include "tst_AnalogTexts.moc"
