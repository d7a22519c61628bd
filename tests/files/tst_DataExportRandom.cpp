#include "files/DataExported.h"
#include "files/NaiveExport.h"
#include "settings/Config.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"

#include <QTest>

#include <random>

namespace {

using Random = std::mt19937;

int below(Random &random, int limit)
{
    return int(random() % std::uint32_t(limit));
}

/// Transitions with pauses of about `mean` samples, in between bursts that change at every sample.
std::vector<std::int64_t> transitions(Random &random, std::int64_t samples, int mean)
{
    std::vector<std::int64_t> positions;
    std::int64_t pos = below(random, mean) + 1;
    while (pos < samples) {
        positions.push_back(pos);
        const bool burst = below(random, 3) == 0;
        pos += burst ? 1 : 1 + below(random, 2 * mean);
    }
    return positions;
}

/// Every fourth channel or so without data, some that never change.
std::unique_ptr<SmpData> capture(Random &random, int chnCount, std::int64_t samples, int mean)
{
    CaptureBuilder builder(chnCount);
    builder.samples(samples).trigger(below(random, int(samples)));
    for (int chn = 0; chn < chnCount; ++chn) {
        const int kind = below(random, 8);
        if (kind >= 2) {
            builder.channel(chn, int(random() & 1),
                            kind == 2 ? std::vector<std::int64_t>() : transitions(random, samples, mean));
        }
    }
    return builder.build();
}

/// The range that a save of `start` to `end` has.
DataSelection selectionOf(SmpData &data, const std::vector<std::uint8_t> &select, double start, double end)
{
    DataFile file(&data);
    file.setRange(start, end);
    return {select.data(), file.posStart, file.posEnd};
}

} // namespace

/// Both exports, byte by byte, against the plainest way to write them.
class TstDataExportRandom : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void bothExportsEqualThePlainestWayToWriteThem_data();
    void bothExportsEqualThePlainestWayToWriteThem();
    void piecesLeaveNoSeamInTheDump_data();
    void piecesLeaveNoSeamInTheDump();
    void piecesAndLeavesLeaveNoSeamInTheText_data();
    void piecesAndLeavesLeaveNoSeamInTheText();
};

void TstDataExportRandom::initTestCase()
{
    memBudget = std::int64_t(4) << 30;
    configLoad();
}

void TstDataExportRandom::bothExportsEqualThePlainestWayToWriteThem_data()
{
    QTest::addColumn<int>("chnCount");
    QTest::addColumn<int>("samples");
    QTest::addColumn<int>("mean");
    for (const int chnCount : {8, 12, 16, 24, 32}) {
        for (const int samples : {1, 2, 50, 3000}) {
            for (const int mean : {1, 10, 1000}) {
                QTest::newRow(qPrintable(
                    QStringLiteral("%1 channels, %2 samples, pauses of %3").arg(chnCount).arg(samples).arg(mean)))
                    << chnCount << samples << mean;
            }
        }
    }
}

void TstDataExportRandom::bothExportsEqualThePlainestWayToWriteThem()
{
    QFETCH(int, chnCount);
    QFETCH(int, samples);
    QFETCH(int, mean);
    Random random(std::uint32_t(chnCount * 1000003 + samples * 101 + mean));
    for (int round = 0; round < 12; ++round) {
        const auto data = capture(random, chnCount, samples, mean);
        std::vector<std::uint8_t> select;
        for (int chn = 0; chn < chnCount; ++chn) {
            select.push_back(round == 0 ? 1 : std::uint8_t(below(random, 3)));
        }
        // Whole captures, parts of them, reversed and beyond their ends.
        const double start = round < 2 ? 0 : below(random, 2 * samples) - samples / 2 + 0.25 * below(random, 4);
        const double end = round < 2 ? samples : below(random, 2 * samples) + 0.25 * below(random, 4);
        const DataSelection selection = selectionOf(*data, select, start, end);
        QCOMPARE(textOf(*data, select, start, end), NaiveExport(*data, selection).text());
        QCOMPARE(binaryOf(*data, select, start, end).toHex(), NaiveExport(*data, selection).binary().toHex());
    }
}

void TstDataExportRandom::piecesLeaveNoSeamInTheDump_data()
{
    QTest::addColumn<int>("chnCount");
    QTest::addColumn<int>("samples");
    QTest::addColumn<int>("mean");
    for (const int chnCount : {8, 16, 24, 32}) {
        const int rowsOfAPiece = dataWritePiece / (chnCount / 8);
        for (const int samples : {rowsOfAPiece - 1, rowsOfAPiece, rowsOfAPiece + 1, 2 * rowsOfAPiece + 5}) {
            for (const int mean : {10, 100'000}) {
                QTest::newRow(qPrintable(
                    QStringLiteral("%1 channels, %2 samples, pauses of %3").arg(chnCount).arg(samples).arg(mean)))
                    << chnCount << samples << mean;
            }
        }
    }
}

void TstDataExportRandom::piecesLeaveNoSeamInTheDump()
{
    QFETCH(int, chnCount);
    QFETCH(int, samples);
    QFETCH(int, mean);
    Random random(std::uint32_t(chnCount + samples * 3 + mean));
    const auto data = capture(random, chnCount, samples, mean);
    const auto select = allOf(*data);
    // QCOMPARE would print hundreds of kilobytes.
    QVERIFY(binaryOf(*data, select, 0, samples) == NaiveExport(*data, selectionOf(*data, select, 0, samples)).binary());
    QVERIFY(binaryOf(*data, select, 1, samples) == NaiveExport(*data, selectionOf(*data, select, 1, samples)).binary());
}

void TstDataExportRandom::piecesAndLeavesLeaveNoSeamInTheText_data()
{
    QTest::addColumn<int>("edges");
    QTest::addColumn<int>("chosen");
    for (const int edges : {20'478, 20'479, 20'480, 20'481, 61'441}) {
        for (const int chosen : {1, 16}) {
            QTest::newRow(qPrintable(QStringLiteral("%1 edges, %2 channels").arg(edges).arg(chosen)))
                << edges << chosen;
        }
    }
}

void TstDataExportRandom::piecesAndLeavesLeaveNoSeamInTheText()
{
    QFETCH(int, edges);
    QFETCH(int, chosen);
    CaptureBuilder builder(16);
    builder.samples(5 * edges).trigger(edges);
    for (int chn = 0; chn < 16; ++chn) {
        builder.channel(chn, chn & 1, stairs(1 + chn % 3, 3 + chn % 2, edges));
    }
    const auto data = builder.build();
    std::vector<std::uint8_t> select(16, 0);
    std::fill_n(select.begin(), chosen, std::uint8_t(1));
    QVERIFY(textOf(*data, select, 0, double(data->smpCount())) ==
            NaiveExport(*data, selectionOf(*data, select, 0, double(data->smpCount()))).text());
}

QTEST_GUILESS_MAIN(TstDataExportRandom)
#include "tst_DataExportRandom.moc"
