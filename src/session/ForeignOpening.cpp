#include "session/ForeignOpening.h"

#include "device/DevModels.h"
#include "store/SmpData.h"

#include <algorithm>
#include <utility>

namespace {

/// A model of so many channels. That of 16 is the one of a program that has never seen hardware.
int modelOf(int channels)
{
    return channels == 8 ? 1 : channels == 16 ? 0 : 9;
}

/// The child `name` of `parent`, made if it is missing.
QDomElement childOf(QDomDocument &tree, QDomNode parent, const QString &name)
{
    QDomElement child = parent.firstChildElement(name);
    if (child.isNull()) {
        child = tree.createElement(name);
        parent.appendChild(child);
    }
    return child;
}

void setText(QDomDocument &tree, const QDomElement &section, const QString &key, const QString &value)
{
    QDomElement element = childOf(tree, section, key);
    while (!element.firstChild().isNull()) {
        element.removeChild(element.firstChild());
    }
    element.appendChild(tree.createTextNode(value));
}

void removeStarting(QDomElement section, const QString &key)
{
    for (QDomElement element = section.firstChildElement(); !element.isNull();) {
        const QDomElement next = element.nextSiblingElement();
        if (element.tagName().startsWith(key)) {
            section.removeChild(element);
        }
        element = next;
    }
}

/// The index of the last one, from the fastest rate on, that is not below `rate`; the fastest if all are.
int rateIndexOf(const QVector<std::int64_t> &rates, std::int64_t rate)
{
    int index = 0;
    for (int i = 0; i < rates.size(); ++i) {
        index = rates.at(i) >= rate ? i : index;
    }
    return index;
}

/// The index of the smallest depth that is not below `samples`; the greatest if all are.
int depthIndexOf(const QVector<std::int64_t> &depths, std::int64_t samples)
{
    int index = 0;
    while (index + 1 < depths.size() && depths.at(index) < samples) {
        ++index;
    }
    return index;
}

/// A text without what XML cannot hold.
QString plainText(const QString &name)
{
    QString text;
    for (const QChar c : name.left(foreignNameMax)) {
        const bool isPart = c.unicode() >= 0x20 && c.unicode() < 0xFFFE && !c.isSurrogate();
        text += isPart ? c : QLatin1Char('?');
    }
    return text;
}

void setModel(QDomDocument &tree, const QDomElement &devices, const ForeignCapture &capture, int model)
{
    const SmpData &data = *capture.capture;
    const std::unique_ptr<const DevBase> device = createModel(model);
    const QDomElement section = childOf(tree, devices, device->name);
    QStringList enabled;
    QStringList triggers;
    for (int chn = 0; chn < data.chnCount; ++chn) {
        enabled.append(chn < capture.names.size() ? QStringLiteral("1") : QStringLiteral("0"));
        triggers.append(QStringLiteral("0"));
    }
    const QString comma(QLatin1Char(','));
    const std::int64_t percent = data.trgPos() * 100 / std::max<std::int64_t>(data.smpCount(), 1);
    setText(tree, section, QStringLiteral("chnEnable"), enabled.join(comma));
    setText(tree, section, QStringLiteral("chnTrig"), triggers.join(comma));
    setText(tree, section, QStringLiteral("smpFrequIndex"),
            QString::number(rateIndexOf(device->smpFrequs, data.smpFrequ())));
    setText(tree, section, QStringLiteral("smpDepthIndex"),
            QString::number(depthIndexOf(device->smpDepths, data.smpCount())));
    setText(tree, section, QStringLiteral("trgPosition"), QString::number(std::min<std::int64_t>(percent, 99)));
}

} // namespace

ConfigDocument foreignSettings(const ForeignCapture &capture, const ConfigDocument *base)
{
    static const QByteArray none = "<settings><global/><devices/><analyzers/></settings>";
    QDomDocument tree = (base != nullptr ? *base : ConfigDocument::parse(none).value()).clone();
    QDomElement root = tree.documentElement();
    const int model = modelOf(capture.capture->chnCount);
    const QDomElement global = childOf(tree, root, QStringLiteral("global"));
    for (const char *key : {"chnShowName", "chnShowIndex", "chnShowMultip"}) {
        removeStarting(global, QLatin1String(key));
    }
    setText(tree, global, QStringLiteral("devModel"), QString::number(model));
    for (int chn = 0; chn < capture.names.size(); ++chn) {
        const QString name = plainText(capture.names.at(chn));
        if (!name.isEmpty()) {
            setText(tree, global, QStringLiteral("chnShowName") + QString::number(chn), name);
        }
    }
    setModel(tree, childOf(tree, root, QStringLiteral("devices")), capture, model);
    root.removeChild(root.firstChildElement(QStringLiteral("analyzers")));
    root.appendChild(tree.createElement(QStringLiteral("analyzers")));
    return ConfigDocument::parse(tree.toByteArray()).value_or(ConfigDocument::parse(none).value());
}
