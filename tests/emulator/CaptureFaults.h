#pragma once

#include "Instrument.h"
#include "emulator/InstrumentDesk.h"
#include "support/WrongTransfer.h"

#include <memory>
#include <vector>

/// Names a place of a test's loop, for its messages.
inline QByteArray placeOf(const char *what, std::uint64_t number)
{
    return QByteArray(what) + ' ' + QByteArray::number(qulonglong(number));
}

/// An instrument of one model that is connected, and captures whose transfers go wrong. Captures are as short as the
/// model allows, of a signal so busy that each takes several reads. Main thread.
class CaptureFaultDesk {
public:
    using Entry = emulator::TransferLog::Entry;
    static constexpr int readFailed = 3; ///< what a capture reports

    CaptureFaultDesk(std::unique_ptr<InstrumentRoad> road, int model);

    /// True after a first capture that was sound: the transfers and bytes of the others are compared with it.
    [[nodiscard]] bool isGood() const { return m_isGood; }
    /// The requests of a sound capture, in order.
    [[nodiscard]] const std::vector<Entry> &requests() const { return m_requests; }
    /// The bytes that a sound capture reads.
    [[nodiscard]] std::uint64_t readBytes() const { return m_readBytes; }
    [[nodiscard]] bool streams() const;

    /// Takes faults and log away, calls `arm` with the instrument under the bus's lock, and starts a capture.
    template<class Arm>
    void start(const Arm &arm)
    {
        bus().with([&arm](emulator::Instrument &instrument) {
            instrument.faults().clear();
            instrument.log().clear();
            arm(instrument);
        });
        desk->transport->chunkSize = readSize;
        desk->startCapture();
    }
    /// The same, and waits for its end. @return false when the capture does not end
    template<class Arm>
    [[nodiscard]] bool captureWith(const Arm &arm)
    {
        start(arm);
        return desk->awaitEnd();
    }
    /// The same with one request going wrong.
    [[nodiscard]] bool captureWithRequest(std::size_t number, Wrong wrong);
    /// The same with a bulk read that goes wrong when `offset` bytes have come.
    [[nodiscard]] bool captureWithRead(std::uint64_t offset, emulator::FaultAction action);
    /// The error that request `number` of a capture ends in when it fails; 0 when the capture does without it.
    [[nodiscard]] int errorOf(std::size_t number) const;

    /// True when the capture's data were published, or not, as it is right when `offset` bytes had come: a read that is
    /// not whole brings nothing.
    [[nodiscard]] bool keepsWhatCameBefore(std::uint64_t offset);
    /// True when the threads of the capture end, its queue is empty, and its data give all memory back to a budget that
    /// was `budget` bytes before it. All that the capture tells has been heard then.
    [[nodiscard]] bool leavesNothing(std::int64_t budget = InstrumentDesk::budget);
    /// A capture without faults. @return how it differs from the signal; empty for nowhere
    [[nodiscard]] QString soundCapture();
    /// Pulls the plug if it is not yet, puts it back, and captures. @return as above
    [[nodiscard]] QString soundCaptureAfterReplug();

    [[nodiscard]] InstrumentBus &bus() { return desk->road->bus(); }

    static constexpr std::int32_t readSize = 8192; ///< bytes of a read

    std::unique_ptr<InstrumentDesk> desk;
    const std::shared_ptr<emulator::LogicSignal> signal; ///< what sound captures are compared with

private:
    std::vector<Entry> m_requests;
    std::uint64_t m_readBytes = 0;
    bool m_isGood = false;
};
