#pragma once

/// The states and errors of a capture as a device reports them: the numbers of SmpHost::sigSmpSta(). The one set of
/// each; whoever answers with such a number takes it from here.

/// Where a capture stands.
namespace smpState {
constexpr int starting = 0;
constexpr int filling = 1; ///< the samples before the trigger
constexpr int waiting = 2; ///< for the trigger
constexpr int sampling = 3;
constexpr int reading = 4;
constexpr int done = 5;
} // namespace smpState

/// Why a request, a read run or a capture ended. What travels with the report of a capture is one of these.
namespace smpError {
constexpr int none = 0;
constexpr int notOpen = 1;  ///< no device is open
constexpr int transfer = 2; ///< a transfer failed
constexpr int timedOut = 3; ///< nothing came, or a read failed
constexpr int noMemory = 4; ///< the budget of the store is spent
constexpr int noBus = 7;    ///< a status word that is no answer
constexpr int allZero = 8;
constexpr int notRunning = 9;
constexpr int unsound = 10; ///< bits of the status word are missing that must be set
constexpr int wrongModel = 11;
constexpr int notReady = 12;
constexpr int fault = 13; ///< the status word tells of one
constexpr int endedEarly = 14;
constexpr int malformedRecord = 32; ///< no error but a note, for later diagnosis: the value is the record's offset
} // namespace smpError
