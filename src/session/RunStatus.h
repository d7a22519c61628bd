#pragma once

#include <QString>

/// The words of a capture's states and errors, as plain values. All texts are translated. Any thread.
namespace RunStatus {

/// What a capture error says, and where.
struct ErrorText {
    QString text;
    /// True when it comes as a message box of its own; otherwise it goes into the progress dialog.
    bool box = false;
    /// True for a code without words: "S-" and state * 256 + error in hexadecimal.
    bool isCode = false;
};

/// @param transferMode  1 for a streaming device
[[nodiscard]] ErrorText errorText(int sta, int err, int transferMode);

/// The progress dialog's label for an error that goes there.
[[nodiscard]] QString dialogErrorText(int err, const ErrorText &error);

/// The label of a state, with its dots; empty for a state without one.
[[nodiscard]] QString stateText(int sta);

/// A reported percentage as it is shown: 1 to 99.
[[nodiscard]] int shownProgress(int value);

} // namespace RunStatus
