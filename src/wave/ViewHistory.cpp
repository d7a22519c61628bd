#include "wave/ViewHistory.h"

void ViewHistory::leave(const TimeWindow &window, Step step)
{
    const bool goesOn = step == Step::move && m_moving;
    m_moving = step == Step::move;
    if (goesOn || window.ratio <= 0.0) {
        return;
    }
    if (m_left.size() == mostSteps) {
        m_left.erase(m_left.begin());
    }
    m_left.push_back(window);
}

bool ViewHistory::back(const TimeWindow &present, TimeWindow &window)
{
    m_moving = false;
    while (!m_left.empty()) {
        const TimeWindow last = m_left.back();
        m_left.pop_back();
        if (!(last == present)) {
            window = last;
            return true;
        }
    }
    return false;
}

void ViewHistory::clear()
{
    m_left.clear();
    m_moving = false;
}
