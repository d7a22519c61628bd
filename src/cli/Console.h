#pragma once

#include <QFileInfo>
#include <QString>

#include <cstdio>
#include <string_view>

/// What the program's lines go to, as long as this lives. On Windows the standard output keeps its bytes, as an output
/// file does, and a console is given what terminals have elsewhere: UTF-8 and the sequences that write a line anew; at
/// the end it has again what it had before, for it outlives the program. Elsewhere the numbers of standard streams that
/// came closed are taken, so that no file gets one, and with it what is told; they stay of no use. Main thread, one,
/// before anything is opened; outlives who writes.
class Console {
public:
    Console();
    ~Console(); // NOLINT(performance-trivially-destructible): it is not, on Windows
    Console(const Console &) = delete;
    Console &operator=(const Console &) = delete;

    /// Writes all of that to the standard output, or to what open() has opened. When the user wants the program to end,
    /// and nobody reads, what has not arrived is given up after a tenth of a second; on Windows it is waited for.
    /// @return whether all has arrived. Any thread, one at a time.
    [[nodiscard]] static bool write(std::string_view bytes, std::FILE *to = stdout);
    /// Whether that is a device or a pipe that has a name: what takes bytes as they come, and is no file to be
    /// replaced.
    [[nodiscard]] static bool isStream(const QString &path)
    {
        const QFileInfo there(path);
        return there.exists() && !there.isFile() && !there.isDir();
    }
    /// Opens one. A pipe's reader is waited for until the user wants the program to end.
    /// @return null if that failed, with the reason in errno. Any thread.
    [[nodiscard]] static std::FILE *open(const QString &path);
    /// True if the standard error is a terminal that knows the sequences. Any thread.
    [[nodiscard]] static bool errorIsTerminal();

private:
    // On Windows alone:
    [[maybe_unused]] unsigned m_codePage = 0;  ///< that it had; 0 for none
    [[maybe_unused]] unsigned long m_mode = 0; ///< that the standard error had; 0 for none
};
