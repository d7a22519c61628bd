// The readers of decoded results that do not come out of a decoder, and what the texts of results throw.

#include "analyzer/AnalyzerManager.h"
#include "analyzer/AnalyzerProgMng.h"
#include "analyzer/PluginCall.h"
#include "settings/Language.h"
#include "store/SmpLease.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <corvanlux/analyzer/AnalyzerResults.h>
#include <utility>

namespace {

AnalyzerResults *resultsOf(const AnalyzerItem &item)
{
    AnalyzerResults *results = nullptr;
    return item.analyzer && item.analyzer->GetAnalyzerResults(&results) ? results : nullptr;
}

} // namespace

bool AnalyzerManager::owns(const AnalyzerResults *results) const
{
    return std::any_of(items.begin(), items.end(),
                       [results](const AnalyzerItem &item) { return resultsOf(item) == results; });
}

void AnalyzerManager::keep(const AnalyzerResults *results, std::shared_ptr<ResultsReader> reader)
{
    for (AnalyzerItem &item : items) {
        if (resultsOf(item) == results) {
            item.readers.push_back({std::move(reader), {}});
            item.readers.back().since.start();
            QMetaObject::invokeMethod(this, "readersLost", Qt::QueuedConnection);
            m_watchTimer.start();
            return;
        }
    }
}

bool AnalyzerManager::leaveResults(AnalyzerItem &item)
{
    std::erase_if(item.readers, [](const LostReader &lost) { return !lost.reader->isStuck(); });
    const bool isRead = item.isRead();
    if (isRead) {
        m_read.push_back(exchange(item));
    }
    return isRead;
}

QString AnalyzerManager::textFault(const AnalyzerItem &item)
{
    std::array<char, 512> text{};
    if (const AnalyzerResults *results = resultsOf(item)) {
        results->GetTextFault(text.data(), text.size());
    }
    return QString::fromUtf8(text.data());
}

void AnalyzerManager::leaveExport()
{
    exportThread.reset();
    m_exportOutcome = {true, WriteFault::None, {}};
}

bool AnalyzerManager::isOverdue(const AnalyzerItem &item, const std::vector<const AnalyzerResults *> &stuckIn)
{
    constexpr qint64 most = std::chrono::milliseconds(ResultsGate::grace).count();
    return std::any_of(item.readers.begin(), item.readers.end(), [&](const LostReader &lost) {
        const bool isLongIn = lost.since.hasExpired(most) ||
                              std::find(stuckIn.begin(), stuckIn.end(), lost.reader->results()) != stuckIn.end();
        return isLongIn && lost.reader->isStuck();
    });
}

void AnalyzerManager::retire(AnalyzerItem &item)
{
    {
        const ResultsChange change = prepareModify();
        if (endWorker(item)) {
            AnalyzerItem old = exchange(item); // what it has now would hold the next reader fast
            dropItem(old);
        }
        item.readers.clear();
        fail(item, ::tr("The decoder does not stop. It is out of use until it is started again."));
    }
    emit analyzerItemChanged();
}

void AnalyzerManager::lookAfterReaders()
{
    const std::vector<const AnalyzerResults *> stuckIn = m_gate.takeFromStuck();
    const auto isOfExport = [this](const LostReader &lost) {
        return exportThread && lost.reader == exportThread->reader();
    };
    const auto endExport = [&](const AnalyzerItem &item) {
        if (std::any_of(item.readers.begin(), item.readers.end(), isOfExport)) {
            leaveExport();
        }
    };
    for (std::size_t i = 0; i < items.size(); ++i) {
        AnalyzerItem &item = items[i];
        if (isOverdue(item, stuckIn)) {
            endExport(item);
            retire(item);
        } else if (const QString fault = textFault(item); !fault.isEmpty() && item.fault.isEmpty()) {
            fail(item, fault);
        }
    }
    for (AnalyzerItem &item : m_read) {
        if (isOverdue(item, stuckIn)) {
            endExport(item);
        }
        if (!item.isRead()) {
            item.progMng.reset();
            (void)pluginFault([&item] { item.analyzer.reset(); });
        }
    }
    std::erase_if(m_read, [](const AnalyzerItem &item) { return !item.analyzer; });
    if (items.empty() && m_read.empty() && !exportThread) {
        m_watchTimer.stop();
    }
}
