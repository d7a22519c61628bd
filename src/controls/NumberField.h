#pragma once

#include <QString>

#include <optional>

class QLineEdit;

/// What fields for numbers have in common. Main thread, but for the reading, which is pure.

/// Reads what a user has typed: a decimal number with a point or a comma, blanks around it.
/// @return nothing for any other text, also for one with both, or several of them; infinities are no numbers
[[nodiscard]] std::optional<double> typedNumber(const QString &text);

/// Tells that a field's text cannot be taken: its outline changes, `why` is its tool tip and what a screen reader says
/// of it, and shows at once if the field is on the screen. Until the next edit, or clearFault().
/// @param why  translated
void showFault(QLineEdit &field, const QString &why);
/// Takes that back; nothing on a field without a fault. Its tool tip and description are what they were.
void clearFault(QLineEdit &field);
[[nodiscard]] bool hasFault(const QLineEdit &field);
