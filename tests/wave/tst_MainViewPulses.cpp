#include "device/DeviceGlobals.h"
#include "support/GuiTestMain.h"
#include "wave/MainViewDesk.h"
#include "wave/PulseRequests.h"

namespace {

/// Asks for what a test sets, and by that stands for the list of measurements.
class FakeRequests final : public PulseRequests {
public:
    FakeRequests() { gPulseRequests = this; }
    ~FakeRequests() override { gPulseRequests = nullptr; }

    QStringList wanted;
    [[nodiscard]] QStringList allRequests() const override { return wanted; }
    [[nodiscard]] QStringList requestsOfPair(int pairIndex) const override
    {
        return wanted.filter(QStringLiteral(",%1").arg(pairIndex + 1));
    }
};

QStringList lastOf(const QSignalSpy &spy)
{
    return spy.isEmpty() ? QStringList{QStringLiteral("no signal")} : spy.constLast().constLast().toStringList();
}

} // namespace

/// The main view's counting for the list of measurements.
class TstMainViewPulses : public QObject {
    Q_OBJECT
private slots:
    void init() { resetProgram(); }

    void requestsOverTheWholeCaptureAreCounted();
    void aPairIsCountedBetweenItsMarkersWhicheverComesFirst();
    void aPairWithAMarkerThatIsNotShownIsLeftOut();
    void aMovedMarkerCountsTheRequestsOfItsPairOnly();
    void removingAMarkerTakesTheCountsOfItsPair();
    void withoutACaptureTheListIsEmpty();
    void aCaptureOfZeroSamplesGivesTheEmptyListAtOnce();
    void aNewCaptureIsCountedAtItsFirstRefreshAndNotAgain();
    void switchingAChannelCountsAnew();
    void nobodyAskingGivesTheEmptyList();
    void requestsThatMakeNoSenseHaveNoCounts();

private:
    static void place(MainViewDesk &desk, int marker, int x) { desk.view.slotTimeViewMarkerChanged(6, marker, 3, x); }
    /// Channel 0 rises at 100, falls at 200 and so on; one sample a pixel, from 0.
    static void loadSquare(MainViewDesk &desk)
    {
        desk.load(capture().samples(1000).pulses(0, std::vector<std::int32_t>(9, 100)));
        desk.gen.zoomSetRatio(1.0);
        desk.gen.setViewStart(0.0);
    }
};

void TstMainViewPulses::requestsOverTheWholeCaptureAreCounted()
{
    MainViewDesk desk;
    FakeRequests requests;
    loadSquare(desk);
    QSignalSpy all(&desk.view, &MainView::pulseMeasureChangedbySmpDone);
    requests.wanted = QStringList{QStringLiteral("0,0"), QStringLiteral("1,0")};
    desk.view.slotPulseMeasureInfoChanged();
    QCOMPARE(lastOf(all), (QStringList{QStringLiteral("0,0,5,4,4,4"), QStringLiteral("1,0,0,0,0,0")}));
}

void TstMainViewPulses::aPairIsCountedBetweenItsMarkersWhicheverComesFirst()
{
    MainViewDesk desk;
    FakeRequests requests;
    loadSquare(desk);
    requests.wanted = QStringList{QStringLiteral("0,1"), QStringLiteral("0,2")};
    desk.view.slotTimingMarkerPairClicked(0, 0);
    desk.view.slotTimingMarkerPairClicked(0, 2);
    place(desk, 0, 150);
    place(desk, 1, 450);
    place(desk, 2, 350);
    place(desk, 3, 250);
    QSignalSpy all(&desk.view, &MainView::pulseMeasureChangedbySmpDone);
    desk.view.slotPulseMeasureInfoChanged();
    QCOMPARE(lastOf(all), (QStringList{QStringLiteral("0,1,1,2,1,1"), QStringLiteral("0,2,1,0,0,0")}));
}

void TstMainViewPulses::aPairWithAMarkerThatIsNotShownIsLeftOut()
{
    MainViewDesk desk;
    FakeRequests requests;
    loadSquare(desk);
    requests.wanted = QStringList{QStringLiteral("0,1"), QStringLiteral("0,0")};
    desk.view.slotTimingMarkerPairClicked(0, 0);
    place(desk, 0, 150);
    QSignalSpy all(&desk.view, &MainView::pulseMeasureChangedbySmpDone);
    desk.view.slotPulseMeasureInfoChanged();
    QCOMPARE(lastOf(all), QStringList{QStringLiteral("0,0,5,4,4,4")});
}

void TstMainViewPulses::aMovedMarkerCountsTheRequestsOfItsPairOnly()
{
    MainViewDesk desk;
    FakeRequests requests;
    loadSquare(desk);
    requests.wanted = QStringList{QStringLiteral("0,0"), QStringLiteral("0,2")};
    desk.view.slotTimingMarkerPairClicked(0, 2);
    place(desk, 0, 150);
    QSignalSpy all(&desk.view, &MainView::pulseMeasureChangedbySmpDone);
    QSignalSpy pair(&desk.view, &MainView::pulseMeasureChangedbyTimeMarker);
    place(desk, 1, 250);
    QCOMPARE(all.count(), 0);
    QCOMPARE(pair.constLast().constFirst().toInt(), 1);
    QCOMPARE(lastOf(pair), QStringList{QStringLiteral("0,2,0,1,0,0")});
}

void TstMainViewPulses::removingAMarkerTakesTheCountsOfItsPair()
{
    MainViewDesk desk;
    FakeRequests requests;
    loadSquare(desk);
    requests.wanted = QStringList{QStringLiteral("0,1")};
    desk.view.slotTimingMarkerPairClicked(0, 0);
    place(desk, 0, 150);
    place(desk, 1, 250);
    QSignalSpy pair(&desk.view, &MainView::pulseMeasureChangedbyTimeMarker);
    desk.view.slotTimeViewMarkerChanged(5, 1, 0, 0);
    QCOMPARE(pair.count(), 1);
    QCOMPARE(lastOf(pair), QStringList());
}

void TstMainViewPulses::withoutACaptureTheListIsEmpty()
{
    MainViewDesk desk;
    FakeRequests requests;
    requests.wanted = QStringList{QStringLiteral("0,0")};
    QSignalSpy all(&desk.view, &MainView::pulseMeasureChangedbySmpDone);
    desk.view.slotPulseMeasureInfoChanged();
    QCOMPARE(all.count(), 1);
    QCOMPARE(lastOf(all), QStringList());
}

void TstMainViewPulses::aCaptureOfZeroSamplesGivesTheEmptyListAtOnce()
{
    MainViewDesk desk;
    FakeRequests requests;
    loadSquare(desk);
    requests.wanted = QStringList{QStringLiteral("0,0")};
    QSignalSpy all(&desk.view, &MainView::pulseMeasureChangedbySmpDone);
    capture().samples(0).fill(*gDev->smpData);
    desk.view.clearForNewData();
    QCOMPARE(all.count(), 1);
    QCOMPARE(lastOf(all), QStringList());
}

void TstMainViewPulses::aNewCaptureIsCountedAtItsFirstRefreshAndNotAgain()
{
    MainViewDesk desk;
    FakeRequests requests;
    requests.wanted = QStringList{QStringLiteral("0,0")};
    QSignalSpy all(&desk.view, &MainView::pulseMeasureChangedbySmpDone);
    capture().samples(1000).pulses(0, {100}).fill(*gDev->smpData);
    desk.view.clearForNewData();
    QCOMPARE(all.count(), 0);
    desk.view.refreshWave();
    QCOMPARE(all.count(), 1);
    QCOMPARE(lastOf(all), QStringList{QStringLiteral("0,0,1,0,0,0")});
    desk.view.refreshWave();
    QCOMPARE(all.count(), 1);
}

void TstMainViewPulses::switchingAChannelCountsAnew()
{
    MainViewDesk desk;
    QSignalSpy all(&desk.view, &MainView::pulseMeasureChangedbySmpDone);
    desk.view.slotChnEnaChanged();
    QCOMPARE(all.count(), 1);
}

void TstMainViewPulses::nobodyAskingGivesTheEmptyList()
{
    MainViewDesk desk;
    loadSquare(desk);
    QSignalSpy all(&desk.view, &MainView::pulseMeasureChangedbySmpDone);
    desk.view.slotPulseMeasureInfoChanged();
    QCOMPARE(lastOf(all), QStringList());
}

void TstMainViewPulses::requestsThatMakeNoSenseHaveNoCounts()
{
    MainViewDesk desk;
    FakeRequests requests;
    loadSquare(desk);
    requests.wanted =
        QStringList{QStringLiteral("99,0"), QStringLiteral("-1,0"), QStringLiteral("0,6"), QStringLiteral("0,-1")};
    QSignalSpy all(&desk.view, &MainView::pulseMeasureChangedbySmpDone);
    desk.view.slotPulseMeasureInfoChanged();
    QCOMPARE(lastOf(all),
             (QStringList{QStringLiteral("99,0,###,###,###,###"), QStringLiteral("-1,0,###,###,###,###")}));
}

LUX_GUI_TEST(TstMainViewPulses)
#include "tst_MainViewPulses.moc"
