#pragma once

#include <QString>
#include <QStringList>

#include <functional>

/// Which plug-ins the user has taken last, by their file names, oldest first.
///
/// A plain value, stored as one text. Pure but for `displayName`, which comes in.
class RecentAnalyzers {
public:
    static constexpr int most = 10;

    /// Takes `inUse` in as the newest, and leaves out what has no plug-in and the oldest beyond ten.
    /// @param stored  what was stored; used at the first time only. Empty: those that come with the program
    /// @param displayName  of a file name; empty for one without a plug-in
    void update(const QString &stored, const QStringList &inUse,
                const std::function<QString(const QString &)> &displayName);

    [[nodiscard]] bool isEmpty() const { return m_files.isEmpty(); }
    [[nodiscard]] const QStringList &files() const { return m_files; }
    [[nodiscard]] QString text() const { return m_files.join(QLatin1Char(',')); }

    /// The file names of rows, which stand from the oldest to the newest: each once, at most ten of the newest.
    [[nodiscard]] static QStringList namesOfRows(const QStringList &rows);

private:
    QStringList m_files;
};
