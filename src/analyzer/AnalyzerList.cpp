#include "analyzer/AnalyzerList.h"

#include "analyzer/AnalyzerProgMng.h"
#include "analyzer/ChannelUsage.h"
#include "analyzer/StoredAnalyzer.h"
#include "settings/Language.h"

#include <algorithm>
#include <utility>

AnalyzerList::AnalyzerList(AnalyzerHost host, const QStringList &folders, const QString &guardFolder)
    : m_host(std::move(host)), libraries(folders, guardFolder)
{}

AnalyzerItem *AnalyzerList::itemOf(const Analyzer *analyzer)
{
    const auto same = [analyzer](const AnalyzerItem &item) { return item.analyzer.get() == analyzer; };
    const auto found = std::find_if(items.begin(), items.end(), same);
    return found != items.end() ? &*found : nullptr;
}

int AnalyzerList::displayFormat(int index) const
{
    return items[std::size_t(index)].format.toInt();
}

int AnalyzerList::formatOfAnalyzer(const Analyzer *analyzer) const
{
    for (const AnalyzerItem &item : items) {
        if (item.analyzer.get() == analyzer) {
            return item.format.toInt();
        }
    }
    return -1;
}

QString AnalyzerList::fileNameAt(int index) const
{
    return index >= 0 && index < count() ? items[std::size_t(index)].fileName : QString();
}

QString AnalyzerList::availability(const AnalyzerLib &lib) const
{
    if (lib.supportedModels.isEmpty() || lib.supportedModels.contains(m_host.model())) {
        return {};
    }
    return QStringLiteral(" (%1)").arg(::tr("Not Supported"));
}

QString AnalyzerList::analyzerTitle(int index) const
{
    const AnalyzerItem &item = items[std::size_t(index)];
    return item.name() + availability(item);
}

bool AnalyzerList::isWorkerRunning(int index) const
{
    const AnalyzerItem &item = items[std::size_t(index)];
    return !item.progMng->isIdle() || item.runsLater;
}

double AnalyzerList::progress(int index) const
{
    return items[std::size_t(index)].progMng->progress.load(std::memory_order_relaxed);
}

QString AnalyzerList::message(int index) const
{
    return items[std::size_t(index)].message();
}

bool AnalyzerList::endedEarly(int index) const
{
    const AnalyzerItem &item = items[std::size_t(index)];
    const DecodeStatus status = item.analyzer->GetDecodeStatus();
    return !item.fault.isEmpty() || status == DecodeStatus::Failed || status == DecodeStatus::OutOfMemory;
}

QStringList AnalyzerList::libraryDisplayNames() const
{
    QStringList names;
    for (const AnalyzerLib &lib : libraries.all()) {
        names.append(lib.displayName + availability(lib));
    }
    return names;
}

QString AnalyzerList::libraryDisplayName(const QString &fileName) const
{
    const AnalyzerLib *lib = libraries.named(fileName);
    return lib != nullptr ? lib->displayName + availability(*lib) : QString();
}

QStringList AnalyzerList::notFound() const
{
    QStringList names;
    for (const StoredAnalyzer &stored : storedAnalyzers(m_host.stored())) {
        if (libraries.named(stored.fileName) == nullptr && !names.contains(stored.fileName)) {
            names.append(stored.fileName);
        }
    }
    return names;
}

void AnalyzerList::setShown(int index, bool shown)
{
    items[std::size_t(index)].showInList = shown;
}

QStringList AnalyzerList::shownStateList() const
{
    QStringList states;
    for (const AnalyzerItem &item : items) {
        states.append(item.name() + (item.showInList ? QStringLiteral(",1") : QStringLiteral(",0")));
    }
    return states;
}

QVector<Analyzer *> AnalyzerList::shownAnalyzers() const
{
    QVector<Analyzer *> shown;
    for (const AnalyzerItem &item : items) {
        if (item.showInList) {
            shown.append(item.analyzer.get());
        }
    }
    return shown;
}

QVector<Analyzer *> AnalyzerList::analyzersOnChannel(int channel) const
{
    QVector<Analyzer *> found;
    const QString number = QString::number(channel);
    for (const AnalyzerItem &item : items) {
        const QVector<ChannelUsage::Use> uses = ChannelUsage::ofAnalyzer(*item.analyzer, QString());
        const auto here = [&number](const ChannelUsage::Use &use) { return use.first == number; };
        if (std::any_of(uses.cbegin(), uses.cend(), here)) {
            found.append(item.analyzer.get());
        }
    }
    return found;
}

QStringList AnalyzerList::analyzerChannels(int index) const
{
    const AnalyzerItem &item = items[std::size_t(index)];
    return ChannelUsage::flat(ChannelUsage::ofAnalyzer(*item.analyzer, item.name()));
}

QStringList AnalyzerList::channelUsage(int leaveOut) const
{
    QVector<ChannelUsage::Use> uses;
    for (int i = 0; i < count(); ++i) {
        if (i != leaveOut) {
            const AnalyzerItem &item = items[std::size_t(i)];
            uses += ChannelUsage::ofAnalyzer(*item.analyzer, item.name());
        }
    }
    return ChannelUsage::flat(ChannelUsage::perChannel(uses, m_host.channelCount()));
}

QStringList AnalyzerList::enabledChannelUsage(int leaveOut) const
{
    QStringList usage = channelUsage(leaveOut);
    for (int chn = int(usage.size()) / 2 - 1; chn >= 0; --chn) {
        if (!m_host.isChannelEnabled(chn)) {
            usage.removeAt(2 * chn + 1);
            usage.removeAt(2 * chn);
        }
    }
    return usage;
}
