#include "PulseResults.h"

/// From short to long: the bubble shows the longest that fits, the results list the last.
void PulseResults::describe(const FrameData &frame, lux::FrameText &out) const
{
    const lux::ShortText width = lux::formatDuration(std::int64_t(frame.data), GetSampleRate());
    if (PulseKind(frame.kind) == PulseKind::TooLong) {
        out.add("!");
        out.add("Too long: ", width);
        return;
    }
    out.add("P");
    out.add(width);
    out.add(m_settings.level == PulseLevel::High ? "High pulse of " : "Low pulse of ", width);
}

void PulseResults::values(const FrameData &frame, lux::FrameValues &out) const
{
    out.kind("pulse").number("width", frame.data).flag("err", PulseKind(frame.kind) == PulseKind::TooLong);
}

std::span<const char *const> PulseResults::columns() const
{
    static constexpr const char *names[] = {"width", "err"};
    return names;
}
