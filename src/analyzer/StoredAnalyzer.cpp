#include "analyzer/StoredAnalyzer.h"

#include <QStringList>

std::vector<StoredAnalyzer> storedAnalyzers(const QString &text)
{
    std::vector<StoredAnalyzer> analyzers;
    const QStringList values = text.split(QLatin1Char(';'));
    for (int i = 0; i + 2 < values.size(); i += 3) {
        analyzers.push_back({values.at(i).trimmed(), values.at(i + 1).trimmed(), values.at(i + 2).trimmed()});
    }
    return analyzers;
}
