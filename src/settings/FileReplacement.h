#pragma once

#include <QByteArray>
#include <QFileDevice>
#include <QString>

/// Why a file could not be written.
enum class WriteFault {
    None,
    NoFolder, ///< no folder of that name, or no name
    NotPlain, ///< the name is that of a folder, a pipe, a device
    NoRights, ///< the file is protected, or its folder takes no new file
    DiskFull,
    Other
};

/// A file that is written beside its target and gets the target's name when it is whole, so that whatever ends the
/// writing, an earlier file stays as it was.
///
/// - A symbolic link stays: what it names is replaced, or made.
/// - The new file has the mode of the one that it replaces, and its owner and group as far as the user may give them.
///   Other names of the earlier file (hard links), its access lists and extended attributes are not kept.
/// - A file that may not be written is not replaced, though its folder would allow it.
/// - Where the folder takes no new file, nothing is written, even into a file that may be: it could not be whole again.
/// - What is no plain file is never touched, and never waited for.
///
/// Of a program that is killed, the part stays beside the target, under the name of partPath(). Lives on the stack of
/// whoever writes; any thread, one at a time.
class FileReplacement {
public:
    /// @param partEnding  of the part's name, for who tells the kind of a file by it
    explicit FileReplacement(const QString &path, const QString &partEnding = QStringLiteral(".part"));
    /// Drops what has been written, unless finish() or keepPart() came before.
    ~FileReplacement();
    FileReplacement(const FileReplacement &) = delete;
    FileReplacement &operator=(const FileReplacement &) = delete;

    /// Makes the empty file that is to be written.
    [[nodiscard]] WriteFault begin();
    /// The file that is to be written between begin() and finish(): the target's name, a number and the ending. Empty
    /// before.
    [[nodiscard]] QString partPath() const { return m_part; }
    /// Brings the part, which nobody has open any more, to the disk and gives it the target's name. On failure the part
    /// is dropped. May block as long as the disk takes: syncToDisk() before, on another thread, makes it short.
    [[nodiscard]] WriteFault finish();
    /// Gives the part the target's name if nothing has that name and the part is not empty; drops it otherwise.
    void keepPart();
    /// Removes the part.
    void drop();

private:
    [[nodiscard]] WriteFault makePart(const QString &folder, const QString &name);

    const QString m_target; ///< behind all links
    const QString m_partEnding;
    QString m_part;
};

/// Writes `text` whole under the name `path`; line ends as the system has them. Blocks as long as the disk takes.
[[nodiscard]] WriteFault replaceTextFile(const QString &path, const QByteArray &text);

/// Hands everything that was written to `file`, which is open, to the disk. Blocks as long as that takes; any thread.
/// A file system without such an operation counts as done.
[[nodiscard]] WriteFault syncToDisk(QFileDevice &file);

/// Writes all of that: a disk takes what it has room for, and tells with the rest that it is full. @return whether all
/// has been taken
[[nodiscard]] bool writeWhole(QIODevice &device, const char *bytes, qint64 size);

/// What the error of `file` means; Other if it has none. What is left in its buffer is tried again, for the same
/// reason.
[[nodiscard]] WriteFault writeFaultOf(QFileDevice &file);
