#include "device/DevIdentity.h"

#include <QtTest>

#include <array>

using devIdentity::Model;
using devIdentity::modelOf;

namespace {

using Identity = std::array<std::uint8_t, 8>;

std::uint8_t inverted(int value)
{
    return std::uint8_t(~value);
}

/// Both copies of an identity byte and a variant byte, sound.
Identity identity(int id, int variant = 0)
{
    const auto i = std::uint8_t(id);
    const auto v = std::uint8_t(variant);
    return {i, inverted(id), v, inverted(variant), i, inverted(id), v, inverted(variant)};
}

constexpr std::uint16_t product = 0x01A2;

} // namespace

class TstDevIdentity : public QObject {
    Q_OBJECT
private slots:
    void theIdentityTellsTheModel_data();
    void theIdentityTellsTheModel();
    void theProductWithoutIdentityIsAlwaysModelFour();
    void aDamagedFirstCopyFallsBackToTheSecondWhileTheFirstVariantDecides();
    void aVariantWhoseComplementDisagreesIsNone();
    void theSecondCopyOfTheVariantIsNotLookedAt();
    void twoDamagedCopiesTellNoModel();
    void noiseNeverTellsAModelThatIsNone();
    void theVersionCountsOnlyWithItsComplement_data();
    void theVersionCountsOnlyWithItsComplement();
    void firmwareFollowsTheProduct_data();
    void firmwareFollowsTheProduct();
    void fpgaImagesFollowModelAndVariant_data();
    void fpgaImagesFollowModelAndVariant();
};

void TstDevIdentity::theIdentityTellsTheModel_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<int>("variant");
    QTest::addColumn<int>("model");
    QTest::addColumn<int>("image");
    const int rows[][4] = {{1, 0, 1, 0},  {2, 0, 3, 0},  {2, 1, 7, 0},   {2, 2, 3, 0},   {3, 0, 2, 0},  {3, 1, 6, 0},
                           {4, 0, 5, 0},  {4, 1, 5, 0},  {5, 0, 8, 0},   {5, 1, 8, 0},   {6, 0, 9, 0},  {7, 0, 5, 1},
                           {8, 0, 7, 0},  {9, 0, 6, 0},  {65, 0, 65, 0}, {97, 0, 97, 0}, {0, 0, 0, 0},  {10, 0, 0, 0},
                           {64, 0, 0, 0}, {66, 0, 0, 0}, {96, 0, 0, 0},  {98, 0, 0, 0},  {255, 0, 0, 0}};
    for (const auto &row : rows) {
        QTest::addRow("%d with variant %d", row[0], row[1]) << row[0] << row[1] << row[2] << row[3];
    }
}

void TstDevIdentity::theIdentityTellsTheModel()
{
    QFETCH(int, id);
    QFETCH(int, variant);
    QFETCH(int, model);
    QFETCH(int, image);
    QCOMPARE(modelOf(product, identity(id, variant)), (Model{model, image}));
}

void TstDevIdentity::theProductWithoutIdentityIsAlwaysModelFour()
{
    QCOMPARE(modelOf(0x01A1, identity(6)), (Model{4, 0}));
    QCOMPARE(modelOf(0x01A1, Identity{}), (Model{4, 0}));
}

void TstDevIdentity::aDamagedFirstCopyFallsBackToTheSecondWhileTheFirstVariantDecides()
{
    Identity bytes = identity(2, 1);
    bytes[0] = 0x55;
    QCOMPARE(modelOf(product, bytes).code, 7);
    bytes[2] = 0;
    bytes[3] = inverted(0);
    QCOMPARE(modelOf(product, bytes).code, 3);
}

void TstDevIdentity::aVariantWhoseComplementDisagreesIsNone()
{
    Identity bytes = identity(2, 1);
    bytes[3] = 0xFF;
    QCOMPARE(modelOf(product, bytes).code, 3);
    bytes = identity(3, 1);
    bytes[3] = 1;
    QCOMPARE(modelOf(product, bytes).code, 2);
}

void TstDevIdentity::theSecondCopyOfTheVariantIsNotLookedAt()
{
    Identity bytes = identity(3, 0);
    bytes[6] = 1;
    bytes[7] = inverted(1);
    QCOMPARE(modelOf(product, bytes).code, 2);
}

void TstDevIdentity::twoDamagedCopiesTellNoModel()
{
    Identity bytes = identity(5);
    bytes[1] = 5;
    bytes[5] = 5;
    QCOMPARE(modelOf(product, bytes).code, 0);
    QCOMPARE(modelOf(product, Identity{}).code, 0);
}

void TstDevIdentity::noiseNeverTellsAModelThatIsNone()
{
    const QVector<int> codes{0, 1, 2, 3, 5, 6, 7, 8, 9, 65, 97};
    std::uint32_t state = 1;
    for (int i = 0; i < 100000; ++i) {
        Identity bytes;
        for (std::uint8_t &byte : bytes) {
            state = state * 1664525U + 1013904223U;
            byte = std::uint8_t(state >> 24);
        }
        bytes[1] = i % 2 == 0 ? inverted(bytes[0]) : bytes[1];
        const Model model = modelOf(product, bytes);
        QVERIFY(codes.contains(model.code));
        QVERIFY(model.variant == 0 || model == (Model{5, 1}));
    }
}

void TstDevIdentity::theVersionCountsOnlyWithItsComplement_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("version");
    QTest::newRow("sound") << QByteArray("\x02\x01\xFD\xFE", 4) << 0x0102;
    QTest::newRow("zero") << QByteArray("\x00\x00\xFF\xFF", 4) << 0;
    QTest::newRow("a wrong bit") << QByteArray("\x02\x01\xFD\xFF", 4) << 0;
    QTest::newRow("not written") << QByteArray("\xFF\xFF\xFF\xFF", 4) << 0;
    QTest::newRow("all zero") << QByteArray(4, '\0') << 0;
    QTest::newRow("the largest") << QByteArray("\xFF\xFF\x00\x00", 4) << 0xFFFF;
}

void TstDevIdentity::theVersionCountsOnlyWithItsComplement()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, version);
    std::array<std::uint8_t, 4> raw{};
    std::copy_n(bytes.constData(), 4, raw.begin());
    QCOMPARE(int(devIdentity::hardwareVersionOf(raw)), version);
}

void TstDevIdentity::firmwareFollowsTheProduct_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<QString>("name");
    QTest::newRow("01A1") << 0x01A1 << QStringLiteral(":/fwusb/fw01A1");
    QTest::newRow("01A2") << 0x01A2 << QStringLiteral(":/fwusb/fw01A2");
    QTest::newRow("01A3") << 0x01A3 << QStringLiteral(":/fwusb/fw01A3");
    QTest::newRow("01A4") << 0x01A4 << QStringLiteral(":/fwusb/fw01A4");
    QTest::newRow("03A1") << 0x03A1 << QStringLiteral(":/fwusb/fw03A1");
    for (const int id : {0x02A1, 0x02A2, 0x02A3, 0x03A2, 0x03A3, 0, 0xFFFF}) {
        QTest::addRow("none for %04X", id) << id << QString();
    }
}

void TstDevIdentity::firmwareFollowsTheProduct()
{
    QFETCH(int, id);
    QFETCH(QString, name);
    QCOMPARE(devIdentity::firmwareOf(std::uint16_t(id)), name);
}

void TstDevIdentity::fpgaImagesFollowModelAndVariant_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<int>("variant");
    QTest::addColumn<QString>("name");
    QTest::newRow("1") << 1 << 0 << QString();
    QTest::newRow("2") << 2 << 0 << QStringLiteral(":/fwfpga/RV2320");
    QTest::newRow("3") << 3 << 0 << QStringLiteral(":/fwfpga/RV2420");
    QTest::newRow("4") << 4 << 0 << QStringLiteral(":/fwfpga/RV2520");
    QTest::newRow("5, variant 0") << 5 << 0 << QStringLiteral(":/fwfpga/RV2310A_0");
    QTest::newRow("5, variant 1") << 5 << 1 << QStringLiteral(":/fwfpga/RV2310A_1");
    QTest::newRow("6") << 6 << 0 << QStringLiteral(":/fwfpga/RV2320A");
    QTest::newRow("7") << 7 << 0 << QStringLiteral(":/fwfpga/RV2420A");
    QTest::newRow("8") << 8 << 0 << QStringLiteral(":/fwfpga/RV2520A");
    QTest::newRow("9") << 9 << 0 << QStringLiteral(":/fwfpga/RV2540A");
    QTest::newRow("65 takes that of 8") << 65 << 0 << QStringLiteral(":/fwfpga/RV2520A");
    QTest::newRow("97") << 97 << 0 << QStringLiteral(":/fwfpga/RV2720");
    QTest::newRow("no model") << 10 << 0 << QString();
}

void TstDevIdentity::fpgaImagesFollowModelAndVariant()
{
    QFETCH(int, model);
    QFETCH(int, variant);
    QFETCH(QString, name);
    QCOMPARE(devIdentity::fpgaImageOf({model, variant}), name);
}

QTEST_GUILESS_MAIN(TstDevIdentity)
#include "tst_DevIdentity.moc"
