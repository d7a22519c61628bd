#include "files/CaptureFile.h"
#include "files/DataBlocks.h"
#include "files/DataFile.h"
#include "files/DataFileBytes.h"
#include "files/FileSizeLimit.h"
#include "files/ScriptedDialog.h"
#include "settings/Config.h"
#include "store/MemBudget.h"

#include <QStandardPaths>
#include <QTest>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace {

constexpr std::int64_t plentyOfMemory = std::int64_t(4) << 30;

int channelsOf(const ConfigDocument &settings)
{
    return settings.global(QStringLiteral("devModel")) == QStringLiteral("9") ? 32 : 8;
}

CaptureFile captureFile(JobDialogFactory dialogs = {})
{
    return CaptureFile(channelsOf, std::move(dialogs));
}

QByteArray settingsBlock(const QByteArray &global = "<devModel>1</devModel>")
{
    return "<settings><global>" + global + "</global><devices/><analyzers/></settings>\n";
}

CapturePart wholeOf(const SmpData &data)
{
    return {std::vector<std::uint8_t>(std::size_t(data.chnCount), 1), 0, double(data.smpCount())};
}

std::unique_ptr<SmpData> smallCapture()
{
    return CaptureBuilder(8).samples(1000).trigger(7).channel(2, 1, {10, 20}).channel(5, 0, {999}).build();
}

ConfigDocument settingsOf(const QByteArray &block)
{
    return ConfigDocument::parse(block).value();
}

} // namespace

class TstCaptureFile : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void init() { memBudget = plentyOfMemory; }

    void whatIsSavedOpensWithItsSettings();
    void anOpenedCaptureIsTakenOverByAStore();
    void factsOfAFileAreThoseOfItsCapture();
    void settingsAloneAreSavedAndOpened();
    void anExportIsWritten();
    void aFailureTellsItsReason_data();
    void aFailureTellsItsReason();
    void aPipeIsRefusedAtOnce();
    void aFileCutShortNamesTheMissingChannels();
    void aFileWithoutChannelsIsTold();
    void aCheckTellsWithoutReadingTheEntries();
    void aCancelledOpenGivesNothing();
    void aFileThatFitsOnlyInPlaceOfTheFormerIsChecked();
    void aFileThatFitsInNoWayIsRefused();
    void withoutACaptureNothingIsWritten();
    void settingsThatAreTooLongLeaveTheFile();
    void aSaveThatFailsTellsItsReason_data();
    void aSaveThatFailsTellsItsReason();
    void everyResultHasAReason();

private:
    FileFolder m_folder;
};

void TstCaptureFile::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    configLoad();
}

void TstCaptureFile::whatIsSavedOpensWithItsSettings()
{
    const auto data = smallCapture();
    const QString path = m_folder.path(QStringLiteral("saved.cxdat"));
    const ConfigDocument settings = settingsOf(settingsBlock("<devModel>1</devModel><chnShowName2>SCL</chnShowName2>"));
    QVERIFY(captureFile().save(path, *data, wholeOf(*data), settings).isDone());
    const OpenedCapture opened = captureFile().open(path);
    QVERIFY(opened.outcome.isDone());
    QVERIFY(opened.isData && !opened.outcome.cut && !opened.outcome.noChannels);
    QCOMPARE(opened.settings->global(QStringLiteral("chnShowName2")), QStringLiteral("SCL"));
    QVERIFY(opened.capture->complete());
    QCOMPARE(opened.capture->trgPos(), 7);
    QCOMPARE(entriesOf(*opened.capture, 2), (std::vector<std::int64_t>{10, 20, 1000}));
    QCOMPARE(opened.capture->startLevels() >> 2 & 1, std::uint64_t(1));
    QVERIFY(m_folder.read(QStringLiteral("saved.cxdat")).startsWith("<?xml"));
    QCOMPARE(globalGet(QStringLiteral("chnShowName2")), QString()); // nothing of the program's has changed
}

void TstCaptureFile::factsOfAFileAreThoseOfItsCapture()
{
    std::vector<std::int64_t> many;
    for (std::int64_t pos = 3; pos < 990; pos += 3) {
        many.push_back(pos);
    }
    many.insert(many.end(), {1000, 1001, 5000}); // behind the end: no transitions of the capture
    DataFileBytes data(8);
    data.samples(1000).frequency(24000000).trigger(7);
    data.block(5, 0, {999, 1000}).block(2, 1, many).block(0, 0, {1000}).block(7, 1, {});
    const QString path = m_folder.write(settingsBlock() + data.bytes());
    CaptureFacts facts;
    QVERIFY(captureFile().check(path, &facts).outcome.isDone());
    QCOMPARE(facts.samples, 1000);
    QCOMPARE(facts.rate, 24000000);
    QCOMPARE(facts.trigger, 7);
    const OpenedCapture whole = captureFile().open(path);
    QVERIFY(whole.capture);
    QCOMPARE(facts.channels.size(), std::size_t(4));
    int before = -1;
    for (const CaptureFacts::Channel &one : facts.channels) {
        QVERIFY(one.chn > before);
        before = one.chn;
        QCOMPARE(one.edges, whole.capture->entryCount(one.chn) - 1); // without the end mark
    }
    QCOMPARE(facts.channels[1].edges, 329);
}

void TstCaptureFile::anOpenedCaptureIsTakenOverByAStore()
{
    const auto data = smallCapture();
    const auto opened = smallCapture();
    SmpData store(8, 2);
    store.begin(0, 5, std::vector<std::uint8_t>(8, 1));
    QVERIFY(store.adopt(*opened));
    QVERIFY(store.complete() && store.aChnBufs()[0] == nullptr);
    QCOMPARE(store.smpCount(), 1000);
    QCOMPARE(store.smpFrequ(), data->smpFrequ());
    QCOMPARE(store.trgPos(), 7);
    for (int chn = 0; chn < 8; ++chn) {
        QCOMPARE(entriesOf(store, chn), entriesOf(*data, chn));
    }
    QVERIFY(!opened->complete() && opened->chnRoots()[2] == nullptr);
    SmpData other(16, 0);
    QVERIFY(!store.adopt(other));
    QCOMPARE(store.sampleCount(), 1000);
}

void TstCaptureFile::settingsAloneAreSavedAndOpened()
{
    const QString path = m_folder.path(QStringLiteral("saved.cxset"));
    QVERIFY(CaptureFile::saveSettings(path, settingsOf(settingsBlock("<k>1</k>"))).isDone());
    const OpenedCapture opened = captureFile().open(path);
    QVERIFY(opened.outcome.isDone());
    QVERIFY(!opened.isData && opened.capture == nullptr);
    QCOMPARE(opened.settings->global(QStringLiteral("k")), QStringLiteral("1"));
}

void TstCaptureFile::anExportIsWritten()
{
    const auto data = smallCapture();
    const QString path = m_folder.path(QStringLiteral("a.bin"));
    QVERIFY(captureFile().exportTo(path, *data, wholeOf(*data), ExportKind::Binary).isDone());
    const QByteArray dump = m_folder.read(QStringLiteral("a.bin"));
    QCOMPARE(dump.size(), 1000);
    QCOMPARE(dump.count('\n'), 0);
    QCOMPARE(dump.at(0), '\x04');
    QCOMPARE(dump.at(999), '\x24');
    QVERIFY(captureFile().exportTo(path, *data, wholeOf(*data), ExportKind::Text).isDone());
    QCOMPARE(m_folder.read(QStringLiteral("a.bin")).count('\n'), 1 + 1 + 3);
}

void TstCaptureFile::aFailureTellsItsReason_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("result");
    const auto row = [](const char *tag, const char *name, const QByteArray &bytes, FileResult result) {
        QTest::newRow(tag) << QString::fromLatin1(name) << bytes << int(result);
    };
    const QByteArray data = DataFileBytes(8).block(1, 1, {10, 1000}).bytes();
    row("missing", "", {}, FileResult::NoSuchFile);
    row("folder", ".", {}, FileResult::NotPlain);
    row("another suffix", "a.txt", settingsBlock() + data, FileResult::WrongKind);
    row("suffix in capitals", "a.CXDAT", settingsBlock() + data, FileResult::WrongKind);
    row("empty", "a.cxdat", {}, FileResult::WrongKind);
    row("something else", "a.cxset", "PK" + QByteArray(100, 'x'), FileResult::WrongKind);
    row("settings cut short", "a.cxset", settingsBlock().chopped(5), FileResult::Damaged);
    row("malformed settings", "a.cxset", "<settings><global></settings>", FileResult::Damaged);
    row("malformed settings before data", "a.cxdat", "<settings><global></settings>\n" + data, FileResult::Damaged);
    row("settings alone as data", "a.cxdat", settingsBlock(), FileResult::Damaged);
    row("head cut short", "a.cxdat", settingsBlock() + data.left(39), FileResult::Damaged);
    row("block cut short", "a.cxdat", settingsBlock() + data.chopped(1), FileResult::Damaged);
    row("entries out of order", "a.cxdat", settingsBlock() + DataFileBytes(8).block(1, 1, {10, 9, 1000}).bytes(),
        FileResult::Damaged);
    row("another model", "a.cxdat", settingsBlock("<devModel>9</devModel>") + data, FileResult::OtherModel);
}

void TstCaptureFile::aFailureTellsItsReason()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    QFETCH(int, result);
    const QString missing = QStringLiteral("missing.cxdat");
    const bool isFile = name.size() > 1;
    const QString path = isFile ? m_folder.write(bytes, name) : m_folder.path(name.isEmpty() ? missing : name);
    const OpenedCapture opened = captureFile().open(path);
    QCOMPARE(int(opened.outcome.result), result);
    QVERIFY(!opened.settings && opened.capture == nullptr);
    QCOMPARE(memBudget.load(), plentyOfMemory);
}

void TstCaptureFile::aPipeIsRefusedAtOnce()
{
#ifdef Q_OS_UNIX
    const QString path = m_folder.path(QStringLiteral("pipe.cxdat"));
    QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    QCOMPARE(captureFile().open(path).outcome.result, FileResult::NotPlain);
    const auto data = smallCapture();
    QCOMPARE(captureFile().save(path, *data, wholeOf(*data), settingsOf(settingsBlock())).result, FileResult::NotPlain);
#endif
}

void TstCaptureFile::aFileCutShortNamesTheMissingChannels()
{
    const QByteArray whole =
        settingsBlock() + DataFileBytes(8).promise({1, 4, 6}).block(1, 1, {10, 1000}).block(4, 0, {1000}).bytes();
    const OpenedCapture opened = captureFile().open(m_folder.write(whole.chopped(1)));
    QVERIFY(opened.outcome.isDone());
    QVERIFY(opened.outcome.cut);
    QCOMPARE(opened.outcome.missing, (std::vector<int>{4, 6}));
    QCOMPARE(entriesOf(*opened.capture, 1), (std::vector<std::int64_t>{10, 1000}));
    const auto nameOf = [](int chn) { return QStringLiteral("D%1").arg(chn); };
    QCOMPARE(fileWarning(opened.outcome, nameOf),
             QStringLiteral("The file is incomplete. These channels are missing:\r\nD4, D6"));
}

void TstCaptureFile::aFileWithoutChannelsIsTold()
{
    for (const QByteArray &data : {DataFileBytes(8).bytes(), DataFileBytes(8).told().bytes()}) {
        const OpenedCapture opened = captureFile().open(m_folder.write(settingsBlock() + data));
        QVERIFY(opened.outcome.isDone() && opened.outcome.noChannels);
        QCOMPARE(opened.capture->smpCount(), 1000);
        QCOMPARE(fileWarning(opened.outcome, {}), QStringLiteral("The file holds no channels."));
    }
}

void TstCaptureFile::aCheckTellsWithoutReadingTheEntries()
{
    const auto damaged = [this](const DataFileBytes &data) {
        return captureFile().check(m_folder.write(settingsBlock() + data.bytes()));
    };
    const OpenedCapture cut = damaged(DataFileBytes(8).blockHead(1, 0, 5));
    QCOMPARE(cut.outcome.result, FileResult::Damaged);
    const OpenedCapture unordered = damaged(DataFileBytes(8).block(1, 0, {10, 9, 1000}));
    QVERIFY(unordered.outcome.isDone() && unordered.settings && unordered.capture == nullptr);
}

void TstCaptureFile::aCancelledOpenGivesNothing()
{
    const BigFile big;
    QFile file(m_folder.path(QStringLiteral("big.cxdat")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(settingsBlock() + big.folder.read(QStringLiteral("big.cxdat")));
    file.close();
    DialogLog log;
    const OpenedCapture opened =
        captureFile(scripted(log, [](ScriptedDialog &) { return false; })).open(file.fileName());
    QCOMPARE(opened.outcome.result, FileResult::Cancelled);
    QVERIFY(!opened.settings && opened.capture == nullptr);
    QCOMPARE(memBudget.load(), plentyOfMemory);
    QVERIFY(file.remove());
}

void TstCaptureFile::aFileThatFitsOnlyInPlaceOfTheFormerIsChecked()
{
    constexpr int entries = 2'000'000; // more than is tried whatever the budget
    auto former = captureOf(entries);
    const QByteArray good =
        DataFileBytes(8).samples(2 * std::int64_t(entries)).block(0, 0, stairs(1, 2, entries)).bytes();
    memBudget = 50'000;
    const std::int64_t before = memBudget;
    OpenedCapture opened = captureFile().open(m_folder.write(settingsBlock() + good), former.get());
    QVERIFY(opened.outcome.isDone() && opened.settings && opened.isData);
    QVERIFY(opened.capture == nullptr);
    QCOMPARE(memBudget.load(), before);
    QCOMPARE(former->entryCount(0), entries);

    QByteArray bad = good;
    bad[bad.size() - 8] = '\xFF'; // of the last but one entry
    QCOMPARE(captureFile().open(m_folder.write(settingsBlock() + bad), former.get()).outcome.result,
             FileResult::Damaged);
    former.reset();
    opened = captureFile().open(m_folder.write(settingsBlock() + good));
    QVERIFY(opened.outcome.isDone());
    QCOMPARE(opened.capture->entryCount(0), entries + 1);
}

void TstCaptureFile::aFileThatFitsInNoWayIsRefused()
{
    constexpr int entries = 2'000'000;
    memBudget = 50'000;
    const QString path =
        m_folder.write(settingsBlock() +
                       DataFileBytes(8).samples(2 * std::int64_t(entries)).block(0, 0, stairs(1, 2, entries)).bytes());
    const auto former = smallCapture();
    QCOMPARE(captureFile().open(path, former.get()).outcome.result, FileResult::NoMemory);
    QCOMPARE(former->entryCount(2), 3);
}

void TstCaptureFile::withoutACaptureNothingIsWritten()
{
    const QString path = m_folder.path(QStringLiteral("none.cxdat"));
    SmpData empty(8, 0);
    const ConfigDocument settings = settingsOf(settingsBlock());
    QCOMPARE(captureFile().save(path, empty, wholeOf(empty), settings).result, FileResult::NoCapture);
    const auto data = smallCapture();
    QCOMPARE(captureFile().save(path, *data, {std::vector<std::uint8_t>(16, 1), 0, 9}, settings).result,
             FileResult::NoCapture);
    QVERIFY(!QFile::exists(path));
}

void TstCaptureFile::settingsThatAreTooLongLeaveTheFile()
{
    const QString path = m_folder.write("old");
    const ConfigDocument settings =
        settingsOf(settingsBlock("<chnShowName1>" + QByteArray(40'000, 'n') + "</chnShowName1>"));
    const auto data = smallCapture();
    for (const FileOutcome &outcome :
         {captureFile().save(path, *data, wholeOf(*data), settings), CaptureFile::saveSettings(path, settings)}) {
        QCOMPARE(outcome.result, FileResult::SettingsTooLong);
        QCOMPARE(outcome.longest, QStringList{QStringLiteral("chnShowName1")});
        QCOMPARE(fileReason(outcome), QStringLiteral("The settings are too long. The longest are: chnShowName1"));
        QCOMPARE(m_folder.read(), QByteArray("old"));
    }
}

void TstCaptureFile::aSaveThatFailsTellsItsReason_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("result");
    QTest::newRow("no folder") << m_folder.path(QStringLiteral("absent/a.cxdat")) << int(FileResult::NoFolder);
    QTest::newRow("a folder") << m_folder.path(QStringLiteral(".")) << int(FileResult::NotPlain);
    QTest::newRow("no name") << QString() << int(FileResult::NoFolder);
}

void TstCaptureFile::aSaveThatFailsTellsItsReason()
{
    QFETCH(QString, path);
    QFETCH(int, result);
    const auto data = smallCapture();
    QCOMPARE(int(captureFile().save(path, *data, wholeOf(*data), settingsOf(settingsBlock())).result), result);
    QCOMPARE(int(captureFile().exportTo(path, *data, wholeOf(*data), ExportKind::Text).result), result);
    QCOMPARE(int(CaptureFile::saveSettings(path, settingsOf(settingsBlock())).result), result);
}

void TstCaptureFile::everyResultHasAReason()
{
    QStringList reasons;
    for (int result = int(FileResult::Cancelled); result <= int(FileResult::Failed); ++result) {
        reasons += fileReason({FileResult(result)});
        QVERIFY(!reasons.constLast().isEmpty());
    }
    QCOMPARE(reasons.removeDuplicates(), 0);
    QCOMPARE(fileReason({}), QString());
    QCOMPARE(fileWarning({}, {}), QString());
}

QTEST_GUILESS_MAIN(TstCaptureFile)
#include "tst_CaptureFile.moc"
