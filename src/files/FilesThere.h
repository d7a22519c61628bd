#pragma once

#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

/// Tells which of some files are gone, without anybody waiting for a disk or a network that does not answer: the
/// question is asked on a thread that is left to itself, and outlives this object and the process's end if it must.
///
/// Main thread.
class FilesThere final : public QObject {
    Q_OBJECT
public:
    explicit FilesThere(QObject *parent = nullptr);
    ~FilesThere() override;

    /// Asks anew, unless an answer is still waited for; sigAnswered() tells the end.
    void ask(const QStringList &paths);
    /// As of the last answer; false for a file that was not asked about.
    [[nodiscard]] bool isGone(const QString &path) const { return m_gone.contains(path); }

    /// Whether there is a file; called on the thread. A test answers instead.
    std::function<bool(const QString &path)> exists;

signals:
    void sigAnswered();

private:
    struct Link;
    void take(const QSet<QString> &gone);

    std::shared_ptr<Link> m_link; ///< from the thread back to this, as long as this lives
    QSet<QString> m_gone;
    bool m_asking = false;
};
