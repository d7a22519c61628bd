#pragma once

#include "support/UsbFace.h"

#include <QObject>

#include <memory>
#include <string>
#include <vector>

/// What every platform must do, whatever stands behind it. A test of one derives from this, hands over its face, and
/// runs; see tst_UsbPlatformFake. The order of the tests is the order in which a device is used.
class UsbPlatformContract : public QObject {
    Q_OBJECT
protected:
    /// A bus of its own for each test.
    [[nodiscard]] virtual std::unique_ptr<UsbFace> makeFace() = 0;

private slots:
    void init();
    void cleanup();

    void anEmptyBusHasNoEntries();
    void anEntryTellsHowMuchRoomItsPathNeeds();
    void aPathStaysTheSameAndIsNotThatOfAnother();
    void aListDoesNotChangeWhileTheBusDoes();
    void aPathThatIsNoneDoesNotOpen();
    void aDeviceIsOpenedClosedAndOpenedAgain();

    void theDescriptorHasEighteenBytesAndTheIds();
    void theEndPointsAreToldOneByOne();
    void aDeviceWithoutFirmwareHasNoBulkEndPoints();
    void policiesAreTakenByPipesThatThereAre();

    void aRequestIsAnswered();
    void aShorterAnswerIsToldByItsLength();
    void aRefusedRequestIsHaltedAndTheNextOneWorks();
    void aRequestWithoutDataMovesNone();
    void aWriteMovesAllItsBytes();
    void aWriteToAPipeThatThereIsNotFails();

    void anIdleSlotHasNothingToWaitFor();
    void queuedReadsAreFilledInOrder();
    void aReadThatIsUnderWayIsPending();
    void aReadEndsWithTheTimeOutOfItsPipe();
    void aWaitEndsWithItsOwnTime();
    void anAbortedReadEndsAndItsSlotServesAgain();
    void anAbortWakesAWaitingThread();
    void anAbortWithoutReadsIsHarmless();
    void aHaltedPipeReadsAgainAfterAReset();
    void aReadOfAPipeThatThereIsNotIsNotQueued();
    void freeingAnInterfaceEndsItsReads();
    void requestsWorkWhileAReadIsPending();

    void anUnplugEndsAPendingRead();
    void aDeviceThatHasGoneAnswersErrorsOnly();
    void aDeviceThatComesBackIsOpenedByItsNewPath();
    void arrivalsAndRemovalsAreTold();

private:
    struct Device;
    [[nodiscard]] std::vector<std::string> paths();
    /// The paths once there are so many of them: a bus may take a moment to tell.
    [[nodiscard]] std::vector<std::string> awaitPaths(std::size_t count);
    [[nodiscard]] std::unique_ptr<Device> openOnly();

    std::unique_ptr<UsbFace> m_face;
    std::unique_ptr<UsbPlatform> m_usb;
};
