#pragma once

#include <QStringList>
#include <QVector>

class SmpData;
struct ShownPair;

/// "Which edges and pulses are to be counted?" The main view asks it when a capture or a marker has changed; the list
/// of measurements implements it.
///
/// A request is a text: channel index, a comma, time index (0 the whole capture, 1 to 5 the pairs A to E). All
/// operations are called on the main thread.
class PulseRequests {
public:
    virtual ~PulseRequests() = default;
    /// The requests that can be answered now, without repetition.
    [[nodiscard]] virtual QStringList allRequests() const = 0;
    /// Those of them about a pair.
    /// @param pairIndex  0 to 4
    [[nodiscard]] virtual QStringList requestsOfPair(int pairIndex) const = 0;
};

/// Null while nothing measures. Not owned; set on the main thread.
extern PulseRequests *gPulseRequests;

/// Each request with a comma and its four counts, see pulseCountFields(); those that cannot be answered are left out.
/// @param pairs    the pairs that are shown
/// @param capture  null for none; read under a lock of its own
/// Cost: some searches in a tree for each request. Main thread.
[[nodiscard]] QStringList countedRequests(const QStringList &requests, const QVector<ShownPair> &pairs,
                                          const SmpData *capture);
