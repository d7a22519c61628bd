#include "protocol/ChannelChoice.h"

#include <algorithm>

namespace ChannelChoice {

QVector<Entry> entriesOf(const QStringList &usage, const std::function<QString(int)> &nameOf)
{
    QVector<Entry> entries;
    for (int i = 0; i + 1 < usage.size(); i += 2) {
        const int number = usage.at(i).toInt();
        entries.append({number, nameOf(number), usage.at(i + 1)});
    }
    return entries;
}

QString textOf(const Entry &entry)
{
    const QString text = QStringLiteral("%1 - '").arg(entry.number) + entry.name + QLatin1Char('\'');
    return entry.usedBy.isEmpty() ? text : text + QStringLiteral("    (") + entry.usedBy + QLatin1Char(')');
}

int placeForNew(const QVector<Entry> &entries, int k, int listed)
{
    int free = 0;
    for (int place = 0; place < entries.size(); ++place) {
        if (entries.at(place).usedBy.isEmpty() && free++ == k) {
            return place;
        }
    }
    const int place = k >= listed ? k - listed : k;
    return std::min(place, listed - 1);
}

int placeOf(const QVector<Entry> &entries, unsigned channel, unsigned undefined, int listed)
{
    if (channel == undefined) {
        return listed - 1;
    }
    for (int place = 0; place < entries.size(); ++place) {
        if (unsigned(entries.at(place).number) == channel) {
            return place;
        }
    }
    return 0;
}

} // namespace ChannelChoice
