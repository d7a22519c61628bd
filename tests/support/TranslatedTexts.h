#pragma once

// Which texts the source hands to the translation, and what is wrong with a language file that should hold them.

#include "support/SourceText.h"

#include <QDomDocument>
#include <QMap>
#include <QRegularExpression>
#include <QSet>
#include <QStringList>

/// What a tree of sources translates.
struct TranslatedTexts {
    QMap<QString, QString> places; ///< text to the first place that uses it, "file:line"
    QStringList computed;          ///< calls whose argument is no literal, "file: argument"
};

/// Reads one argument of a call: a literal, or several that stand side by side.
class LiteralArgument {
public:
    /// @param code  the source without comments, literals kept
    /// @param at    offset behind the opening bracket
    LiteralArgument(const QString &code, int at) : m_code(code), m_at(at) {}

    /// True if the argument is literals alone, up to the bracket that closes the call.
    bool read()
    {
        skipBlanks();
        const bool wrapped = skip(QStringLiteral("QStringLiteral(")) || skip(QStringLiteral("QLatin1String("));
        bool any = false;
        while (skip(QStringLiteral("\""))) {
            if (!literal()) {
                return false;
            }
            any = true;
        }
        return any && skip(QStringLiteral(")")) && (!wrapped || skip(QStringLiteral(")")));
    }

    const QString &text() const { return m_text; }

private:
    void skipBlanks()
    {
        while (m_at < m_code.size() && m_code.at(m_at).isSpace()) {
            ++m_at;
        }
    }

    bool skip(const QString &what)
    {
        if (m_code.midRef(m_at, what.size()) != what) {
            return false;
        }
        m_at += what.size();
        if (what != QLatin1String("\"")) {
            skipBlanks();
        }
        return true;
    }

    /// The rest of a literal behind its opening quote. Escapes that no text of a program needs are refused.
    bool literal()
    {
        static const QMap<QChar, QChar> escapes{
            {QLatin1Char('n'), QLatin1Char('\n')},  {QLatin1Char('r'), QLatin1Char('\r')},
            {QLatin1Char('t'), QLatin1Char('\t')},  {QLatin1Char('"'), QLatin1Char('"')},
            {QLatin1Char('\''), QLatin1Char('\'')}, {QLatin1Char('\\'), QLatin1Char('\\')}};
        for (; m_at < m_code.size(); ++m_at) {
            QChar c = m_code.at(m_at);
            if (c == QLatin1Char('"')) {
                ++m_at;
                skipBlanks();
                return true;
            }
            if (c == QLatin1Char('\\')) {
                c = escapes.value(m_code.size() > m_at + 1 ? m_code.at(m_at + 1) : QChar());
                if (c.isNull()) {
                    return false;
                }
                ++m_at;
            }
            m_text += c;
        }
        return false;
    }

    QString m_code;
    int m_at;
    QString m_text;
};

/// The argument of a call as it stands, blanks joined, from behind its opening bracket to the closing one.
inline QString argumentAsWritten(const QString &code, int at)
{
    int depth = 1;
    int end = at;
    for (; end < code.size() && depth > 0; ++end) {
        depth += code.at(end) == QLatin1Char('(') ? 1 : code.at(end) == QLatin1Char(')') ? -1 : 0;
    }
    return code.mid(at, end - at - 1).simplified();
}

/// The arguments of `tr` and `trLater` in all files but those that define them.
inline TranslatedTexts translatedTexts(const Sources &sources)
{
    static const QRegularExpression call(QStringLiteral("(?<![A-Za-z0-9_])tr(Later)?\\s*\\("));
    TranslatedTexts texts;
    for (auto file = sources.cbegin(); file != sources.cend(); ++file) {
        if (file.key().startsWith(QStringLiteral("settings/Language."))) {
            continue;
        }
        const QString code = Stripper(file.value(), true).run();
        // The calls are looked for where literals are blank, so that none within a text counts.
        for (auto match = call.globalMatch(Stripper(file.value(), false).run()); match.hasNext();) {
            const QRegularExpressionMatch found = match.next();
            LiteralArgument argument(code, found.capturedEnd());
            if (!argument.read()) {
                texts.computed += file.key() + QStringLiteral(": ") + argumentAsWritten(code, found.capturedEnd());
            } else if (!texts.places.contains(argument.text())) {
                const int line = code.leftRef(found.capturedStart()).count(QLatin1Char('\n')) + 1;
                texts.places.insert(argument.text(), QStringLiteral("%1:%2").arg(file.key()).arg(line));
            }
        }
    }
    return texts;
}

/// What a translation must keep of its English text, as text to compare.
inline QString keptParts(const QString &text)
{
    static const QRegularExpression placeholder(QStringLiteral("%[0-9n]"));
    static const QRegularExpression blanks(QStringLiteral("^\\s*|\\s*$"));
    static const QRegularExpression unit(QStringLiteral("\\[[a-zA-Z]+\\]"));
    QStringList kept;
    for (const QRegularExpression &part : {placeholder, unit}) {
        QStringList found;
        for (auto match = part.globalMatch(text); match.hasNext();) {
            found += match.next().captured();
        }
        found.sort(); // their order may follow the language
        kept += found.join(QLatin1Char(' '));
    }
    for (auto match = blanks.globalMatch(text); match.hasNext();) {
        kept += match.next().captured();
    }
    const QString trimmed = text.trimmed();
    kept += QString::number(text.count(QLatin1Char('&')));
    kept += QString::number(text.count(QLatin1Char('\n')));
    kept += trimmed.endsWith(QLatin1Char(':')) || trimmed.endsWith(QChar(0xff1a)) ? QStringLiteral("colon") : QString();
    // Dots are added behind translations, so none brings its own.
    kept +=
        trimmed.endsWith(QStringLiteral("...")) || trimmed.endsWith(QChar(0x2026)) ? QStringLiteral("dots") : QString();
    return kept.join(QLatin1Char('|'));
}

/// The faults of the texts in `lux`, the second child of a language file's root, against `texts`; one line each.
inline QStringList faultsOf(const QDomElement &lux, const TranslatedTexts &texts)
{
    QStringList faults;
    QMap<QString, QString> entries; // lower-cased, as the look-up does
    QSet<QString> wanted;
    for (auto text = texts.places.cbegin(); text != texts.places.cend(); ++text) {
        wanted += text.key().toLower();
    }
    for (QDomElement e = lux.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        const QString src = e.attribute(QStringLiteral("src"));
        if (entries.contains(src.toLower())) {
            faults += QStringLiteral("twice: \"%1\"").arg(src);
        }
        if (!wanted.contains(src.toLower())) {
            faults += QStringLiteral("not in the source: \"%1\"").arg(src);
        }
        if (e.text().trimmed().isEmpty()) {
            faults += QStringLiteral("empty: \"%1\"").arg(src);
        } else if (keptParts(src) != keptParts(e.text())) {
            faults += QStringLiteral("other blanks, dots, colon, unit or placeholders: \"%1\"").arg(src);
        }
        entries.insert(src.toLower(), e.text());
    }
    for (auto text = texts.places.cbegin(); text != texts.places.cend(); ++text) {
        if (!entries.contains(text.key().toLower())) {
            faults += QStringLiteral("missing: \"%1\" (%2)").arg(text.key(), text.value());
        }
    }
    return faults;
}
