#pragma once

/// A type of the interface that nobody implements. In a simulation the pointer in its place is the address of a signed
/// 64-bit variable that holds the current sample rate in Hz.
class ConditionManager;

/// The thread of one decoder, as the program implements it. The order of the operations is binding.
class ProgressManager {
public:
    /// Starts the worker thread. Called once by Analyzer::StartProcessing, on the caller's thread.
    virtual void StartWorker() = 0;
    /// The decode is over: by the data's end, a stop, a failure. On the worker thread, with no frame of the decoder
    /// left on its stack. It may return, and the thread then ends.
    virtual void WorkerEnded() = 0;
    /// How much is done, 0.0 to 1.0. On the worker thread, at most a few hundred times a decode; must be cheap.
    virtual void SetProgress(double progress) = 0;

protected:
    ~ProgressManager() = default;
};
