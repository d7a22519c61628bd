#include "analyzer/FaultTeller.h"

#include "analyzer/AnalyzerItem.h"

#include <iterator>

namespace {

QString headOf(const QString &name)
{
    return name + QLatin1Char('\n');
}

} // namespace

void FaultTeller::tell(const QString &name, const QString &what)
{
    const QString key = headOf(name) + what;
    if (m_told.contains(key)) {
        return;
    }
    m_told.insert(key);
    emit told(name, what);
}

void FaultTeller::fail(AnalyzerItem &item, const QString &what)
{
    item.fault = what;
    tell(item.name(), what);
}

void FaultTeller::forget(const QString &name)
{
    const QString head = headOf(name);
    for (auto words = m_told.begin(); words != m_told.end();) {
        words = words->startsWith(head) ? m_told.erase(words) : std::next(words);
    }
}
