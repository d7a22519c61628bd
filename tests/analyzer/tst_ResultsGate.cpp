#include "analyzer/ResultsGate.h"

#include <QtTest>

#include <atomic>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

namespace {

/// Keeps all results but those at null.
class Keeper : public ResultsKeeper {
public:
    [[nodiscard]] bool owns(const AnalyzerResults *results) const override { return results != nullptr; }
    void keep(const AnalyzerResults *, std::shared_ptr<ResultsReader> reader) override
    {
        kept.push_back(std::move(reader));
    }
    std::vector<std::shared_ptr<ResultsReader>> kept;
};

/// A thread that is inside of results from the start on until it is let out.
class InsideReader {
public:
    InsideReader(ResultsGate &gate, const AnalyzerResults *results)
        : m_thread([this, &gate, results] {
              const ResultsPass pass(gate, reader);
              hasPass = reader->inside(results, [this] {
                  isIn = true;
                  while (!isLetOut) {
                      std::this_thread::yield();
                  }
              });
          })
    {
        while (!isIn) {
            std::this_thread::yield();
        }
    }
    ~InsideReader() { letOut(); }
    InsideReader(const InsideReader &) = delete;
    InsideReader &operator=(const InsideReader &) = delete;
    void letOut()
    {
        isLetOut = true;
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }
    const std::shared_ptr<ResultsReader> reader = std::make_shared<ResultsReader>();
    std::atomic<bool> isIn{false};
    std::atomic<bool> isLetOut{false};
    std::atomic<bool> hasPass{true}; ///< when it is out

private:
    std::thread m_thread; ///< the last: it uses the others
};

const AnalyzerResults *someResults()
{
    static const int some = 0; // never looked into
    return reinterpret_cast<const AnalyzerResults *>(&some);
}

} // namespace

class TstResultsGate : public QObject {
    Q_OBJECT

private slots:
    void readersAreAdmittedTogether();
    void noReaderIsAdmittedDuringAChange();
    void changesMayNest();
    void aChangeWaitsForAllReaders();
    void aReaderInsideOfResultsLosesItsPassToAChange();
    void nobodyLosesAPassInResultsThatNobodyKeeps();
    void aPassIsTakenOnlyFromAReaderInsideOfResults();
};

void TstResultsGate::readersAreAdmittedTogether()
{
    ResultsGate gate;
    const ResultsPass one(gate);
    const ResultsPass other(gate);
    QVERIFY(one);
    QVERIFY(other);
    QVERIFY(!gate.isWanted());
}

void TstResultsGate::noReaderIsAdmittedDuringAChange()
{
    ResultsGate gate;
    {
        const ResultsChange change(gate);
        QVERIFY(gate.isWanted());
        QVERIFY(!ResultsPass(gate));
    }
    QVERIFY(!gate.isWanted());
    QVERIFY(ResultsPass(gate));
}

void TstResultsGate::changesMayNest()
{
    ResultsGate gate;
    const ResultsChange outer(gate);
    {
        const ResultsChange inner(gate);
    }
    QVERIFY(gate.isWanted());
    QVERIFY(!ResultsPass(gate));
}

void TstResultsGate::aChangeWaitsForAllReaders()
{
    ResultsGate gate;
    std::atomic<bool> stop{false};
    std::atomic<int> inside{0};
    std::atomic<bool> broken{false};
    int guarded = 0; // written by the changes, read by the readers: ThreadSanitizer sees whether they ever meet
    std::vector<std::thread> readers;
    for (int i = 0; i < 3; ++i) {
        readers.emplace_back([&] {
            while (!stop) {
                const ResultsPass pass(gate);
                if (pass) {
                    ++inside;
                    for (int seen = guarded; !gate.isWanted() && !stop;) {
                        broken = broken || seen != guarded;
                    }
                    --inside;
                }
            }
        });
    }
    for (int i = 0; i < 200; ++i) {
        const ResultsChange change(gate);
        broken = broken || inside != 0;
        ++guarded;
    }
    stop = true;
    for (std::thread &reader : readers) {
        reader.join();
    }
    QVERIFY(!broken);
}

void TstResultsGate::aReaderInsideOfResultsLosesItsPassToAChange()
{
    Keeper keeper;
    auto gate = std::make_unique<ResultsGate>(&keeper);
    InsideReader inside(*gate, someResults());
    {
        const ResultsChange change(*gate);
        QCOMPARE(keeper.kept.size(), std::size_t(1));
        QVERIFY(inside.reader->isStuck());
        QCOMPARE(inside.reader->results(), someResults());
    }
    QVERIFY(ResultsPass(*gate));
    gate.reset(); // which it does not need to come out
    inside.letOut();
    QVERIFY(!inside.hasPass);
    QVERIFY(inside.reader->isLost());
    QVERIFY(!inside.reader->isStuck());
}

void TstResultsGate::nobodyLosesAPassInResultsThatNobodyKeeps()
{
    Keeper keeper;
    ResultsGate gate(&keeper);
    InsideReader inside(gate, nullptr);
    QVERIFY(!gate.take(inside.reader));
    std::thread later([&] {
        while (!gate.isWanted()) {
            std::this_thread::yield();
        }
        inside.isLetOut = true;
    });
    {
        const ResultsChange change(gate); // until it is out
    }
    later.join();
    inside.letOut();
    QVERIFY(inside.hasPass);
    QVERIFY(keeper.kept.empty());
}

void TstResultsGate::aPassIsTakenOnlyFromAReaderInsideOfResults()
{
    Keeper keeper;
    ResultsGate gate(&keeper);
    const auto reader = std::make_shared<ResultsReader>();
    QVERIFY(!gate.take(reader));
    {
        const ResultsPass pass(gate, reader);
        QVERIFY(!gate.take(reader));
        QVERIFY(reader->inside(someResults(), [] {}));
        QVERIFY(!gate.take(reader));
        QVERIFY(!reader->inside(someResults(), [&] { QVERIFY(gate.take(reader)); }));
        QVERIFY(reader->isStuck());
    }
    QVERIFY(!reader->isStuck());
    const ResultsChange change(gate);
    QCOMPARE(keeper.kept.size(), std::size_t(1));
}

QTEST_APPLESS_MAIN(TstResultsGate)
#include "tst_ResultsGate.moc"
