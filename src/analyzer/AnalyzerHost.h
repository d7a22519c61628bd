#pragma once

#include <QString>
#include <QStringList>

#include <functional>

/// What the analyzer manager asks of the program around it. Each function may be replaced, none may be empty; all are
/// called on the main thread.
struct AnalyzerHost {
    /// The present model's code, 0 for none.
    std::function<int()> model = [] { return 0; };
    /// The present model's digital channels.
    std::function<int()> channelCount = [] { return 0; };
    std::function<bool(int channel)> isChannelEnabled = [](int) { return true; };

    /// Every stored value of every stored analyzer, in order, each followed by ";". By default those of the
    /// configuration.
    std::function<QString()> stored;
    /// Replaces what is stored: three values an analyzer.
    std::function<void(const QList<QStringList> &)> store;

    /// With the functions of the configuration.
    AnalyzerHost();
};
