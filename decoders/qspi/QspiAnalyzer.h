#pragma once

#include "QspiResults.h"
#include "QspiWire.h"

#include <cstdint>

class QspiBus;

/// A serial flash memory on one to four data lines.
class QspiAnalyzer final : public lux::Decoder<QspiSettings, QspiResults> {
public:
    static constexpr const char *name = "QSPI";
    static constexpr const char *models = "0,4,8,9,65";

    QspiAnalyzer() : Decoder(name) {}

protected:
    void decode() override;
    void simulate(lux::Simulation &simulation) override;

private:
    /// What the chip was told by the commands so far.
    struct Chip {
        bool isQpi = false;
        bool hasFourBytes = false;
        unsigned qpiClocks = 2;        ///< between address and data of fast reads in QPI, mode included
        unsigned configuredClocks = 0; ///< of a MT25's configuration, dummy clocks; 0 for those of the command
        bool mayGoOn = false;          ///< by a MT25's configuration, the first dummy clock keeps the chip reading
        const QspiCommand *ongoing = nullptr; ///< transfers begin with the address of this one
    };

    [[nodiscard]] bool beginsWithTransfer(const QspiWire &wire, lux::Sample end) const;
    [[nodiscard]] bool readTransfer(QspiWire &wire, QspiResults::Content &content);
    [[nodiscard]] bool readCommand(QspiWire &wire, QspiResults::Content &content, QspiCommand &command);
    [[nodiscard]] bool readHead(QspiWire &wire, QspiResults::Content &content, const QspiCommand &command);
    [[nodiscard]] bool readDummy(QspiWire &wire, unsigned clocks, bool &firstBit);
    void readData(QspiWire &wire, QspiResults::Content &content, const QspiCommand &command);
    void readRaw(QspiWire &wire, QspiResults::Content &content);
    void readSingle(QspiWire &wire, QspiResults::Content &content);
    [[nodiscard]] QspiCommand unknownCommand(std::uint8_t code) const;
    [[nodiscard]] unsigned dummyClocks(const QspiCommand &command) const;
    [[nodiscard]] bool continues(std::uint8_t mode) const;
    void obey(const QspiCommand &command, const QspiResults::Content &content);
    void addPhase(QspiResults::Kind kind, const QspiBits &bits, unsigned flags = 0, std::uint32_t code = 0);

    Chip m_chip;
    bool m_keepsReading = false; ///< the head of the read said so
    // Of the simulation.
    void simulateCommand(QspiBus &bus, std::uint32_t number);
    std::uint32_t m_sent = 0;              ///< transfers
    const QspiCommand *m_goesOn = nullptr; ///< the next transfer has no code, but goes on with this one
};
