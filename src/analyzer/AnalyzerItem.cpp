#include "analyzer/AnalyzerItem.h"

#include "analyzer/AnalyzerProgMng.h"
#include "store/SmpLease.h"

AnalyzerItem::AnalyzerItem() = default;
AnalyzerItem::AnalyzerItem(AnalyzerItem &&) noexcept = default;
AnalyzerItem &AnalyzerItem::operator=(AnalyzerItem &&) noexcept = default;
AnalyzerItem::~AnalyzerItem() = default;
