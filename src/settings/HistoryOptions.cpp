#include "settings/HistoryOptions.h"

#include "settings/Config.h"

#include <QFileInfo>
#include <QUrl>

namespace {

/// The number of a key; `otherwise` if it is none from `least` to `most`.
int numberOf(const QString &key, int least, int most, int otherwise)
{
    bool isNumber = false;
    const int number = globalGet(key).toInt(&isNumber);
    return isNumber && number >= least && number <= most ? number : otherwise;
}

QString recentKey()
{
    return QStringLiteral("recentFiles");
}

void storePaths(const QStringList &paths)
{
    QStringList items;
    for (const QString &path : paths) {
        items += QString::fromLatin1(QUrl::toPercentEncoding(path, "/:")); // commas and blanks part lists
    }
    globalSet(recentKey(), items.join(QLatin1Char(',')));
}

} // namespace

HistoryOptions HistoryOptions::stored()
{
    HistoryOptions options;
    options.keep = KeepCaptures(numberOf(QStringLiteral("keepCaptures"), 0, 2, 0));
    options.captures = numberOf(QStringLiteral("historyCaptures"), 1, capturesMost, options.captures);
    options.gigabytes = numberOf(QStringLiteral("historyGigabytes"), 1, gigabytesMost, options.gigabytes);
    return options;
}

void HistoryOptions::store() const
{
    globalSet(QStringLiteral("keepCaptures"), QString::number(int(keep)));
    globalSet(QStringLiteral("historyCaptures"), QString::number(captures));
    globalSet(QStringLiteral("historyGigabytes"), QString::number(gigabytes));
}

QStringList RecentFiles::paths()
{
    QStringList paths;
    for (const QString &item : globalGet(recentKey()).split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const QString path = QUrl::fromPercentEncoding(item.toUtf8());
        if (QFileInfo(path).isAbsolute() && !paths.contains(path) && paths.size() < most) {
            paths.append(path);
        }
    }
    return paths;
}

void RecentFiles::add(const QString &path)
{
    const QString whole = QFileInfo(path).absoluteFilePath();
    QStringList list = paths();
    list.removeAll(whole);
    list.prepend(whole);
    storePaths(list.mid(0, most));
}

void RecentFiles::remove(const QString &path)
{
    QStringList list = paths();
    list.removeAll(QFileInfo(path).absoluteFilePath());
    storePaths(list);
}
