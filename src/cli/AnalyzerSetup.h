#pragma once

#include "analyzer/AnalyzerManager.h"
#include "cli/Arguments.h"
#include "cli/Terminal.h"

#include <QString>

#include <corvanlux/analyzer/AnalyzerSettingInterface.h>
#include <string>

/// Analyzers as they are named on a command line. Main thread.
namespace AnalyzerSetup {

/// The library that `name` means: a display name, or a file's name without its suffix, letters in either case.
/// @return -1 for none
[[nodiscard]] int libraryNamed(const AnalyzerManager &manager, const QString &name);
/// What is told of a name that no library has.
[[nodiscard]] QString unknown(const AnalyzerManager &manager, const QString &name);
/// Says of each decoder that is passed over, since a program ended while it was tried, how it is tried again.
void sayPassedOver(const AnalyzerManager &manager);
/// Says of each stored analyzer that its decoder was not found. @return whether there was one
[[nodiscard]] bool sayNotFound(const AnalyzerManager &manager, const QString &path);
/// The values that a setting takes: "none|odd|even", "5 to 9", "number or none", "false|true"; empty for any text.
[[nodiscard]] std::string valuesOf(const AnalyzerSettingInterface &face);
/// Why an analyzer cannot be had.
struct Refusal {
    QString error;             ///< for the user; empty when it is there
    int code = Terminal::good; ///< exit code: wrong usage, or bad input where the decoder has failed
};
/// Adds an analyzer with these settings to the list and starts it, if there is a capture.
[[nodiscard]] Refusal add(AnalyzerManager &manager, const Arguments::Request &request);

} // namespace AnalyzerSetup
