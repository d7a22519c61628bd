#pragma once

/// Lets the names of files have any bytes where the system knows no encoding of names: if one of the arguments cannot
/// be read in the encoding of the locale, such as a name of an older system, each byte counts as a character of its own
/// from here on, for arguments and names of files alike. Texts that are no names look odd then; that is all.
///
/// For programs without a window, before they read their arguments; main thread. Nothing on Windows, whose names are
/// Unicode. Cost: one pass over the arguments.
void takeNamesOfAnyBytes(int argc, char *argv[]);
