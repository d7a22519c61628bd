#include "settings/ConfigDocument.h"

#include "settings/Config.h"
#include "settings/XmlText.h"

#include <QPair>
#include <QSet>
#include <QVector>

#include <algorithm>
#include <utility>

namespace {

/// Global keys that whoever opens a file does not take from it, or that nobody reads.
const QSet<QString> &keysNotTaken()
{
    static const QSet<QString> keys{
        QStringLiteral("lastPath"),        QStringLiteral("lastUpdate"),       QStringLiteral("windowPosition"),
        QStringLiteral("windowMaximized"), QStringLiteral("ratioSasPix"),      QStringLiteral("keepCaptures"),
        QStringLiteral("historyCaptures"), QStringLiteral("historyGigabytes"), QStringLiteral("recentFiles")};
    return keys;
}

/// The default of each item of a key's list; lists of nothing but that need not be stored.
QString defaultItem(const QString &key)
{
    static const QHash<QString, QString> items{
        {QStringLiteral("disAutoUpdate"), QStringLiteral("0")}, {QStringLiteral("disAnimateZoom"), QStringLiteral("0")},
        {QStringLiteral("viewState"), QStringLiteral("0")},     {QStringLiteral("colorWaveform"), QStringLiteral("0")},
        {QStringLiteral("devModel"), QStringLiteral("0")},      {QStringLiteral("chnShowMultip"), QStringLiteral("1")},
        {QStringLiteral("chnEnable"), QStringLiteral("1")},     {QStringLiteral("AChnEnable"), QStringLiteral("1")},
        {QStringLiteral("chnTrig"), QStringLiteral("0")},       {QStringLiteral("AChnTrig"), QStringLiteral("0")},
        {QStringLiteral("AChnProbe"), QStringLiteral("1")},     {QStringLiteral("AChnReverse"), QStringLiteral("0")},
        {QStringLiteral("AChnCouple"), QStringLiteral("0")},    {QStringLiteral("AChnVoltDiv"), QStringLiteral("1000")},
        {QStringLiteral("trgPosition"), QStringLiteral("5")}};
    return items.value(key);
}

bool isDefault(const QDomElement &element)
{
    if (!element.firstChildElement().isNull()) {
        return false;
    }
    const QString value = element.text();
    const QString item = defaultItem(element.tagName());
    if (value.isEmpty() || item.isEmpty()) {
        return value.isEmpty();
    }
    const QStringList items = value.split(QLatin1Char(','));
    return std::all_of(items.begin(), items.end(), [&item](const QString &one) { return one == item; });
}

void removeDefaults(QDomElement section)
{
    for (QDomElement element = section.firstChildElement(); !element.isNull();) {
        const QDomElement next = element.nextSiblingElement();
        if (isDefault(element)) {
            section.removeChild(element);
        }
        element = next;
    }
}

void removeComments(QDomNode node)
{
    for (QDomNode child = node.firstChild(); !child.isNull();) {
        const QDomNode next = child.nextSibling();
        if (child.isComment()) {
            node.removeChild(child);
        } else {
            removeComments(child);
        }
        child = next;
    }
}

/// The document without what means nothing to its reader.
QDomDocument lean(const QDomDocument &tree)
{
    QDomDocument copy = tree.cloneNode(true).toDocument();
    removeComments(copy);
    QDomElement global = copy.documentElement().firstChildElement(QStringLiteral("global"));
    for (const QString &key : keysNotTaken()) {
        global.removeChild(global.firstChildElement(key));
    }
    removeDefaults(global);
    const QDomElement devices = copy.documentElement().firstChildElement(QStringLiteral("devices"));
    for (QDomElement model = devices.firstChildElement(); !model.isNull(); model = model.nextSiblingElement()) {
        removeDefaults(model);
    }
    return copy;
}

/// True if the reader of a file finds this block, whole and with its line end.
bool isReadable(const QByteArray &block)
{
#ifdef Q_OS_WIN
    const int onDisk = block.size() + block.count('\n');
#else
    const int onDisk = block.size();
#endif
    return onDisk <= configHeadLimit && configHeadSize(block) == block.size();
}

QByteArray written(const QDomDocument &tree, int indent)
{
    QByteArray text = tree.toByteArray(indent);
    if (!text.endsWith('\n')) {
        text.append('\n');
    }
    return text;
}

} // namespace

ConfigDocument::ConfigDocument(const QDomDocument &tree) : m_tree(tree) {}

std::optional<ConfigDocument> ConfigDocument::parse(const QByteArray &bytes)
{
    QDomDocument tree;
    return xmlParse(tree, bytes) ? ofParsed(tree) : std::nullopt;
}

std::optional<ConfigDocument> ConfigDocument::load(const QString &path)
{
    QDomDocument tree;
    return xmlParseFile(tree, path) ? ofParsed(tree) : std::nullopt;
}

std::optional<ConfigDocument> ConfigDocument::ofParsed(const QDomDocument &tree)
{
    if (tree.documentElement().tagName() != QLatin1String("settings")) {
        return std::nullopt;
    }
    ConfigDocument document(tree);
    document.setDeclaration();
    return document;
}

void ConfigDocument::setDeclaration()
{
    const QDomNode first = m_tree.firstChild();
    if (first.isProcessingInstruction() && first.nodeName() == QLatin1String("xml")) {
        m_tree.removeChild(first);
    }
    m_tree.insertBefore(
        m_tree.createProcessingInstruction(QStringLiteral("xml"), QStringLiteral("version=\"1.0\" encoding=\"UTF-8\"")),
        m_tree.firstChild());
}

QString ConfigDocument::global(const QString &key) const
{
    return m_tree.documentElement().firstChildElement(QStringLiteral("global")).firstChildElement(key).text();
}

std::optional<QByteArray> ConfigDocument::block() const
{
    constexpr int indent = 4;
    QByteArray text = written(m_tree, indent);
    if (isReadable(text)) {
        return text;
    }
    const QDomDocument least = lean(m_tree);
    for (const int narrower : {indent, 0, -1}) { // -1: all in one line
        text = written(least, narrower);
        if (isReadable(text)) {
            return text;
        }
    }
    return std::nullopt;
}

QStringList ConfigDocument::longest(int count) const
{
    QVector<QPair<int, QString>> sizes;
    const auto add = [&sizes](const QDomElement &section) {
        for (QDomElement e = section.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
            sizes.append({e.text().toUtf8().size(), e.tagName()});
        }
    };
    const QDomElement root = m_tree.documentElement();
    add(root.firstChildElement(QStringLiteral("global")));
    add(root.firstChildElement(QStringLiteral("analyzers")));
    const QDomElement devices = root.firstChildElement(QStringLiteral("devices"));
    for (QDomElement model = devices.firstChildElement(); !model.isNull(); model = model.nextSiblingElement()) {
        add(model);
    }
    std::stable_sort(sizes.begin(), sizes.end(), [](const auto &a, const auto &b) { return a.first > b.first; });
    QStringList names;
    for (int i = 0; i < count && i < sizes.size(); ++i) {
        names += sizes.at(i).second;
    }
    return names;
}
