#include "runtime/ReaderDesk.h"

#include <QtTest>

#include <numeric>
#include <vector>

using lux::Simulation;
using lux::SimulationLine;

namespace {

struct Block {
    bool initial = false;
    bool current = false;
    std::vector<std::uint32_t> widths;
};

/// What the first line hands out up to `newest`.
Block take(Simulation &simulation, std::int64_t newest)
{
    SimulationChannelDescriptor *channels = nullptr;
    if (simulation.takeBlock(newest, &channels) == 0)
        return {};
    const SimulationData data = *channels[0].GetData();
    return {channels[0].GetInitialBitState() != BitState::Low,
            channels[0].GetCurrentBitState() != BitState::Low,
            {data.begin, data.end}};
}

using Widths = std::vector<std::uint32_t>;

} // namespace

class TstSimulation : public QObject {
    Q_OBJECT
private slots:
    void aBlockEndsAtTheSampleAskedForAndTheNextGoesOn();
    void aChangeAtTheBordersOfBlocksIsKept();
    void changesWithoutTimeBetweenThemAreNone();
    void bitsNeverDrift_data();
    void bitsNeverDrift();
    void aRunLongerThanAWidthIsCutAndGoesOn();
    void positionsBeyond32BitsStayExact();
    void theUndefinedChannelIsDrivenUnseen();
    void aLineThatComesLateBeginsWithItsBlock();
    void theSequenceOfRandomNumbersIsTheSameEachTime();
    void aDecoderIsAskedUntilItsSignalIsLongEnough();
    void aDecoderBeginsAnewForAnotherCapture();
    void aDecoderIsToldTheRateOfTheSimulation();
    void aDecoderWithoutSimulationHandsOutNothing();
    void anElementWithoutEndIsLeftByUnwinding_data();
    void anElementWithoutEndIsLeftByUnwinding();
};

void TstSimulation::aBlockEndsAtTheSampleAskedForAndTheNextGoesOn()
{
    Simulation simulation(1000);
    SimulationLine &line = simulation.line(Channel(0, 2), true);
    simulation.hold(10);
    line.set(false);
    simulation.hold(5);
    line.set(true);
    simulation.hold(100);
    Block block = take(simulation, 12);
    QCOMPARE(block.initial, true);
    QCOMPARE(block.widths, (Widths{10, 2}));
    QCOMPARE(block.current, false);
    block = take(simulation, 20);
    QCOMPARE(block.widths, (Widths{3, 5}));
    QCOMPARE(block.current, true);
    block = take(simulation, 20); // nothing new
    QVERIFY(block.widths.empty());
}

void TstSimulation::aChangeAtTheBordersOfBlocksIsKept()
{
    Simulation simulation(1000);
    SimulationLine &line = simulation.line(Channel(0, 0), false);
    line.set(true); // at sample 0
    simulation.hold(10);
    line.set(false);
    simulation.hold(10);
    Block block = take(simulation, 10);
    QCOMPARE(block.widths, (Widths{10}));
    QCOMPARE(block.current, true);
    block = take(simulation, 15);
    QCOMPARE(block.widths, (Widths{5})); // begins in the other level: the reader sees an edge at 10
    QCOMPARE(block.current, false);
}

void TstSimulation::changesWithoutTimeBetweenThemAreNone()
{
    Simulation simulation(1000);
    SimulationLine &line = simulation.line(Channel(0, 0), false);
    simulation.hold(5);
    line.set(true);
    line.set(true);
    line.toggle();
    simulation.hold(5);
    simulation.hold(-7);
    QCOMPARE(take(simulation, 10).widths, (Widths{10}));
}

void TstSimulation::bitsNeverDrift_data()
{
    QTest::addColumn<qint64>("rate");
    QTest::addColumn<qint64>("baud");
    QTest::newRow("115200 at 1 MHz") << qint64(1000000) << qint64(115200);
    QTest::newRow("460800 at 500 MHz") << qint64(500000000) << qint64(460800);
    QTest::newRow("3 Mbit at 10 MHz") << qint64(10000000) << qint64(3000000);
    QTest::newRow("faster than the samples") << qint64(1000) << qint64(3000);
}

void TstSimulation::bitsNeverDrift()
{
    QFETCH(qint64, rate);
    QFETCH(qint64, baud);
    Simulation simulation(rate);
    for (std::int64_t bits = 1; bits <= 100000; ++bits) {
        simulation.holdTime(1, baud);
        QCOMPARE(simulation.position(), bits * rate / baud);
    }
    simulation.holdTime(2 * baud, baud);
    QCOMPARE(simulation.position(), 100000 * rate / baud + 2 * rate);
}

void TstSimulation::aRunLongerThanAWidthIsCutAndGoesOn()
{
    constexpr std::int64_t long1 = 5000000000;
    Simulation simulation(1000);
    SimulationLine &line = simulation.line(Channel(0, 0), false);
    simulation.hold(long1);
    line.set(true);
    simulation.hold(10);
    std::int64_t total = 0;
    for (int i = 0; i < 3; ++i) {
        const Block block = take(simulation, long1 + 5);
        for (const std::uint32_t width : block.widths) {
            QVERIFY(width <= 0x7FFFFFFFU);
            total += width;
        }
        QCOMPARE(block.current, i == 2);
    }
    QCOMPARE(total, long1 + 5);
}

void TstSimulation::positionsBeyond32BitsStayExact()
{
    Simulation simulation(1000000000);
    SimulationLine &line = simulation.line(Channel(0, 0), false);
    simulation.hold(std::int64_t(1) << 39);
    while (!take(simulation, std::int64_t(1) << 39).widths.empty()) {
    }
    line.set(true);
    simulation.holdTime(1, 9600);
    line.set(false);
    simulation.hold(10);
    const Block block = take(simulation, (std::int64_t(1) << 39) + 200000);
    QCOMPARE(block.widths.at(0), 104166U);
}

void TstSimulation::theUndefinedChannelIsDrivenUnseen()
{
    Simulation simulation(1000);
    SimulationLine &hidden = simulation.line(Channel(), true);
    simulation.line(Channel(0, 7), true);
    hidden.set(false);
    QVERIFY(!hidden.level());
    SimulationChannelDescriptor *channels = nullptr;
    QCOMPARE(simulation.takeBlock(10, &channels), 1U);
    QCOMPARE(channels[0].GetChannel().channelIndex, 7U);
    QCOMPARE(&simulation.line(Channel(), false), &hidden);
}

void TstSimulation::aLineThatComesLateBeginsWithItsBlock()
{
    Simulation simulation(1000);
    simulation.hold(10);
    (void)take(simulation, 10);
    SimulationLine &line = simulation.line(Channel(0, 2), false);
    simulation.hold(3);
    line.set(true);
    simulation.hold(20);
    const Block block = take(simulation, 20);
    QCOMPARE(block.widths, (Widths{3, 7}));
    QCOMPARE(block.current, true);
}

void TstSimulation::theSequenceOfRandomNumbersIsTheSameEachTime()
{
    Simulation one(1000);
    Simulation two(5000);
    bool varied = false;
    for (int i = 0; i < 1000; ++i) {
        const std::uint32_t number = one.random(10);
        QVERIFY(number < 10);
        QCOMPARE(two.random(10), number);
        varied = varied || number != 0;
    }
    QVERIFY(varied);
    QCOMPARE(one.random(0), 0U);
}

namespace {

class Blinker final : public lux::Decoder<readerDesk::ScriptSettings, readerDesk::ScriptResults> {
public:
    explicit Blinker(bool drives) : Decoder("Blinker"), m_drives(drives) {}
    int calls = 0;

protected:
    void decode() override {}
    void simulate(Simulation &simulation) override
    {
        ++calls;
        if (!m_drives)
            return;
        SimulationLine &line = simulation.line(m_settings.a, false);
        line.set(true);
        simulation.hold(3);
        line.set(false);
        simulation.hold(4);
    }

private:
    bool m_drives;
};

} // namespace

void TstSimulation::aDecoderIsAskedUntilItsSignalIsLongEnough()
{
    for (const std::int64_t block : {1, 7, 50, 5000}) {
        DecodeDesk desk(std::make_unique<Blinker>(true), "a=3");
        const auto capture = desk.simulate(1000000, 10000, block);
        const SmpEdgeRoot *root = capture->root(3);
        QVERIFY(root != nullptr);
        const SmpEdgeLeaf &leaf = *root->mids[0]->leaves[0];
        for (int i = 0; i < 2000; ++i)
            QCOMPARE(leaf.position(i), std::int64_t((i + 1) / 2 * 7 + (i % 2 == 0 ? 3 : 0)));
    }
}

void TstSimulation::aDecoderBeginsAnewForAnotherCapture()
{
    Blinker blinker(true);
    blinker.GetAnalyzerSettings()->LoadText("a=3");
    std::int64_t rate = 1000;
    blinker.Init(nullptr, reinterpret_cast<ConditionManager *>(&rate), nullptr);
    const auto widths = [&blinker](std::int64_t newest, std::uint32_t hz) {
        SimulationChannelDescriptor *channels = nullptr;
        if (blinker.BuildSimulation(newest, hz, &channels) != 1)
            return Widths{};
        return Widths{channels[0].GetData()->begin, channels[0].GetData()->end};
    };
    const Widths first = widths(20, 1000);
    QCOMPARE(std::accumulate(first.begin(), first.end(), 0U), 20U);
    const Widths next = widths(30, 1000);
    QCOMPARE(std::accumulate(next.begin(), next.end(), 0U), 10U);
    QCOMPARE(widths(20, 1000), first); // not behind the last one
    QCOMPARE(widths(20, 1000), first);
    const Widths other = widths(30, 2000); // another rate
    QCOMPARE(std::accumulate(other.begin(), other.end(), 0U), 30U);
}

/// Which stands where a decode has a condition.
void TstSimulation::aDecoderIsToldTheRateOfTheSimulation()
{
    readerDesk::ScriptDecoder decoder([](readerDesk::ScriptDecoder & /*decoder*/) {});
    std::int64_t rate = 12345;
    decoder.Init(nullptr, reinterpret_cast<ConditionManager *>(&rate), nullptr);
    QCOMPARE(decoder.rate(), 12345);
    rate = 54321;
    QCOMPARE(decoder.rate(), 54321);
    DeviceCollection device;
    device.smpFrequ = 1000;
    decoder.Init(&device, nullptr, nullptr);
    decoder.InitialWorkerThread();
    QCOMPARE(decoder.rate(), 1000);
}

void TstSimulation::aDecoderWithoutSimulationHandsOutNothing()
{
    Blinker blinker(false);
    std::int64_t rate = 1000;
    blinker.Init(nullptr, reinterpret_cast<ConditionManager *>(&rate), nullptr);
    SimulationChannelDescriptor *channels = nullptr;
    QCOMPARE(blinker.BuildSimulation(1000, 1000, &channels), 0U);
    QVERIFY(blinker.calls <= 1000);
}

namespace {

/// Never comes to the end of an element.
class Babbler final : public lux::Decoder<readerDesk::ScriptSettings, readerDesk::ScriptResults> {
public:
    Babbler(std::int64_t pause, bool swallows) : Decoder("Babbler"), m_pause(pause), m_swallows(swallows) {}
    int calls = 0;
    int left = 0; ///< destructors that ran

protected:
    void decode() override {}
    void simulate(Simulation &simulation) override
    {
        struct Leaving {
            int &left;
            ~Leaving() { ++left; }
        } const leaving{left};
        ++calls;
        SimulationLine &line = simulation.line(m_settings.a, false);
        for (int caught = 0;;) {
            try {
                line.toggle();
                simulation.hold(m_pause);
            } catch (...) {
                if (!m_swallows || ++caught > 3)
                    throw;
            }
        }
    }

private:
    std::int64_t m_pause;
    bool m_swallows;
};

} // namespace

void TstSimulation::anElementWithoutEndIsLeftByUnwinding_data()
{
    QTest::addColumn<int>("pause");
    QTest::addColumn<bool>("swallows");
    QTest::newRow("without time passing") << 0 << false;
    QTest::newRow("with time passing") << 5 << false;
    QTest::newRow("that catches everything") << 5 << true;
}

void TstSimulation::anElementWithoutEndIsLeftByUnwinding()
{
    QFETCH(int, pause);
    QFETCH(bool, swallows);
    Babbler babbler(pause, swallows);
    babbler.GetAnalyzerSettings()->LoadText("a=3");
    std::int64_t rate = 1000;
    babbler.Init(nullptr, reinterpret_cast<ConditionManager *>(&rate), nullptr);
    SimulationChannelDescriptor *channels = nullptr;
    QCOMPARE(babbler.BuildSimulation(1000, 1000, &channels), 1U);
    QCOMPARE(babbler.calls, 1);
    QCOMPARE(babbler.left, 1);
    const SimulationData first = *channels[0].GetData();
    QVERIFY(std::size_t(first.end - first.begin) >= (pause > 0 ? std::size_t(200) : std::size_t(1)));
    QCOMPARE(babbler.BuildSimulation(2000, 1000, &channels), 1U);
    QCOMPARE(babbler.calls, 1);
    QVERIFY(std::accumulate(channels[0].GetData()->begin, channels[0].GetData()->end, 0U) >= 1000U);
}

QTEST_APPLESS_MAIN(TstSimulation)
#include "tst_Simulation.moc"
