#pragma once

#include <QLockFile>
#include <QString>
#include <QStringList>

#include <memory>

/// Remembers on disk which plug-in is being tried, so that one during which the program died is passed over at the next
/// start instead of ending every start.
///
/// In its folder each guard that tries plug-ins has a locked file, and beside it one with the name of the plug-in at
/// hand; a name whose lock has no owner any more is that of a culprit. A culprit stays passed over until its file
/// changes or retry() is called. Names are stored names ("SPI.dll"). Each guard is used by one thread at a time;
/// several may share a folder, in one process or not. A folder that cannot be written only means that nothing is
/// remembered.
class PluginGuard {
public:
    /// @param folder  made when it is needed; empty: nothing is remembered
    explicit PluginGuard(QString folder);
    ~PluginGuard();
    PluginGuard(const PluginGuard &) = delete;
    PluginGuard &operator=(const PluginGuard &) = delete;

    /// The plug-ins that are passed over.
    [[nodiscard]] QStringList blocked() const;
    /// Whether the file of this name and path is passed over. A file that is another one than then is not.
    [[nodiscard]] bool isBlocked(const QString &name, const QString &path) const;
    /// Forgets that the program died with it.
    void retry(const QString &name);

    /// From here on a death of the program is this plug-in's. May nest: the outer one's name stands until the end.
    void begin(const QString &name, const QString &path);
    void end();

private:
    void takeCulprits();
    void addCulprit(const QString &entry);
    [[nodiscard]] QStringList entries() const;
    [[nodiscard]] QString listPath() const;
    [[nodiscard]] QString tryingPath() const;
    [[nodiscard]] bool makeReady();

    const QString m_folder;
    const QString m_mark;              ///< names this guard's files, unlike those of all others
    std::unique_ptr<QLockFile> m_lock; ///< of this guard, from the first begin() on
    int m_depth = 0;
};

/// The plug-in at hand while this lives.
class PluginTrial {
public:
    PluginTrial(PluginGuard &guard, const QString &name, const QString &path) : m_guard(guard)
    {
        m_guard.begin(name, path);
    }
    ~PluginTrial() { m_guard.end(); }
    PluginTrial(const PluginTrial &) = delete;
    PluginTrial &operator=(const PluginTrial &) = delete;

private:
    PluginGuard &m_guard;
};
