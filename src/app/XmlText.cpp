#include "app/XmlText.h"

#include <QFile>
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
    return withinLimits(text) && document.setContent(text, false);
}

bool xmlParseFile(QDomDocument &document, const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
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
