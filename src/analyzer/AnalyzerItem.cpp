#include "analyzer/AnalyzerItem.h"

#include "analyzer/AnalyzerProgMng.h"
#include "analyzer/ResultsGate.h"
#include "store/SmpLease.h"

#include <algorithm>

AnalyzerItem::AnalyzerItem() = default;
AnalyzerItem::AnalyzerItem(AnalyzerItem &&) noexcept = default;
AnalyzerItem &AnalyzerItem::operator=(AnalyzerItem &&) noexcept = default;
AnalyzerItem::~AnalyzerItem() = default;

bool AnalyzerItem::isRead() const
{
    AnalyzerResults *results = nullptr;
    if (readers.empty() || !analyzer || !analyzer->GetAnalyzerResults(&results)) {
        return false;
    }
    return std::any_of(readers.begin(), readers.end(), [results](const LostReader &lost) {
        return lost.reader->isStuck() && lost.reader->results() == results;
    });
}
