#pragma once

#include <QStringList>

/// The steps of start-up between the application object and the main window, in this order. Main thread.
namespace StartUp {

/// Screen scale, tables, configuration and view options. A settings or data file named in `arguments` (without the
/// program's own name) gives the configuration instead of "lux.config"; a data file is left in `gOpenFile` for the
/// main window to load, or to tell that it cannot: its settings are then not taken. A file that gives no configuration
/// is forgotten silently.
void initGlobals(const QStringList &arguments);

/// Language, fonts, and the style of the whole application.
void initLook();

/// Makes `gUsb`, the transport over this system's USB, on which nothing is open yet, and has device objects reach
/// instruments over it.
void initTransport();

/// Makes `gDev` from "devModel".
void initDevice();

/// Makes `gDevInit`, which turns what is plugged in into a connected `gDev`. Nothing is looked for yet.
void initBringUp();

/// Takes down what the last three have made, in the reverse order: stops and joins every thread that uses an
/// instrument, and closes it. After the main window has gone.
void endDevices();

} // namespace StartUp
