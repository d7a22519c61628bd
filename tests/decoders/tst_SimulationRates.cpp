#include "device/DevModels.h"
#include "support/PluginChecks.h"
#include "support/PluginFiles.h"

#include <QtTest>

#include <algorithm>
#include <set>

namespace {

constexpr int modelCodes[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 65, 97};
constexpr std::int64_t easyRate = 20000000; ///< Hz, at which a bit rate can be found too; some decoders need more

/// Short for the fast protocols, and long enough for the slow ones at the slower rates.
std::int64_t samplesAt(std::int64_t rate)
{
    return std::max(rate / 50, std::min<std::int64_t>(rate / 5, 400000));
}

} // namespace

/// Every decoder's simulation, at every rate that any instrument offers: one row for each plug-in of the build's
/// folder.
class TstSimulationRates : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void theSimulationIsSoundAtEveryModelsRates_data();
    void theSimulationIsSoundAtEveryModelsRates();

private:
    const std::vector<PluginFile> m_plugins = pluginsIn(QStringLiteral(LUX_PLUGIN_FOLDER));
    std::set<std::int64_t> m_rates; ///< Hz
};

void TstSimulationRates::initTestCase()
{
    for (const int code : modelCodes) {
        const std::unique_ptr<DevBase> device = createDevice(code);
        QCOMPARE(device->model, code);
        QVERIFY(!device->smpFrequs.isEmpty());
        m_rates.insert(device->smpFrequs.cbegin(), device->smpFrequs.cend());
    }
    QVERIFY(*m_rates.begin() <= 20000 && *m_rates.rbegin() >= 500000000);
}

void TstSimulationRates::theSimulationIsSoundAtEveryModelsRates_data()
{
    QTest::addColumn<int>("index");
    QVERIFY(m_plugins.size() >= 4);
    for (std::size_t i = 0; i < m_plugins.size(); ++i) {
        QTest::newRow(m_plugins[i].name.c_str()) << int(i);
    }
}

void TstSimulationRates::theSimulationIsSoundAtEveryModelsRates()
{
    QFETCH(int, index);
    const PluginFile &plugin = m_plugins[std::size_t(index)];
    std::uint64_t frames = 0;
    for (const std::int64_t rate : m_rates) {
        DecodeDesk desk(plugin.make());
        QVERIFY(pluginChecks::connectChannels(*desk.analyzer));
        const std::int64_t samples = samplesAt(rate);
        const auto capture = desk.simulate(rate, samples, samples / 3);
        const std::int64_t length = capture->device().smpCount;
        QVERIFY2(length >= samples, std::to_string(rate).c_str());
        desk.run(*capture);
        const std::string fault = pluginChecks::faultOfResults(desk, length, 20);
        QVERIFY2(fault.empty(), (std::to_string(rate) + " Hz: " + fault).c_str());
        const bool isEasy = rate >= std::max(easyRate, std::int64_t(desk.analyzer->NeededSampleRate()) * 4);
        const bool isRefused = desk.analyzer->GetDecodeStatus() == DecodeStatus::Failed && !desk.message().empty();
        QVERIFY2(desk.analyzer->GetDecodeStatus() == DecodeStatus::Complete || (isRefused && !isEasy),
                 (std::to_string(rate) + " Hz: " + desk.message()).c_str());
        frames += desk.results().GetNumFrames();
    }
    QVERIFY(frames > 0);
}

QTEST_GUILESS_MAIN(TstSimulationRates)
#include "tst_SimulationRates.moc"
