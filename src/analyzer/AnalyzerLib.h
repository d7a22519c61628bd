#pragma once

#include <QString>
#include <QVector>

#include <corvanlux/analyzer/Analyzer.h>

/// A plug-in file that was found: its entry points, and what it told of itself. A plain value; the file stays loaded
/// until the program ends.
struct AnalyzerLib {
    using Create = Analyzer *(*)();
    using Destroy = void (*)(Analyzer *);
    using Name = const char *(*)();

    QString fileName; ///< as it is stored and compared, on every system: "SPI.dll"
    QString path;     ///< of the file itself
    QString displayName;
    Create createAnalyzer = nullptr;
    Destroy destroyAnalyzer = nullptr;
    Name getAnalyzerName = nullptr;
    QVector<int> supportedModels; ///< model codes on which it is offered; empty for all
};
