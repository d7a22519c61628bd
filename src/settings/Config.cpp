#include "settings/Config.h"

#include "settings/ConfigDocument.h"
#include "settings/FileReplacement.h"
#include "settings/Globals.h"
#include "settings/XmlText.h"

#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <array>
#include <optional>

namespace {

QDomDocument &document()
{
    static QDomDocument tree;
    return tree;
}

void setTemplate()
{
    document() = ConfigDocument::parse(QByteArrayLiteral("<settings><global/><devices/><analyzers/></settings>"))
                     .value()
                     .clone();
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

} // namespace

QString configPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/corvan/lux.config");
}

void configLoad()
{
    const QString path = configPath();
    QDir().mkpath(QFileInfo(path).path());
    const std::optional<ConfigDocument> stored = ConfigDocument::load(path);
    if (stored) {
        document() = stored->clone();
    } else {
        setTemplate();
    }
    checkVersion();
}

ConfigDocument configCopy()
{
    section(QStringLiteral("global"));
    const QDomDocument copy = document().cloneNode(true).toDocument();
    // Which files somebody works with is not for those whom a file is passed on to.
    QDomElement global = copy.documentElement().firstChildElement(QStringLiteral("global"));
    global.removeChild(global.firstChildElement(QStringLiteral("recentFiles")));
    return ConfigDocument(copy);
}

bool configSave(const QString &path)
{
    section(QStringLiteral("global"));
    return replaceTextFile(path, document().toByteArray(4)) == WriteFault::None;
}

void configTake(const ConfigDocument &other)
{
    const std::array keys{QStringLiteral("version"),          QStringLiteral("userLang"),
                          QStringLiteral("lastPath"),         QStringLiteral("lastUpdate"),
                          QStringLiteral("windowPosition"),   QStringLiteral("windowMaximized"),
                          QStringLiteral("keepCaptures"),     QStringLiteral("historyCaptures"),
                          QStringLiteral("historyGigabytes"), QStringLiteral("recentFiles")};
    std::array<QString, keys.size()> kept;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        kept[i] = globalGet(keys[i]);
    }
    document() = other.clone();
    for (std::size_t i = 0; i < keys.size(); ++i) {
        globalSet(keys[i], kept[i]);
    }
    viewOptionsLoad();
}

bool configReplace(const QByteArray &bytes)
{
    const std::optional<ConfigDocument> other = ConfigDocument::parse(bytes);
    if (other) {
        configTake(*other);
    }
    return other.has_value();
}

int configHeadSize(const QByteArray &head)
{
    const QByteArray end = QByteArrayLiteral("</settings>");
    const int limit = qMin(head.size(), configHeadLimit);
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
    // Opening what is no plain file may wait for ever.
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) {
        return false;
    }
    block = file.read(configHeadLimit);
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
