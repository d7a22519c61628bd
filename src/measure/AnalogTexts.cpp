#include "measure/AnalogTexts.h"

namespace {

/// True for "nan" and "inf" of either sign, whatever the unit after it.
bool isNoNumber(const QString &value)
{
    const bool isSigned = value.startsWith(QLatin1Char('-')) || value.startsWith(QLatin1Char('+'));
    const QString number = isSigned ? value.mid(1) : value;
    return number.startsWith(QLatin1String("nan"), Qt::CaseInsensitive) ||
           number.startsWith(QLatin1String("inf"), Qt::CaseInsensitive);
}

} // namespace

QString AnalogTexts::noValue()
{
    return QStringLiteral("--");
}

QStringList AnalogTexts::partsOf(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char(','));
    return parts.size() < 2 ? QStringList() : parts;
}

bool AnalogTexts::takeValue(QStringList &parts, const QString &name, QString &value)
{
    for (int i = 0; i < parts.size(); ++i) {
        const QStringList pieces = parts.at(i).split(QLatin1Char(':'));
        if (pieces.size() > 1 && pieces.first() == name) {
            value = isNoNumber(pieces.at(1)) ? noValue() : pieces.at(1);
            parts.removeAt(i);
            return true;
        }
    }
    return false;
}
