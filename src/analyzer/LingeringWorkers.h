#pragma once

#include "analyzer/LingeringWorker.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>
#include <vector>

/// The workers that did not leave when they were asked to. Looks after them every now and then while the event loop
/// runs. Main thread.
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

    std::vector<Entry> m_workers;
    quint64 m_lastNumber = 0;
    QTimer m_timer;
};
