#include "analyzer/AnalyzerMaker.h"

#include "analyzer/AbsentAnalyzer.h"
#include "analyzer/AnalyzerLibraries.h"
#include "analyzer/AnalyzerProgMng.h"
#include "analyzer/FaultTeller.h"
#include "analyzer/PluginCall.h"
#include "analyzer/StoredAnalyzer.h"
#include "settings/Language.h"
#include "store/SmpLease.h"

#include <corvanlux/analyzer/AnalyzerSettings.h>
#include <utility>

namespace {

constexpr int defaultFormat = 2; // hexadecimal

} // namespace

AnalyzerMaker::AnalyzerMaker(AnalyzerLibraries &libraries, FaultTeller &faults)
    : m_libraries(libraries), m_faults(faults)
{
    qRegisterMetaType<AnalyzerProgMng *>();
    qRegisterMetaType<Analyzer *>();
}

std::unique_ptr<Analyzer> AnalyzerMaker::make(const AnalyzerLib &lib)
{
    QString fault;
    std::unique_ptr<Analyzer> analyzer = m_libraries.make(lib, fault);
    if (!analyzer) {
        m_faults.tell(lib.displayName, fault);
    }
    return analyzer;
}

AnalyzerItem AnalyzerMaker::itemOf(const AnalyzerLib &lib, std::unique_ptr<Analyzer> analyzer)
{
    AnalyzerItem item;
    static_cast<AnalyzerLib &>(item) = lib;
    item.format = QString::number(defaultFormat);
    item.analyzer = std::move(analyzer);
    item.progMng = std::make_unique<AnalyzerProgMng>(item.analyzer.get());
    connect(item.progMng.get(), &AnalyzerProgMng::sigStopWorkThread, this, &AnalyzerMaker::workerEnded,
            Qt::QueuedConnection);
    return item;
}

AnalyzerItem AnalyzerMaker::exchange(AnalyzerItem &item)
{
    const QByteArray settings = settingsText(item).toLatin1();
    const QString name = item.name();
    const AnalyzerLib lib = item;
    std::unique_ptr<Analyzer> analyzer = make(lib);
    if (!analyzer) {
        analyzer = std::make_unique<AbsentAnalyzer>(name.toUtf8(), settings);
    }
    AnalyzerItem fresh = itemOf(lib, std::move(analyzer));
    fresh.format = item.format;
    fresh.showInList = item.showInList;
    fresh.fault = item.fault;
    fresh.lingering = item.lingering;
    fresh.readers = item.readers;
    (void)pluginFault([&] { fresh.analyzer->GetAnalyzerSettings()->LoadText(settings.constData()); });
    return std::exchange(item, std::move(fresh));
}

std::vector<AnalyzerItem> AnalyzerMaker::stored(const QString &text)
{
    std::vector<AnalyzerItem> items;
    for (const StoredAnalyzer &stored : storedAnalyzers(text)) {
        const AnalyzerLib *lib = m_libraries.named(stored.fileName);
        std::unique_ptr<Analyzer> analyzer = lib != nullptr ? make(*lib) : nullptr;
        if (!analyzer) {
            continue;
        }
        const QByteArray settings = stored.settings.toLatin1();
        AnalyzerItem item = itemOf(*lib, std::move(analyzer));
        item.format = stored.format;
        const QString fault =
            pluginFault([&] { item.analyzer->GetAnalyzerSettings()->LoadText(settings.constData()); });
        items.push_back(std::move(item));
        if (!fault.isEmpty()) {
            m_faults.fail(items.back(), fault);
        }
    }
    return items;
}

QString AnalyzerMaker::settingsText(const AnalyzerItem &item)
{
    QString text;
    QString fault = pluginFault([&] {
        const char *saved = item.analyzer->GetAnalyzerSettings()->SaveText();
        text = QString::fromLatin1(saved != nullptr ? saved : "");
    });
    if (fault.isEmpty() && text.contains(QLatin1Char(';'))) {
        fault = ::tr("The settings hold a \";\" and cannot be stored.");
    }
    if (!fault.isEmpty()) {
        m_faults.tell(item.name(), fault);
        text.clear();
    }
    return text;
}
