#pragma once

#include <QString>
#include <QStringList>

/// The values of the program that have no home in a document and no look. Main thread; written at the start and by
/// what the user chooses.

/// Path of the data file that the view shows or is to open after the start; empty for none.
extern QString gOpenFile;
/// The names of the seventeen analog measurements. Filled by globalsFillTables().
extern QStringList gMeasureNames;

/// View after a new capture: 0 time zero in the middle, 1 everything, 2 the same place as before.
extern int viewState;
/// True turns off animated zooming.
extern bool disAnimateZoom;
/// True draws each wave in its channel's colour.
extern bool colorWaveform;

/// Fills `gMeasureNames`.
void globalsFillNames();

/// The first of `arguments` that names an existing file of suffix "cxdat" or "cxset" (compared with case), or "sr" or
/// "vcd" (without); empty if none does. `arguments` is without the program's own name.
QString globalsFileArgument(const QStringList &arguments);
