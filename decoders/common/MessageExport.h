#pragma once

#include <algorithm>
#include <corvanlux/analyzer/DecoderResults.h>
#include <corvanlux/analyzer/ExportWriter.h>
#include <string>
#include <string_view>

namespace lux {

/// Writes messages, a line each: as text "0.000012 S 0x50 W A P", as CSV with time, first and last sample and the same
/// text. Messages are put together out of elements, or whole.
class MessageExport {
public:
    explicit MessageExport(ExportWriter &out) : m_out(out)
    {
        if (out.isCsv()) {
            for (const char *head : {"time_s", "first_sample", "last_sample", "text"}) {
                out.field(std::string_view(head));
            }
            out.endLine();
        }
    }
    [[nodiscard]] bool isOpen() const { return m_isOpen; }
    /// The message that begins with this frame; ends the one before.
    void begin(const FrameData &frame)
    {
        end();
        m_isOpen = true;
        m_first = frame.firstSample;
        m_last = frame.lastSample;
        if (!m_out.isCsv()) {
            m_out.write(m_out.seconds(m_first));
        }
    }
    /// One more element of the message, out of pieces.
    template<class... Pieces>
    void add(const FrameData &frame, const Pieces &...pieces)
    {
        m_last = std::max(m_last, frame.lastSample);
        if (m_out.isCsv()) { // which quotes the text when it has all of it
            m_text += m_text.empty() ? "" : " ";
            (m_text.append(std::string_view(pieces)), ...);
        } else {
            m_out.write(std::string_view(" "));
            (m_out.write(std::string_view(pieces)), ...);
        }
    }
    void end()
    {
        if (m_isOpen && m_out.isCsv()) {
            writeFields(m_text);
            m_text.clear();
        } else if (m_isOpen) {
            m_out.line();
        }
        m_isOpen = false;
    }
    /// A message that is one frame. @param separator  between time and text
    void whole(const FrameData &frame, std::string_view text, std::string_view separator = "\t")
    {
        m_first = frame.firstSample;
        m_last = frame.lastSample;
        if (m_out.isCsv()) {
            writeFields(text);
        } else {
            m_out.line(m_out.seconds(m_first), separator, text);
        }
    }

private:
    void writeFields(std::string_view text)
    {
        m_out.field(m_out.seconds(m_first));
        m_out.field(m_first);
        m_out.field(m_last);
        m_out.field(text);
        m_out.endLine();
    }

    ExportWriter &m_out;
    bool m_isOpen = false;
    Sample m_first = 0;
    Sample m_last = 0;
    std::string m_text; ///< of the open message, for CSV
};

} // namespace lux
