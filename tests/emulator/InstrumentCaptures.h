#pragma once

#include "emulator/InstrumentDesk.h"

/// What every model does from the plug to the capture, whatever lies between instrument and program. A test of a face
/// derives from this and hands over its road.
class InstrumentCaptures : public QObject {
    Q_OBJECT
protected:
    [[nodiscard]] virtual std::unique_ptr<InstrumentRoad> makeRoad() = 0;

private slots:
    void everyModelCapturesWithoutATrigger_data();
    void everyModelCapturesWithoutATrigger();
    void everyModelCapturesAboutItsTrigger_data();
    void everyModelCapturesAboutItsTrigger();
    void everyModelIsStoppedWhileItWaits_data();
    void everyModelIsStoppedWhileItWaits();
    void everyModelIsUnpluggedWhileItWaitsAndCapturesAgain_data();
    void everyModelIsUnpluggedWhileItWaitsAndCapturesAgain();
    void everyModelIsUnpluggedWhileItSends_data();
    void everyModelIsUnpluggedWhileItSends();
    void aStreamNeverLacksAPendingRead();
    void aStreamOfFewChannelsIsAsWhole();
    void aMemoryThatWrapsIsReadInOrder();

private:
    /// A desk with an instrument of the model plugged in and connected; null after a failed check.
    [[nodiscard]] std::unique_ptr<InstrumentDesk> connected(emulator::InstrumentOptions options);
};
