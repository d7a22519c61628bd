#pragma once

#include "device/BringUpRun.h"
#include "device/DevIdentity.h"

#include <QByteArray>

/// Sending firmware and FPGA images to an instrument. Each blocks until it is through; on the run's thread.
/// Results: 0 done; 1 the transport is not open; 2 a control transfer failed or moved another number of bytes.

/// Sends firmware of either form, which its size tells: text below 65,536 bytes, else an image.
[[nodiscard]] int sendFirmware(BringUpRun &run, const QByteArray &bytes);

/// Sends Intel HEX text: stops the controller's CPU, writes the data records, starts the CPU. Neither checksums nor an
/// end record are looked at. The digits are upper-case; what stands outside of records is passed over.
/// @return also 2 for a record that the end of the text cuts, and for digits that are none; the CPU then stands still
[[nodiscard]] int sendHexFirmware(BringUpRun &run, const QByteArray &bytes);

/// Sends a binary image: "CY", two control bytes, sections of {words: 32 bits, address: 32 bits, 4 * words bytes}, and
/// in the last 12 bytes no words, the address at which the firmware starts, and a checksum that is not looked at.
/// @return also 2 for an image whose sections do not fit before those 12 bytes, or that has a section of no words,
///         which would start the firmware in the midst of it; it is not started then
[[nodiscard]] int sendImageFirmware(BringUpRun &run, const QByteArray &bytes);

/// Uploads the FPGA image of a model over the bulk pipe, followed by zeros up to whole blocks of 4096 bytes. Reports
/// state 4 with the percentage at each further ten percent.
/// @return also 1 for a model or variant without an image (but the one that needs none answers 0 after 100 ms), 3 for a
///         bulk write that failed or moved nothing, and any other status byte with which the device ends the upload
[[nodiscard]] int uploadFpga(BringUpRun &run, const devIdentity::Model &model);
