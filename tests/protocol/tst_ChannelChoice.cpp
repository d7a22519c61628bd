#include "protocol/ChannelChoice.h"

#include <QtTest>

using ChannelChoice::Entry;

namespace {

QVector<Entry> entries(const QStringList &usage)
{
    return ChannelChoice::entriesOf(usage, [](int number) { return QStringLiteral("name %1").arg(number); });
}

constexpr unsigned undefined = ~0U;

} // namespace

class TstChannelChoice : public QObject {
    Q_OBJECT
private slots:
    void anEntryTellsNumberNameAndUser();
    void aNewAnalyzerStartsOnFreeChannels();
    void withTooFewFreeChannelsThePlacesAreCounted();
    void aStoredChannelIsFoundAgain();
    void withoutChannelsThereIsNoPlace();
};

void TstChannelChoice::anEntryTellsNumberNameAndUser()
{
    const QVector<Entry> two =
        entries({QStringLiteral("0"), QString(), QStringLiteral("12"), QStringLiteral("I2C - SCL")});
    QCOMPARE(two.size(), 2);
    QCOMPARE(ChannelChoice::textOf(two[0]), QStringLiteral("0 - 'name 0'"));
    QCOMPARE(ChannelChoice::textOf(two[1]), QStringLiteral("12 - 'name 12'    (I2C - SCL)"));
}

void TstChannelChoice::aNewAnalyzerStartsOnFreeChannels()
{
    const QVector<Entry> some{
        {0, {}, QStringLiteral("used")}, {1, {}, {}}, {2, {}, QStringLiteral("used")}, {5, {}, {}}};
    QCOMPARE(ChannelChoice::placeForNew(some, 0, 4), 1);
    QCOMPARE(ChannelChoice::placeForNew(some, 1, 4), 3);
}

void TstChannelChoice::withTooFewFreeChannelsThePlacesAreCounted()
{
    const QString used = QStringLiteral("used");
    const QVector<Entry> none{{0, {}, used}, {1, {}, used}, {2, {}, used}};
    for (int k = 0; k < 3; ++k) {
        QCOMPARE(ChannelChoice::placeForNew(none, k, 3), k);
    }
    QCOMPARE(ChannelChoice::placeForNew(none, 3, 3), 0);
    QCOMPARE(ChannelChoice::placeForNew(none, 3, 4), 3); // "None"
    QCOMPARE(ChannelChoice::placeForNew(none, 1000, 3), 2);
}

void TstChannelChoice::aStoredChannelIsFoundAgain()
{
    const QVector<Entry> some{{0, {}, {}}, {3, {}, {}}, {7, {}, {}}};
    QCOMPARE(ChannelChoice::placeOf(some, 7, undefined, 3), 2);
    QCOMPARE(ChannelChoice::placeOf(some, 4, undefined, 3), 0);
    QCOMPARE(ChannelChoice::placeOf(some, undefined, undefined, 4), 3);
}

void TstChannelChoice::withoutChannelsThereIsNoPlace()
{
    QCOMPARE(ChannelChoice::placeForNew({}, 0, 0), -1);
    QCOMPARE(ChannelChoice::placeForNew({}, 0, 1), 0);
    QCOMPARE(ChannelChoice::placeOf({}, undefined, undefined, 0), -1);
}

QTEST_APPLESS_MAIN(TstChannelChoice)
#include "tst_ChannelChoice.moc"
