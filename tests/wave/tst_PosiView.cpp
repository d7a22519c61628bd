#include "controls/Look.h"
#include "wave/PosiView.h"

#include <QSignalSpy>
#include <QTest>

#include <cmath>
#include <limits>

class TstPosiView : public QObject {
    Q_OBJECT
private slots:
    void theHandleStandsOutFromGroundAndWaves();
    void initTestCase();
    void withoutSamplesTheRangeIsEmptyAndMovesAreNotReported();
    void withoutAViewOrARatioTheRangeIsEmpty();
    void aCaptureThatFitsInTheViewHasOnePageAndNoRange();
    void theFiguresFollowTheView();
    void aDeepZoomStillHasAPageOfOne();
    void aStartBeforeTheCaptureIsZeroAndOnePastItIsTheEnd();
    void theLongestCaptureAndBadFiguresStayInRange();
    void aProgramUpdateIsNeverReported();
    void aUsersMoveIsReportedAsAShareOfTheWhole();
    void moveByMoveTheShareComesBackAsTheSameStep();
    void theKeysMoveTheBar();
};

namespace {
constexpr std::int64_t longest = std::int64_t(1) << 40;
}

void TstPosiView::initTestCase()
{
    globalsFillTables();
    gDpi = 96;
}

void TstPosiView::withoutSamplesTheRangeIsEmptyAndMovesAreNotReported()
{
    PosiView view;
    QSignalSpy moved(&view, &PosiView::sigPosiChanged);
    view.updatePosi(1000000, 1000, 10.0, 5000.0);
    QVERIFY(view.maximum() > 0);
    view.updatePosi(0, 1000, 10.0, 5000.0);
    QCOMPARE(view.minimum(), 0);
    QCOMPARE(view.maximum(), 0);
    QCOMPARE(view.posi, 0);
    view.setValue(7);
    view.slotBarValueChanged(7);
    QCOMPARE(moved.size(), 0);
}

void TstPosiView::withoutAViewOrARatioTheRangeIsEmpty()
{
    QCOMPARE(posiBar(1000, 0, 1.0, 0.0).maxV, 0);
    QCOMPARE(posiBar(1000, -1, 1.0, 0.0).page, 0);
    QCOMPARE(posiBar(1000, 10, 0.0, 0.0).maxV, 0);
    QCOMPARE(posiBar(-1, 10, 1.0, 0.0).maxV, 0);
}

void TstPosiView::aCaptureThatFitsInTheViewHasOnePageAndNoRange()
{
    const PosiBar exact = posiBar(1000, 1000, 1.0, 0.0);
    QCOMPARE(exact.page, 10000);
    QCOMPARE(exact.maxV, 0);
    const PosiBar wider = posiBar(1000, 4000, 1.0, -1500.0);
    QCOMPARE(wider.page, 10000);
    QCOMPARE(wider.maxV, 0);
    QCOMPARE(wider.value, 0);
    PosiView view;
    view.updatePosi(1000, 4000, 1.0, -1500.0);
    QCOMPARE(view.pageStep(), 10000);
    QCOMPARE(view.maximum(), 0);
}

void TstPosiView::theFiguresFollowTheView()
{
    // 1,000,000 samples: 100 of them a step. The view holds 10,055 samples, 100.55 steps.
    const PosiBar bar = posiBar(1000000, 1000, 10.055, 25099.0);
    QCOMPARE(bar.page, 100);
    QCOMPARE(bar.maxV, 9900); // the truncated page counts
    QCOMPARE(bar.value, 250);
}

void TstPosiView::aDeepZoomStillHasAPageOfOne()
{
    const PosiBar bar = posiBar(longest, 1000, 0.01, double(longest) / 2);
    QCOMPARE(bar.page, 1);
    QCOMPARE(bar.maxV, 9999);
    QCOMPARE(bar.value, 5000);
}

void TstPosiView::aStartBeforeTheCaptureIsZeroAndOnePastItIsTheEnd()
{
    QCOMPARE(posiBar(1000000, 1000, 10.0, -1000.0).value, 0);
    QCOMPARE(posiBar(1000000, 1000, 10.0, 2e6).value, 9900);
}

void TstPosiView::theLongestCaptureAndBadFiguresStayInRange()
{
    const double inf = std::numeric_limits<double>::infinity();
    for (const double ratio : {1e-300, 0.01, 1e9, 1e300, inf, -inf, double(NAN), -1.0}) {
        for (const double start : {-1e300, -1.0, 0.0, 1e12, 1e300, inf, -inf, double(NAN)}) {
            const PosiBar bar = posiBar(longest, 4000, ratio, start);
            QVERIFY(bar.maxV >= 0 && bar.maxV <= 10000);
            QVERIFY(bar.value >= 0 && bar.value <= bar.maxV);
            QVERIFY(bar.page >= 0 && bar.page <= 10000);
        }
    }
}

void TstPosiView::aProgramUpdateIsNeverReported()
{
    PosiView view;
    QSignalSpy moved(&view, &PosiView::sigPosiChanged);
    view.updatePosi(1000000, 1000, 10.0, 900000.0);
    QCOMPARE(view.value(), 9000);
    // The new range cuts the old value before the new one is set.
    view.updatePosi(1000000, 1000, 900.0, 50000.0);
    QCOMPARE(view.value(), 500);
    QCOMPARE(view.posi, 500);
    QCOMPARE(moved.size(), 0);
}

void TstPosiView::aUsersMoveIsReportedAsAShareOfTheWhole()
{
    PosiView view;
    view.updatePosi(1000000, 1000, 100.0, 0.0); // page 1000, maximum 9000
    QSignalSpy moved(&view, &PosiView::sigPosiChanged);
    view.setValue(2500);
    view.setValue(0); // back to where the program had put it: nothing to report
    QCOMPARE(moved.size(), 1);
    QCOMPARE(moved.at(0).at(0).toDouble(), 0.25);
}

void TstPosiView::moveByMoveTheShareComesBackAsTheSameStep()
{
    for (const std::int64_t n : {std::int64_t(99991), std::int64_t(1234567), std::int64_t(10000000000), longest}) {
        for (int step = 0; step < 9999; ++step) {
            const PosiBar bar = posiBar(n, 10, 0.01, double(n) * (double(step) / 10000));
            QCOMPARE(bar.value, step);
        }
    }
}

void TstPosiView::theKeysMoveTheBar()
{
    PosiView view;
    view.updatePosi(1000000, 1000, 100.0, 0.0);
    QSignalSpy moved(&view, &PosiView::sigPosiChanged);
    QTest::keyClick(&view, Qt::Key_PageDown);
    QCOMPARE(moved.size(), 1);
    QCOMPARE(moved.at(0).at(0).toDouble(), 0.1);
}

/// Relative luminance (WCAG 2.1, section "relative luminance").
static double luminance(const QColor &color)
{
    const auto linear = [](double c) { return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

void TstPosiView::theHandleStandsOutFromGroundAndWaves()
{
    const double handle = luminance(PosiView::handleColor()) + 0.05;
    QVERIFY(handle / (luminance(gGreys[7]) + 0.05) >= 3.0);
    QVERIFY((luminance(gGreys[0]) + 0.05) / handle >= 3.0);
}

QTEST_MAIN(TstPosiView)
#include "tst_PosiView.moc"
