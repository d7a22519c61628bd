#include "runtime/ReaderDesk.h"

#include <QtTest>

#include <array>
#include <thread>

using readerDesk::ScriptDecoder;

/// Readers while the worker adds: what they see is whole, in order, and only grows.
class TstResultsThreads : public QObject {
    Q_OBJECT
private slots:
    void readersSeeAWholePrefixWhileTheWorkerAdds();
    void aWorkerOnItsOwnThreadIsStopped();
};

void TstResultsThreads::readersSeeAWholePrefixWhileTheWorkerAdds()
{
    constexpr std::int64_t count = 100000;
    TestCapture capture(1000000, count * 10);
    capture.channel(0, false, {});
    DecodeDesk desk(std::make_unique<ScriptDecoder>([](ScriptDecoder &decoder) {
                        const Channel line(0, 0);
                        decoder.out().showBubblesOn(line);
                        for (std::int64_t i = 0; i < count; ++i) {
                            const std::array<std::uint8_t, 2> bytes{std::uint8_t(i), std::uint8_t(i >> 8)};
                            const std::uint64_t place = i % 100 == 0 ? decoder.out().open(i * 10) : 0;
                            decoder.out().mark(line, i * 10, MarkerType::Dot);
                            FrameData frame;
                            frame.firstSample = i * 10;
                            frame.lastSample = i * 10 + 5;
                            frame.data = decoder.out().keep(bytes);
                            if (place != 0)
                                decoder.out().fill(place, frame);
                            else
                                decoder.out().add(frame);
                        }
                    }),
                    "a=0");
    TestProgress worker(desk.analyzer.get());
    desk.start(capture, worker);

    const AnalyzerResults &results = desk.results();
    const Channel line(0, 0);
    std::uint64_t seen = 0;
    std::uint64_t markersSeen = 0;
    bool whole = true;
    while (whole && seen < count) {
        const std::uint64_t now = results.GetNumFrames();
        const std::uint64_t markers = results.GetNumMarkers(line);
        whole = now >= seen && markers >= markersSeen;
        seen = now;
        markersSeen = markers;
        if (now == 0)
            continue;
        const std::uint64_t index = now - 1;
        const Frame frame = results.GetFrame(index);
        std::size_t size = 0;
        const std::uint8_t *bytes = results.GetPayload(frame.data, &size);
        whole = whole && frame.firstSample == std::int64_t(index) * 10 && size == 2 && bytes[0] == std::uint8_t(index);
        std::uint64_t first = 0;
        std::uint64_t last = 0;
        whole = whole && results.GetFramesInRange(0, frame.firstSample, &first, &last) && first == 0 && last == index;
        if (markers > 0)
            whole = whole && results.GetMarker(line, markers - 1).sample == (markers - 1) * 10;
    }
    worker.join();
    QVERIFY(whole);
    QCOMPARE(results.GetNumMarkers(line), std::uint64_t(count));
}

void TstResultsThreads::aWorkerOnItsOwnThreadIsStopped()
{
    TestCapture capture(1000000, 1000);
    capture.channel(0, false, {1});
    DecodeDesk desk(std::make_unique<ScriptDecoder>([](ScriptDecoder &decoder) {
                        for (;;)
                            (void)decoder.readerOf(0).levelAt(1);
                    }),
                    "a=0");
    TestProgress worker(desk.analyzer.get());
    desk.start(capture, worker);
    desk.analyzer->StopWorkerThread();
    worker.join();
    QCOMPARE(worker.ended, 1);
    QCOMPARE(desk.analyzer->GetDecodeStatus(), DecodeStatus::Stopped);
}

QTEST_APPLESS_MAIN(TstResultsThreads)
#include "tst_ResultsThreads.moc"
