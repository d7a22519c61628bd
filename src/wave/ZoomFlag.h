#pragma once

/// The first argument of MainView::zoomChangedByMouse().
namespace zoomFlag {

inline constexpr int in = 1;
inline constexpr int out = 2;

} // namespace zoomFlag
