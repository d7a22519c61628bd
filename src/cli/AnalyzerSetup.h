#pragma once

#include "analyzer/AnalyzerManager.h"
#include "cli/Arguments.h"

#include <QString>

/// Analyzers as they are named on a command line. Main thread.
namespace AnalyzerSetup {

/// The library that `name` means: a display name, or a file's name without its suffix, letters in either case.
/// @return -1 for none
[[nodiscard]] int libraryNamed(const AnalyzerManager &manager, const QString &name);
/// The names of all libraries, for a message.
[[nodiscard]] QString knownNames(const AnalyzerManager &manager);
/// Says of each decoder that is passed over, since a program ended while it was tried, how it is tried again.
void sayPassedOver(const AnalyzerManager &manager);
/// Adds an analyzer with these settings to the list and starts it, if there is a capture.
/// @return empty, or why it cannot be had, for the user
[[nodiscard]] QString add(AnalyzerManager &manager, const Arguments::Request &request);

} // namespace AnalyzerSetup
