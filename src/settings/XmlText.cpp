#include "settings/XmlText.h"

#include <QFile>
#include <QFileInfo>
#include <QTextCodec>
#include <QXmlStreamReader>

namespace {

/// The text of a document: by its byte order mark, by the encoding that it declares, or UTF-8. Decoded once, so that
/// the check and the tree cannot see two different texts.
QString decoded(const QByteArray &bytes)
{
    QXmlStreamReader reader(bytes);
    reader.readNext();
    QTextCodec *declared = QTextCodec::codecForName(reader.documentEncoding().toString().toLatin1());
    QTextCodec *codec = declared != nullptr ? declared : QTextCodec::codecForName("UTF-8");
    return QTextCodec::codecForUtfText(bytes, codec)->toUnicode(bytes);
}

/// The index behind the next `end` from `from` on; the text's length if there is none.
int behind(const QString &text, const char *end, int from)
{
    const QLatin1String wanted(end);
    const int at = text.indexOf(wanted, from);
    return at < 0 ? text.size() : at + wanted.size();
}

/// The index behind the tag whose "<" stands at `from`, and the number of its attributes; the text need not be
/// well-formed.
int behindTag(const QString &text, int from, int &attributes)
{
    attributes = 0;
    QChar quote;
    for (int i = from + 1; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (!quote.isNull()) {
            quote = c == quote ? QChar() : quote;
        } else if (c == QLatin1Char('"') || c == QLatin1Char('\'')) {
            quote = c;
        } else if (c == QLatin1Char('=')) {
            ++attributes;
        } else if (c == QLatin1Char('>')) {
            return i + 1;
        }
    }
    return text.size();
}

/// True if no tag has too many attributes. Looked at before anything reads the tags: what it costs to read one grows
/// with the square of their number.
bool attributesWithinLimit(const QString &text)
{
    for (int at = text.indexOf(QLatin1Char('<')); at >= 0; at = text.indexOf(QLatin1Char('<'), at)) {
        const QStringRef rest = text.midRef(at, 9);
        if (rest.startsWith(QLatin1String("<!--"))) {
            at = behind(text, "-->", at + 4);
        } else if (rest.startsWith(QLatin1String("<?"))) {
            at = behind(text, "?>", at + 2);
        } else if (rest == QLatin1String("<![CDATA[")) {
            at = behind(text, "]]>", at + 9);
        } else {
            int attributes = 0;
            at = behindTag(text, at, attributes);
            if (attributes > xmlMaxAttributes) {
                return false;
            }
        }
    }
    return true;
}

/// Reads to the end without building anything.
bool withinLimits(const QString &text)
{
    QXmlStreamReader reader(text);
    int depth = 0;
    int elements = 0;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement:
            if (++depth > xmlMaxDepth || ++elements > xmlMaxElements) {
                return false;
            }
            break;
        case QXmlStreamReader::EndElement:
            --depth;
            break;
        case QXmlStreamReader::DTD:
            return false;
        default:
            break;
        }
    }
    return !reader.hasError();
}

bool isNameStart(QChar c)
{
    return c.isLetter() || c == QLatin1Char('_');
}

bool isNamePart(QChar c)
{
    return isNameStart(c) || c.isDigit() || c == QLatin1Char('-') || c == QLatin1Char('.');
}

bool isAllowed(ushort unit)
{
    return (unit >= 0x20 && unit < 0xFFFE) || unit == '\t' || unit == '\n' || unit == '\r';
}

} // namespace

bool xmlParse(QDomDocument &document, const QByteArray &bytes)
{
    if (bytes.size() > xmlMaxBytes) {
        return false;
    }
    const QString text = decoded(bytes);
    return attributesWithinLimit(text) && withinLimits(text) && document.setContent(text, false);
}

bool xmlParseFile(QDomDocument &document, const QString &path)
{
    QFile file(path);
    // Opening what is no plain file may wait for ever.
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return false;
    }
    return xmlParse(document, file.read(xmlMaxBytes + 1));
}

QString xmlAllowed(const QString &text)
{
    QString allowed;
    allowed.reserve(text.size());
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
            allowed += c;
            allowed += text.at(++i);
        } else if (!c.isSurrogate() && isAllowed(c.unicode())) {
            allowed += c;
        }
    }
    return allowed;
}

bool xmlIsName(const QString &name)
{
    if (name.isEmpty() || !isNameStart(name.front())) {
        return false;
    }
    for (const QChar c : name) {
        if (!isNamePart(c)) {
            return false;
        }
    }
    return true;
}
