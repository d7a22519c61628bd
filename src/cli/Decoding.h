#pragma once

#include "cli/Arguments.h"

#include <QString>
#include <QVector>

#include <limits>

class AnalyzerManager;
class FrameWriter;
class Output;
class PluginFaults;
class SmpData;

/// Decoding with the decoders that a command line names, and writing what they found. Main thread.
namespace Decoding {

/// Which frames are written: those that touch these seconds from the capture's start.
struct Span {
    double from = 0;
    double to = std::numeric_limits<double>::infinity();
};

/// The values of the option "--analyzer". @return why one is wrong, for the user; empty if none is
[[nodiscard]] QString readRequests(const Arguments::Parsed &parsed, QVector<Arguments::Request> &requests);

/// Waits for the decoders that run, and tells what they have to tell. The user may end it. @param faults  of the
/// manager: what has not been said is
/// @return the exit code: bad input when a decoder did not come to the end, or did what it must not
[[nodiscard]] int finish(AnalyzerManager &manager, PluginFaults &faults);

/// Waits for the decoders that run on `data`, tells what they have to tell, and writes the head and the frames of all
/// in the order of time. The user may end it. When the text of a decoder does not come to an end, which is known some
/// two seconds later, `out` is abandoned. @param faults  of the manager: what has not been said is
/// @return the exit code: bad input when a decoder did not come to the end, or did what it must not
/// Cost: that of the decoders, and a line a frame.
[[nodiscard]] int write(AnalyzerManager &manager, PluginFaults &faults, const SmpData &data, const QString &name,
                        FrameWriter &writer, Output &out, const Span &span);

} // namespace Decoding
