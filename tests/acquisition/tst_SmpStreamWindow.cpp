#include "acquisition/SmpStreamWindow.h"
#include "store/NaiveTrigger.h"

#include <QtTest>

#include <deque>

using naiveTrigger::Random;

namespace {

constexpr int group = SmpStreamWindow::groupSamples;

} // namespace

class TstSmpStreamWindow : public QObject {
    Q_OBJECT
private slots:
    void samplesAreCountedInWholeGroups();
    void aCutGroupAtTheFrontIsPassedOver();
    void anEarlyTriggerKeepsAllThatCameBefore();
    void theCaptureBeginsWithTheGroupOfItsFirstSample();
    void droppedBytesAreCountedAsTheyAre();
    void theOldestBufferGoesOnlyWhenTheOthersFillTheWindow();
    void aGroupInProgressIsNeverDropped();
    void theLastWholeGroupIsNeverDropped();
    void withoutChannelsTheArithmeticHolds();
    void aStartForgetsTheLastStream();
    void theTriggerStandsOnItsSampleForBuffersOfAnySize_data();
    void theTriggerStandsOnItsSampleForBuffersOfAnySize();
};

void TstSmpStreamWindow::samplesAreCountedInWholeGroups()
{
    SmpStreamWindow window;
    window.start(3, 100);
    QCOMPARE(window.groupBytes(), std::int64_t(6));
    window.receive(5);
    QCOMPARE(window.samplesHeld(), std::int64_t(0));
    window.receive(8);
    QCOMPARE(window.samplesHeld(), std::int64_t(32));
    QCOMPARE(window.recvGroups(), std::int64_t(2));
    QCOMPARE(window.recvBytes(), std::int64_t(13));
}

void TstSmpStreamWindow::aCutGroupAtTheFrontIsPassedOver()
{
    SmpStreamWindow window;
    window.start(3, 0);
    window.receive(60);
    window.drop(8);
    QCOMPARE(window.dropBytes(), std::int64_t(8));
    QCOMPARE(window.firstOffset(), std::int64_t(4)); // to byte 12
    QCOMPARE(window.samplesHeld(), std::int64_t(8 * group));
    window.drop(2);
    QCOMPARE(window.firstOffset(), std::int64_t(2));
    window.drop(2);
    QCOMPARE(window.firstOffset(), std::int64_t(0));
}

void TstSmpStreamWindow::anEarlyTriggerKeepsAllThatCameBefore()
{
    for (const std::int64_t sample : {0, 1, 15, 16, 99, 100}) {
        SmpStreamWindow window;
        window.start(4, 100);
        window.receive(800);
        QCOMPARE(window.trigger(sample), sample);
        QCOMPARE(window.firstOffset(), std::int64_t(0));
    }
}

void TstSmpStreamWindow::theCaptureBeginsWithTheGroupOfItsFirstSample()
{
    SmpStreamWindow window;
    window.start(4, 100);
    window.receive(800);
    QCOMPARE(window.trigger(300), std::int64_t(108)); // from sample 192, group 12
    QCOMPARE(window.firstOffset(), std::int64_t(12 * 8));
    QCOMPARE(window.samplesHeld(), std::int64_t((100 - 12) * group));
}

void TstSmpStreamWindow::droppedBytesAreCountedAsTheyAre()
{
    SmpStreamWindow window;
    window.start(5, 0);
    window.receive(10000);
    window.drop(1001);
    window.drop(7);
    QCOMPARE(window.dropBytes(), std::int64_t(1008));
    QCOMPARE(window.firstOffset(), std::int64_t(2)); // to byte 1010
}

void TstSmpStreamWindow::theOldestBufferGoesOnlyWhenTheOthersFillTheWindow()
{
    SmpStreamWindow window;
    window.start(1, 64); // four groups of two bytes
    window.receive(10);
    QVERIFY(!window.mayDrop(10));
    window.receive(6);
    QVERIFY(!window.mayDrop(10));
    window.receive(2);
    QVERIFY(window.mayDrop(10));
    window.drop(10);
    QVERIFY(!window.mayDrop(6));
}

void TstSmpStreamWindow::aGroupInProgressIsNeverDropped()
{
    SmpStreamWindow window;
    window.start(3, 0);
    window.receive(8);
    QVERIFY(!window.mayDrop(8)); // a third of the second group would be lost
    window.receive(10);
    QVERIFY(window.mayDrop(8));
}

void TstSmpStreamWindow::theLastWholeGroupIsNeverDropped()
{
    SmpStreamWindow window;
    window.start(3, 0);
    window.receive(6);
    QVERIFY(!window.mayDrop(6));
    window.receive(5);
    QVERIFY(!window.mayDrop(6));
    window.receive(1);
    QVERIFY(window.mayDrop(6));
    QVERIFY(!window.mayDrop(12));
}

void TstSmpStreamWindow::withoutChannelsTheArithmeticHolds()
{
    SmpStreamWindow window;
    window.start(0, -5);
    window.receive(100);
    QCOMPARE(window.samplesHeld(), std::int64_t(50 * group));
    QCOMPARE(window.preTrig(), std::int64_t(0));
    QCOMPARE(window.trigger(0), std::int64_t(0));
}

void TstSmpStreamWindow::aStartForgetsTheLastStream()
{
    SmpStreamWindow window;
    window.start(3, 5);
    window.receive(1000);
    window.drop(500);
    window.start(2, 6);
    QCOMPARE(window.recvBytes(), std::int64_t(0));
    QCOMPARE(window.dropBytes(), std::int64_t(0));
    QCOMPARE(window.firstOffset(), std::int64_t(0));
    QCOMPARE(window.preTrig(), std::int64_t(6));
}

void TstSmpStreamWindow::theTriggerStandsOnItsSampleForBuffersOfAnySize_data()
{
    QTest::addColumn<int>("chns");
    for (int chns = 1; chns <= 16; ++chns) {
        QTest::addRow("%d channels", chns) << chns;
    }
}

void TstSmpStreamWindow::theTriggerStandsOnItsSampleForBuffersOfAnySize()
{
    QFETCH(int, chns);
    Random random(chns);
    for (int round = 0; round < 300; ++round) {
        const auto preTrig = std::int64_t(random() % 3000);
        const auto trigger = std::int64_t(random() % 20000);
        SmpStreamWindow window;
        window.start(chns, preTrig);
        std::deque<std::int64_t> queue;
        for (bool found = false; !found;) {
            const std::int64_t length = 2 * (1 + random() % (round % 2 == 0 ? 20 : 1000));
            // The trigger is found with the buffer that ends its group.
            found = (window.recvBytes() + length) / window.groupBytes() > trigger / group;
            queue.push_back(length);
            window.receive(length);
            while (!found && !queue.empty() && window.mayDrop(queue.front())) {
                window.drop(queue.front());
                queue.pop_front();
            }
        }
        const std::int64_t start = trigger > preTrig ? (trigger - preTrig) / group * group : 0;
        QCOMPARE(window.trigger(trigger), trigger - start);
        QCOMPARE(window.dropBytes() + window.firstOffset(), start / group * window.groupBytes());
        QVERIFY(window.firstOffset() >= 0);
    }
}

QTEST_APPLESS_MAIN(TstSmpStreamWindow)
#include "tst_SmpStreamWindow.moc"
