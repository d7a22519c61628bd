#pragma once

#include <QRect>

class RowColumn;
class WaveDataGen;

/// Whether a file that was opened shows more than flat lines. Main thread.
namespace SeenTransitions {

/// A row within `seen`, device pixels of the scene, shows a transition in the generator's frame.
[[nodiscard]] bool areIn(const QRect &seen, const RowColumn &rows, const WaveDataGen &waves);
/// The capture has a transition on the channel of some row. Takes the read lock. Cost: a search a row.
[[nodiscard]] bool areAnywhere(const RowColumn &rows, const WaveDataGen &waves);

} // namespace SeenTransitions
