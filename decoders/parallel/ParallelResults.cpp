#include "ParallelResults.h"

#include <algorithm>

using lux::FrameText;
using lux::FrameValues;

ParallelResults::ParallelResults(const ParallelSettings &settings)
    : m_width(std::max(1U, settings.data.width())), m_addressWidth(unsigned(settings.address().size()))
{
    // On the highest line, so that the words stand once.
    if (settings.data.width() > 0) {
        showBubblesOn(settings.data[m_width - 1]);
    }
}

void ParallelResults::describe(const FrameData &frame, FrameText &out) const
{
    const lux::ShortText word = out.number(frame.data, m_width);
    out.add(word);
    if (m_addressWidth == 0) {
        out.add("Word ", word);
    } else {
        out.add("Word ", word, " at address ", out.number(frame.data2, m_addressWidth));
    }
}

void ParallelResults::values(const FrameData &frame, FrameValues &out) const
{
    out.kind("word").number("v", frame.data);
    if (m_addressWidth > 0) {
        out.number("addr", frame.data2);
    }
}

std::span<const char *const> ParallelResults::columns() const
{
    static constexpr const char *names[] = {"v", "addr"};
    return {names, m_addressWidth > 0 ? 2U : 1U};
}

/// The words, each in as many bytes as it needs, the highest byte first.
void ParallelResults::exportFile(lux::ExportWriter &out, std::uint32_t optionId) const
{
    if (optionId != ParallelSettings::Words) {
        exportFrames(out);
        return;
    }
    constexpr unsigned bitsOfByte = 8;
    const std::uint64_t count = frameCount();
    for (std::uint64_t i = 0; i < count; ++i) {
        out.big(frame(i).data, (m_width + bitsOfByte - 1) / bitsOfByte);
        out.progress(i, count);
    }
}
