#include "support/PluginChecks.h"
#include "support/PluginFiles.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <functional>
#include <random>
#include <set>

using pluginChecks::Chooser;

/// What the program expects of every decoder, asked of each that lies in the build's folder of plug-ins: one row each.
class TstPluginContract : public QObject {
    Q_OBJECT
private slots:
    void theFolderHasPlugins();
    void aPluginHasTheFourEntryPoints_data() { plugins(); }
    void aPluginHasTheFourEntryPoints();
    void settingsHaveKeysTitlesAndRanges_data() { plugins(); }
    void settingsHaveKeysTitlesAndRanges();
    void valuesAreTakenInTheSpellingsOfTheField_data();
    void valuesAreTakenInTheSpellingsOfTheField();
    void everySettingHasAToolTip_data() { plugins(); }
    void everySettingHasAToolTip();
    void settingsComeBackFromTheirText_data() { plugins(); }
    void settingsComeBackFromTheirText();
    void operationsMayBeCalledInAnyOrder_data() { plugins(); }
    void operationsMayBeCalledInAnyOrder();
    void extremeCapturesAreDecoded_data() { plugins(); }
    void extremeCapturesAreDecoded();
    void aCaptureWithoutTheChannelsIsRefusedWithASentence_data() { plugins(); }
    void aCaptureWithoutTheChannelsIsRefusedWithASentence();
    void noiseGivesFramesInOrderWithTexts_data() { plugins(); }
    void noiseGivesFramesInOrderWithTexts();
    void storedTextsOfOtherVersionsAreTakenAsFarAsTheyAreKnown_data() { plugins(); }
    void storedTextsOfOtherVersionsAreTakenAsFarAsTheyAreKnown();
    void storedTextsThatWereEditedAreHarmless_data() { plugins(); }
    void storedTextsThatWereEditedAreHarmless();
    void aStopEndsTheDecodeAtAnyTime_data() { plugins(); }
    void aStopEndsTheDecodeAtAnyTime();
    void twoAtOnceDecodeAsOneAlone_data() { plugins(); }
    void twoAtOnceDecodeAsOneAlone();
    void theSimulationIsDecoded_data() { plugins(); }
    void theSimulationIsDecoded();
    void theSimulationIsTheSameHoweverItIsCut_data() { plugins(); }
    void theSimulationIsTheSameHoweverItIsCut();
    void positionsAreWiderThan32Bits_data() { plugins(); }
    void positionsAreWiderThan32Bits();
    void everyExportIsWrittenAndCancelled_data() { plugins(); }
    void everyExportIsWrittenAndCancelled();

private:
    void plugins() const;
    [[nodiscard]] const PluginFile &plugin() const;

    const std::vector<PluginFile> m_plugins = pluginsIn(QStringLiteral(LUX_PLUGIN_FOLDER));
};

namespace {

Chooser seeded(std::uint32_t seed)
{
    return [random = std::make_shared<std::mt19937>(seed)](std::uint32_t below) {
        return below == 0 ? 0 : (*random)() % below;
    };
}

/// A desk whose decoder has its channels, and else its defaults.
std::unique_ptr<DecodeDesk> connected(const PluginFile &plugin)
{
    auto desk = std::make_unique<DecodeDesk>(plugin.make());
    pluginChecks::connectChannels(*desk->analyzer);
    return desk;
}

/// A rate in Hz at which the decoder's present settings can be simulated and decoded with ease.
std::int64_t easyRate(Analyzer &analyzer)
{
    return std::max<std::int64_t>(std::int64_t(analyzer.NeededSampleRate()) * 4, 20000000);
}

/// @param from  the sample from which positions are counted, but for that of what the capture begins with
std::vector<std::string> framesOf(const DecodeDesk &desk, std::int64_t from = 0)
{
    std::vector<std::string> all;
    for (const DecodedFrame &frame : desk.frames()) {
        const std::int64_t first = frame.first > 0 ? frame.first - from : 0;
        all.push_back(std::to_string(first) + ' ' + std::to_string(frame.last - from) + ' ' + frame.summary());
    }
    return all;
}

/// Stops its decoder at a report of progress.
class StoppingProgress final : public ProgressManager {
public:
    StoppingProgress(Analyzer &analyzer, int reports) : m_analyzer(analyzer), m_reports(reports) {}
    void StartWorker() override {}
    void WorkerEnded() override { ++ended; }
    void SetProgress(double /*progress*/) override
    {
        if (m_reports-- == 0)
            m_analyzer.StopWorkerThread();
    }
    int ended = 0;

private:
    Analyzer &m_analyzer;
    int m_reports;
};

void runWith(DecodeDesk &desk, TestCapture &capture, ProgressManager &progress)
{
    desk.analyzer->Init(&capture.device(), nullptr, &progress);
    desk.analyzer->SetupResults();
    desk.analyzer->InitialWorkerThread();
    desk.analyzer->StartProcessing();
    desk.analyzer->DecodeToEnd();
}

} // namespace

void TstPluginContract::plugins() const
{
    QTest::addColumn<int>("index");
    for (std::size_t i = 0; i < m_plugins.size(); ++i)
        QTest::newRow(m_plugins[i].name.c_str()) << int(i);
}

const PluginFile &TstPluginContract::plugin() const
{
    return m_plugins[std::size_t(*static_cast<int *>(QTest::qData("index", QMetaType::Int)))];
}

void TstPluginContract::theFolderHasPlugins()
{
    constexpr std::size_t own = 28; // the decoders that come with the program
    QVERIFY(m_plugins.size() >= own);
}

void TstPluginContract::aPluginHasTheFourEntryPoints()
{
    const PluginFile &file = plugin();
    QVERIFY(file.create != nullptr);
    QVERIFY(file.destroy != nullptr);
    QVERIFY(file.displayName != nullptr);
    QVERIFY(file.models != nullptr);
    Analyzer *analyzer = file.create();
    QVERIFY(analyzer != nullptr);
    QVERIFY(!std::string(analyzer->AnalyzerName()).empty());
    QCOMPARE(std::string(file.displayName()), std::string(analyzer->AnalyzerName()));
    QVERIFY(!std::string(analyzer->GetAnalyzerVersion()).empty());
    QVERIFY(std::string(file.models()).find_first_not_of("0123456789,") == std::string::npos);
    file.destroy(analyzer);
}

void TstPluginContract::settingsHaveKeysTitlesAndRanges()
{
    const auto analyzer = plugin().make();
    const AnalyzerSettings &settings = *analyzer->GetAnalyzerSettings();
    QVERIFY(settings.GetChannelsCount() > 0);
    std::set<std::string> keys;
    for (std::uint32_t i = 0; i < settings.GetSettingsInterfacesCount(); ++i) {
        AnalyzerSettingInterface *face = settings.GetSettingsInterface(i);
        const std::string key = face->GetKey();
        QVERIFY2(!key.empty() && key.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_") == std::string::npos,
                 key.c_str());
        QVERIFY2(keys.insert(key).second, key.c_str());
        QCOMPARE(face->GetType() == AnalyzerInterfaceTypeId::Channel, i < settings.GetChannelsCount());
        if (auto *list = dynamic_cast<AnalyzerSettingInterfaceNumberList *>(face); list != nullptr) {
            QVERIFY2(list->GetListboxNumbersCount() > 0, key.c_str());
        } else if (auto *integer = dynamic_cast<AnalyzerSettingInterfaceInteger *>(face); integer != nullptr) {
            QVERIFY2(integer->GetMin() <= integer->GetInteger() && integer->GetInteger() <= integer->GetMax(),
                     key.c_str());
        }
        const auto *box = dynamic_cast<AnalyzerSettingInterfaceBool *>(face);
        QVERIFY2(*face->GetTitle() != '\0' || (box != nullptr && *box->GetCheckBoxText() != '\0'), key.c_str());
        const std::string shown = face->GetAsText();
        QVERIFY2(face->SetFromText(shown.c_str()), (key + '=' + shown).c_str());
        QCOMPARE(std::string(face->GetAsText()), shown);
    }
    QVERIFY(pluginChecks::connectChannels(*analyzer));
}

void TstPluginContract::valuesAreTakenInTheSpellingsOfTheField_data()
{
    QTest::addColumn<QString>("plugin");
    QTest::addColumn<QString>("values");
    QTest::addColumn<QString>("word"); // none where they are refused
    const auto row = [](const char *plugin, const char *values, const char *word) {
        QTest::newRow(qPrintable(QString::fromLatin1(plugin) + QLatin1Char(' ') + QLatin1String(values)))
            << plugin << values << word;
    };
    for (const char *plugin : {"UART", "SPI", "I2S", "JTAG", "Manchester"}) {
        row(plugin, "bit_order=lsb-first LSB", "lsb");
        row(plugin, "bit_order=msb-first Msb", "msb");
    }
    for (const char *plugin : {"UART", "Modbus"}) {
        row(plugin, "parity=mark one", "mark");
        row(plugin, "parity=space zero", "space");
        row(plugin, "stop_bits=1 1.0", "1");
        row(plugin, "stop_bits=2 2.0", "2");
        row(plugin, "stop_bits=4 8 0.25", "");
        row(plugin, "parity=ignore ignored Ignore", "ignore");
        row(plugin, "parity=0 1 2", "");
    }
    row("UART", "stop_bits=0.5 .5 0.50", "0.5");
    row("Modbus", "stop_bits=0.5", "");
    for (const char *plugin : {"SPI", "Parallel8080", "Parallel6800"}) {
        row(plugin, "cs_polarity=low active-low 0", "low");
        row(plugin, "cs_polarity=high active-high 1", "high");
    }
    row("Parallel", "enable_polarity=active-high 1", "high");
    row("Parallel", "clock_edge=either both", "either");
    row("SPI", "cpha=1 1.0 true", "1");
    row("Manchester", "convention=802.3 IEEE ieee-802.3", "802.3");
    row("Manchester", "convention=thomas Thomas ge-thomas", "thomas");
    row("Manchester", "decodeas=manchester", "Manchester");
    row("Manchester", "polarity=active-high", "high");
    row("IRNEC", "polarity=active-low", "low");
    row("IRNEC", "carrier=true on", "on");
    row("LIN", "version=1 1.3", "1");
    row("LIN", "version=2.0 2.1 2.2A", "2");
    row("I2S", "format=I2S", "i2s");
    row("I2S", "format=left-justified", "left");
    row("I2S", "format=dsp_a", "pcm");
    row("1-Wire", "overdrive=no 0 standard", "false");
    row("1-Wire", "overdrive=yes 1 overdrive", "true");
    row("USB", "speed=low-speed", "low");
    row("USB", "speed=full-speed", "full");
    row("QSPI", "mode=1-1-4", "114");
    row("LCD", "controller=HD44780", "hd44780");
    row("Modbus", "mode=RTU", "rtu");
    row("SDIO", "width=8", "");
}

void TstPluginContract::valuesAreTakenInTheSpellingsOfTheField()
{
    QFETCH(QString, plugin);
    QFETCH(QString, values);
    QFETCH(QString, word);
    const auto found = std::find_if(m_plugins.begin(), m_plugins.end(),
                                    [&](const PluginFile &file) { return plugin == QLatin1String(file.name.c_str()); });
    QVERIFY(found != m_plugins.end());
    const auto analyzer = found->make();
    const AnalyzerSettings &settings = *analyzer->GetAnalyzerSettings();
    const std::string key = values.section(QLatin1Char('='), 0, 0).toStdString();
    for (std::uint32_t i = 0; i < settings.GetSettingsInterfacesCount(); ++i) {
        AnalyzerSettingInterface *face = settings.GetSettingsInterface(i);
        for (const QString &value : values.section(QLatin1Char('='), 1).split(QLatin1Char(' '))) {
            if (key == face->GetKey()) {
                QCOMPARE(face->SetFromText(value.toLatin1().constData()), !word.isEmpty());
                QVERIFY(word.isEmpty() || word == QLatin1String(face->GetAsText()));
            }
        }
    }
}

void TstPluginContract::everySettingHasAToolTip()
{
    const auto analyzer = plugin().make();
    const AnalyzerSettings &settings = *analyzer->GetAnalyzerSettings();
    for (std::uint32_t i = 0; i < settings.GetSettingsInterfacesCount(); ++i) {
        const AnalyzerSettingInterface *face = settings.GetSettingsInterface(i);
        QVERIFY2(*face->GetToolTip() != '\0', face->GetKey());
    }
}

void TstPluginContract::settingsComeBackFromTheirText()
{
    const auto analyzer = plugin().make();
    const Chooser random = seeded(3);
    pluginChecks::connectChannels(*analyzer);
    for (int i = 0; i < 300; ++i) {
        const std::string before = analyzer->GetAnalyzerSettings()->SaveText();
        if (!pluginChecks::chooseSettings(*analyzer, random)) {
            QVERIFY(!std::string(analyzer->GetAnalyzerSettings()->GetSaveErrorMessage()).empty());
            QCOMPARE(std::string(analyzer->GetAnalyzerSettings()->SaveText()), before);
        }
        const std::string saved = analyzer->GetAnalyzerSettings()->SaveText();
        QVERIFY2(saved.find_first_of(";\r\n") == std::string::npos, saved.c_str());
        const auto other = plugin().make();
        other->GetAnalyzerSettings()->LoadText(saved.c_str());
        QCOMPARE(std::string(other->GetAnalyzerSettings()->SaveText()), saved);
        QVERIFY(other->GetAnalyzerSettings()->GetSettingBrief() != nullptr);
    }
}

void TstPluginContract::operationsMayBeCalledInAnyOrder()
{
    const Chooser random = seeded(4);
    const auto capture = pluginChecks::noise(random, 10000000, 20000);
    const QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("export")).toStdString();
    DecodeDesk desk(plugin().make());
    Analyzer &analyzer = *desk.analyzer;
    AnalyzerSettings &settings = *analyzer.GetAnalyzerSettings();
    std::int64_t rate = 10000000;
    SimulationChannelDescriptor *channels = nullptr;
    Channel channel(0, 1);
    const std::vector<std::function<void()>> operations{
        [&] { (void)analyzer.NeededSampleRate(); },
        [&] { (void)analyzer.GetAnalyzerVersion(); },
        [&] { (void)analyzer.AnalyzerName(); },
        [&] { (void)analyzer.NeedsRestart(); },
        [&] { analyzer.SetupResults(); },
        [&] { analyzer.Init(nullptr, reinterpret_cast<ConditionManager *>(&rate), nullptr); },
        [&] { (void)analyzer.BuildSimulation(random(5000), std::uint32_t(rate), &channels); },
        [&] { analyzer.StopWorkerThread(); },
        [&] { desk.run(*capture); },
        [&] { analyzer.InitialWorkerThread(); },
        [&] { (void)pluginChecks::chooseSettings(analyzer, random); },
        [&] { (void)pluginChecks::connectChannels(analyzer); },
        [&] { settings.LoadText(pluginChecks::chooseText(analyzer, random).c_str()); },
        [&] { (void)settings.SaveText(); },
        [&] { (void)settings.GetSettingBrief(); },
        [&] { desk.results().BuildBubbleText(random(50), channel, DisplayBase(random(6))); },
        [&] { desk.results().BuildTabularText(random(50), DisplayBase(random(6))); },
        [&] { desk.results().BuildMessageText(random(50), DisplayBase::Ascii); },
        [&] { desk.results().BuildGroupText(random(50), DisplayBase::Ascii); },
        [&] { desk.results().BuildFrameValues(random(50)); },
        [&] { desk.results().BuildExportFile(path.c_str(), DisplayBase::Decimal, random(5)); },
    };
    analyzer.SetupResults();
    for (int i = 0; i < 600; ++i)
        operations[random(std::uint32_t(operations.size()))]();
    settings.LoadText("");
    pluginChecks::connectChannels(analyzer);
    desk.run(*capture);
    QCOMPARE(pluginChecks::faultOfResults(desk, 20000), std::string());
}

void TstPluginContract::extremeCapturesAreDecoded()
{
    constexpr std::int64_t longest = (std::int64_t(1) << 40) - 1;
    std::vector<std::int64_t> dense(20000);
    for (std::size_t i = 0; i < dense.size(); ++i)
        dense[i] = std::int64_t(i) + 1;
    const std::vector<std::pair<std::int64_t, std::vector<std::int64_t>>> shapes{
        {1, {}},
        {2, {1}},
        {1000, {}},
        {1000, {1}},
        {1000, {999}},
        {20001, dense},
        {longest, {}},
        {longest, {longest - 1}},
        {longest, {1, 2, 3, longest - 2}},
    };
    for (const auto &[samples, edges] : shapes) {
        for (const std::int64_t rate : {std::int64_t(1), std::int64_t(1000000), std::int64_t(20000000000)}) {
            for (const bool level : {false, true}) {
                TestCapture capture(rate, samples);
                for (std::uint32_t channel = 0; channel < 16; ++channel)
                    capture.channel(channel, level, edges);
                const auto desk = connected(plugin());
                desk->run(capture);
                const std::string fault = pluginChecks::faultOfResults(*desk, samples, 20);
                QVERIFY2(fault.empty(), qPrintable(QStringLiteral("%1 samples, %2 edges, %3 Hz: %4")
                                                       .arg(samples)
                                                       .arg(edges.size())
                                                       .arg(rate)
                                                       .arg(QString::fromStdString(fault))));
            }
        }
    }
}

void TstPluginContract::aCaptureWithoutTheChannelsIsRefusedWithASentence()
{
    TestCapture capture(10000000, 1000);
    const auto desk = connected(plugin());
    desk->run(capture);
    QCOMPARE(desk->analyzer->GetDecodeStatus(), DecodeStatus::Failed);
    QVERIFY(!desk->message().empty());
    QCOMPARE(desk->results().GetNumFrames(), std::uint64_t(0));
}

void TstPluginContract::noiseGivesFramesInOrderWithTexts()
{
    for (std::uint32_t seed = 1; seed <= 12; ++seed) {
        const Chooser random = seeded(seed);
        const std::int64_t rate = seed % 3 == 0 ? 1000000 : 100000000;
        const auto capture = pluginChecks::noise(random, rate, 60000);
        const auto desk = connected(plugin());
        if (seed > 2) {
            (void)pluginChecks::chooseSettings(*desk->analyzer, random);
            (void)pluginChecks::connectChannels(*desk->analyzer);
        }
        desk->run(*capture);
        QCOMPARE(pluginChecks::faultOfResults(*desk, 60000), std::string());
        const AnalyzerResults &results = desk->results();
        for (int query = 0; query < 50; ++query) {
            const std::int64_t past = random(60000);
            const std::int64_t upTo = past + random(2000);
            std::uint64_t first = 0;
            std::uint64_t last = 0;
            std::vector<std::uint64_t> expected;
            for (std::uint64_t i = 0; i < results.GetNumFrames(); ++i) {
                const Frame frame = results.GetFrame(i);
                if (frame.lastSample > past && frame.firstSample <= upTo)
                    expected.push_back(i);
            }
            QCOMPARE(results.GetFramesInRange(past, upTo, &first, &last), !expected.empty());
            if (!expected.empty()) {
                QCOMPARE(first, expected.front());
                QCOMPARE(last, expected.back());
            }
        }
    }
}

/// One key that is not there yet, or no longer, and those of a version that had more.
void TstPluginContract::storedTextsOfOtherVersionsAreTakenAsFarAsTheyAreKnown()
{
    const auto capture = pluginChecks::noise(seeded(5), 24000000, 20000);
    const auto desk = connected(plugin());
    AnalyzerSettings &settings = *desk->analyzer->GetAnalyzerSettings();
    const QString own = QString::fromUtf8(settings.SaveText());
    settings.LoadText("");
    const QStringList defaults = QString::fromUtf8(settings.SaveText()).split(QLatin1Char(','));
    const QStringList parts = own.split(QLatin1Char(','));
    QCOMPARE(parts.size(), int(settings.GetSettingsInterfacesCount()));
    for (int left = 0; left < parts.size(); ++left) {
        QStringList older = parts;
        older.removeAt(left);
        QStringList expected = parts;
        expected[left] = defaults[left];
        settings.LoadText(older.join(QLatin1Char(',')).toUtf8().constData());
        QCOMPARE(QString::fromUtf8(settings.SaveText()), expected.join(QLatin1Char(',')));
        desk->run(*capture);
        const std::string fault = pluginChecks::faultOfResults(*desk, 20000, 20);
        QVERIFY2(fault.empty(), (older.join(QLatin1Char(',')).toStdString() + ": " + fault).c_str());
    }
    const QString newer = QStringLiteral("later_key=5,%1,,another=x%2Cy,rx_of_none=none").arg(own);
    settings.LoadText(newer.toUtf8().constData());
    QCOMPARE(QString::fromUtf8(settings.SaveText()), own);
    desk->run(*capture);
    const auto present = connected(plugin());
    present->run(*capture);
    QCOMPARE(desk->message(), present->message());
    QCOMPARE(framesOf(*desk), framesOf(*present));
}

void TstPluginContract::storedTextsThatWereEditedAreHarmless()
{
    const Chooser random = seeded(6);
    const auto capture = pluginChecks::noise(random, 24000000, 20000);
    for (int i = 0; i < 150; ++i) {
        const auto desk = connected(plugin());
        (void)pluginChecks::chooseSettings(*desk->analyzer, random);
        const std::string text = pluginChecks::chooseText(*desk->analyzer, random);
        desk->analyzer->GetAnalyzerSettings()->LoadText(text.c_str());
        desk->run(*capture);
        const std::string fault = pluginChecks::faultOfResults(*desk, 20000, 20);
        QVERIFY2(fault.empty(), (text + ": " + fault).c_str());
    }
}

void TstPluginContract::aStopEndsTheDecodeAtAnyTime()
{
    const auto capture = pluginChecks::noise(seeded(7), 100000000, 600000);
    for (const int reports : {0, 1, 2, 5, 20, 100}) {
        const auto desk = connected(plugin());
        StoppingProgress progress(*desk->analyzer, reports);
        runWith(*desk, *capture, progress);
        QCOMPARE(progress.ended, 1);
        QCOMPARE(pluginChecks::faultOfResults(*desk, 600000, 5), std::string());
    }
    const auto desk = connected(plugin());
    for (int i = 0; i < 20; ++i) {
        TestProgress worker(desk->analyzer.get());
        desk->start(*capture, worker);
        desk->analyzer->StopWorkerThread(); // before, while or after it decodes
        worker.join();
        QCOMPARE(worker.ended, 1);
        QCOMPARE(pluginChecks::faultOfResults(*desk, 600000, 5), std::string());
    }
}

void TstPluginContract::twoAtOnceDecodeAsOneAlone()
{
    const auto capture = pluginChecks::noise(seeded(8), 100000000, 100000);
    const auto alone = connected(plugin());
    alone->run(*capture);
    const auto one = connected(plugin());
    const auto other = connected(plugin());
    {
        TestProgress first(one->analyzer.get());
        TestProgress second(other->analyzer.get());
        one->start(*capture, first);
        other->start(*capture, second);
    }
    QCOMPARE(framesOf(*one), framesOf(*alone));
    QCOMPARE(framesOf(*other), framesOf(*alone));
}

/// Some simulations have wrong elements among the others, so that a user sees how they look: they are the fewest.
void TstPluginContract::theSimulationIsDecoded()
{
    const std::int64_t needed = std::max(easyRate(*connected(plugin())->analyzer), std::int64_t(100000000));
    for (const std::int64_t rate :
         {std::int64_t(100000), std::int64_t(1000000), std::int64_t(10000000), needed, std::int64_t(1000000000)}) {
        const auto desk = connected(plugin());
        const std::int64_t samples = std::min<std::int64_t>(rate / 5, 20000000);
        const auto capture = desk->simulate(rate, samples, samples / 7);
        const std::int64_t length = capture->device().smpCount;
        desk->run(*capture);
        const std::string fault = pluginChecks::faultOfResults(*desk, length, 50);
        QVERIFY2(fault.empty(), (std::to_string(rate) + " Hz: " + fault).c_str());
        if (rate != needed)
            continue;
        QVERIFY2(desk->analyzer->GetDecodeStatus() == DecodeStatus::Complete, desk->message().c_str());
        QVERIFY2(desk->results().GetNumFrames() > 0, std::to_string(rate).c_str());
        std::uint64_t errors = 0;
        std::uint64_t all = desk->results().GetNumFrames();
        for (std::uint32_t channel = 0; channel < 16; ++channel) {
            for (const Marker &marker : desk->markers(channel)) {
                ++all;
                errors += std::uint64_t(marker.type == MarkerType::ErrorDot || marker.type == MarkerType::ErrorSquare ||
                                        marker.type == MarkerType::ErrorX);
            }
        }
        QVERIFY2(errors * 10 <= all, (std::to_string(errors) + " errors").c_str());
    }
}

void TstPluginContract::theSimulationIsTheSameHoweverItIsCut()
{
    const std::int64_t rate = easyRate(*connected(plugin())->analyzer);
    constexpr std::int64_t samples = 600000;
    const auto whole = connected(plugin());
    whole->run(*whole->simulate(rate, samples, samples));
    const auto cut = connected(plugin());
    cut->run(*cut->simulate(rate, samples, samples / 40));
    QCOMPARE(framesOf(*cut), framesOf(*whole));
}

/// The simulation far behind the capture's begin, once before and once behind what 32 bits can count.
void TstPluginContract::positionsAreWiderThan32Bits()
{
    constexpr std::int64_t early = std::int64_t(1) << 31;
    constexpr std::int64_t late = std::int64_t(5) << 32;
    constexpr std::uint64_t enough = 20;
    std::unique_ptr<DecodeDesk> desk;
    std::int64_t rate = 0;
    std::int64_t samples = 25000;
    do { // protocols are of different speed
        samples *= 4;
        QVERIFY(samples < early);
        desk = connected(plugin());
        rate = easyRate(*desk->analyzer);
        const auto capture = desk->simulate(rate, samples, samples, early);
        desk->run(*capture);
    } while (desk->results().GetNumFrames() < enough);
    const auto distant = connected(plugin());
    const auto moved = distant->simulate(rate, samples, samples, late);
    distant->run(*moved);
    QCOMPARE(framesOf(*distant, late - early), framesOf(*desk));
    for (std::uint32_t channel = 0; channel < 64; ++channel) {
        const std::vector<Marker> expected = desk->markers(channel);
        const std::vector<Marker> got = distant->markers(channel);
        QCOMPARE(got.size(), expected.size());
        for (std::size_t i = 0; i < got.size(); ++i) {
            QCOMPARE(got[i].sample, expected[i].sample + std::uint64_t(late - early));
            QCOMPARE(got[i].type, expected[i].type);
        }
    }
}

void TstPluginContract::everyExportIsWrittenAndCancelled()
{
    const auto desk = connected(plugin());
    const std::int64_t rate = easyRate(*desk->analyzer);
    desk->run(*desk->simulate(rate, 2000000, 2000000));
    const QTemporaryDir folder;
    const AnalyzerSettings &settings = *desk->analyzer->GetAnalyzerSettings();
    QVERIFY(settings.GetExportOptionsCount() > 0);
    for (std::uint32_t i = 0; i < settings.GetExportOptionsCount(); ++i) {
        std::uint32_t option = 0;
        const char *name = nullptr;
        QVERIFY(settings.GetExportOption(i, &option, &name));
        QVERIFY(*name != '\0');
        QVERIFY(settings.GetFileExtensionCount(option) > 0);
        for (std::uint32_t k = 0; k < settings.GetFileExtensionCount(option); ++k) {
            const char *description = nullptr;
            const char *extension = nullptr;
            QVERIFY(settings.GetFileExtension(option, k, &description, &extension));
            QVERIFY(*description != '\0' && *extension != '\0' && *extension != '.');
            const QString path = folder.filePath(QStringLiteral("out.") + QLatin1String(extension));
            AnalyzerResults &results = desk->results();
            results.StartExportThread(nullptr, DisplayBase::AsciiHex, option);
            results.BuildExportFile(path.toUtf8().constData(), DisplayBase::AsciiHex, option);
            QCOMPARE(results.GetProgress(), 1.0);
            QVERIFY(QFile::remove(path));
            results.StartExportThread(nullptr, DisplayBase::AsciiHex, option);
            results.CancelExport();
            results.BuildExportFile(path.toUtf8().constData(), DisplayBase::AsciiHex, option);
            QCOMPARE(results.GetProgress(), 1.0);
            QVERIFY(!QFile::exists(path));
            results.StartExportThread(nullptr, DisplayBase::AsciiHex, option);
            const QString nowhere = folder.filePath(QStringLiteral("none/out"));
            results.BuildExportFile(nowhere.toUtf8().constData(), DisplayBase::AsciiHex, option);
            QCOMPARE(results.GetProgress(), AnalyzerResults::exportFailed);
        }
    }
}

QTEST_GUILESS_MAIN(TstPluginContract)
#include "tst_PluginContract.moc"
