#include "files/DataBlocks.h"
#include "files/DataFile.h"
#include "files/DataFileBytes.h"
#include "settings/Config.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"
#include "store/SmpWriter.h"

#include <QBuffer>
#include <QTest>

using Entries = std::vector<std::int64_t>;

namespace {

constexpr std::int64_t plentyOfMemory = std::int64_t(4) << 30;

/// The block that blockRefusal lets fail, counted from 0 over one load.
std::atomic<int> refusedBlock{-1};

bool refusesOneBlock(std::size_t)
{
    return refusedBlock.fetch_sub(1) == 0;
}

/// A store with a capture in it, which is what a load must not damage, or has to replace.
std::unique_ptr<SmpData> formerCapture()
{
    return CaptureBuilder(8).samples(300).trigger(30).channel(2, 1, {10, 20}).build();
}

bool isFormerCapture(const SmpData &data)
{
    return data.complete() && data.smpCount() == 300 && data.trgPos() == 30 &&
           entriesOf(data, 2) == Entries{10, 20, 300};
}

bool isClosedAndEmpty(const SmpData &data)
{
    for (const SmpEdgeRoot *root : data.chnRoots()) {
        if (root != nullptr) {
            return false;
        }
    }
    return data.complete() && data.smpCount() == 0 && data.trgPos() == 0;
}

QByteArray oneBlock()
{
    return DataFileBytes(8).block(3, 1, {10, 20, 500, 999, 1000}).bytes();
}

/// A folder, a store with a capture, and a load into it.
class Load {
public:
    [[nodiscard]] bool of(const QByteArray &bytes, std::int64_t headSize = 0)
    {
        return ofPath(m_folder.write(bytes), headSize);
    }
    [[nodiscard]] bool ofPath(const QString &path, std::int64_t headSize = 0)
    {
        data->clear();
        memBudget = plentyOfMemory;
        data = formerCapture();
        DataFile file(data.get());
        return file.loadData(path, headSize);
    }
    /// Everything that was taken has been given back.
    [[nodiscard]] bool budgetIsWhole() const
    {
        data->clear();
        return memBudget == plentyOfMemory;
    }

    std::unique_ptr<SmpData> data = formerCapture();

private:
    FileFolder m_folder;
};

} // namespace

class TstDataFileBadInput : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanup();
    void aFileCutWithinItsHeadIsRefusedAndChangesNothing();
    void aFileCutWithinABlockFailsAndEmptiesTheStore();
    void aRefusedHeadKeepsTheFormerCapture_data();
    void aRefusedHeadKeepsTheFormerCapture();
    void aRefusedHeadClosesAStoreWithoutACapture();
    void aMalformedBlockFailsAndEmptiesTheStore_data();
    void aMalformedBlockFailsAndEmptiesTheStore();
    void anEntryCountTakesNoMemoryByItself();
    void aDeviceThatEndsBeforeItsSizeFails();
    void aMissingFileKeepsTheFormerCapture();
    void aFolderKeepsTheFormerCapture();
    void aDeviceFileKeepsTheFormerCapture();
    void anUnreadableFileKeepsTheFormerCapture();
    void aHeadSizeOutsideTheFileKeepsTheFormerCapture_data();
    void aHeadSizeOutsideTheFileKeepsTheFormerCapture();
    void aSettingsFileNamedAsADataFileFailsAtTheHead();
    void aSettingsBlockBeyondTheLimitMakesTheFileUnreadable();
    void lineEndsBehindTheSettingsAreSkippedUpToTheLimit_data();
    void lineEndsBehindTheSettingsAreSkippedUpToTheLimit();
    void aSpentBudgetFailsALoadOfSeveralLeaves();
    void aBudgetSpentBehindTheFirstLeafOfEachChannelIsNoFailure();
    void anyRefusedAllocationFailsTheLoadCleanly();
};

void TstDataFileBadInput::initTestCase()
{
    memBudget = plentyOfMemory;
}

void TstDataFileBadInput::cleanup()
{
    blockRefusal = nullptr;
}

void TstDataFileBadInput::aFileCutWithinItsHeadIsRefusedAndChangesNothing()
{
    const QByteArray whole = oneBlock();
    Load load;
    for (int size = 0; size < DataFileHead::size; ++size) {
        QVERIFY2(!load.of(whole.left(size)), qPrintable(QString::number(size)));
        QVERIFY(isFormerCapture(*load.data));
    }
}

void TstDataFileBadInput::aFileCutWithinABlockFailsAndEmptiesTheStore()
{
    const QByteArray whole = oneBlock();
    Load load;
    QVERIFY2(load.of(whole.left(DataFileHead::size)), "a head without blocks is whole");
    for (int size = DataFileHead::size + 1; size < whole.size(); ++size) {
        QVERIFY2(!load.of(whole.left(size)), qPrintable(QString::number(size)));
        QVERIFY(isClosedAndEmpty(*load.data));
        QVERIFY(load.budgetIsWhole());
    }
    QVERIFY(load.of(whole));
}

void TstDataFileBadInput::aRefusedHeadKeepsTheFormerCapture_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("other mark") << QByteArray("cxdaT") + oneBlock().mid(5);
    QTest::newRow("one byte late") << QByteArray("\n") + oneBlock();
    QTest::newRow("one byte early") << oneBlock().mid(1);
    QTest::newRow("too many channels") << DataFileBytes(16).block(0, 0, {1000}).bytes();
    QTest::newRow("too few channels") << DataFileBytes(4).block(0, 0, {1000}).bytes();
    QTest::newRow("no channels") << DataFileBytes(0).bytes();
    QTest::newRow("zeros") << QByteArray(4096, '\0');
    QTest::newRow("ones") << QByteArray(4096, '\xFF');
}

void TstDataFileBadInput::aRefusedHeadKeepsTheFormerCapture()
{
    QFETCH(QByteArray, bytes);
    Load load;
    QVERIFY(!load.of(bytes));
    QVERIFY(isFormerCapture(*load.data));
    QVERIFY(load.budgetIsWhole());
}

void TstDataFileBadInput::aRefusedHeadClosesAStoreWithoutACapture()
{
    const FileFolder folder;
    SmpData fresh(8, 0);
    DataFile file(&fresh);
    QVERIFY(!file.loadData(folder.write("no data file"), 0));
    QVERIFY(isClosedAndEmpty(fresh));

    SmpData filling(8, 0); // a capture that ended before it brought anything
    filling.begin(0, 1, std::vector<std::uint8_t>(8, 1));
    SmpWriter(filling).setSmpCount(9);
    DataFile other(&filling);
    QVERIFY(!other.loadData(folder.path(QStringLiteral("missing.cxdat")), 0));
    QVERIFY(isClosedAndEmpty(filling));
}

void TstDataFileBadInput::aMalformedBlockFailsAndEmptiesTheStore_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const auto file = [] { return DataFileBytes(8).block(0, 0, {5, 1000}); };
    QTest::newRow("other block mark") << file().raw("##E").raw(QByteArray(13, '\0')).bytes();
    QTest::newRow("spare byte behind the last block") << file().raw(QByteArray(1, '\0')).bytes();
    QTest::newRow("settings behind the last block") << file().raw("<?xml version=\"1.0\"?><settings/>").bytes();
    QTest::newRow("channel twice") << file().block(0, 1, {1000}).bytes();
    QTest::newRow("channel twice, later") << file().block(1, 0, {1000}).block(0, 0, {1000}).bytes();
    QTest::newRow("channel index at the count") << file().block(8, 0, {1000}).bytes();
    QTest::newRow("channel index 255") << file().block(255, 0, {1000}).bytes();
    QTest::newRow("one entry too few") << file().blockHead(1, 0, 1).bytes();
    QTest::newRow("count beyond the file") << file().blockHead(1, 0, 1'000'000'000).raw(QByteArray(500, 'x')).bytes();
    QTest::newRow("largest count") << file().blockHead(1, 0, dataFileMax).raw(QByteArray(500, 'x')).bytes();
    QTest::newRow("equal entries") << file().block(1, 0, {7, 7, 1000}).bytes();
    QTest::newRow("falling entries") << file().block(1, 0, {9, 8, 1000}).bytes();
    QTest::newRow("falling at the end mark") << file().block(1, 0, {9, 1001, 1000}).bytes();
    QTest::newRow("all zero") << file().block(1, 0, Entries(30, 0)).bytes();
    Entries fallsAtTheSeam = stairs(1, 1, 40'961);
    fallsAtTheSeam[20'480] = 20'480;
    QTest::newRow("equal across a leaf's seam") << file().samples(50'000).block(1, 0, fallsAtTheSeam).bytes();
    fallsAtTheSeam[20'480] = 20'481;
    fallsAtTheSeam[40'960] = 40'960;
    QTest::newRow("equal across a piece's seam") << file().samples(50'000).block(1, 0, fallsAtTheSeam).bytes();
}

void TstDataFileBadInput::aMalformedBlockFailsAndEmptiesTheStore()
{
    QFETCH(QByteArray, bytes);
    Load load;
    QVERIFY(!load.of(bytes));
    QVERIFY(isClosedAndEmpty(*load.data));
    QVERIFY(load.budgetIsWhole());
}

void TstDataFileBadInput::anEntryCountTakesNoMemoryByItself()
{
    QByteArray bytes = DataFileBytes(8).blockHead(0, 0, dataFileMax).raw(QByteArray(100, 'x')).bytes();
    QBuffer buffer(&bytes);
    QVERIFY(buffer.open(QIODevice::ReadOnly));
    SmpData data(8, 0);
    const std::int64_t before = memBudget;
    QVERIFY(readDataBlocks(buffer, data) == DataBlocksResult::Damaged);
    QCOMPARE(memBudget.load(), before);
}

void TstDataFileBadInput::aDeviceThatEndsBeforeItsSizeFails()
{
    /// Promises more than it gives, as a file does that another program cuts meanwhile.
    class Liar : public QBuffer {
    public:
        using QBuffer::QBuffer;
        [[nodiscard]] qint64 size() const override { return QBuffer::size() + 1'000'000; }
    };
    QByteArray bytes = DataFileBytes(8).blockHead(0, 0, 100'000).raw(QByteArray(100, 'x')).bytes();
    Liar device(&bytes);
    QVERIFY(device.open(QIODevice::ReadOnly));
    SmpData data(8, 0);
    QVERIFY(readDataBlocks(device, data) == DataBlocksResult::DeviceError);
}

void TstDataFileBadInput::aMissingFileKeepsTheFormerCapture()
{
    const FileFolder folder;
    Load load;
    QVERIFY(!load.ofPath(folder.path(QStringLiteral("missing.cxdat"))));
    QVERIFY(isFormerCapture(*load.data));
    QVERIFY(!load.ofPath(QString()));
    QVERIFY(isFormerCapture(*load.data));
}

void TstDataFileBadInput::aFolderKeepsTheFormerCapture()
{
    const FileFolder folder;
    Load load;
    QVERIFY(!load.ofPath(folder.path(QStringLiteral("."))));
    QVERIFY(isFormerCapture(*load.data));
}

void TstDataFileBadInput::aDeviceFileKeepsTheFormerCapture()
{
    const QString endless = QStringLiteral("/dev/zero");
    if (!QFile::exists(endless)) {
        QSKIP("this system has no device files");
    }
    Load load;
    QVERIFY(!load.ofPath(endless));
    QVERIFY(isFormerCapture(*load.data));
}

void TstDataFileBadInput::anUnreadableFileKeepsTheFormerCapture()
{
    const FileFolder folder;
    const QString path = folder.write(oneBlock());
#ifdef Q_OS_WIN
    QSKIP("a file cannot be made unreadable by its permissions there");
#endif
    QVERIFY(QFile::setPermissions(path, {}));
    if (QFile probe(path); probe.open(QIODevice::ReadOnly)) {
        QSKIP("permissions do not bind this user");
    }
    Load load;
    QVERIFY(!load.ofPath(path));
    QVERIFY(isFormerCapture(*load.data));
}

void TstDataFileBadInput::aHeadSizeOutsideTheFileKeepsTheFormerCapture_data()
{
    QTest::addColumn<qint64>("headSize");
    QTest::newRow("negative") << qint64(-1);
    QTest::newRow("at the end") << qint64(oneBlock().size());
    QTest::newRow("behind the end") << qint64(oneBlock().size() + 1);
    QTest::newRow("far behind the end") << (qint64(1) << 62);
}

void TstDataFileBadInput::aHeadSizeOutsideTheFileKeepsTheFormerCapture()
{
    QFETCH(qint64, headSize);
    Load load;
    QVERIFY(!load.of(oneBlock(), headSize));
    QVERIFY(isFormerCapture(*load.data));
}

void TstDataFileBadInput::aSettingsFileNamedAsADataFileFailsAtTheHead()
{
    const FileFolder folder;
    const QString path = folder.path(QStringLiteral("settings.cxdat"));
    configLoad();
    QVERIFY(configSave(path));
    QByteArray settings;
    QVERIFY(configHeadOfFile(path, settings));
    Load load;
    QVERIFY(!load.ofPath(path, settings.size()));
    QVERIFY(isFormerCapture(*load.data));
}

void TstDataFileBadInput::aSettingsBlockBeyondTheLimitMakesTheFileUnreadable()
{
    const FileFolder folder;
    const QByteArray end("</settings>\n");
    const QByteArray fits(32'768 - end.size(), ' ');
    QByteArray settings;
    QVERIFY(configHeadOfFile(folder.write(fits + end + oneBlock()), settings));
    QCOMPARE(settings.size(), 32'768);
    Load load;
    QVERIFY(load.of(fits + end + oneBlock(), settings.size()));
    QVERIFY(!configHeadOfFile(folder.write(fits + "  " + end + oneBlock()), settings));
}

void TstDataFileBadInput::lineEndsBehindTheSettingsAreSkippedUpToTheLimit_data()
{
    QTest::addColumn<QByteArray>("lineEnds");
    QTest::addColumn<bool>("loads");
    QTest::newRow("none") << QByteArray() << true;
    QTest::newRow("LF") << QByteArray("\n") << true;
    QTest::newRow("CR LF") << QByteArray("\r\n") << true;
    QTest::newRow("many") << QByteArray("\r\n\n\r").repeated(5000) << true;
    QTest::newRow("beyond the limit") << QByteArray(40'000, '\n') << false;
}

void TstDataFileBadInput::lineEndsBehindTheSettingsAreSkippedUpToTheLimit()
{
    QFETCH(QByteArray, lineEnds);
    QFETCH(bool, loads);
    const FileFolder folder;
    const QString path = folder.write("<settings></settings>" + lineEnds + oneBlock());
    QByteArray settings;
    QVERIFY(configHeadOfFile(path, settings));
    Load load;
    QCOMPARE(load.ofPath(path, settings.size()), loads);
    QCOMPARE(isFormerCapture(*load.data), !loads);
}

void TstDataFileBadInput::aSpentBudgetFailsALoadOfSeveralLeaves()
{
    const FileFolder folder;
    const QString path = folder.write(DataFileBytes(8).samples(50'000).block(0, 0, stairs(1, 1, 20'481)).bytes());
    SmpData data(8, 0);
    memBudget = 0;
    DataFile file(&data);
    QVERIFY(!file.loadData(path, 0));
    QVERIFY(isClosedAndEmpty(data));
    QCOMPARE(memBudget.load(), 0);
    memBudget = plentyOfMemory;
}

void TstDataFileBadInput::aBudgetSpentBehindTheFirstLeafOfEachChannelIsNoFailure()
{
    const FileFolder folder;
    const QString path =
        folder.write(DataFileBytes(8).samples(50'000).block(0, 0, stairs(1, 1, 20'480)).block(1, 0, {50'000}).bytes());
    SmpData data(8, 0);
    memBudget = 0;
    DataFile file(&data);
    QVERIFY(file.loadData(path, 0));
    QCOMPARE(data.entryCount(0), 20'481);
    QCOMPARE(entriesOf(data, 1), (Entries{50'000}));
    data.clear();
    QCOMPARE(memBudget.load(), 0);
    memBudget = plentyOfMemory;
}

void TstDataFileBadInput::anyRefusedAllocationFailsTheLoadCleanly()
{
    const FileFolder folder;
    const QString path =
        folder.write(DataFileBytes(8).samples(50'000).block(0, 0, stairs(1, 1, 30'000)).block(1, 0, {3}).bytes());
    // Root, mid and two leaves of channel 0; root, mid and leaf of channel 1.
    constexpr int blocks = 7;
    for (int refused = 0; refused <= blocks; ++refused) {
        SmpData data(8, 0);
        const std::int64_t before = memBudget;
        refusedBlock = refused;
        blockRefusal = refusesOneBlock;
        DataFile file(&data);
        QCOMPARE(file.loadData(path, 0), refused == blocks);
        blockRefusal = nullptr;
        QCOMPARE(isClosedAndEmpty(data), refused != blocks);
        data.clear();
        QCOMPARE(memBudget.load(), before);
    }
}

QTEST_GUILESS_MAIN(TstDataFileBadInput)
#include "tst_DataFileBadInput.moc"
