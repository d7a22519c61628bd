#include "wave/ViewHistory.h"

#include <QtTest>

namespace {

constexpr auto zoom = ViewHistory::Step::zoom;
constexpr auto move = ViewHistory::Step::move;

} // namespace

class TstViewHistory : public QObject {
    Q_OBJECT
private slots:
    void theLastWindowThatWasLeftComesBackFirst();
    void movesThatFollowEachOtherAreOneStep();
    void aWindowThatIsShownAlreadyIsPassedOver();
    void aWindowOfNoCaptureIsNotKept();
    void beyondTheLimitTheOldestIsForgotten();
};

void TstViewHistory::theLastWindowThatWasLeftComesBackFirst()
{
    ViewHistory history;
    history.leave({1.0, 1.0}, zoom);
    history.leave({2.0, 1.0}, zoom);
    TimeWindow window;
    QVERIFY(history.back({3.0, 1.0}, window));
    QCOMPARE(window.start, 2.0);
    QVERIFY(history.back(window, window));
    QCOMPARE(window.start, 1.0);
    QVERIFY(!history.back(window, window));
}

void TstViewHistory::movesThatFollowEachOtherAreOneStep()
{
    ViewHistory history;
    history.leave({1.0, 1.0}, move);
    history.leave({2.0, 1.0}, move);
    history.leave({3.0, 1.0}, zoom);
    history.leave({4.0, 2.0}, move);
    TimeWindow window;
    QVERIFY(history.back({5.0, 2.0}, window));
    QCOMPARE(window.start, 4.0);
    QVERIFY(history.back(window, window));
    QCOMPARE(window.start, 3.0);
    QVERIFY(history.back(window, window));
    QCOMPARE(window.start, 1.0);
}

void TstViewHistory::aWindowThatIsShownAlreadyIsPassedOver()
{
    ViewHistory history;
    history.leave({1.0, 1.0}, zoom);
    history.leave({2.0, 1.0}, zoom);
    TimeWindow window;
    QVERIFY(history.back({2.0, 1.0}, window));
    QCOMPARE(window.start, 1.0);
}

void TstViewHistory::aWindowOfNoCaptureIsNotKept()
{
    ViewHistory history;
    history.leave({}, zoom);
    TimeWindow window;
    QVERIFY(!history.back({1.0, 1.0}, window));
}

void TstViewHistory::beyondTheLimitTheOldestIsForgotten()
{
    ViewHistory history;
    for (std::size_t i = 0; i <= ViewHistory::mostSteps; ++i) {
        history.leave({double(i), 1.0}, zoom);
    }
    TimeWindow window;
    std::size_t steps = 0;
    while (history.back({-1.0, 1.0}, window)) {
        ++steps;
    }
    QCOMPARE(steps, ViewHistory::mostSteps);
    QCOMPARE(window.start, 1.0);
}

QTEST_APPLESS_MAIN(TstViewHistory)
#include "tst_ViewHistory.moc"
