#pragma once

#include "analyzer/LingeringWorker.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>
#include <vector>

class SmpData;

/// The workers that did not leave when they were asked to. Looks after them every now and then while the event loop
/// runs. Main thread.
///
/// Their admissions to a capture, and those of the workers that were left behind in it, stay here until the capture's
/// owner wants it back: giveUp().
class LingeringWorkers : public QObject {
    Q_OBJECT
public:
    LingeringWorkers();
    ~LingeringWorkers() override;

    /// @param decoder  its name, for the signals; empty for one that nobody is told of
    /// @return its number, above 0
    quint64 add(const QString &decoder, AnalyzerItem item);
    /// Waits until all have ended or were left behind: some 2 s at most, without events.
    void endAll();
    /// The capture is about to be replaced or to go: when workers are left in it, the store gives it up to them. Its
    /// memory is theirs from then on, until the last of them has left. While others hold leases too nothing is given
    /// up.
    void giveUp(SmpData &capture);

signals:
    /// It has left by itself, within its time.
    void ended(quint64 number);
    /// It has not left within its time.
    void overdue(quint64 number, const QString &decoder);
    /// It cannot be ended. Behind overdue().
    void leftBehind(const QString &decoder);

private:
    struct Entry {
        quint64 number;
        std::unique_ptr<LingeringWorker> worker;
        bool isOverdue = false; ///< and told to be
    };

    void look();
    /// Their admissions to this capture, where they are held.
    [[nodiscard]] std::vector<std::unique_ptr<SmpLease> *> leasesOf(const SmpData &capture);
    /// Takes the admission of one that is left behind.
    void hold(LingeringWorker &worker);

    std::vector<Entry> m_workers;
    quint64 m_lastNumber = 0;
    std::vector<std::unique_ptr<SmpLease>> m_heldForEver; ///< of workers that were left behind
    QTimer m_timer;
};
