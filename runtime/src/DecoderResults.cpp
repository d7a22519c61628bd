#include "corvanlux/analyzer/DecoderResults.h"

#include "CopyText.h"
#include "ExportPrivate.h"
#include "ResultsPrivate.h"

#include <exception>
#include <string>

namespace lux {
namespace {

/// One value as a CSV field has it; nothing for one that is missing.
std::string plainValue(const FrameValue &value)
{
    switch (value.type) {
    case FrameValueType::Number:
    case FrameValueType::Flag:
        return std::to_string(value.number);
    case FrameValueType::Text:
    case FrameValueType::Hex:
        return value.text;
    case FrameValueType::None:
        break;
    }
    return {};
}

const FrameValue *valueNamed(std::string_view name, std::span<const FrameValue> values)
{
    for (const FrameValue &value : values) {
        if (name == value.name)
            return &value;
    }
    return nullptr;
}

/// Runs what a decoder wrote; when it throws, that is kept, and `begin` takes back what it has said so far.
template<class Call, class Begin>
void emptyOnFault(AnalyzerResults &results, const Call &call, const Begin &begin)
{
    try {
        call();
    } catch (const std::exception &fault) {
        results.KeepTextFault(fault.what());
        begin();
    } catch (...) {
        results.KeepTextFault(nullptr);
        begin();
    }
}

} // namespace

Results::Results() : m_private(nullptr) {}

Results::~Results() = default;

FrameData Results::frame(std::uint64_t index) const
{
    return internals()->frames[index];
}

void Results::BuildBubbleText(std::uint64_t frame, Channel &channel, DisplayBase base)
{
    FrameText &out = internals()->bubbleText;
    const auto begin = [&] { out.start(FrameText::Purpose::Bubble, channel, base); };
    begin();
    if (frame < GetNumFrames())
        emptyOnFault(
            *this, [&] { describe(internals()->frames[frame], out); }, begin);
}

void Results::BuildTabularText(std::uint64_t frame, DisplayBase base)
{
    FrameText &out = internals()->tabularText;
    const auto begin = [&] { out.start(FrameText::Purpose::Tabular, Channel(), base); };
    begin();
    if (frame < GetNumFrames())
        emptyOnFault(
            *this, [&] { describe(internals()->frames[frame], out); }, begin);
}

void Results::BuildFrameValues(std::uint64_t frame)
{
    FrameValues &out = internals()->values;
    out.start();
    if (frame < GetNumFrames())
        emptyOnFault(
            *this, [&] { values(internals()->frames[frame], out); }, [&] { out.start(); });
}

void Results::BuildMessageText(std::uint64_t /*message*/, DisplayBase /*base*/) {}

void Results::BuildGroupText(std::uint64_t /*group*/, DisplayBase /*base*/) {}

std::span<const char *const> Results::columns() const
{
    return {};
}

void Results::BuildExportFile(const char *path, DisplayBase base, std::uint32_t optionId)
{
    AnalyzerResults::Private &own = *internals();
    double outcome = 1.0;
    try {
        ExportWriter::Private file(path, base, own.sampleRate, own.exportProgress, own.exportCancelled);
        ExportWriter writer(file);
        exportFile(writer, optionId);
        file.close();
    } catch (const detail::ExportEnd &) {
        // cancelled, and the file removed
    } catch (const std::exception &failure) {
        own.setExportError(failure.what());
        outcome = exportFailed;
    }
    own.exportProgress.store(outcome, std::memory_order_release);
}

void Results::exportFile(ExportWriter &out, std::uint32_t /*optionId*/) const
{
    exportFrames(out);
}

void Results::exportFrames(ExportWriter &out) const
{
    const std::uint64_t all = frameCount();
    FrameText text;
    FrameValues frameValues;
    if (out.isCsv()) {
        for (const char *head : {"time_s", "first_sample", "last_sample", "kind"})
            out.field(std::string_view(head));
        for (const char *column : columns())
            out.field(std::string_view(detail::orEmpty(column)));
        out.field(std::string_view("text"));
        out.endLine();
    }
    for (std::uint64_t i = 0; i < all; ++i) {
        const FrameData &current = internals()->frames[i];
        text.start(FrameText::Purpose::Tabular, Channel(), out.base());
        describe(current, text);
        out.progress(i, all);
        if (!out.isCsv()) {
            out.line(out.seconds(current.firstSample), "\t", text.last());
            continue;
        }
        frameValues.start();
        values(current, frameValues);
        out.field(out.seconds(current.firstSample));
        out.field(current.firstSample);
        out.field(current.lastSample);
        out.field(std::string_view(frameValues.frameKind()));
        for (const char *column : columns()) {
            const FrameValue *value = valueNamed(detail::orEmpty(column), frameValues.list());
            out.field(value == nullptr ? std::string() : plainValue(*value));
        }
        out.field(text.last());
        out.endLine();
    }
}

} // namespace lux
