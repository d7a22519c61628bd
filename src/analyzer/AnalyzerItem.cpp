#include "analyzer/AnalyzerItem.h"

#include "analyzer/AnalyzerProgMng.h"
#include "analyzer/DecoderSentence.h"
#include "analyzer/PluginCall.h"
#include "analyzer/ResultsGate.h"
#include "store/SmpLease.h"

#include <algorithm>
#include <array>
#include <corvanlux/analyzer/AnalyzerResults.h>

AnalyzerItem::AnalyzerItem() = default;
AnalyzerItem::AnalyzerItem(AnalyzerItem &&) noexcept = default;
AnalyzerItem &AnalyzerItem::operator=(AnalyzerItem &&) noexcept = default;
AnalyzerItem::~AnalyzerItem() = default;

QString AnalyzerItem::name() const
{
    QString name;
    (void)pluginFault([&] {
        const char *text = analyzer ? analyzer->AnalyzerName() : nullptr;
        name = QString::fromUtf8(text != nullptr ? text : "");
    });
    return name.isEmpty() ? displayName : name;
}

QString AnalyzerItem::message() const
{
    if (!fault.isEmpty()) {
        return fault;
    }
    std::array<char, 512> text{};
    analyzer->GetDecodeMessage(text.data(), text.size());
    return decoderSentence(QString::fromUtf8(text.data()), name());
}

AnalyzerResults *AnalyzerItem::results() const
{
    AnalyzerResults *results = nullptr;
    return analyzer && analyzer->GetAnalyzerResults(&results) ? results : nullptr;
}

QString AnalyzerItem::textFault() const
{
    std::array<char, 512> text{};
    if (const AnalyzerResults *mine = results()) {
        mine->GetTextFault(text.data(), text.size());
    }
    return QString::fromUtf8(text.data());
}

bool AnalyzerItem::isRead() const
{
    const AnalyzerResults *mine = readers.empty() ? nullptr : results();
    return mine != nullptr && std::any_of(readers.begin(), readers.end(), [mine](const LostReader &lost) {
               return lost.reader->isStuck() && lost.reader->results() == mine;
           });
}

bool AnalyzerItem::isHeldFast(std::chrono::milliseconds now, const std::vector<const AnalyzerResults *> &stuckIn) const
{
    return std::any_of(readers.begin(), readers.end(), [&](const LostReader &lost) {
        const bool isLongIn = now - lost.since >= ResultsGate::grace ||
                              std::find(stuckIn.begin(), stuckIn.end(), lost.reader->results()) != stuckIn.end();
        return isLongIn && lost.reader->isStuck();
    });
}
