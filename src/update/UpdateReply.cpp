#include "update/UpdateReply.h"

#include "settings/XmlText.h"

#include <QRegularExpression>

VersionNumber versionNumber(const QString &text)
{
    static const QRegularExpression digits(QStringLiteral("\\A[0-9]+\\z"));
    const QStringList parts = text.trimmed().split(QLatin1Char('.'));
    VersionNumber number{};
    for (std::size_t i = 0; i < number.size() && int(i) < parts.size(); ++i) {
        const QString &part = parts.at(int(i));
        number.at(i) = digits.match(part).hasMatch() ? part.toULongLong() : 0; // 0 also for a number that is too large
    }
    return number;
}

QString shownVersion(const QString &text)
{
    static const QRegularExpression plain(QStringLiteral("\\A[0-9A-Za-z][0-9A-Za-z.+~_-]{0,31}\\z"));
    if (plain.match(text).hasMatch()) {
        return text;
    }
    const VersionNumber number = versionNumber(text);
    return QStringLiteral("%1.%2.%3").arg(number[0]).arg(number[1]).arg(number[2]);
}

std::optional<UpdateReply> UpdateReply::parse(const QByteArray &bytes)
{
    QDomDocument document;
    if (!xmlParse(document, bytes)) {
        return std::nullopt;
    }
    const QDomElement root = document.documentElement();
    if (root.tagName() != QLatin1String("lux")) {
        return std::nullopt;
    }
    const auto text = [&root](const char *tag) {
        return root.firstChildElement(QString::fromLatin1(tag)).text().trimmed();
    };
    return UpdateReply{text("last"), text("support"), text("dnllink"), text("updlink")};
}
