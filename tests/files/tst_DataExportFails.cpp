#include "files/DataExported.h"
#include "files/FileSizeLimit.h"
#include "settings/Config.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"

#include <QFileInfo>
#include <QTest>

using Mode = DataFile::Mode;

namespace {

/// 99,999 transitions of channel 0, and 200,000 samples.
std::unique_ptr<SmpData> busyCapture()
{
    return CaptureBuilder(8).samples(200'000).channel(0, 0, stairs(1, 2, 99'999)).build();
}

/// Runs an export into `path` directly. @return what the job said; false when the file does not open
bool exportsTo(SmpData &data, Mode job, const QString &path, int room = -1)
{
    const auto select = allOf(data);
    DataFile file(&data);
    file.chnSelect = select.data();
    file.setRange(0, double(data.smpCount()));
    file.file.setFileName(path);
    const bool text = job == Mode::ExportText;
    const auto mode = QIODevice::WriteOnly | QIODevice::Truncate;
    (void)file.file.open(text ? mode | QIODevice::Text : mode);
#ifdef Q_OS_UNIX
    std::unique_ptr<FileSizeLimit> limit;
    if (room >= 0) {
        limit = std::make_unique<FileSizeLimit>(room);
    }
#endif
    const bool done = text ? file.exportText() : file.exportBinary();
    file.file.close();
    return done;
}

void bothJobs()
{
    QTest::addColumn<int>("job");
    QTest::newRow("binary") << int(Mode::ExportBinary);
    QTest::newRow("text") << int(Mode::ExportText);
}

} // namespace

/// Exports that cannot succeed.
class TstDataExportFails : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void anExportWithoutAClosedCaptureFails_data() { bothJobs(); }
    void anExportWithoutAClosedCaptureFails();
    void anExportToAFileThatDoesNotOpenFails_data();
    void anExportToAFileThatDoesNotOpenFails();
    void anExportToAFileOpenForReadingFails_data() { bothJobs(); }
    void anExportToAFileOpenForReadingFails();
    void aDiskThatIsFullAfterSomeBytesFailsTheExport_data();
    void aDiskThatIsFullAfterSomeBytesFailsTheExport();
    void aDeviceThatIsAlwaysFullFailsTheExport_data();
    void aDeviceThatIsAlwaysFullFailsTheExport();
    void aWriteThatComesShortStopsTheText();
    void aWriteThatComesShortStopsTheDump();
    void aHookThatSaysNoStopsTheTextAfterItsPiece();
    void aHookThatSaysNoStopsTheDumpAfterItsPiece_data();
    void aHookThatSaysNoStopsTheDumpAfterItsPiece();
};

void TstDataExportFails::initTestCase()
{
    memBudget = std::int64_t(4) << 30;
    configLoad();
}

void TstDataExportFails::anExportWithoutAClosedCaptureFails()
{
    QFETCH(int, job);
    const FileFolder folder;
    SmpData data(8, 0);
    QVERIFY(!exportsTo(data, Mode(job), folder.path(QStringLiteral("a"))));
    QCOMPARE(folder.read(QStringLiteral("a")), QByteArray());
    data.finish(0);
    QVERIFY(exportsTo(data, Mode(job), folder.path(QStringLiteral("a"))));
}

void TstDataExportFails::anExportToAFileThatDoesNotOpenFails_data()
{
    QTest::addColumn<int>("job");
    QTest::addColumn<QString>("name");
    for (const Mode job : {Mode::ExportBinary, Mode::ExportText}) {
        const char *kind = job == Mode::ExportText ? "text" : "binary";
        QTest::addRow("%s, no name", kind) << int(job) << QString();
        QTest::addRow("%s, a directory", kind) << int(job) << QStringLiteral("folder");
        QTest::addRow("%s, no such folder", kind) << int(job) << QStringLiteral("none/a.txt");
        QTest::addRow("%s, a file for a folder", kind) << int(job) << QStringLiteral("file/a.txt");
        QTest::addRow("%s, read-only folder", kind) << int(job) << QStringLiteral("locked/a.txt");
        QTest::addRow("%s, a folder that takes no files", kind) << int(job) << QStringLiteral("/proc/a.txt");
    }
}

void TstDataExportFails::anExportToAFileThatDoesNotOpenFails()
{
    QFETCH(int, job);
    QFETCH(QString, name);
    const QTemporaryDir place;
    QDir dir(place.path());
    QVERIFY(dir.mkdir(QStringLiteral("folder")) && dir.mkdir(QStringLiteral("locked")));
    QFile file(dir.filePath(QStringLiteral("file")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    const QString locked = dir.filePath(QStringLiteral("locked"));
    QVERIFY(QFile::setPermissions(locked, QFileDevice::ReadOwner | QFileDevice::ExeOwner));
    if (name.startsWith(QStringLiteral("locked")) && QFileInfo(locked).isWritable()) {
        QSKIP("this user may write everywhere");
    }
    if (name.startsWith(QStringLiteral("/proc")) && !QFileInfo(QStringLiteral("/proc/self")).exists()) {
        QSKIP("this system has no such folder");
    }
    const auto data = busyCapture();
    QVERIFY(!exportsTo(*data, Mode(job), name.isEmpty() ? name : dir.filePath(name)));
    QVERIFY(QFile::setPermissions(locked, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner));
}

void TstDataExportFails::anExportToAFileOpenForReadingFails()
{
    QFETCH(int, job);
    const FileFolder folder;
    const auto data = busyCapture();
    DataFile file(data.get());
    file.setRange(0, 1000);
    file.file.setFileName(folder.write("as it was"));
    QVERIFY(file.file.open(QIODevice::ReadOnly));
    QVERIFY(!(Mode(job) == Mode::ExportText ? file.exportText() : file.exportBinary()));
    file.file.close();
    QCOMPARE(folder.read(), QByteArray("as it was"));
}

void TstDataExportFails::aDiskThatIsFullAfterSomeBytesFailsTheExport_data()
{
    QTest::addColumn<int>("job");
    QTest::addColumn<int>("room"); // bytes
    // The dump has 200,000 bytes, the text 96 for the header and 36 for each of 100,000 lines.
    for (const int room : {0, 1, 100'000, 199'999}) {
        QTest::addRow("binary, %d", room) << int(Mode::ExportBinary) << room;
    }
    for (const int room : {0, 50, 95, 96, 97, 100'000, 3'600'000, 3'600'095}) {
        QTest::addRow("text, %d", room) << int(Mode::ExportText) << room;
    }
}

void TstDataExportFails::aDiskThatIsFullAfterSomeBytesFailsTheExport()
{
#ifdef Q_OS_UNIX
    QFETCH(int, job);
    QFETCH(int, room);
    const FileFolder folder;
    const QString name = QStringLiteral("a");
    const auto data = busyCapture();
    QVERIFY(!exportsTo(*data, Mode(job), folder.path(name), room));
    QVERIFY(folder.read(name).size() <= room);
    const int whole = Mode(job) == Mode::ExportText ? 3'600'096 : 200'000;
    QVERIFY(exportsTo(*data, Mode(job), folder.path(name), whole)); // then it fits
    QCOMPARE(folder.read(name).size(), whole);
#else
    QSKIP("the size of files cannot be limited here");
#endif
}

void TstDataExportFails::aDeviceThatIsAlwaysFullFailsTheExport_data()
{
    QTest::addColumn<int>("job");
    QTest::addColumn<int>("samples");
    for (const int samples : {1, 1000, 1'000'000}) {
        QTest::addRow("binary, %d", samples) << int(Mode::ExportBinary) << samples;
        QTest::addRow("text, %d", samples) << int(Mode::ExportText) << samples;
    }
}

void TstDataExportFails::aDeviceThatIsAlwaysFullFailsTheExport()
{
    QFETCH(int, job);
    QFETCH(int, samples);
    const QString full = QStringLiteral("/dev/full");
    if (!QFile::exists(full) || QFileInfo(full).isFile()) {
        QSKIP("this system has no device that is always full");
    }
    const auto data = CaptureBuilder(8).samples(samples).channel(0, 0, stairs(1, 1, samples - 1)).build();
    QVERIFY(!exportsTo(*data, Mode(job), full));
}

void TstDataExportFails::aWriteThatComesShortStopsTheText()
{
    const auto data = busyCapture();
    const auto select = allOf(*data);
    const QByteArray header = textExportHeader(select.data(), 8);
    QCOMPARE(header.size(), 96);
    for (const qint64 room : {0, 95, 96, 1000, textExportPiece, textExportPiece + 96, 3'600'095}) {
        SinkDevice out(room);
        QCOMPARE(writeTextExport(out, *data, {select.data(), 0, 199'999}, header), DataBlocksResult::DeviceError);
        QCOMPARE(out.taken, room);
    }
    SinkDevice out(3'600'096);
    QCOMPARE(writeTextExport(out, *data, {select.data(), 0, 199'999}, header), DataBlocksResult::Done);
}

void TstDataExportFails::aWriteThatComesShortStopsTheDump()
{
    const auto data = CaptureBuilder(8).samples(500'000).channel(0, 0, {1, 250'000}).build();
    const auto select = allOf(*data);
    for (const qint64 room : {0, 1, dataWritePiece - 1, dataWritePiece, 2 * dataWritePiece, 499'999}) {
        SinkDevice out(room);
        QCOMPARE(writeBinaryExport(out, *data, {select.data(), 0, 499'999}), DataBlocksResult::DeviceError);
        QCOMPARE(out.taken, room);
    }
    SinkDevice out(500'000);
    QCOMPARE(writeBinaryExport(out, *data, {select.data(), 0, 499'999}), DataBlocksResult::Done);
}

void TstDataExportFails::aHookThatSaysNoStopsTheTextAfterItsPiece()
{
    const auto data = busyCapture();
    const auto select = allOf(*data);
    SinkDevice out(std::int64_t(1) << 40);
    std::vector<std::int64_t> calls;
    const auto result = writeTextExport(out, *data, {select.data(), 0, 199'999}, {}, [&calls](std::int64_t done) {
        calls.push_back(done);
        return calls.size() < 3;
    });
    QCOMPARE(result, DataBlocksResult::Stopped);
    QCOMPARE(calls.size(), std::size_t(3));
    QCOMPARE(out.taken, 36 * calls.back()); // a line for the first sample, which is before the first transition
    QVERIFY(out.taken >= 3 * textExportPiece && out.taken < 3 * textExportPiece + 3 * 36);
}

void TstDataExportFails::aHookThatSaysNoStopsTheDumpAfterItsPiece_data()
{
    QTest::addColumn<qint64>("samples");
    QTest::newRow("ten thousand million quiet samples") << qint64(10'000'000'000);
    QTest::newRow("longest capture") << qint64(dataFileMax);
}

void TstDataExportFails::aHookThatSaysNoStopsTheDumpAfterItsPiece()
{
    QFETCH(qint64, samples);
    const auto data = CaptureBuilder(32).samples(samples).channel(3, 1).build();
    const auto select = allOf(*data);
    SinkDevice out(std::int64_t(1) << 60);
    std::vector<std::int64_t> calls;
    const auto result = writeBinaryExport(out, *data, {select.data(), 0, samples - 1}, [&calls](std::int64_t done) {
        calls.push_back(done);
        return calls.size() < 3;
    });
    QCOMPARE(result, DataBlocksResult::Stopped);
    QCOMPARE(calls, (std::vector<std::int64_t>{51'195, 102'390, 153'585}));
    QCOMPARE(out.taken, 3 * dataWritePiece);
}

QTEST_GUILESS_MAIN(TstDataExportFails)
#include "tst_DataExportFails.moc"
