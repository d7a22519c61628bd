#pragma once

#include "wave/AnalogMeasurer.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVector>

class SmpData;

/// The measured values of the analog channels as texts, and the probe factors that they are read with.
///
/// Main thread; the arithmetic is AnalogMeasurer's, on a thread of its own.
class AnalogReadings : public QObject {
    Q_OBJECT
public:
    explicit AnalogReadings(QObject *parent = nullptr);

    /// Forgets all texts, also those that are still being made. @param source  what is read from now on; may be null
    void clear(const SmpData *source);
    /// Asks for the texts of this capture, that of clear(); changed() follows, at once without analog channels. Until
    /// then the texts are those of the capture before. Copies the samples, under a read lock: no capture waits for the
    /// arithmetic.
    void measure(const SmpData *source);

    /// Empty for none.
    [[nodiscard]] QString text(int chn) const { return m_texts.value(chn); }
    /// 1 until set.
    [[nodiscard]] int probe(int chn) const { return m_probes.value(chn, 1); }
    /// Seen by the next measure(). Nothing for a channel below 0.
    void setProbe(int chn, int factor);

signals:
    /// The texts are those of the newest capture. Emitted on the main thread.
    void changed();

private:
    void take();

    QStringList m_texts;
    QVector<int> m_probes;
    AnalogMeasurer m_measurer; ///< last: it ends before what it reports to
};
