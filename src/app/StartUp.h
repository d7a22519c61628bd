#pragma once

#include <QStringList>

/// The steps of start-up between the application object and the session, in this order. Main thread.
namespace StartUp {

/// Screen scale, tables, configuration and view options. A settings or data file named in `arguments` (without the
/// program's own name) gives the configuration instead of "lux.config"; a data file is left in `gOpenFile` for the
/// main window to load, or to tell that it cannot: its settings are then not taken. A file that gives no configuration
/// is forgotten silently. Another program's capture has no configuration, and is left in `gOpenFile` all the same.
void initGlobals(const QStringList &arguments);

/// Language, fonts, and the style of the whole application.
void initLook();

} // namespace StartUp
