#pragma once

#include "wave/TimeAxis.h"

#include <cstddef>
#include <vector>

/// The windows that the user has left, the last on top. Plain values; one thread at a time.
class ViewHistory {
public:
    /// What leads away from a window. Moves that follow each other are one step.
    enum class Step { move, zoom };
    static constexpr std::size_t mostSteps = 100;

    /// The user leaves `window`. Beyond mostSteps the oldest is forgotten.
    void leave(const TimeWindow &window, Step step);
    /// Takes the last window that is another than `present`. @return false for none
    [[nodiscard]] bool back(const TimeWindow &present, TimeWindow &window);
    void clear();

private:
    std::vector<TimeWindow> m_left;
    bool m_moving = false; ///< the last step was a move
};
