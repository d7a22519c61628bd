#include "cli/PluginFaults.h"

#include "analyzer/AnalyzerManager.h"
#include "cli/Terminal.h"

#include <QCoreApplication>
#include <QEvent>

#include <utility>

PluginFaults::PluginFaults(AnalyzerManager &manager) : m_manager(manager)
{
    QObject::connect(
        &manager, &AnalyzerManager::analyzerFailed, &m_context,
        [this](const QString &name, const QString &what) {
            m_faults.append({name, what});
        },
        Qt::DirectConnection);
}

bool PluginFaults::say(const QStringList &known)
{
    QCoreApplication::sendPostedEvents(&m_manager, QEvent::MetaCall); // the manager tells from its event loop
    const QVector<Fault> faults = std::exchange(m_faults, {});
    for (const Fault &fault : faults) {
        if (!known.contains(fault.what)) {
            Terminal::say(QStringLiteral("%1: %2").arg(fault.name, fault.what));
        }
    }
    return !faults.isEmpty();
}
