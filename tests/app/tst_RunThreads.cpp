#include "app/MainWindow.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "support/BareSession.h"
#include "support/CaptureBuilder.h"
#include "support/GuiTestMain.h"
#include "wave/WaveDataGen.h"

#include <QPointer>

#include <memory>

/// The whole window with its threads at work; meant for the ThreadSanitizer as much as for its own checks.
class TstRunThreads : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void aCaptureEndsInWavesWhileTheViewIsAnimated();
    void anAnimatedZoomSurvivesResizes();
    void theModelMayChangeDuringAnAnimation();
    void theWindowMayCloseDuringACapture();
    void aCaptureMayStartDuringAnAnimation();
    void theDeviceMayGoDuringACapture();

private:
    std::unique_ptr<Session> m_session;
    std::unique_ptr<MainWindow> m_window;
    WaveDataGen *m_gen = nullptr;
};

void TstRunThreads::init()
{
    QFile::remove(configPath());
    configLoad();
    m_session = makeSession();
    m_window = std::make_unique<MainWindow>(*m_session);
    m_window->resize(1000, 600);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    m_gen = m_window->findChild<WaveDataGen *>();
    QVERIFY(m_gen != nullptr);
}

void TstRunThreads::cleanup()
{
    m_window.reset();
    m_session.reset();
}

void TstRunThreads::aCaptureEndsInWavesWhileTheViewIsAnimated()
{
    gDev->setSmpDepthIndex(0);
    CaptureBuilder{}.fill(*gDev->smpData);
    emit gDev->sigSmpDataReady();
    m_gen->zoomInAt(100);
    gDev->startCapture();
    m_gen->zoomOutAt(50);
    QTRY_VERIFY_WITH_TIMEOUT(gDev->smpData->sampleCount() == 20000, 20000);
    QTRY_VERIFY(!m_gen->digLine(15).empty());
}

void TstRunThreads::anAnimatedZoomSurvivesResizes()
{
    CaptureBuilder{2000000}.fill(*gDev->smpData);
    emit gDev->sigSmpDataReady();
    for (int round = 0; round < 12; ++round) {
        m_gen->zoomInAt(10 * round);
        m_window->resize(900 + 17 * round, 500 + 7 * round);
        QCoreApplication::processEvents();
        QTest::qWait(15);
    }
    m_gen->zoomFit();
    QCOMPARE(m_gen->ratioSasPix(), 2000000.0 / m_gen->viewWidth());
}

void TstRunThreads::theModelMayChangeDuringAnAnimation()
{
    for (const int model : {9, 1, 97, 5, 0, 9}) {
        CaptureBuilder{200000}.fill(*gDev->smpData);
        emit gDev->sigSmpDataReady();
        m_gen->zoomInAt(200);
        QTest::qWait(20);
        m_window->slotDevPreConnect(model);
        QCOMPARE(gDev->model, model);
        QVERIFY(m_gen->digLine(0).empty());
    }
}

void TstRunThreads::theWindowMayCloseDuringACapture()
{
    gDev->setSmpDepthIndex(14);
    gDev->startCapture();
    QTest::qWait(150);
    QVERIFY(m_window->close());
    m_window.reset();
    m_session.reset();
}

void TstRunThreads::aCaptureMayStartDuringAnAnimation()
{
    CaptureBuilder{5000000}.fill(*gDev->smpData);
    emit gDev->sigSmpDataReady();
    gDev->setSmpDepthIndex(0);
    for (int round = 0; round < 3; ++round) {
        m_gen->zoomInAt(round * 100);
        QTest::qWait(20);
        gDev->startCapture();
        QTRY_VERIFY_WITH_TIMEOUT(gDev->smpData->sampleCount() == 20000, 20000);
    }
}

void TstRunThreads::theDeviceMayGoDuringACapture()
{
    gDev->setSmpDepthIndex(14);
    gDev->startCapture();
    QTest::qWait(120);
    m_window->slotDevPreConnect(9);
    QCOMPARE(gDev->model, 9);
    QCOMPARE(gDev->smpData->sampleCount(), 0);
}

LUX_GUI_TEST(TstRunThreads)
#include "tst_RunThreads.moc"
