#pragma once

#include <QString>
#include <QStringList>

/// What is chosen about the history of captures, and the files that were opened last. Both are the program's own: they
/// stay when somebody's file is opened, and the list of files goes into no file that is passed on. Main thread.

/// Which captures are kept. The numbers are what is stored.
enum class KeepCaptures { OfInstruments = 0, All = 1, None = 2 };

struct HistoryOptions {
    KeepCaptures keep = KeepCaptures::OfInstruments;
    int captures = 20; ///< at most so many
    int gigabytes = 2; ///< at most so much

    static constexpr int capturesMost = 999;
    static constexpr int gigabytesMost = 999;

    bool operator==(const HistoryOptions &) const = default;

    /// The stored options; the default of each that is missing or out of range.
    [[nodiscard]] static HistoryOptions stored();
    void store() const;
};

/// The files that were opened or saved last, the newest first.
namespace RecentFiles {

inline constexpr int most = 10;

[[nodiscard]] QStringList paths();
/// Puts a file in front; the oldest beyond `most` is forgotten.
void add(const QString &path);
void remove(const QString &path);

} // namespace RecentFiles
