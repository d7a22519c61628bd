#include "corvanlux/analyzer/Decoder.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

#include <cstddef>
#include <cstring>
#include <string>

/// What decoders that are already out rely on: names, tables and layouts. A change here is a change of the promise in
/// docs/plugin-guide.md, and `symbols.txt` tells the reviewer what it is.
class TstBinaryInterface : public QObject {
    Q_OBJECT
private slots:
    void theLibraryExportsWhatTheListSays();
    void theTablesAreInTheirOrder();
    void theEnumerationsHaveTheirValues();
    void theLibrarysNameHasTheVersionOfTheHeader();
};

// Opaque pointers beside the table: of a class one, of an interface's subclass another one.
static_assert(sizeof(AnalyzerSettingInterfaceChannel) == 3 * sizeof(void *));
static_assert(sizeof(AnalyzerSettingInterfaceNumberList) == 3 * sizeof(void *));
static_assert(sizeof(AnalyzerSettingInterfaceInteger) == 3 * sizeof(void *));
static_assert(sizeof(AnalyzerSettingInterfaceText) == 3 * sizeof(void *));
static_assert(sizeof(AnalyzerSettingInterfaceBool) == 3 * sizeof(void *));

// What decoders derive from, have as members, or are handed and look into by themselves.
static_assert(sizeof(lux::DecoderBase) == 3 * sizeof(void *));
static_assert(sizeof(lux::Results) == 3 * sizeof(void *));
static_assert(sizeof(lux::Settings) == 3 * sizeof(void *));
static_assert(sizeof(lux::ChannelSetting) == sizeof(void *));
static_assert(sizeof(lux::IntegerSetting) == sizeof(void *));
static_assert(sizeof(lux::NumberListSetting) == sizeof(void *));
static_assert(sizeof(lux::TextSetting) == sizeof(void *));
static_assert(sizeof(lux::BoolSetting) == sizeof(void *));
static_assert(sizeof(lux::IntegerSetting::Range) == 8 && offsetof(lux::IntegerSetting::Range, most) == 4);
static_assert(offsetof(lux::Choice, number) == 0 && offsetof(lux::Choice, word) == 8);
static_assert(offsetof(lux::Choice, text) == 16 && offsetof(lux::Choice, toolTip) == 24 && sizeof(lux::Choice) == 32);
static_assert(sizeof(lux::ShortText) == 96);
static_assert(sizeof(lux::FrameText) == 32);
static_assert(sizeof(lux::FrameValues) == sizeof(void *));
static_assert(sizeof(lux::ExportWriter) == sizeof(void *));
static_assert(sizeof(lux::Simulation) == sizeof(void *));
static_assert(sizeof(lux::SimulationLine) == 16);

#ifdef __linux__
namespace {

// What a decoder overrides is not for others to name.
struct DecoderTable : lux::DecoderBase {
    using DecoderBase::decode;
    using DecoderBase::makeResults;
    using DecoderBase::simulate;
};
struct ResultsTable : lux::Results {
    using Results::columns;
    using Results::describe;
    using Results::exportFile;
    using Results::values;
};
struct SettingsTable : lux::Settings {
    using Settings::channelsMayBeShared;
    using Settings::check;
};

/// The index of a virtual operation in its table: a pointer to it holds the offset, plus 1.
template<class Operation>
int slotOf(Operation operation)
{
    std::ptrdiff_t word = 0;
    std::memcpy(&word, &operation, sizeof word);
    return int((word - 1) / std::ptrdiff_t(sizeof(void *)));
}

} // namespace
#endif

void TstBinaryInterface::theLibraryExportsWhatTheListSays()
{
#ifdef __SANITIZE_ADDRESS__
    QSKIP("the sanitizer's own symbols are among them");
#endif
    const QString nm = QStandardPaths::findExecutable(QStringLiteral("nm"));
    if (nm.isEmpty())
        QSKIP("needs nm");
    QProcess process;
    process.start(nm, {QStringLiteral("-DC"), QStringLiteral("--defined-only"), QStringLiteral(LUX_RUNTIME_FILE)});
    QVERIFY(process.waitForFinished());
    QStringList exported;
    for (const QString &line : QString::fromUtf8(process.readAllStandardOutput()).split(QLatin1Char('\n'))) {
        const int name = line.indexOf(QLatin1Char(' '), 17); // behind the address
        if (name > 0)
            exported << line.mid(name + 1).section(QStringLiteral("@@"), 0, 0);
    }
    exported.removeAll(QStringLiteral("ANALYZER_1"));
    exported.removeDuplicates();
    exported.sort();
    QFile list(QStringLiteral(LUX_SYMBOLS_FILE));
    QVERIFY(list.open(QIODevice::ReadOnly | QIODevice::Text));
    const QStringList promised = QString::fromUtf8(list.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString &name : promised)
        QVERIFY2(exported.contains(name), qPrintable(QStringLiteral("gone: ") + name));
    for (const QString &name : exported)
        QVERIFY2(promised.contains(name), qPrintable(QStringLiteral("not in symbols.txt: ") + name));
}

void TstBinaryInterface::theTablesAreInTheirOrder()
{
#ifdef __linux__
    // A virtual destructor takes the first two slots.
    QCOMPARE(slotOf(&Analyzer::RunWorker), 2);
    QCOMPARE(slotOf(&Analyzer::BuildSimulation), 3);
    QCOMPARE(slotOf(&Analyzer::NeededSampleRate), 4);
    QCOMPARE(slotOf(&Analyzer::GetAnalyzerVersion), 5);
    QCOMPARE(slotOf(&Analyzer::AnalyzerName), 6);
    QCOMPARE(slotOf(&Analyzer::NeedsRestart), 7);
    QCOMPARE(slotOf(&Analyzer::SetupResults), 8);
    QCOMPARE(slotOf(&AnalyzerSettings::ApplyInterfaces), 2);
    QCOMPARE(slotOf(&AnalyzerSettings::LoadText), 3);
    QCOMPARE(slotOf(&AnalyzerSettings::SaveText), 4);
    QCOMPARE(slotOf(&AnalyzerSettings::GetSettingBrief), 5);
    QCOMPARE(slotOf(&AnalyzerSettingInterface::GetType), 2);
    QCOMPARE(slotOf(&AnalyzerResults::BuildBubbleText), 2);
    QCOMPARE(slotOf(&AnalyzerResults::BuildExportFile), 3);
    QCOMPARE(slotOf(&AnalyzerResults::BuildTabularText), 4);
    QCOMPARE(slotOf(&AnalyzerResults::BuildMessageText), 5);
    QCOMPARE(slotOf(&AnalyzerResults::BuildGroupText), 6);
    QCOMPARE(slotOf(&AnalyzerResults::BuildFrameValues), 7);
    QCOMPARE(slotOf(&DecoderTable::decode), 9);
    QCOMPARE(slotOf(&DecoderTable::simulate), 10);
    QCOMPARE(slotOf(&DecoderTable::makeResults), 11);
    QCOMPARE(slotOf(&ResultsTable::describe), 8);
    QCOMPARE(slotOf(&ResultsTable::values), 9);
    QCOMPARE(slotOf(&ResultsTable::columns), 10);
    QCOMPARE(slotOf(&ResultsTable::exportFile), 11);
    QCOMPARE(slotOf(&SettingsTable::check), 6);
    QCOMPARE(slotOf(&SettingsTable::channelsMayBeShared), 7);
    QCOMPARE(slotOf(&ProgressManager::StartWorker), 0);
    QCOMPARE(slotOf(&ProgressManager::WorkerEnded), 1);
    QCOMPARE(slotOf(&ProgressManager::SetProgress), 2);
#else
    QSKIP("looks into pointers to virtual operations as Linux's compilers make them");
#endif
}

void TstBinaryInterface::theEnumerationsHaveTheirValues()
{
    QCOMPARE(int(AnalyzerInterfaceTypeId::Channel), 1);
    QCOMPARE(int(AnalyzerInterfaceTypeId::NumberList), 2);
    QCOMPARE(int(AnalyzerInterfaceTypeId::Integer), 3);
    QCOMPARE(int(AnalyzerInterfaceTypeId::Text), 4);
    QCOMPARE(int(AnalyzerInterfaceTypeId::Bool), 5);
    QCOMPARE(int(DisplayBase::Binary), 0);
    QCOMPARE(int(DisplayBase::Decimal), 1);
    QCOMPARE(int(DisplayBase::Hexadecimal), 2);
    QCOMPARE(int(DisplayBase::Ascii), 3);
    QCOMPARE(int(DisplayBase::AsciiHex), 4);
    QCOMPARE(int(BitState::Low), 0);
    QCOMPARE(int(MarkerType::Dot), 0);
    QCOMPARE(int(MarkerType::Zero), 11);
    QCOMPARE(int(DecodeStatus::Failed), 5);
    QCOMPARE(int(FrameValueType::Hex), 4);
}

void TstBinaryInterface::theLibrarysNameHasTheVersionOfTheHeader()
{
#ifdef __linux__
    const QString version = QStringLiteral(".so.%1").arg(LUX_ANALYZER_ABI);
    QVERIFY(QStringLiteral(LUX_RUNTIME_FILE).contains(version));
#else
    QSKIP("the library's name has no version");
#endif
}

QTEST_GUILESS_MAIN(TstBinaryInterface)
#include "tst_BinaryInterface.moc"
