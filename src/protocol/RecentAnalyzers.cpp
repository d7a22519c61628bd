#include "protocol/RecentAnalyzers.h"

void RecentAnalyzers::update(const QString &stored, const QStringList &inUse,
                             const std::function<QString(const QString &)> &displayName)
{
    if (m_files.isEmpty()) {
        const QString first = stored.isEmpty() ? QStringLiteral("CAN.dll,I2C.dll,SPI.dll,UART.dll") : stored;
        m_files = first.split(QLatin1Char(','), Qt::SkipEmptyParts);
    }
    for (const QString &file : inUse) {
        m_files.removeAll(file);
    }
    m_files += inUse;
    QStringList known;
    for (const QString &file : qAsConst(m_files)) {
        if (!known.contains(file) && !displayName(file).isEmpty()) {
            known.append(file);
        }
    }
    m_files = known.mid(qMax(known.size() - most, 0));
}

QStringList RecentAnalyzers::namesOfRows(const QStringList &rows)
{
    QStringList names;
    for (int row = rows.size() - 1; row >= 0 && names.size() < most; --row) {
        if (!names.contains(rows.at(row))) {
            names.prepend(rows.at(row));
        }
    }
    return names;
}
