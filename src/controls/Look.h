#pragma once

#include <QColor>
#include <QFont>
#include <QString>
#include <QVector>

/// The look that all windows share: the screen's scale, colours and fonts.
///
/// All are set once, in the order of start-up, on the main thread, and read there.

/// Logical dots per inch of the primary screen, at least 96.
extern int gDpi;
/// The eight wave colours: digital channel i takes i modulo 8, analog channel i takes i modulo 2.
extern QVector<QColor> gChnColors;
/// The ten greys of the dark theme, from light (0) to dark (9); 5 is the window's background.
extern QVector<QColor> gGreys;

extern QFont gFontMain;
extern QFont gFontSmall;
extern QFont gFontLarge;

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

/// Sets `gDpi` from the dots per inch that a screen tells: truncated, at least 96, at most 9600. Within 0.5 of a whole
/// multiple of 24 it is that multiple: 191.9 is a screen of 192.
void globalsSetDpi(double logicalDotsPerInch);

/// Fills `gChnColors` and `gGreys`, and `gMeasureNames` (settings/Globals.h).
void globalsFillTables();

/// Loads the application's fonts and sets `gFontMain`, `gFontSmall` and `gFontLarge` from `system`, the system's font.
/// `languageFont` is the family that the language file asks for, or several, separated by commas, of which the first
/// that the system has is shown; "" or "SysDefault" have the meanings of that file.
/// A font that does not load is replaced silently.
void globalsLoadFonts(const QFont &system, const QString &languageFont);
