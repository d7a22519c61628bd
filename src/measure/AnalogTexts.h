#pragma once

#include <QString>
#include <QStringList>

/// The measured values of an analog channel as the generator hands them over: "Period:1ms,Frequency:1KHz,..." or an
/// empty text for a signal that could not be measured. Pure functions, any thread.
namespace AnalogTexts {

/// What a value reads as that is not known.
[[nodiscard]] QString noValue();

/// The parts of a channel's text, such as "Period:1ms"; none for a text without values.
[[nodiscard]] QStringList partsOf(const QString &text);

/// Takes the first part called `name` out of `parts`.
/// @param value  set to its value as it is shown: what is no number, or without an end, counts as not known
/// @return false when there is no such part; `value` then stays as it is
[[nodiscard]] bool takeValue(QStringList &parts, const QString &name, QString &value);

} // namespace AnalogTexts
