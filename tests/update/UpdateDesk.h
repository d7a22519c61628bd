#pragma once

#include "support/GuiTestMain.h"
#include "update/CheckUpdate.h"
#include "update/LoopbackServer.h"
#include "update/UpdateDialog.h"

#include <QAbstractButton>
#include <QLabel>
#include <QTimer>

#include <memory>

/// What the dialog shows.
struct ShownState {
    QStringList texts; ///< of the three labels
    bool canUpdate = false;

    bool operator==(const ShownState &) const = default;
};
Q_DECLARE_METATYPE(ShownState)

inline QAbstractButton *buttonOf(const UpdateDialog &dialog, const char *text)
{
    for (QAbstractButton *button : dialog.findChildren<QAbstractButton *>()) {
        if (button->text() == QString::fromLatin1(text)) {
            return button;
        }
    }
    return nullptr;
}

inline ShownState stateOf(const UpdateDialog &dialog)
{
    ShownState state;
    for (const QLabel *label : dialog.findChildren<QLabel *>()) {
        state.texts += label->text();
    }
    state.canUpdate = buttonOf(dialog, "OK")->isEnabled();
    return state;
}

inline QString linkMarkup(const char *url)
{
    return QStringLiteral("<a href=\"%1\" style=\"color:#b5dcff\">%1</a>").arg(QString::fromLatin1(url));
}

inline const ShownState waiting{{QString(), QStringLiteral("Looking for updates, please wait..."), QString()}, false};
inline const ShownState latest{{QString(), QStringLiteral("It's the latest version, no updates required."), QString()},
                               false};
inline const ShownState failed{{QString(), QStringLiteral("Update check failed."), QString()}, false};

/// Waits for events, without the pauses of QTRY_*: client and server pass the ball to each other many times.
template<class Condition>
bool waitFor(Condition isReached)
{
    QTimer end;
    end.setSingleShot(true);
    end.start(30'000);
    while (!isReached() && end.isActive()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return isReached();
}

/// Base of test classes of the check: a window, a server on this machine, and a check that asks it without delay at a
/// time that stands still.
class UpdateDesk {
protected:
    void setUp()
    {
        QFile::remove(configPath());
        configLoad();
        m_server = std::make_unique<LoopbackServer>();
        m_window = std::make_unique<QWidget>();
        makeCheck({m_server->url(), true, {0, 0, 60'000}});
    }

    void makeCheck(const UpdateSource &source)
    {
        m_check = new CheckUpdate(source, m_window.get());
        m_check->now = [this] { return m_now; };
        m_check->model = [] { return 8; };
    }

    void tearDown()
    {
        m_window.reset();
        m_server.reset();
    }

    /// The service answers with these children of the root "lux".
    void serve(const QByteArray &children) { serveBytes(LoopbackServer::ok("<lux>" + children + "</lux>")); }

    void serveBytes(const QByteArray &bytes)
    {
        m_server->answer = [bytes](const QByteArray &) { return bytes; };
    }

    [[nodiscard]] UpdateDialog &dialog() const { return *m_check->dialog; }

    /// Waits until a check has come to an end that shows in its dialog. @return what that shows
    static ShownState outcomeOf(const CheckUpdate &check)
    {
        waitFor([&check] { return !(stateOf(*check.dialog) == waiting); });
        return stateOf(*check.dialog);
    }
    [[nodiscard]] ShownState outcome() const { return outcomeOf(*m_check); }
    [[nodiscard]] bool isOver() const { return !(outcome() == waiting); }

    QDateTime m_now{QDate(2026, 3, 9), QTime(7, 5, 1)};
    std::unique_ptr<LoopbackServer> m_server;
    std::unique_ptr<QWidget> m_window;
    CheckUpdate *m_check = nullptr; ///< of the window
};
