#include "update/CheckUpdate.h"

#include "settings/Config.h"
#include "update/UpdateAddress.h"
#include "update/UpdateDialog.h"
#include "update/UpdateReply.h"

#include <QHostAddress>
#include <QHostInfo>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QTimerEvent>
#include <QWidget>

#include <utility>

#if QT_CONFIG(ssl)
#include <QSslConfiguration>
#endif

namespace {

constexpr qint64 daySeconds = qint64{24} * 60 * 60;
constexpr qint64 daysBetween = 7;
constexpr qint64 replyLimit = qint64{64} * 1024; // bytes; a reply has some 300
constexpr int mostHops = 5;

const QString lastUpdateKey = QStringLiteral("lastUpdate");
const QString zeroKey = QStringLiteral("zeroSmpCnt");

/// A request that tells nothing but its address: Qt would add the system's language, and cookies of a former place.
QNetworkRequest bareRequest(const QUrl &url)
{
    QNetworkRequest request(url);
    request.setRawHeader("User-Agent", "CorvanLUX");
    request.setRawHeader("Accept-Language", "*");
    request.setRawHeader("Accept-Encoding", "identity"); // what is small when packed may be huge
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
#if QT_CONFIG(ssl)
    if (url.scheme() == QLatin1String("https")) {
        QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
        tls.setProtocol(QSsl::TlsV1_2OrLater);
        request.setSslConfiguration(tls);
    }
#endif
    return request;
}

} // namespace

bool isUpdateCheckDue(const QString &lastUpdate, const QDateTime &now)
{
    const QDateTime last = QDateTime::fromString(lastUpdate, updateTimeFormat);
    if (!last.isValid()) {
        return true; // the epoch is long past
    }
    const qint64 seconds = last.secsTo(now);
    return seconds < 0 || seconds / daySeconds >= daysBetween;
}

CheckUpdate::CheckUpdate(UpdateSource source, QWidget *window)
    : QObject(window),
      now([] { return QDateTime::currentDateTime(); }),
      model([] { return 0; }),
      lookUp([this](const QString &host, std::function<void(bool)> done) {
          QHostInfo::lookupHost(host, this, [done = std::move(done)](const QHostInfo &info) {
              done(info.error() == QHostInfo::NoError && !info.addresses().isEmpty());
          });
      }),
      pace(source.pace),
      dialog(new UpdateDialog(window)),
      m_source(std::move(source))
{
    connect(dialog, &QDialog::rejected, this, &CheckUpdate::slotUpdateCancel);
}

CheckUpdate::~CheckUpdate() = default;

bool CheckUpdate::canCheckAtStart() const
{
    return m_source.atStart && UpdateAddress::isSafe(m_source.endpoint);
}

void CheckUpdate::checkAtStart()
{
    if (!canCheckAtStart() || !isUpdateCheckDue(globalGet(lastUpdateKey), now())) {
        return;
    }
    operation = 0;
    m_begin.start(pace.startDelay, Qt::CoarseTimer, this);
}

void CheckUpdate::actCheckUpdate()
{
    letGo(); // a check that is under way would show its outcome as this one's
    dialog->setAttribute(Qt::WA_ShowWithoutActivating, false);
    dialog->showWaiting();
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
    operation = 1;
    m_begin.start(pace.askDelay, this);
}

void CheckUpdate::stop()
{
    m_begin.stop();
    letGo();
    dialog->hide();
}

void CheckUpdate::slotUpdateCancel()
{
    cancelled = true;
    m_begin.stop();
    letGo();
}

void CheckUpdate::timerEvent(QTimerEvent *event)
{
    if (event->timerId() == m_begin.timerId()) {
        m_begin.stop();
        // Before the request, so that a failed check counts as done as well.
        globalSet(lastUpdateKey, now().toString(updateTimeFormat));
        request();
    } else if (event->timerId() == m_limit.timerId()) {
        fail();
    }
}

void CheckUpdate::request()
{
    letGo();
    cancelled = false;
    if (!UpdateAddress::isSafe(m_source.endpoint)) {
        fail();
        return;
    }
    const QUrl url = UpdateAddress::request(m_source.endpoint, {operation, model(), globalGet(zeroKey)});
    globalSet(zeroKey, QString()); // each value is sent once
    m_hops = 0;
    m_limit.start(pace.limit, this);
    ask(url);
}

void CheckUpdate::ask(const QUrl &url)
{
    if (!QHostAddress(url.host()).isNull()) {
        send(url);
        return;
    }
    ++m_lookUps;
    lookUp(url.host(), [this, url, turn = m_turn](bool isFound) {
        --m_lookUps;
        if (turn != m_turn) {
            return;
        }
        if (isFound) {
            send(url); // Qt remembers the host for a minute and does not ask for it again
        } else {
            fail();
        }
    });
}

void CheckUpdate::send(const QUrl &url)
{
    if (m_manager == nullptr) {
        m_manager = new QNetworkAccessManager(this);
        m_manager->setProxy(QNetworkProxy::NoProxy); // Qt would ask the system's, who then learns who asks whom
        connect(m_manager, &QNetworkAccessManager::finished, this, &CheckUpdate::slotReplyFinished);
    }
    m_reply = m_manager->get(bareRequest(url));
    m_reply->setReadBufferSize(replyLimit + 1);
    connect(m_reply, &QNetworkReply::readyRead, this, &CheckUpdate::refuseHugeReply);
}

void CheckUpdate::refuseHugeReply()
{
    if (m_reply != nullptr && m_reply->bytesAvailable() > replyLimit) {
        fail();
    }
}

void CheckUpdate::slotReplyFinished(QNetworkReply *reply)
{
    reply->deleteLater();
    if (reply != m_reply) {
        return;
    }
    m_reply = nullptr;
    const QByteArray bytes = reply->read(replyLimit + 1);
    const QUrl target = reply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const bool isWhole = reply->error() == QNetworkReply::NoError && bytes.size() <= replyLimit;
    if (isWhole && !target.isEmpty()) {
        follow(reply->url(), reply->url().resolved(target));
    } else if (isWhole && status == 200) {
        letGo();
        showOutcome(bytes);
    } else {
        fail();
    }
}

void CheckUpdate::follow(const QUrl &from, const QUrl &to)
{
    if (++m_hops > mostHops || !UpdateAddress::isNoLessSafe(from, to)) {
        fail();
    } else {
        ask(to);
    }
}

void CheckUpdate::showOutcome(const QByteArray &bytes)
{
    const std::optional<UpdateReply> reply = UpdateReply::parse(bytes);
    if (!reply) {
        fail();
        return;
    }
    const VersionNumber own = versionNumber(QStringLiteral(LUX_VERSION));
    if (!(own < versionNumber(reply->last))) {
        dialog->showLatest();
        return;
    }
    const QString version = shownVersion(reply->last);
    const QUrl download = UpdateAddress::webLink(reply->dnllink);
    const QUrl update = UpdateAddress::webLink(reply->updlink);
    // An updater without an address would only close the program.
    if (own < versionNumber(reply->support) || update.isEmpty()) {
        dialog->showManual(version, download);
    } else {
        dialog->showAutomatic(version, download, update);
    }
    if (!cancelled) {
        showDialog();
    }
}

void CheckUpdate::showDialog()
{
    // Nobody has asked for it: the keys that the user is pressing stay where they are.
    dialog->setAttribute(Qt::WA_ShowWithoutActivating, operation == 0);
    dialog->show();
}

/// Ends the request under way; its answer, and that to the question for a host, will not be looked at.
void CheckUpdate::letGo()
{
    ++m_turn;
    m_limit.stop();
    if (QNetworkReply *reply = std::exchange(m_reply, nullptr)) {
        reply->abort(); // which tells slotReplyFinished(), at once
    }
}

void CheckUpdate::fail()
{
    letGo();
    dialog->showFailed();
}
