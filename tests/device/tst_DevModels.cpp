#include "device/DevModels.h"
#include "settings/Config.h"

#include <QtTest>

namespace {

using Numbers = QVector<qint64>;

const Numbers ratesEight{24000000, 16000000, 12000000, 8000000, 4000000, 2000000,
                         1000000,  500000,   200000,   100000,  50000};
const Numbers ratesStream{100000000, 80000000, 50000000, 40000000, 32000000, 25000000, 16000000,
                          12500000,  10000000, 8000000,  5000000,  4000000,  2000000,  1000000,
                          500000,    200000,   100000,   50000,    20000};
const Numbers rates100{100000000, 50000000, 20000000, 10000000, 5000000, 2000000,
                       1000000,   500000,   200000,   100000,   50000,   20000};
const Numbers rates200 = Numbers{200000000} + rates100;
const Numbers rates500 = Numbers{500000000} + rates200;
const Numbers rates500Binary{500000000, 250000000, 125000000, 62500000, 25000000, 12500000, 5000000,
                             2500000,   1000000,   500000,    200000,   100000,   50000,    20000};

const Numbers commonDepths{20000,     200000,    1000000,   2000000,    5000000,    10000000,   20000000,   50000000,
                           100000000, 200000000, 500000000, 1000000000, 2000000000, 5000000000, 10000000000};

Numbers shortened(Numbers list)
{
    list.removeLast();
    return list;
}

} // namespace

class TstDevModels : public QObject {
    Q_OBJECT
private slots:
    void init() { configLoad(); }

    void eachCodeBuildsItsRowOfTheCatalogue_data();
    void eachCodeBuildsItsRowOfTheCatalogue();
    void anUnknownCodeBuildsTheNoHardwareModel_data();
    void anUnknownCodeBuildsTheNoHardwareModel();
    void theNoHardwareModelShowsWhatTheFastestModelOffers();
    void theRatesAreShownWithTheirUnits();
    void theDepthTextsEndWhereTheModelDoes_data();
    void theDepthTextsEndWhereTheModelDoes();
    void starsBeginAboveTheModelsDepth_data();
    void starsBeginAboveTheModelsDepth();
};

void TstDevModels::eachCodeBuildsItsRowOfTheCatalogue_data()
{
    constexpr qint64 g10 = 10000000000;
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("memSize");
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("analog");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QVector<int>>("features");
    QTest::addColumn<Numbers>("rates");
    QTest::addColumn<Numbers>("depths");
    QTest::addColumn<qint64>("starAbove");
    QTest::addColumn<qint64>("depthMax");
    QTest::addColumn<int>("rateDefault");
    QTest::addColumn<int>("depthDefault");
    const QVector<int> none;
    const QVector<int> pwm{2};
    const QVector<int> both{1, 2};
    const auto row = [](int code, const char *name) -> QTestData & {
        return QTest::addRow("%d %s", code, name) << code << QString::fromLatin1(name);
    };
    const qint64 m30 = 30000000;
    const qint64 m50 = 50000000;
    const qint64 m100 = 100000000;
    row(0, "RV2520") << 0x10000000 << 16 << 0 << 0 << both << rates500 << commonDepths << m100 << g10 << 1 << 8;
    row(1, "RV2210") << 0 << 8 << 0 << 1 << none << ratesEight << commonDepths << m50 << g10 << 1 << 5;
    row(2, "RV2320") << 0x8000000 << 16 << 0 << 0 << pwm << rates100 << commonDepths << m50 << g10 << 0 << 7;
    row(3, "RV2420") << 0x8000000 << 16 << 0 << 0 << pwm << rates200 << commonDepths << m50 << g10 << 1 << 7;
    row(4, "RV2520") << 0x4000000 << 16 << 0 << 0 << pwm << rates500Binary << shortened(commonDepths) << m30
                     << qint64(5000000000) << 3 << 6;
    row(5, "RV2310") << 0 << 16 << 0 << 1 << both << ratesStream << commonDepths << m50 << g10 << 8 << 4;
    row(6, "RV2320") << 0x8000000 << 16 << 0 << 0 << both << rates100 << commonDepths << m50 << g10 << 0 << 7;
    row(7, "RV2420") << 0x8000000 << 16 << 0 << 0 << both << rates200 << commonDepths << m50 << g10 << 1 << 7;
    row(8, "RV2520") << 0x10000000 << 16 << 0 << 0 << both << rates500 << commonDepths << m100 << g10 << 1 << 8;
    row(9, "RV2540") << 0x20000000 << 32 << 0 << 0 << both << rates500 << commonDepths << m100 << g10 << 4 << 4;
    row(65, "RV2620") << 0x10000000 << 16 << 0 << 0 << both << rates500 << commonDepths << m100 << g10 << 1 << 8;
    row(97, "RV2720") << 32768 << 16 << 2 << 0 << both << rates100 << Numbers{8000} << m50 << g10 << 0 << 0;
}

void TstDevModels::eachCodeBuildsItsRowOfTheCatalogue()
{
    QFETCH(int, code);
    QFETCH(int, channels);
    QFETCH(int, analog);
    QFETCH(Numbers, rates);
    QFETCH(Numbers, depths);
    QFETCH(QVector<int>, features);
    const std::unique_ptr<DevBase> device = createDevice(code);
    QCOMPARE(device->model, code);
    QTEST(device->name, "name");
    QTEST(int(device->memSize), "memSize");
    QCOMPARE(device->chnEnable, QVector<bool>(channels, true));
    QCOMPARE(device->aChnEnable, QVector<bool>(analog, true));
    QCOMPARE(device->chnTrig, QVector<int>(channels, 0));
    QTEST(int(device->transferMode), "mode");
    QCOMPARE(device->features, features);
    QCOMPARE(device->hasFeature(1), features.contains(1));
    QCOMPARE(device->hasFeature(2), features.contains(2));
    QVERIFY(std::equal(rates.cbegin(), rates.cend(), device->smpFrequs.cbegin(), device->smpFrequs.cend()));
    QVERIFY(std::equal(depths.cbegin(), depths.cend(), device->smpDepths.cbegin(), device->smpDepths.cend()));
    QTEST(qint64(device->depthStarAbove), "starAbove");
    QTEST(qint64(device->depthMax), "depthMax");
    QTEST(int(device->smpFrequDefault), "rateDefault");
    QTEST(int(device->smpDepthDefault), "depthDefault");
    QCOMPARE(device->smpFrequIndex, device->smpFrequDefault);
    QCOMPARE(device->smpDepthIndex, device->smpDepthDefault);
    QCOMPARE(device->trgPosition, 5);
    QVERIFY(!device->connected);
    QCOMPARE(device->isAnalogModel(), code == 97);
    QCOMPARE(device->devUid, QByteArray(8, '\0'));
    QCOMPARE(device->smpData->chnCount, channels);
    QCOMPARE(device->smpData->aChnCount, analog);
    QCOMPARE(globalGet(QStringLiteral("devModel")), QString::number(code));
}

void TstDevModels::anUnknownCodeBuildsTheNoHardwareModel_data()
{
    QTest::addColumn<int>("code");
    for (const int code : {10, -1, 64, 66, 96, 98, 2147483647}) {
        QTest::addRow("%d", code) << code;
    }
}

void TstDevModels::anUnknownCodeBuildsTheNoHardwareModel()
{
    QFETCH(int, code);
    QCOMPARE(createDevice(code)->model, 0);
    QCOMPARE(globalGet(QStringLiteral("devModel")), QStringLiteral("0"));
}

void TstDevModels::theNoHardwareModelShowsWhatTheFastestModelOffers()
{
    const std::unique_ptr<DevBase> none = createDevice(0);
    const std::unique_ptr<DevBase> fast = createDevice(8);
    QCOMPARE(none->smpFrequTexts(), fast->smpFrequTexts());
    QCOMPARE(none->smpDepthTexts(), fast->smpDepthTexts());
    QCOMPARE(none->smpFrequTexts().first(), QStringLiteral("500 MHz"));
    QCOMPARE(none->smpDepthTexts().last(), QStringLiteral("10 G* Samples"));
}

void TstDevModels::theRatesAreShownWithTheirUnits()
{
    QCOMPARE(createDevice(4)->smpFrequTexts().join(QLatin1Char(',')),
             QStringLiteral("500 MHz,250 MHz,125 MHz,62.5 MHz,25 MHz,12.5 MHz,5 MHz,2.5 MHz,1 MHz,500 KHz,200 KHz,"
                            "100 KHz,50 KHz,20 KHz"));
    DevBase odd;
    odd.smpFrequs = {2500000000, 1000000000, 999999999, 1234567, 1000, 999, 5000};
    QCOMPARE(odd.smpFrequTexts().join(QLatin1Char(',')),
             QStringLiteral("2.5 GHz,1 GHz,1000 MHz,1.23457 MHz,1 KHz")); // a rate below 1 KHz ends the list
}

void TstDevModels::theDepthTextsEndWhereTheModelDoes_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("last");
    QTest::newRow("code 4") << 4 << 14 << QStringLiteral("5 G* Samples");
    QTest::newRow("code 2") << 2 << 15 << QStringLiteral("10 G* Samples");
    QTest::newRow("code 97") << 97 << 1 << QStringLiteral("8 K Samples");
}

void TstDevModels::theDepthTextsEndWhereTheModelDoes()
{
    QFETCH(int, code);
    const QStringList texts = createDevice(code)->smpDepthTexts();
    QTEST(int(texts.size()), "count");
    QTEST(texts.last(), "last");
}

void TstDevModels::starsBeginAboveTheModelsDepth_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("texts");
    const QString start = QStringLiteral("20 K Samples,200 K Samples,1 M Samples,2 M Samples,5 M Samples,10 M Samples,"
                                         "20 M Samples,");
    QTest::newRow("30 M") << 4
                          << start + QStringLiteral("50 M* Samples,100 M* Samples,200 M* Samples,500 M* Samples,"
                                                    "1 G* Samples,2 G* Samples,5 G* Samples");
    QTest::newRow("50 M") << 2
                          << start + QStringLiteral("50 M Samples,100 M* Samples,200 M* Samples,500 M* Samples,"
                                                    "1 G* Samples,2 G* Samples,5 G* Samples,10 G* Samples");
    QTest::newRow("100 M") << 8
                           << start + QStringLiteral("50 M Samples,100 M Samples,200 M* Samples,500 M* Samples,"
                                                     "1 G* Samples,2 G* Samples,5 G* Samples,10 G* Samples");
}

void TstDevModels::starsBeginAboveTheModelsDepth()
{
    QFETCH(int, code);
    QTEST(createDevice(code)->smpDepthTexts().join(QLatin1Char(',')), "texts");
}

QTEST_GUILESS_MAIN(TstDevModels)
#include "tst_DevModels.moc"
