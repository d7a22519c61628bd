#include "cli/Output.h"

#include "cli/Console.h"
#include "cli/Terminal.h"
#include "files/CaptureFile.h"

Output::Output(const QString &path) : m_path(path == QLatin1String("-") ? QString() : path)
{
    m_buffer.reserve(flushSize + 4096);
    if (m_path.isEmpty()) {
        m_stream = stdout;
    } else if (Console::isStream(m_path)) {
        m_stream = Console::open(m_path); // another file in its place would take it from all who use it
        m_good = m_stream != nullptr;
    } else {
        beginFile();
    }
}

Output::~Output()
{
    if (m_stream != nullptr && m_stream != stdout) {
        std::fclose(m_stream);
    }
}

void Output::beginFile()
{
    m_target.emplace(m_path);
    m_fault = m_target->begin();
    m_file.setFileName(m_target->partPath());
    if (m_fault == WriteFault::None && !m_file.open(QIODevice::WriteOnly | QIODevice::Append)) {
        m_fault = writeFaultOf(m_file);
    }
    m_good = m_fault == WriteFault::None;
}

void Output::flush()
{
    m_isEmpty = m_isEmpty && m_buffer.empty();
    if (m_good && m_stream != nullptr) {
        m_good = Console::write(m_buffer, m_stream);
    } else if (m_good) {
        m_good = writeWhole(m_file, m_buffer.data(), qint64(m_buffer.size()));
        m_fault = m_good ? WriteFault::None : writeFaultOf(m_file);
    }
    m_buffer.clear();
}

QString Output::reason() const
{
    return m_fault == WriteFault::None ? QStringLiteral("the output could not be written")
                                       : fileReason({fileResultOf(m_fault)});
}

int Output::finish(int code)
{
    flush();
    const bool isWorthless = m_isEmpty && code != Terminal::good; // an earlier file is worth more than an empty one
    if (m_good && m_target && !isWorthless && !m_isAbandoned) {
        m_fault = m_file.flush() ? WriteFault::None : writeFaultOf(m_file);
        m_file.close();
        m_fault = m_fault == WriteFault::None ? m_target->finish() : m_fault;
        m_good = m_fault == WriteFault::None;
    }
    if (!m_good && !m_target && Terminal::wasInterrupted()) {
        return Terminal::interrupted;
    }
    if (!m_good) {
        Terminal::say(m_path.isEmpty() ? reason() : QStringLiteral("%1: %2").arg(m_path, reason()));
        return Terminal::badInput;
    }
    return code;
}
