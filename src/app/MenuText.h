#pragma once

#include <QString>

/// A text as the entry of a menu: an ampersand would underline the letter behind it.
[[nodiscard]] inline QString plainEntry(QString text)
{
    return text.replace(QLatin1Char('&'), QStringLiteral("&&"));
}
