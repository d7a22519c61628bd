// What the system asks of a running program reaches its event loop.

#include "session/EndSignals.h"

#include <QSignalSpy>
#include <QtTest>

#include <csignal>

namespace {

volatile std::sig_atomic_t others = 0;

void countOther(int)
{
    others = others + 1;
}

} // namespace

class TstEndSignals : public QObject {
    Q_OBJECT
private slots:
    void aSignalIsToldByTheEventLoop_data();
    void aSignalIsToldByTheEventLoop();
    void theFormerHandlerComesBack();
};

void TstEndSignals::aSignalIsToldByTheEventLoop_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("interrupt") << SIGINT;
    QTest::newRow("terminate") << SIGTERM;
}

void TstEndSignals::aSignalIsToldByTheEventLoop()
{
    QFETCH(int, number);
    const EndSignals signal;
    QSignalSpy told(&signal, &EndSignals::sigEnd);
    QCOMPARE(raise(number), 0);
    QCOMPARE(told.count(), 0);
    QTRY_COMPARE(told.count(), 1);
}

void TstEndSignals::theFormerHandlerComesBack()
{
    const auto former = std::signal(SIGTERM, countOther);
    {
        const EndSignals signal;
    }
    QCOMPARE(raise(SIGTERM), 0);
    QCOMPARE(int(others), 1);
    std::signal(SIGTERM, former);
}

QTEST_GUILESS_MAIN(TstEndSignals)
#include "tst_EndSignals.moc"
