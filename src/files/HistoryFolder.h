#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QVector>

#include <cstdint>

class SmpData;

/// One line of a capture's small picture: for each of pictureColumns columns '0' low, '1' high, 'x' at least one
/// transition.
using PictureRow = QByteArray;
inline constexpr int pictureColumns = 64;
inline constexpr int pictureRowsMost = 6;

/// One capture of the history.
struct HistoryEntry {
    QString path;               ///< of its data file (.cxdat)
    QDateTime time;             ///< when it was captured, UTC, to the millisecond
    QString model;              ///< the model's name; empty where it is not known
    std::int64_t samples = 0;   ///< its length
    std::int64_t frequency = 0; ///< Hz
    std::int64_t bytes = 0;     ///< of the file
    QVector<PictureRow> picture{};
    /// Its length in seconds; 0 where the rate is not known.
    [[nodiscard]] double seconds() const { return frequency > 0 ? double(samples) / double(frequency) : 0; }
};

/// How much a history may hold. The newest capture stays whatever its number.
struct HistoryLimits {
    int captures = 20;
    std::int64_t bytes = std::int64_t(2) << 30;
};

/// The small picture of a closed capture: the channels with transitions first, in ascending order, as many as fit.
/// The caller is admitted to read. Cost: some microseconds a channel, whatever the capture's length.
[[nodiscard]] QVector<PictureRow> pictureOf(const SmpData &data);

/// The folder of a history: whole data files, named by time, model and process, and beside each a text file with its
/// small picture, which may be missing. docs/formats.md tells both.
///
/// Several programs may use one folder at once: names are unique, and a file that another one has removed is none. A
/// value without state; any thread. All operations read or write the disk, and block as long as that takes.
class HistoryFolder {
public:
    explicit HistoryFolder(const QString &path);

    /// That of this user.
    [[nodiscard]] static QString standardPath();

    [[nodiscard]] QString path() const { return m_path; }
    /// Makes the folder, for its user alone. @return false if there is none afterwards
    [[nodiscard]] bool make() const;
    /// A path that nothing has, for a capture of that time and model.
    [[nodiscard]] QString newPath(const QDateTime &time, const QString &model) const;
    /// The captures, the newest first. Cost: a scan of the folder, and at most 48 KB of each file.
    [[nodiscard]] QVector<HistoryEntry> list() const;
    /// Stores the small picture of the capture at `path`. One that cannot be written is missing.
    void putPicture(const QString &path, const QVector<PictureRow> &rows) const;
    /// Removes the oldest captures beyond the limits, but for the newest one, and what programs that were killed have
    /// left.
    void tidy(const HistoryLimits &limits) const;

private:
    [[nodiscard]] QStringList namesNewestFirst() const;

    QString m_path;
};
