#pragma once

#include "app/MainWindow.h"
#include "controls/MyProgressDlg.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "session/Session.h"
#include "settings/Globals.h"
#include "support/BareSession.h"
#include "support/CaptureBuilder.h"
#include "support/GuiTestMain.h"
#include "wave/WaveDataGen.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QUrl>

#include <memory>

/// A main window over a device without hardware, with the empty configuration. Base of test classes of the window.
class WindowDesk {
protected:
    void setUp(int model = 0)
    {
        QFile::remove(configPath());
        configLoad();
        gOpenFile.clear();
        m_session = makeSession(model);
        makeWindow();
    }

    void tearDown()
    {
        m_window.reset();
        m_session.reset();
    }

    void makeWindow() { makeWindow(*m_session); }
    void makeWindow(Session &session)
    {
        m_window = std::make_unique<MainWindow>(session);
        m_window->resize(1200, 700);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        m_dialog = m_window->findChild<MyProgressDlg *>(QStringLiteral("smpDialog"));
        m_connectDialog = m_window->findChild<MyProgressDlg *>(QStringLiteral("connectDialog"));
        m_gen = m_window->findChild<WaveDataGen *>();
        QVERIFY(m_dialog != nullptr && m_connectDialog != nullptr && m_gen != nullptr);
    }

    static void capture(std::int64_t samples = 100000)
    {
        CaptureBuilder{samples}.fill(*gDev->smpData);
        emit gDev->sigSmpDataReady();
    }

    /// Drags and drops; a drop is delivered only to the window that has taken the drag.
    void drop(const QUrl &url)
    {
        // A file manager may offer the file for moving, and would then delete it.
        const Qt::DropActions offered = Qt::CopyAction | Qt::MoveAction;
        QMimeData mime;
        mime.setUrls({url});
        QDragEnterEvent enter(QPoint(50, 50), offered, &mime, Qt::LeftButton, Qt::ShiftModifier);
        QApplication::sendEvent(m_window.get(), &enter);
        QVERIFY(enter.isAccepted());
        QCOMPARE(enter.dropAction(), Qt::CopyAction);
        QDropEvent event(QPointF(50, 50), offered, &mime, Qt::LeftButton, Qt::ShiftModifier);
        QApplication::sendEvent(m_window.get(), &event);
        QVERIFY(event.isAccepted());
        QCOMPARE(event.dropAction(), Qt::CopyAction);
    }
    void drop(const QString &path) { drop(QUrl::fromLocalFile(path)); }

    std::unique_ptr<Session> m_session;
    std::unique_ptr<MainWindow> m_window;
    MyProgressDlg *m_dialog = nullptr; ///< of captures
    MyProgressDlg *m_connectDialog = nullptr;
    WaveDataGen *m_gen = nullptr;
};
