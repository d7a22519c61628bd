#pragma once

#include "settings/FileReplacement.h"

#include <QFile>
#include <QString>

#include <charconv>
#include <concepts>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

/// Where a command writes its lines: the standard output, or a file that appears under its name only when it is whole.
/// A device or a pipe stays what it is, and takes the lines as they come. What such a one or the standard output does
/// not take is given up when the user wants the program to end. Buffered; main thread.
class Output {
public:
    /// @param path  empty or "-" for the standard output
    explicit Output(const QString &path);
    ~Output();
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    /// False when it could not be opened, what was written did not arrive, or it was abandoned.
    [[nodiscard]] bool isGood() const { return m_good && !m_isAbandoned; }
    Output &operator<<(std::string_view text)
    {
        m_buffer.append(text);
        if (m_buffer.size() >= flushSize) {
            flush();
        }
        return *this;
    }
    Output &operator<<(char c)
    {
        m_buffer.push_back(c);
        return *this;
    }
    Output &operator<<(std::integral auto number)
    {
        char digits[24];
        const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
        m_buffer.append(digits, std::size_t(end - digits));
        return *this;
    }
    /// Hands over what was written so far, for who reads the standard output meanwhile.
    void handOver() { flush(); }
    /// No more comes, though it is not whole: a file does not get its name, and what takes the lines as they come has
    /// those that there are.
    void abandon() { m_isAbandoned = true; }
    /// Writes the rest, and gives the file its name, unless nothing was written because all input was bad, or it was
    /// abandoned. @return `code`; if not all arrived that of an interrupt, or that of bad input, and the user is told
    [[nodiscard]] int finish(int code);

private:
    static constexpr std::size_t flushSize = 1 << 18; // bytes
    void beginFile();
    void flush();
    [[nodiscard]] QString reason() const;

    std::string m_buffer;
    const QString m_path;                    ///< empty for the standard output
    std::FILE *m_stream = nullptr;           ///< what takes the lines as they come; null for a file
    std::optional<FileReplacement> m_target; ///< a file's name
    QFile m_file;                            ///< what gets it
    WriteFault m_fault = WriteFault::None;   ///< of the file
    bool m_good = true;
    bool m_isEmpty = true; ///< nothing was flushed so far
    bool m_isAbandoned = false;
};
