#pragma once

/// The states and errors of a capture as a device reports them: the numbers of SmpHost::sigSmpSta().

/// Where a capture stands.
namespace smpState {
constexpr int starting = 0;
constexpr int filling = 1; ///< the samples before the trigger
constexpr int waiting = 2; ///< for the trigger
constexpr int sampling = 3;
constexpr int reading = 4;
constexpr int done = 5;
} // namespace smpState

/// Why a capture ended, or with what in its data.
namespace smpError {
constexpr int notOpen = 1;
constexpr int transfer = 2;
constexpr int timedOut = 3;
constexpr int noMemory = 4; ///< the budget of the store is spent
constexpr int endedEarly = 14;
} // namespace smpError
