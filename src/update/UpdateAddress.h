#pragma once

#include <QString>
#include <QUrl>

/// Which addresses are asked, followed and shown, and what is sent to them. Pure functions: any thread.
namespace UpdateAddress {

/// True if the service may be asked there: over HTTPS, or over HTTP on this machine itself.
[[nodiscard]] bool isSafe(const QUrl &url);

/// True if an answer of `from`, a safe address, may lead on to `to`: what was asked over HTTPS stays so.
[[nodiscard]] bool isNoLessSafe(const QUrl &from, const QUrl &to);

/// The address that a reply offers to the user; empty if it is none of the web (http, https), or holds a user's name,
/// which reads like another host, or is longer than 2000 characters.
[[nodiscard]] QUrl webLink(const QString &text);

/// `url` as the markup of a link that shows `shown`; empty for an empty address.
[[nodiscard]] QString markup(const QUrl &url, const QString &shown);

/// What one request tells of this program. Nothing else of the user's goes out.
struct Facts {
    int operation = 0;  ///< 0 asked by itself, 1 by the user
    int model = 0;      ///< code of the device object
    QString zeroSmpCnt; ///< of the last malformed record; left out unless it is an integer
};

/// The request for a newer version: the endpoint's path and "/update", with the facts as its query.
[[nodiscard]] QUrl request(const QUrl &endpoint, const Facts &facts);

} // namespace UpdateAddress
