#pragma once

#include "update/UpdateSource.h"

#include <QBasicTimer>
#include <QDateTime>
#include <QObject>
#include <QString>

#include <functional>

class QNetworkAccessManager;
class QNetworkReply;
class QWidget;
class UpdateDialog;

/// The form of the key "lastUpdate", local time.
inline const QString updateTimeFormat = QStringLiteral("yyyy-MM-dd_hh:mm:ss");

/// True if a check by itself is due at `now`: the last one is seven days of 24 hours back or more, or lies in the
/// future, since a clock has been set back; a text that is no time counts as the epoch. Pure.
[[nodiscard]] bool isUpdateCheckDue(const QString &lastUpdate, const QDateTime &now);

/// Asks the update service for a newer version: by itself at most once in seven days, and whenever the user wants it.
///
/// A failure is told only where the user has asked. The answer of at most 64 KiB has 15 s, redirections included; only
/// safe places are asked (UpdateAddress), and nobody when the build names none. Names are looked up, and redirections
/// followed, step by step here, so that each place is judged before anything is sent to it.
///
/// It has a network access manager of Qt's and is none: making one takes 30 ms and starts two threads, which a start
/// without a check would pay for. Main thread; what Qt's own threads find comes by signals.
class CheckUpdate : public QObject {
    Q_OBJECT
public:
    /// Asks nobody yet. @param window  not owned; parent of this and of the dialog
    explicit CheckUpdate(UpdateSource source, QWidget *window);
    ~CheckUpdate() override;

    /// What a check asks of the world; a test answers instead.
    std::function<QDateTime()> now;
    std::function<int()> model; ///< code of the present device object
    /// Looks a host's name up and calls `done`, with the context of this object, whether there is one of that name.
    std::function<void(const QString &host, std::function<void(bool isFound)> done)> lookUp;
    UpdatePace pace; ///< that of the source; counts from the next check on

    UpdateDialog *dialog;   ///< owned by the window
    qint32 operation = 0;   ///< 0 for the automatic check, 1 for the one that the user asked for
    bool cancelled = false; ///< the dialog has been rejected since the last request

    /// True if this build makes checks at its start at all.
    [[nodiscard]] bool canCheckAtStart() const;
    /// Begins a check in 5 s if one is due and this build makes any. Nothing is shown unless there is a newer version.
    void checkAtStart();
    /// Ends what is under way and waits for nothing: for the end of the program.
    void stop();
    /// True while a name is looked up that the system has not found yet. Nothing ends that, and the application object
    /// would wait for it when it is destroyed.
    [[nodiscard]] bool isLookingUp() const { return m_lookUps > 0; }

public slots:
    /// Shows the dialog in its waiting state and begins the check that the user asked for.
    void actCheckUpdate();
    /// The user does not want to know any more: ends the check.
    void slotUpdateCancel();
    void slotReplyFinished(QNetworkReply *reply);

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    void request();
    /// Goes to `url`, which is safe: first its host, then the request itself.
    void ask(const QUrl &url);
    void send(const QUrl &url);
    void refuseHugeReply();
    void follow(const QUrl &from, const QUrl &to);
    void showOutcome(const QByteArray &bytes);
    void showDialog();
    void letGo();
    void fail();

    UpdateSource m_source;
    QNetworkAccessManager *m_manager = nullptr; ///< from the first request on
    QNetworkReply *m_reply = nullptr;           ///< the one under way; any other is of a check that was given up
    QBasicTimer m_begin;
    QBasicTimer m_limit;
    int m_hops = 0;    ///< redirections of this check
    int m_turn = 0;    ///< raised when a check is given up: what was looked up for it is then not used
    int m_lookUps = 0; ///< that have not been answered
};
