#include "cli/FrameWriter.h"

#include "analyzer/PluginCall.h"
#include "analyzer/ResultCursor.h"
#include "analyzer/ResultsGate.h"
#include "cli/Output.h"

#include <QtGlobal>

#include <corvanlux/analyzer/Analyzer.h>
#include <corvanlux/analyzer/AnalyzerResults.h>
#include <corvanlux/analyzer/AnalyzerSettingInterface.h>
#include <corvanlux/analyzer/AnalyzerSettings.h>
#include <cstdio>
#include <span>
#include <string>
#include <utility>

namespace {

constexpr DisplayBase textBase = DisplayBase::Hexadecimal;

bool isPlainNumber(std::string_view text)
{
    const std::string_view digits = text.substr(text.starts_with('-') ? 1 : 0);
    const bool leadingZero = digits.size() > 1 && digits[0] == '0';
    return !digits.empty() && digits.size() < 16 && !leadingZero &&
           digits.find_first_not_of("0123456789") == std::string_view::npos;
}

std::string_view kindOf(AnalyzerResults &results)
{
    const char *kind = results.GetFrameKind();
    return kind != nullptr && *kind != '\0' ? kind : "frame";
}

std::span<const FrameValue> valuesOf(AnalyzerResults &results)
{
    const FrameValue *values = nullptr;
    std::uint32_t count = 0;
    results.GetFrameValues(&values, &count);
    return {values, count};
}

/// Runs code of a decoder; what it throws is kept with its results.
template<class Call>
void keepFault(AnalyzerResults &results, const Call &call)
{
    const QString fault = pluginFault(call);
    if (!fault.isEmpty()) {
        results.KeepTextFault(fault.toUtf8().constData());
    }
}

std::string_view nameOf(const Analyzer &analyzer)
{
    const char *name = analyzer.AnalyzerName();
    return name != nullptr ? name : "";
}

enum class Ask : std::uint8_t { Text, TextAndValues };

/// Has the decoder make a frame's text, and its values for valuesOf(). @return the text
std::string asked(AnalyzerResults &results, std::uint64_t index, Ask what, ResultsReader &reader)
{
    std::string text;
    const auto make = [&] {
        if (what == Ask::TextAndValues) {
            keepFault(results, [&] { results.BuildFrameValues(index); });
        }
        keepFault(results, [&] {
            results.BuildTabularText(index, textBase);
            text = results.GetTabularTextString();
        });
    };
    if (!reader.inside(&results, make)) {
        throw ResultMerge::PassTaken();
    }
    return text;
}

/// The names of a capture's analyzers, in their order.
std::vector<std::string> namesOf(const FrameWriter::Capture &capture)
{
    std::vector<std::string> names;
    for (const Analyzer *analyzer : capture.analyzers) {
        names.emplace_back(nameOf(*analyzer));
    }
    return names;
}

void writeJsonSettings(Output &out, const Analyzer &analyzer)
{
    out << '{';
    const AnalyzerSettings *settings = analyzer.GetAnalyzerSettings();
    for (std::uint32_t i = 0; i < settings->GetSettingsInterfacesCount(); ++i) {
        const AnalyzerSettingInterface *face = settings->GetSettingsInterface(i);
        const std::string_view text = face->GetAsText();
        out << (i > 0 ? "," : "");
        writeJsonText(out, face->GetKey());
        out << ':';
        if (isPlainNumber(text)) {
            out << text;
        } else {
            writeJsonText(out, text);
        }
    }
    out << '}';
}

void writeJsonAnalyzer(Output &out, const Analyzer &analyzer)
{
    out << "\"protocol\":";
    writeJsonText(out, nameOf(analyzer));
    out << ",\"settings\":";
    writeJsonSettings(out, analyzer);
}

class JsonLines final : public FrameWriter {
public:
    explicit JsonLines(Output &out) : m_out(out) {}

    void head(const Capture &capture) override
    {
        m_rate = capture.rate;
        m_several = capture.analyzers.size() > 1;
        m_out << "{\"capture\":";
        writeJsonText(m_out, capture.name.toStdString());
        m_out << ",\"rate\":" << capture.rate << ",\"samples\":" << capture.samples << ',';
        if (m_several) {
            m_out << "\"analyzers\":[";
            for (std::size_t i = 0; i < capture.analyzers.size(); ++i) {
                m_out << (i > 0 ? ",{" : "{");
                writeJsonAnalyzer(m_out, *capture.analyzers[i]);
                m_out << '}';
            }
            m_out << "]}\n";
        } else if (!capture.analyzers.empty()) {
            writeJsonAnalyzer(m_out, *capture.analyzers[0]);
            m_out << "}\n";
        }
    }

    void frame(AnalyzerResults &results, std::uint64_t index, std::size_t analyzer, ResultsReader &reader) override
    {
        const std::string text = asked(results, index, Ask::TextAndValues, reader);
        const Frame frame = results.GetFrame(index);
        m_out << "{\"s\":" << frame.firstSample << ",\"e\":" << frame.lastSample << ",\"k\":";
        writeJsonText(m_out, kindOf(results));
        for (const FrameValue &value : valuesOf(results)) {
            m_out << ",\"" << value.name << "\":";
            writeValue(value);
        }
        m_out << ",\"t\":" << std::string_view(secondsText(frame.firstSample, m_rate).constData());
        if (m_several) {
            m_out << ",\"a\":" << analyzer;
        }
        m_out << ",\"text\":";
        writeJsonText(m_out, text);
        m_out << "}\n";
    }

private:
    void writeValue(const FrameValue &value)
    {
        switch (value.type) {
        case FrameValueType::None:
            m_out << "null";
            break;
        case FrameValueType::Number:
        case FrameValueType::Flag:
            m_out << value.number;
            break;
        case FrameValueType::Text:
        case FrameValueType::Hex:
            writeJsonText(m_out, value.text != nullptr ? value.text : "");
            break;
        }
    }

    Output &m_out;
    std::int64_t m_rate = 1;
    bool m_several = false;
};

class CsvLines final : public FrameWriter {
public:
    CsvLines(Output &out, bool ofSeveral) : m_out(out), m_ofSeveral(ofSeveral) {}

    void head(const Capture &capture) override
    {
        m_rate = capture.rate;
        m_names = namesOf(capture);
        m_capture = capture.name.toStdString();
        if (!std::exchange(m_hasHead, true)) {
            m_out << (m_ofSeveral ? "capture," : "") << "time,first,last,analyzer,kind,values,text\n";
        }
    }

    void frame(AnalyzerResults &results, std::uint64_t index, std::size_t analyzer, ResultsReader &reader) override
    {
        const std::string text = asked(results, index, Ask::TextAndValues, reader);
        const Frame frame = results.GetFrame(index);
        if (m_ofSeveral) {
            field(m_capture);
            m_out << ',';
        }
        m_out << std::string_view(secondsText(frame.firstSample, m_rate).constData()) << ',' << frame.firstSample << ','
              << frame.lastSample << ',';
        field(m_names[analyzer]);
        m_out << ',';
        field(kindOf(results));
        m_out << ',';
        field(valuesText(results));
        m_out << ',';
        field(text);
        m_out << '\n';
    }

private:
    static std::string valuesText(AnalyzerResults &results)
    {
        std::string text;
        for (const FrameValue &value : valuesOf(results)) {
            text += text.empty() ? "" : " ";
            text += value.name;
            text += '=';
            const bool isNumber = value.type == FrameValueType::Number || value.type == FrameValueType::Flag;
            text += isNumber ? std::to_string(value.number) : std::string(value.text != nullptr ? value.text : "");
        }
        return text;
    }

    /// RFC 4180.
    void field(std::string_view text)
    {
        if (text.find_first_of(",\"\r\n") == std::string_view::npos) {
            m_out << text;
            return;
        }
        m_out << '"';
        for (const char c : text) {
            m_out << (c == '"' ? std::string_view("\"\"") : std::string_view(&c, 1));
        }
        m_out << '"';
    }

    Output &m_out;
    std::int64_t m_rate = 1;
    std::vector<std::string> m_names;
    std::string m_capture;
    bool m_ofSeveral;
    bool m_hasHead = false; ///< one for all captures: the lines are one table
};

class TextLines final : public FrameWriter {
public:
    TextLines(Output &out, bool ofSeveral) : m_out(out), m_ofSeveral(ofSeveral) {}

    void head(const Capture &capture) override
    {
        m_rate = capture.rate;
        m_names = namesOf(capture);
        m_capture = capture.name.toStdString();
    }

    void frame(AnalyzerResults &results, std::uint64_t index, std::size_t analyzer, ResultsReader &reader) override
    {
        const std::string text = asked(results, index, Ask::Text, reader);
        if (m_ofSeveral) {
            m_out << m_capture << '\t';
        }
        m_out << std::string_view(secondsText(results.GetFrame(index).firstSample, m_rate).constData()) << '\t';
        if (m_names.size() > 1) {
            m_out << m_names[analyzer] << '\t';
        }
        m_out << text << '\n';
    }

private:
    Output &m_out;
    std::int64_t m_rate = 1;
    std::vector<std::string> m_names;
    std::string m_capture;
    bool m_ofSeveral;
};

/// The bytes of the UTF-8 sequence that begins at `at` (Unicode 15, table 3-7); 0 for what is none.
std::size_t utf8Length(std::string_view text, std::size_t at)
{
    const auto byte = [text](std::size_t i) { return i < text.size() ? std::uint8_t(text[i]) : std::uint8_t(0); };
    const std::uint8_t lead = byte(at);
    const std::size_t length = lead < 0x80                   ? 1
                               : lead >= 0xC2 && lead < 0xE0 ? 2
                               : (lead & 0xF0) == 0xE0       ? 3
                               : lead >= 0xF0 && lead < 0xF5 ? 4
                                                             : 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(at + i) & 0xC0) != 0x80) {
            return 0;
        }
    }
    const std::uint8_t second = byte(at + 1);
    const bool bad = (lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) ||
                     (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F);
    return length > 2 && bad ? 0 : length;
}

} // namespace

std::unique_ptr<FrameWriter> FrameWriter::make(const QString &format, Output &out, bool ofSeveral)
{
    if (format == QLatin1String("jsonl")) {
        return std::make_unique<JsonLines>(out);
    }
    if (format == QLatin1String("csv")) {
        return std::make_unique<CsvLines>(out, ofSeveral);
    }
    if (format == QLatin1String("text")) {
        return std::make_unique<TextLines>(out, ofSeveral);
    }
    return nullptr;
}

void writeJsonText(Output &out, std::string_view text)
{
    out << '"';
    for (std::size_t i = 0; i < text.size();) {
        const auto c = std::uint8_t(text[i]);
        if (c >= 0x80) {
            const std::size_t length = utf8Length(text, i);
            out << (length > 0 ? text.substr(i, length) : std::string_view("\xEF\xBF\xBD"));
            i += length > 0 ? length : 1;
            continue;
        }
        if (c == '"' || c == '\\') {
            out << '\\' << char(c);
        } else if (c < 0x20 || c == 0x7F) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04X", unsigned(c));
            out << escaped;
        } else {
            out << char(c);
        }
        ++i;
    }
    out << '"';
}

QByteArray secondsText(std::int64_t sample, std::int64_t rate)
{
    int digits = 0;
    for (std::int64_t step = 1; step < rate && digits < 12; step *= 10) {
        ++digits;
    }
    const std::int64_t hz = rate > 0 ? rate : 1;
    QByteArray text = QByteArray::number(qlonglong(sample / hz));
    std::int64_t rest = sample % hz;
    if (digits > 0) {
        text += '.';
    }
    for (int i = 0; i < digits; ++i) { // long division: no rounding on the way, the last digit is cut
        rest *= 10;
        text += char('0' + rest / hz);
        rest %= hz;
    }
    return text;
}
