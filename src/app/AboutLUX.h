#pragma once

#include <QByteArray>
#include <QDialog>
#include <QString>

#include <cstdint>

/// What the program knows of the machine that it runs on.
struct SystemInfo {
    QString os;
    double dotsPerInch = 0;            ///< logical, of the primary screen
    std::int64_t memoryTotal = 0;      ///< physical memory, bytes; 0 if the system does not tell
    std::int64_t memoryUsable = 0;     ///< what captures may take, bytes
    std::int64_t memoryUsed = 0;       ///< what they have taken of it, bytes
    std::uint16_t bcdUsb = 0;          ///< of the connection to the last instrument; 0 before the first
    QByteArray devUid;                 ///< identity of the instrument, 8 bytes; zero without one
    std::uint16_t hardwareVersion = 0; ///< of the instrument; 0 if unknown
};

/// The state of this moment. Main thread.
[[nodiscard]] SystemInfo systemInfoNow();

/// One item a line, translated. Pure but for the language.
[[nodiscard]] QString systemInfoText(const SystemInfo &info);

/// The dialog that tells the program's version and the system's state, which can be selected and copied. Main thread.
class AboutLUX : public QDialog {
    Q_OBJECT
public:
    explicit AboutLUX(QWidget *parent = nullptr);
};
