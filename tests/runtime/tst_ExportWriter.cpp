#include "runtime/ReaderDesk.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <array>
#include <atomic>
#include <memory>
#include <thread>

namespace {

/// Results whose export is the test's.
class ExportResults : public lux::Results {
public:
    using Steps = std::function<void(const ExportResults &, lux::ExportWriter &, std::uint32_t)>;
    ExportResults() = default;
    explicit ExportResults(Steps exportSteps) : steps(std::move(exportSteps)) {}
    ~ExportResults() override { internalsJoin(); }
    void frames(lux::ExportWriter &out) const { exportFrames(out); }
    Steps steps;

protected:
    void describe(const FrameData &frame, lux::FrameText &out) const override
    {
        out.add("Value \"", out.number(frame.data, 8), "\", seen");
    }
    void values(const FrameData &frame, lux::FrameValues &out) const override
    {
        out.kind("byte").number("v", frame.data).none("crc");
    }
    [[nodiscard]] std::span<const char *const> columns() const override
    {
        static constexpr const char *names[] = {"v", "crc", "absent"};
        return names;
    }
    void exportFile(lux::ExportWriter &out, std::uint32_t optionId) const override
    {
        if (steps)
            steps(*this, out, optionId);
        else
            exportFrames(out);
    }

private:
    void internalsJoin() { StartExportThread(nullptr, DisplayBase::Binary, 0); }
};

std::atomic<bool> settingsLive{false};
std::atomic<bool> exportRuns{false};
std::atomic<bool> exportOutlivedSettings{false};
std::atomic<bool> exportOutlivedResults{false};
std::atomic<bool> resultsOutlivedSettings{false};

class MortalSettings : public lux::Settings {
public:
    MortalSettings() { settingsLive = true; }
    MortalSettings(const MortalSettings &) = delete;
    MortalSettings &operator=(const MortalSettings &) = delete;
    ~MortalSettings() override { settingsLive = false; }
};

/// Its export goes on until it is cancelled.
class MortalResults : public lux::Results {
public:
    explicit MortalResults(const MortalSettings & /*settings*/) {}
    MortalResults(const MortalResults &) = delete;
    MortalResults &operator=(const MortalResults &) = delete;
    ~MortalResults() override
    {
        resultsOutlivedSettings = !settingsLive;
        exportOutlivedResults = exportRuns.load();
    }

protected:
    void describe(const FrameData & /*frame*/, lux::FrameText & /*out*/) const override {}
    void values(const FrameData & /*frame*/, lux::FrameValues & /*out*/) const override {}
    void exportFile(lux::ExportWriter &out, std::uint32_t /*optionId*/) const override
    {
        const struct AtEnd {
            ~AtEnd()
            {
                exportOutlivedSettings = !settingsLive;
                exportRuns = false;
            }
        } atEnd;
        exportRuns = true;
        for (;;)
            out.progress(512, 1024);
    }
};

class MortalDecoder final : public lux::Decoder<MortalSettings, MortalResults> {
public:
    MortalDecoder() : Decoder("Mortal") {}

protected:
    void decode() override {}
};

} // namespace

class TstExportWriter : public QObject {
    Q_OBJECT
private slots:
    void textHasOneLineAFrame();
    void csvHasColumnsAndQuotes();
    void binaryPiecesAreWrittenInBothOrders();
    void aHeadIsPatchedBehindTheBuffer();
    void secondsTellSamplesApart();
    void aCancelledExportLeavesNoFile();
    void aFileThatCannotBeOpenedIsToldAsFailed();
    void aFullDiskIsToldAsFailed();
    void anExceptionOfTheDecoderIsToldAsFailed();
    void theLibrarysThreadWritesTheFile();
    void anExportThatTellsNoProgressIsWholeAtItsEnd();
    void anExceptionThatIsNoneOfTheStandardsIsToldByTheLibrarysThread();
    void theResultsOfADecoderGoBeforeItsSettings();

private:
    [[nodiscard]] QByteArray written(const ExportResults::Steps &steps, const char *name = "out.bin");
    [[nodiscard]] QString path(const char *name) const { return m_folder.filePath(QString::fromLatin1(name)); }
    QTemporaryDir m_folder;
};

namespace {

std::string errorOf(const AnalyzerResults &results)
{
    char text[300];
    results.GetExportError(text, sizeof text);
    return text;
}

void addFrames(AnalyzerResults &results)
{
    for (int i = 0; i < 3; ++i) {
        FrameData frame;
        frame.firstSample = 10 * i;
        frame.lastSample = 10 * i + 5;
        frame.data = std::uint64_t(i);
        results.AddFrame(frame);
    }
}

} // namespace

QByteArray TstExportWriter::written(const ExportResults::Steps &steps, const char *name)
{
    ExportResults results(steps);
    addFrames(results);
    results.StartExportThread(nullptr, DisplayBase::Decimal, 0);
    results.BuildExportFile(path(name).toLocal8Bit().constData(), DisplayBase::Decimal, 0);
    if (results.GetProgress() != 1.0 || !errorOf(results).empty())
        return "failed";
    QFile file(path(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : "absent";
}

void TstExportWriter::textHasOneLineAFrame()
{
    QCOMPARE(written({}, "out.txt"),
             QByteArray("0.0\tValue \"0\", seen\n10.0\tValue \"1\", seen\n20.0\tValue \"2\", seen\n"));
}

void TstExportWriter::csvHasColumnsAndQuotes()
{
    const QByteArray text = written({}, "out.CSV");
    QCOMPARE(text.split('\n').at(0), QByteArray("time_s,first_sample,last_sample,kind,v,crc,absent,text"));
    QCOMPARE(text.split('\n').at(2), QByteArray("10.0,10,15,byte,1,,,\"Value \"\"1\"\", seen\""));
    QCOMPARE(text.count('\n'), 4);
}

void TstExportWriter::binaryPiecesAreWrittenInBothOrders()
{
    const QByteArray bytes = written([](const ExportResults &, lux::ExportWriter &out, std::uint32_t) {
        out.little(0x010203, 4);
        out.big(0x010203, 4);
        out.byte(9);
        out.write(std::array<std::uint8_t, 2>{7, 8});
    });
    QCOMPARE(bytes, QByteArray::fromHex("03020100000102030907"
                                        "08"));
}

void TstExportWriter::aHeadIsPatchedBehindTheBuffer()
{
    const QByteArray bytes = written([](const ExportResults &, lux::ExportWriter &out, std::uint32_t) {
        out.write("head");
        out.write(std::string(200000, 'x'));
        out.patch(1, std::array<std::uint8_t, 2>{'A', 'B'});
        out.patch(300000, std::array<std::uint8_t, 2>{'A', 'B'}); // not written yet: passed over
        out.write("end");
        QCOMPARE(out.size(), std::uint64_t(200007));
    });
    QCOMPARE(bytes.size(), 200007);
    QCOMPARE(bytes.left(5), QByteArray("hABdx"));
    QCOMPARE(bytes.right(4), QByteArray("xend"));
}

void TstExportWriter::secondsTellSamplesApart()
{
    TestCapture capture(3000000, 1000000000);
    std::string text;
    const auto desk = readerDesk::decode(capture, [](readerDesk::ScriptDecoder &decoder) {
        decoder.out().add({.firstSample = 3000001, .lastSample = 3000001});
    });
    const QString file = path("seconds.txt");
    desk->results().StartExportThread(nullptr, DisplayBase::Decimal, 0);
    desk->results().BuildExportFile(file.toLocal8Bit().constData(), DisplayBase::Hexadecimal, 0);
    QFile read(file);
    QVERIFY(read.open(QIODevice::ReadOnly));
    QCOMPARE(read.readAll(), QByteArray("1.0000003\tFrame 0x00\n"));
}

void TstExportWriter::aCancelledExportLeavesNoFile()
{
    bool passed = false;
    ExportResults results([&passed](const ExportResults &self, lux::ExportWriter &out, std::uint32_t) {
        out.write(std::string(100000, 'x'));
        const_cast<ExportResults &>(self).CancelExport();
        out.progress(1, 100);
        passed = true;
    });
    results.StartExportThread(nullptr, DisplayBase::Decimal, 0);
    results.BuildExportFile(path("cancelled").toLocal8Bit().constData(), DisplayBase::Decimal, 0);
    QVERIFY(!passed);
    QVERIFY(!QFile::exists(path("cancelled")));
    QCOMPARE(results.GetProgress(), 1.0);
    QCOMPARE(errorOf(results), std::string());
}

void TstExportWriter::aFileThatCannotBeOpenedIsToldAsFailed()
{
    ExportResults results;
    results.BuildExportFile(path("no/such/folder").toLocal8Bit().constData(), DisplayBase::Decimal, 0);
    QCOMPARE(results.GetProgress(), AnalyzerResults::exportFailed);
    QVERIFY(!errorOf(results).empty());
    results.StartExportThread(nullptr, DisplayBase::Decimal, 0); // the next begins anew
    QCOMPARE(results.GetProgress(), 0.0);
    QCOMPARE(errorOf(results), std::string());
}

void TstExportWriter::aFullDiskIsToldAsFailed()
{
#ifdef Q_OS_LINUX
    ExportResults results([](const ExportResults &, lux::ExportWriter &out, std::uint32_t) { out.write("text"); });
    results.BuildExportFile("/dev/full", DisplayBase::Decimal, 0);
    QCOMPARE(results.GetProgress(), AnalyzerResults::exportFailed);
    QVERIFY(!errorOf(results).empty());
    QVERIFY(QFile::exists(QStringLiteral("/dev/full"))); // only files are removed
#else
    QSKIP("needs /dev/full");
#endif
}

void TstExportWriter::anExceptionOfTheDecoderIsToldAsFailed()
{
    ExportResults results([](const ExportResults &, lux::ExportWriter &out, std::uint32_t) {
        out.write("text");
        throw std::runtime_error("no such option");
    });
    results.BuildExportFile(path("thrown").toLocal8Bit().constData(), DisplayBase::Decimal, 0);
    QCOMPARE(results.GetProgress(), AnalyzerResults::exportFailed);
    QCOMPARE(errorOf(results), std::string("no such option"));
    QVERIFY(!QFile::exists(path("thrown")));
}

void TstExportWriter::theLibrarysThreadWritesTheFile()
{
    std::atomic<bool> go{false};
    ExportResults results([&go](const ExportResults &, lux::ExportWriter &out, std::uint32_t option) {
        while (!go)
            out.progress(512, 1024);
        out.progress(1024, 2048);
        out.line("option ", lux::formatCount(option));
    });
    results.StartExportThread(path("thread").toLocal8Bit().constData(), DisplayBase::Decimal, 4);
    QVERIFY(results.GetProgress() < 1.0);
    go = true;
    QTRY_COMPARE(results.GetProgress(), 1.0);
    QFile file(path("thread"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("option 4\n"));

    go = false; // one that only a cancel ends
    results.StartExportThread(path("endless").toLocal8Bit().constData(), DisplayBase::Decimal, 0);
    results.CancelExport();
    QTRY_COMPARE(results.GetProgress(), 1.0);
    QVERIFY(!QFile::exists(path("endless")));

    go = true; // and the one behind a cancelled one
    results.StartExportThread(path("again").toLocal8Bit().constData(), DisplayBase::Decimal, 0);
    QTRY_COMPARE(results.GetProgress(), 1.0);
    QVERIFY(QFile::exists(path("again")));
}

namespace {

/// Written to the plain interface: it knows nothing of the library's progress.
class PlainResults final : public AnalyzerResults {
public:
    void BuildBubbleText(std::uint64_t, Channel &, DisplayBase) override {}
    void BuildExportFile(const char *, DisplayBase, std::uint32_t) override { ++written; }
    void BuildTabularText(std::uint64_t, DisplayBase) override {}
    void BuildMessageText(std::uint64_t, DisplayBase) override {}
    void BuildGroupText(std::uint64_t, DisplayBase) override {}
    std::atomic<int> written{0};
};

} // namespace

void TstExportWriter::anExportThatTellsNoProgressIsWholeAtItsEnd()
{
    PlainResults results;
    results.StartExportThread(path("plain").toLocal8Bit().constData(), DisplayBase::Decimal, 0);
    QTRY_COMPARE(results.GetProgress(), 1.0);
    QCOMPARE(results.written.load(), 1);
    results.StartExportThread(nullptr, DisplayBase::Decimal, 0); // waits for the thread
}

void TstExportWriter::anExceptionThatIsNoneOfTheStandardsIsToldByTheLibrarysThread()
{
    ExportResults results([](const ExportResults &, lux::ExportWriter &out, std::uint32_t) {
        out.write("text");
        throw 5;
    });
    results.StartExportThread(path("number").toLocal8Bit().constData(), DisplayBase::Decimal, 0);
    QTRY_COMPARE(results.GetProgress(), AnalyzerResults::exportFailed);
    QVERIFY(!errorOf(results).empty());
    QVERIFY(!QFile::exists(path("number")));
}

void TstExportWriter::theResultsOfADecoderGoBeforeItsSettings()
{
    auto decoder = std::make_unique<MortalDecoder>();
    decoder->SetupResults();
    AnalyzerResults *results = nullptr;
    QVERIFY(decoder->GetAnalyzerResults(&results));
    results->StartExportThread(path("mortal").toLocal8Bit().constData(), DisplayBase::Decimal, 0);
    QTRY_VERIFY(exportRuns);
    decoder.reset();
    QVERIFY(!settingsLive);
    QVERIFY(!exportOutlivedSettings);
    QVERIFY(!exportOutlivedResults);
    QVERIFY(!resultsOutlivedSettings);
}

QTEST_GUILESS_MAIN(TstExportWriter)
#include "tst_ExportWriter.moc"
