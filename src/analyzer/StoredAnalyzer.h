#pragma once

#include <QString>

#include <vector>

/// One analyzer of the user's list as it is stored.
struct StoredAnalyzer {
    QString fileName; ///< of its plug-in, such as "SPI.dll"
    QString settings; ///< as AnalyzerSettings::SaveText() gave them
    QString format;   ///< DisplayBase, as a number
};

/// Parts a stored list: three values an analyzer, each followed by ";". What does not make up three is left out, and
/// blanks around values are. Pure.
[[nodiscard]] std::vector<StoredAnalyzer> storedAnalyzers(const QString &text);
