#include "analyzer/ResultsGate.h"

#include <QtTest>

#include <atomic>
#include <thread>
#include <vector>

class TstResultsGate : public QObject {
    Q_OBJECT

private slots:
    void readersAreAdmittedTogether();
    void noReaderIsAdmittedDuringAChange();
    void changesMayNest();
    void aChangeWaitsForAllReaders();
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

QTEST_APPLESS_MAIN(TstResultsGate)
#include "tst_ResultsGate.moc"
