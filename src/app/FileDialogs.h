#pragma once

#include <QDateTime>
#include <QString>

class QWidget;

/// The two file dialogs: what they offer, and where they begin. They are the system's own where it has some. Main
/// thread.
namespace FileDialogs {

/// A kind of file that can be written.
struct SaveKind {
    QString title;  ///< of the dialog, translated
    QString filter; ///< translated; several are parted by ";;"
    QString suffix; ///< of the first filter, without the dot; empty for an unknown kind
};

inline constexpr int vcd = 6;
inline constexpr int sr = 7;

/// `kind`: 0 data, 1 settings, 2 text, 3 CSV, 4 binary, 5 picture, which has two filters, 6 VCD, 7 session archive.
/// Pure but for the language.
[[nodiscard]] SaveKind saveKind(int kind);

/// The proposed name of a file that is written at `time`, without suffix; legal on all systems. Pure.
[[nodiscard]] QString proposedName(const QDateTime &time);

/// The directory in which a dialog begins: the key "lastPath", or the user's documents if that is empty or names no
/// directory any more; without documents the home.
[[nodiscard]] QString startDirectory();

/// Asks for a path to write to; a file that exists is replaced only if the user says so. Stores the directory in
/// "lastPath".
/// @param ending  what a name without an ending gets, without the dot; empty for the suffix of the kind
/// @return with suffix; empty on cancel, and at once for an unknown kind
[[nodiscard]] QString askSavePath(QWidget *parent, int kind, const QDateTime &now, const QString &ending = {});

/// Asks for an existing data or settings file, or another program's capture. Stores the directory in "lastPath".
/// @return empty on cancel
[[nodiscard]] QString askOpenPath(QWidget *parent);

} // namespace FileDialogs
