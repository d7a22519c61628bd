#include "analyzer/ChannelUsage.h"

#include <corvanlux/analyzer/Analyzer.h>
#include <corvanlux/analyzer/AnalyzerSettingInterface.h>
#include <corvanlux/analyzer/AnalyzerSettings.h>

namespace ChannelUsage {

QVector<Use> ofAnalyzer(const Analyzer &analyzer, const QString &name)
{
    QVector<Use> uses;
    const AnalyzerSettings *settings = analyzer.GetAnalyzerSettings();
    if (settings == nullptr) {
        return uses;
    }
    for (std::uint32_t i = 0; i < settings->GetChannelsCount(); ++i) {
        const auto *face = dynamic_cast<AnalyzerSettingInterfaceChannel *>(settings->GetSettingsInterface(i));
        if (face != nullptr) {
            uses.append({QString::number(face->GetChannel().channelIndex),
                         name + QStringLiteral(" - ") + QString::fromUtf8(face->GetTitle())});
        }
    }
    return uses;
}

QVector<Use> perChannel(const QVector<Use> &uses, int channelCount)
{
    QVector<Use> channels;
    channels.reserve(channelCount);
    for (int i = 0; i < channelCount; ++i) {
        channels.append({QString::number(i), QString()});
    }
    for (const Use &use : uses) {
        bool isNumber = false;
        const uint channel = use.first.toUInt(&isNumber);
        if (isNumber && channel < uint(channelCount)) {
            QString &text = channels[int(channel)].second;
            text += (text.isEmpty() ? QString() : QStringLiteral(", ")) + use.second;
        }
    }
    return channels;
}

QStringList flat(const QVector<Use> &uses)
{
    QStringList texts;
    for (const Use &use : uses) {
        texts << use.first << use.second;
    }
    return texts;
}

} // namespace ChannelUsage
