#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVector>

class AnalyzerManager;

/// What plug-ins did that they must not, as a manager tells it: kept until it is said. Main thread; the manager
/// outlives it.
class PluginFaults {
public:
    explicit PluginFaults(AnalyzerManager &manager);
    PluginFaults(const PluginFaults &) = delete;
    PluginFaults &operator=(const PluginFaults &) = delete;

    /// Says what has not been said, "name: what", also what still waits for the event loop; leaves out what is one of
    /// `known`, which the caller says. @return whether there was anything
    bool say(const QStringList &known = {});

private:
    struct Fault {
        QString name;
        QString what;
    };

    AnalyzerManager &m_manager;
    QVector<Fault> m_faults;
    QObject m_context; ///< of the connection: goes first
};
