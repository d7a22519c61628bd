#pragma once

/// The kinds of change that the main view, the ruler and the list of pairs tell each other of a timing marker: the
/// first argument of their signals.
namespace markerChange {

// the main view to the list of pairs
inline constexpr int pairMade = 0;
inline constexpr int time = 4;
// the ruler to the main view
inline constexpr int setState = 5;
inline constexpr int setAndMove = 6;
// the main view to the ruler
inline constexpr int state = 7;
inline constexpr int place = 8;
inline constexpr int pairGone = 9;

} // namespace markerChange

/// What the list of pairs asks of the main view.
namespace pairRequest {

inline constexpr int add = 0;
inline constexpr int remove = 1;
inline constexpr int marker = 2;   ///< a marker's own button
inline constexpr int location = 3; ///< bring both markers into view

} // namespace pairRequest
