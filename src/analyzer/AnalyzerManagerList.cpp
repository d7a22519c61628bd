// What the analyzer manager tells of its list: names, formats, channels.

#include "analyzer/AnalyzerManager.h"
#include "analyzer/AnalyzerProgMng.h"
#include "analyzer/ChannelUsage.h"
#include "analyzer/DecoderSentence.h"
#include "analyzer/PluginCall.h"
#include "settings/Language.h"

#include <algorithm>
#include <array>

void AnalyzerManager::setDisplayFormat(int index, int format)
{
    items[std::size_t(index)].format = QString::number(format);
    saveToConfig();
}

int AnalyzerManager::displayFormat(int index) const
{
    return items[std::size_t(index)].format.toInt();
}

int AnalyzerManager::formatOfAnalyzer(const Analyzer *analyzer) const
{
    for (const AnalyzerItem &item : items) {
        if (item.analyzer.get() == analyzer) {
            return item.format.toInt();
        }
    }
    return -1;
}

QString AnalyzerManager::fileNameAt(int index) const
{
    return index >= 0 && index < count() ? items[std::size_t(index)].fileName : QString();
}

QString AnalyzerManager::nameOf(const AnalyzerItem &item)
{
    QString name;
    (void)pluginFault([&] {
        const char *text = item.analyzer ? item.analyzer->AnalyzerName() : nullptr;
        name = QString::fromUtf8(text != nullptr ? text : "");
    });
    return name.isEmpty() ? item.displayName : name;
}

QString AnalyzerManager::availability(const AnalyzerLib &lib) const
{
    if (lib.supportedModels.isEmpty() || lib.supportedModels.contains(m_host.model())) {
        return {};
    }
    return QStringLiteral(" (%1)").arg(::tr("Not Supported"));
}

QString AnalyzerManager::analyzerTitle(int index) const
{
    const AnalyzerItem &item = items[std::size_t(index)];
    return nameOf(item) + availability(item);
}

double AnalyzerManager::progress(int index) const
{
    return items[std::size_t(index)].progMng->progress.load(std::memory_order_relaxed);
}

QString AnalyzerManager::message(int index) const
{
    const AnalyzerItem &item = items[std::size_t(index)];
    if (!item.fault.isEmpty()) {
        return item.fault;
    }
    std::array<char, 512> text{};
    item.analyzer->GetDecodeMessage(text.data(), text.size());
    return decoderSentence(QString::fromUtf8(text.data()), nameOf(item));
}

bool AnalyzerManager::endedEarly(int index) const
{
    const AnalyzerItem &item = items[std::size_t(index)];
    const DecodeStatus status = item.analyzer->GetDecodeStatus();
    return !item.fault.isEmpty() || status == DecodeStatus::Failed || status == DecodeStatus::OutOfMemory;
}

QStringList AnalyzerManager::libraryDisplayNames() const
{
    QStringList names;
    for (const AnalyzerLib &lib : libraries) {
        names.append(lib.displayName + availability(lib));
    }
    return names;
}

QString AnalyzerManager::libraryDisplayName(const QString &fileName) const
{
    for (const AnalyzerLib &lib : libraries) {
        if (lib.fileName == fileName) {
            return lib.displayName + availability(lib);
        }
    }
    return {};
}

void AnalyzerManager::setShown(int index, bool shown)
{
    items[std::size_t(index)].showInList = shown;
}

QStringList AnalyzerManager::shownStateList() const
{
    QStringList states;
    for (const AnalyzerItem &item : items) {
        states.append(nameOf(item) + (item.showInList ? QStringLiteral(",1") : QStringLiteral(",0")));
    }
    return states;
}

QVector<Analyzer *> AnalyzerManager::shownAnalyzers() const
{
    QVector<Analyzer *> shown;
    for (const AnalyzerItem &item : items) {
        if (item.showInList) {
            shown.append(item.analyzer.get());
        }
    }
    return shown;
}

QVector<Analyzer *> AnalyzerManager::analyzersOnChannel(int channel) const
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

QStringList AnalyzerManager::analyzerChannels(int index) const
{
    const AnalyzerItem &item = items[std::size_t(index)];
    return ChannelUsage::flat(ChannelUsage::ofAnalyzer(*item.analyzer, nameOf(item)));
}

QStringList AnalyzerManager::channelUsage(int leaveOut) const
{
    QVector<ChannelUsage::Use> uses;
    for (int i = 0; i < count(); ++i) {
        if (i != leaveOut) {
            const AnalyzerItem &item = items[std::size_t(i)];
            uses += ChannelUsage::ofAnalyzer(*item.analyzer, nameOf(item));
        }
    }
    return ChannelUsage::flat(ChannelUsage::perChannel(uses, m_host.channelCount()));
}

QStringList AnalyzerManager::enabledChannelUsage(int leaveOut) const
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
