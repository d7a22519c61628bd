#pragma once

#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>

class Analyzer;

/// Which analyzer uses which channel, as texts. Pure but for what it asks of an analyzer; main thread.
namespace ChannelUsage {

/// A channel number in decimal, and a text.
using Use = QPair<QString, QString>;

/// The analyzer's channel settings: the number, and `name` + " - " + the setting's title.
[[nodiscard]] QVector<Use> ofAnalyzer(const Analyzer &analyzer, const QString &name);
/// One entry a channel: what uses it, ", " between several. A number that is no channel is passed over.
[[nodiscard]] QVector<Use> perChannel(const QVector<Use> &uses, int channelCount);
/// The two texts of each entry, one after the other.
[[nodiscard]] QStringList flat(const QVector<Use> &uses);

} // namespace ChannelUsage
