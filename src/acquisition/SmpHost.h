#pragma once

#include "acquisition/SmpData.h"

#include <QObject>

#include <atomic>
#include <cstdint>
#include <memory>

/// What a capture thread needs of the device object that it runs for: state, stop flag, store and report signals.
///
/// The device object derives from it, so that the capture threads need not know devices. It lives on the main thread;
/// the atomics are shared with the capture threads. The signals are emitted from capture threads: receivers on the main
/// thread get them queued.
class SmpHost : public QObject {
    Q_OBJECT
public:
    explicit SmpHost(QObject *parent = nullptr);
    ~SmpHost() override;

    /// The store of the last capture. Made by the model's constructor, destroyed with the host.
    std::unique_ptr<SmpData> smpData;

    /// Capture state: 0 starting, 1 pre-trigger part, 2 waiting for the trigger, 3 sampling, 4 reading, 5 done.
    std::atomic<int> smpSta{0};
    /// The user asked for a stop. Cleared when a capture starts.
    std::atomic<bool> smpStop{false};
    /// Error code with which the current capture is to end, 0 for none.
    std::atomic<std::uint32_t> endErr{0};

signals:
    /// State, error, value. Error 0: progress, `value` is a percentage (state 2: the trigger position).
    void sigSmpSta(int sta, int err, int value);
    /// A capture or a file load has closed `smpData`.
    void sigSmpDataReady();
};
