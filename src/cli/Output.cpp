#include "cli/Output.h"

#include "cli/Console.h"
#include "cli/Terminal.h"

#include <QFileInfo>
#include <QSaveFile>

Output::Output(const QString &path)
{
    m_buffer.reserve(flushSize + 4096);
    if (path.isEmpty() || path == QLatin1String("-")) {
        return;
    }
    const QFileInfo there(path);
    if (there.exists() && !there.isFile()) {
        m_file = std::make_unique<QFile>(path); // another file in its place would take it from all who use it
    } else {
        auto file = std::make_unique<QSaveFile>(path);
        m_replaced = file.get();
        m_file = std::move(file);
    }
    m_good = m_file->open(QIODevice::WriteOnly);
}

void Output::flush()
{
    m_isEmpty = m_isEmpty && m_buffer.empty();
    if (m_good && m_file) {
        m_good = m_file->write(m_buffer.data(), qint64(m_buffer.size())) == qint64(m_buffer.size());
    } else if (m_good) {
        m_good = Console::write(m_buffer);
    }
    m_buffer.clear();
}

int Output::finish(int code)
{
    flush();
    const bool isWorthless = m_isEmpty && code != Terminal::good; // an earlier file is worth more than an empty one
    if (m_good && m_replaced != nullptr && (isWorthless || m_isAbandoned)) {
        m_replaced->cancelWriting();
    } else if (m_good && m_replaced != nullptr) {
        m_good = m_replaced->commit();
    } else if (m_good && m_file) {
        m_good = m_file->flush();
    }
    if (!m_good && !m_file && Terminal::wasInterrupted()) {
        return Terminal::interrupted;
    }
    if (!m_good) {
        Terminal::say(QStringLiteral("the output could not be written"));
        return Terminal::badInput;
    }
    return code;
}
