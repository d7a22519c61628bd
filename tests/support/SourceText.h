#pragma once

// The program's source as text, for tests of rules that no compiler checks.

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QMap>
#include <QString>
#include <QtGlobal>

/// The text of each source file by its path below src/.
using Sources = QMap<QString, QString>;

/// `code` with the contents of comments and, unless `keepStrings`, of literals replaced by blanks. Line ends stay.
class Stripper {
public:
    Stripper(const QString &code, bool keepStrings) : m_code(code), m_keepStrings(keepStrings) {}

    QString run()
    {
        while (m_at < m_code.size()) {
            if (startsWith("//")) {
                blankTo(m_code.indexOf(QLatin1Char('\n'), m_at));
            } else if (startsWith("/*")) {
                blankTo(behind(QStringLiteral("*/"), m_at + 2));
            } else if (startsWith("R\"")) {
                rawString();
            } else if (startsWith("\"") || (startsWith("'") && !isDigitSeparator())) {
                literal();
            } else {
                m_out += m_code.at(m_at++);
            }
        }
        return m_out;
    }

private:
    bool startsWith(const char *text) const { return m_code.midRef(m_at).startsWith(QLatin1String(text)); }

    bool isDigitSeparator() const { return m_at > 0 && m_code.at(m_at - 1).isLetterOrNumber(); }

    int behind(const QString &end, int from) const
    {
        const int found = m_code.indexOf(end, from);
        return found < 0 ? -1 : found + end.size();
    }

    void copyTo(int end, bool blank)
    {
        const int stop = end < 0 ? m_code.size() : end;
        for (; m_at < stop; ++m_at) {
            const QChar c = m_code.at(m_at);
            m_out += blank && c != QLatin1Char('\n') ? QLatin1Char(' ') : c;
        }
    }

    void blankTo(int end) { copyTo(end, true); }

    void rawString()
    {
        const int open = m_code.indexOf(QLatin1Char('('), m_at);
        const QString delimiter = m_code.mid(m_at + 2, open - m_at - 2);
        copyTo(behind(QLatin1Char(')') + delimiter + QLatin1Char('"'), open), !m_keepStrings);
    }

    void literal()
    {
        const QChar quote = m_code.at(m_at);
        int end = m_at + 1;
        while (end < m_code.size() && m_code.at(end) != quote && m_code.at(end) != QLatin1Char('\n')) {
            end += m_code.at(end) == QLatin1Char('\\') ? 2 : 1;
        }
        copyTo(qMin(end + 1, m_code.size()), !m_keepStrings);
    }

    QString m_code;
    QString m_out;
    int m_at = 0;
    bool m_keepStrings;
};

/// The C++ files below `directory`. A file that cannot be read ends the test program.
inline Sources readSources(const QString &directory)
{
    const QDir root(directory);
    Sources sources;
    QDirIterator files(root.path(), {QStringLiteral("*.h"), QStringLiteral("*.cpp")}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
            qFatal("cannot read %s", qPrintable(file.fileName()));
        }
        sources.insert(root.relativeFilePath(file.fileName()), QString::fromUtf8(file.readAll()));
    }
    return sources;
}
