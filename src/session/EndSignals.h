#pragma once

#include <QObject>

/// Turns the system's wish that the program end into a signal of the event loop: SIGINT and SIGTERM, and on Windows the
/// keys and the closing of a console. A second wish ends the program at once, as if this object were not there.
///
/// One at a time, on the main thread. The system's own ways come back when it goes.
class EndSignals final : public QObject {
    Q_OBJECT
public:
    explicit EndSignals(QObject *parent = nullptr);
    ~EndSignals() override;

signals:
    /// The program is to end in order. On the main thread, by its event loop.
    void sigEnd();
};
