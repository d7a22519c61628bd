#pragma once

#include <QColor>
#include <QFont>
#include <QString>
#include <QStringList>
#include <QVector>

class DevBase;
class DevInit;
class UsbTransport;

/// The values that the whole program reaches without passing them along.
///
/// All are set once, in the order of start-up, on the main thread. Only `gDev` changes later, also on the main
/// thread and only while no capture runs. `main` owns what the pointers name.

/// The transport: one for the life of the process.
extern UsbTransport *gUsb;
/// The current model object; never null after start-up. Read it anew after each return to the event loop.
extern DevBase *gDev;
/// The bring-up coordinator; null in a program without instruments.
extern DevInit *gDevInit;

/// Logical dots per inch of the primary screen, at least 96.
extern int gDpi;
/// The eight wave colours: digital channel i takes i modulo 8, analog channel i takes i modulo 2.
extern QVector<QColor> gChnColors;
/// The ten greys of the dark theme, from light (0) to dark (9); 5 is the window's background.
extern QVector<QColor> gGreys;
/// The names of the seventeen analog measurements.
extern QStringList gMeasureNames;

extern QFont gFontMain;
extern QFont gFontSmall;
extern QFont gFontLarge;

/// Path of the data file that the view shows or is to open after the start; empty for none.
extern QString gOpenFile;

/// View after a new capture: 0 time zero in the middle, 1 everything, 2 the same place as before.
extern int viewState;
/// True turns off animated zooming.
extern bool disAnimateZoom;
/// True draws each wave in its channel's colour.
extern bool colorWaveform;

/// `pixels` at 96 dpi, in pixels of this screen: integer arithmetic, truncated.
inline int dp(int pixels)
{
    return pixels * gDpi / 96;
}

/// Device pixels per logical pixel of the time axis: a whole number.
inline int uiScale()
{
    return gDpi / 96;
}

/// Sets `gDpi` from the dots per inch that a screen tells: truncated, at least 96.
void globalsSetDpi(double logicalDotsPerInch);

/// Fills `gChnColors`, `gGreys` and `gMeasureNames`.
void globalsFillTables();

/// The first of `arguments` that names an existing file of suffix "cxdat" or "cxset" (compared with case); empty if
/// none does. `arguments` is without the program's own name.
QString globalsFileArgument(const QStringList &arguments);

/// Loads the application's fonts and sets `gFontMain`, `gFontSmall` and `gFontLarge` from `system`, the system's font.
/// `languageFont` is the family that the language file asks for, or several, separated by commas, of which the first
/// that the system has is shown; "" or "SysDefault" have the meanings of that file.
/// A font that does not load is replaced silently.
void globalsLoadFonts(const QFont &system, const QString &languageFont);
