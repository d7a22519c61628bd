#pragma once

#include <QObject>
#include <QSet>
#include <QString>

struct AnalyzerItem;

/// Tells what plug-ins did that they must not. Main thread.
class FaultTeller : public QObject {
    Q_OBJECT
public:
    /// Of the same words only the first ones are told, until forget().
    /// @param name  of the decoder  @param what  in the user's language
    void tell(const QString &name, const QString &what);
    /// The same, of an analyzer that is out of use because of it.
    void fail(AnalyzerItem &item, const QString &what);
    /// What this decoder does is told anew.
    void forget(const QString &name);

signals:
    /// In the middle of whatever met the fault.
    void told(const QString &name, const QString &what);

private:
    QSet<QString> m_told; ///< name and words
};
