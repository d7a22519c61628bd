#pragma once

#include "settings/Globals.h"

#include <QString>
#include <QStringList>

/// A channel's text with all seventeen parameters, each with `prefix` and its number as its value: "Period:a0,...".
inline QString analogText(const QString &prefix)
{
    QStringList parts;
    for (int id = 0; id < gMeasureNames.size(); ++id) {
        parts.append(gMeasureNames.at(id) + QLatin1Char(':') + prefix + QString::number(id));
    }
    return parts.join(QLatin1Char(','));
}

/// The same with another value for one parameter.
inline QString analogText(const QString &prefix, const QString &name, const QString &value)
{
    QStringList parts = analogText(prefix).split(QLatin1Char(','));
    parts[gMeasureNames.indexOf(name)] = name + QLatin1Char(':') + value;
    return parts.join(QLatin1Char(','));
}
