#include "settings/Config.h"

#include "settings/Globals.h"
#include "settings/XmlText.h"

#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

#include <array>

namespace {

/// The reader of data and settings files looks no further: a limit of the file format.
constexpr int headLimit = 32'768;

QDomDocument &document()
{
    static QDomDocument tree;
    return tree;
}

/// Makes the declaration tell the encoding that configSave writes, whatever the parsed text had.
void setDeclaration()
{
    QDomDocument &tree = document();
    const QDomNode first = tree.firstChild();
    if (first.isProcessingInstruction() && first.nodeName() == QLatin1String("xml")) {
        tree.removeChild(first);
    }
    tree.insertBefore(
        tree.createProcessingInstruction(QStringLiteral("xml"), QStringLiteral("version=\"1.0\" encoding=\"UTF-8\"")),
        tree.firstChild());
}

void setTemplate()
{
    document().setContent(QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
                                         "<settings><global/><devices/><analyzers/></settings>"));
    setDeclaration();
}

bool hasSettingsRoot()
{
    return document().documentElement().tagName() == QLatin1String("settings");
}

/// The child element `tag`, made at the end of `parent` if it is missing. Null for a tag that XML does not allow: such
/// an element would make the next saved file unreadable.
QDomElement childMade(QDomElement parent, const QString &tag)
{
    if (!xmlIsName(tag)) {
        return {};
    }
    QDomElement child = parent.firstChildElement(tag);
    if (child.isNull()) {
        child = document().createElement(tag);
        parent.appendChild(child);
    }
    return child;
}

QDomElement section(const QString &tag)
{
    if (!hasSettingsRoot()) {
        setTemplate();
    }
    return childMade(document().documentElement(), tag);
}

QDomElement globalElement(const QString &key)
{
    return childMade(section(QStringLiteral("global")), key);
}

QDomElement deviceElement(const QString &model, const QString &key)
{
    const QDomElement device = childMade(section(QStringLiteral("devices")), model);
    return device.isNull() ? device : childMade(device, key);
}

void removeChildren(QDomElement element)
{
    while (!element.firstChild().isNull()) {
        element.removeChild(element.firstChild());
    }
}

void setText(QDomElement element, const QString &value)
{
    if (element.isNull()) {
        return;
    }
    const QString allowed = xmlAllowed(value);
    QDomNode first = element.firstChild();
    if (first.nodeType() == QDomNode::TextNode) {
        first.setNodeValue(allowed);
        return;
    }
    removeChildren(element);
    element.appendChild(document().createTextNode(allowed));
}

/// The first three numbers of a dotted version; what is missing or no number counts as 0.
std::array<int, 3> versionNumbers(const QString &version)
{
    std::array<int, 3> numbers{};
    const QStringList parts = version.split(QLatin1Char('.'));
    for (int i = 0; i < parts.size() && i < 3; ++i) {
        numbers[static_cast<std::size_t>(i)] = parts.at(i).toInt();
    }
    return numbers;
}

void checkVersion()
{
    const QString program = QStringLiteral(LUX_VERSION);
    if (versionNumbers(globalGet(QStringLiteral("version"))) != versionNumbers(program)) {
        globalSet(QStringLiteral("version"), program);
    }
}

bool writeAll(QFileDevice &file, const QByteArray &text)
{
    return file.write(text) == text.size() && file.flush() && file.error() == QFileDevice::NoError;
}

bool saveInPlace(const QString &path, const QByteArray &text)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text)) {
        return false;
    }
    const bool written = writeAll(file, text);
    file.close();
    return written && file.error() == QFileDevice::NoError;
}

/// A crash or a full disk leaves the old file.
bool saveByReplacing(const QString &path, const QByteArray &text)
{
    QSaveFile file(path);
    file.setDirectWriteFallback(true);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text)) {
        return false;
    }
    if (!writeAll(file, text)) {
        file.cancelWriting();
    }
    return file.commit();
}

} // namespace

QString configPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/corvan/lux.config");
}

void configLoad()
{
    const QString path = configPath();
    QDir().mkpath(QFileInfo(path).path());
    if (xmlParseFile(document(), path) && hasSettingsRoot()) {
        setDeclaration();
    } else {
        setTemplate();
    }
    checkVersion();
}

bool configSave(const QString &path)
{
    section(QStringLiteral("global"));
    const QByteArray text = document().toByteArray(4);
    const QFileInfo target(path);
    // Only a plain file may be replaced: a device or a pipe must stay what it is.
    return !target.exists() || target.isFile() ? saveByReplacing(path, text) : saveInPlace(path, text);
}

bool configReplace(const QByteArray &bytes)
{
    const std::array keys{QStringLiteral("version"), QStringLiteral("userLang"), QStringLiteral("lastPath"),
                          QStringLiteral("lastUpdate")};
    std::array<QString, keys.size()> kept;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        kept[i] = globalGet(keys[i]);
    }
    if (!xmlParse(document(), bytes) || !hasSettingsRoot()) {
        return false;
    }
    setDeclaration();
    for (std::size_t i = 0; i < keys.size(); ++i) {
        globalSet(keys[i], kept[i]);
    }
    viewOptionsLoad();
    return true;
}

int configHeadSize(const QByteArray &head)
{
    const QByteArray end = QByteArrayLiteral("</settings>");
    const int limit = qMin(head.size(), headLimit);
    const int found = head.indexOf(end);
    if (found <= 0 || found + end.size() > limit) {
        return 0;
    }
    int size = found + end.size();
    while (size < limit && (head.at(size) == '\r' || head.at(size) == '\n')) {
        ++size;
    }
    return size;
}

bool configHeadOfFile(const QString &path, QByteArray &block)
{
    block.clear();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    block = file.read(headLimit);
    block.truncate(configHeadSize(block));
    return !block.isEmpty();
}

void viewOptionsLoad()
{
    disAnimateZoom = globalGet(QStringLiteral("disAnimateZoom")).toInt() != 0;
    viewState = globalGet(QStringLiteral("viewState")).toInt();
    colorWaveform = globalGet(QStringLiteral("colorWaveform")).toInt() != 0;
}

QString globalGet(const QString &key)
{
    return globalElement(key).text();
}

void globalSet(const QString &key, const QString &value)
{
    setText(globalElement(key), value);
}

QString deviceGet(const QString &model, const QString &key)
{
    return deviceElement(model, key).text();
}

void deviceSet(const QString &model, const QString &key, const QString &value)
{
    setText(deviceElement(model, key), value);
}

void analyzersClear()
{
    removeChildren(section(QStringLiteral("analyzers")));
}

void analyzerPut(int index, const QString &fileName, const QString &parameters, const QString &format)
{
    const QDomElement item = childMade(section(QStringLiteral("analyzers")), QStringLiteral("item%1").arg(index));
    setText(childMade(item, QStringLiteral("fileName")), fileName);
    setText(childMade(item, QStringLiteral("parameters")), parameters);
    setText(childMade(item, QStringLiteral("format")), format);
}

QString analyzersAll()
{
    QString all;
    const QDomElement analyzers = section(QStringLiteral("analyzers"));
    for (QDomElement item = analyzers.firstChildElement(); !item.isNull(); item = item.nextSiblingElement()) {
        for (QDomElement part = item.firstChildElement(); !part.isNull(); part = part.nextSiblingElement()) {
            all += part.text() + QLatin1Char(';');
        }
    }
    return all;
}
