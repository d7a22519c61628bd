#include "update/UpdateAddress.h"

#include "settings/HostSystem.h"

#include <QHostAddress>
#include <QSysInfo>
#include <QUrlQuery>

namespace UpdateAddress {

namespace {

constexpr int longestLink = 2000; // what browsers and servers agree on

bool isThisMachine(const QString &host)
{
    // RFC 6761, section 6.3: the name means the loopback address everywhere.
    return host == QLatin1String("localhost") || QHostAddress(host).isLoopback();
}

bool isHttps(const QUrl &url)
{
    return url.scheme() == QLatin1String("https");
}

} // namespace

bool isSafe(const QUrl &url)
{
    if (!url.isValid() || url.host().isEmpty()) {
        return false;
    }
    return isHttps(url) || (url.scheme() == QLatin1String("http") && isThisMachine(url.host()));
}

bool isNoLessSafe(const QUrl &from, const QUrl &to)
{
    return isSafe(to) && (isHttps(to) || !isHttps(from));
}

QUrl webLink(const QString &text)
{
    QUrl url(text.trimmed(), QUrl::StrictMode);
    const bool ofTheWeb = isHttps(url) || url.scheme() == QLatin1String("http");
    if (!url.isValid() || !ofTheWeb || url.host().isEmpty() || !url.userInfo().isEmpty() ||
        url.toEncoded().size() > longestLink) {
        return {};
    }
    return url;
}

QString markup(const QUrl &url, const QString &shown)
{
    if (url.isEmpty()) {
        return {};
    }
    // The usual blue cannot be read on the dark ground.
    return QStringLiteral("<a href=\"%1\" style=\"color:#b5dcff\">%2</a>")
        .arg(QString::fromLatin1(url.toEncoded()).toHtmlEscaped(), shown.toHtmlEscaped());
}

QUrl request(const QUrl &endpoint, const Facts &facts)
{
    QUrlQuery query;
    const auto add = [&query](const char *key, const QString &value) {
        query.addQueryItem(QString::fromLatin1(key), value);
    };
    add("app", QStringLiteral("lux"));
    add("ver", QStringLiteral(LUX_VERSION));
    add("op", QString::number(facts.operation));
    add("bw", QString::number(int(QSysInfo::WordSize)));
    add("os", osTag());
    add("mod", QString::number(facts.model));
    bool isNumber = false;
    const int place = facts.zeroSmpCnt.toInt(&isNumber);
    if (isNumber) {
        add("zc", QString::number(place));
    }
    QUrl url = endpoint;
    QString path = url.path();
    while (path.endsWith(QLatin1Char('/'))) {
        path.chop(1);
    }
    url.setPath(path + QStringLiteral("/update"));
    url.setQuery(query);
    url.setFragment(QString());
    return url;
}

} // namespace UpdateAddress
