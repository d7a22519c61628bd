#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

class Analyzer;
class AnalyzerResults;
class AnalyzerSettings;
class Output;
class ResultsReader;

/// What was decoded, as lines. The forms are told in docs/luxcli.md and stay as they are.
class FrameWriter {
public:
    /// A capture and the analyzers that decoded it, in the order of their numbers.
    struct Capture {
        QString name;          ///< file without folder and suffix
        std::int64_t rate = 0; ///< Hz
        std::int64_t samples = 0;
        std::vector<const Analyzer *> analyzers;
    };

    virtual ~FrameWriter() = default;
    /// @param ofSeveral  captures: then each line of "csv" and "text" begins with the name of its own, as JSON's have
    /// heads
    /// @return null for an unknown format: there are "jsonl", "csv" and "text"
    [[nodiscard]] static std::unique_ptr<FrameWriter> make(const QString &format, Output &out, bool ofSeveral);

    /// Before the frames of a capture. The analyzers are not looked at later.
    virtual void head(const Capture &capture) = 0;
    /// Writes a whole line: nothing of it before the decoder has said all. Any thread, one at a time.
    /// @param analyzer  its number in the capture
    /// @param reader    holds a pass to the results; when it loses that meanwhile ResultMerge::PassTaken leaves, and
    ///                  nothing was touched
    virtual void frame(AnalyzerResults &results, std::uint64_t index, std::size_t analyzer, ResultsReader &reader) = 0;

protected:
    FrameWriter() = default;
};

/// `text` as a JSON string with its quotes (RFC 8259): UTF-8 as it is, control characters escaped, what is no UTF-8
/// replaced.
void writeJsonText(Output &out, std::string_view text);
/// A sample as seconds from the capture's start, with all digits that tell samples apart.
[[nodiscard]] QByteArray secondsText(std::int64_t sample, std::int64_t rate);
