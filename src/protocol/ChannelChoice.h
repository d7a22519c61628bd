#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>

/// What the list of channels in a settings dialog offers, and what it shows at first. Pure.
namespace ChannelChoice {

/// A channel of the device that may be chosen.
struct Entry {
    int number = 0;
    QString name;
    QString usedBy; ///< empty for a free one
};

/// The entries of AnalyzerManager::enabledChannelUsage().
/// @param nameOf  the user's name of a channel
[[nodiscard]] QVector<Entry> entriesOf(const QStringList &usage, const std::function<QString(int)> &nameOf);

/// Its text in the list: the number, the name and who uses it.
[[nodiscard]] QString textOf(const Entry &entry);

/// The place at which the list of an analyzer's `k`-th channel setting, from 0, stands for a new analyzer: the k-th
/// channel that is free. @param listed  entries of the list, the one for "None" included
[[nodiscard]] int placeForNew(const QVector<Entry> &entries, int k, int listed);

/// The same for a setting that holds `channel`; `undefined` stands at the end.
[[nodiscard]] int placeOf(const QVector<Entry> &entries, unsigned channel, unsigned undefined, int listed);

} // namespace ChannelChoice
