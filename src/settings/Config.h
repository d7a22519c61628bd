#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

/// The config document: every persistent setting of the program, one XML tree in memory.
///
/// Values are text: decimal numbers, comma lists without blanks. The same document is the settings file (.cxset) and
/// the head of each data file (.cxdat), see docs/formats.md. Reading a key that does not exist adds an empty element
/// for it: that is part of the format. Keys and models are names of elements (letters, digits, "_", "-" and ".", a
/// letter or "_" first); any other is ignored and reads as empty, since it would make the next saved file unreadable.
///
/// A document with another root than "settings", deeper than 64 levels, with more than 200,000 elements or 16 MiB, or
/// with a document type counts as malformed.
///
/// A look-up costs a walk over the keys of its section: meant for building widgets, not for painting.
///
/// Main thread only: nothing guards the tree. No operation of this header shows a message.

/// Loads "lux.config", or sets the template when that file is missing or malformed. Creates the directory.
void configLoad();

/// The path of "lux.config". The directory may not exist yet.
[[nodiscard]] QString configPath();

/// Writes the whole document to `path`: UTF-8, indented by 4, text mode, truncated. The file is complete and closed
/// on return. A plain file is replaced only after all was written, so that a full disk leaves the old one.
/// @return false if the file cannot be opened or not all of it could be written
bool configSave(const QString &path);

/// Replaces the document by a settings block and reloads the view options; `version`, `userLang`, `lastPath` and
/// `lastUpdate` keep their running values.
/// @return false if `bytes` do not parse; the tree is then undefined and the caller runs configLoad()
[[nodiscard]] bool configReplace(const QByteArray &bytes);

/// Extracts the settings block, with the line ends behind it, from the first 32,768 bytes of a data or settings file.
/// Its size is the offset of the binary part.
/// @return false if the file cannot be read or holds no whole block there; `block` is then empty
[[nodiscard]] bool configHeadOfFile(const QString &path, QByteArray &block);

/// Size in bytes of the settings block at the start of `head`, with the line ends behind it; 0 if `head` holds no whole
/// block in its first 32,768 bytes. Pure, any thread.
[[nodiscard]] int configHeadSize(const QByteArray &head);

/// Reads `viewState`, `disAnimateZoom` and `colorWaveform` (Globals.h) from the document.
void viewOptionsLoad();

/// The value of a global key; empty if it has none.
QString globalGet(const QString &key);
/// Replaces the text of an element that begins with text, or else all its children. Characters that XML cannot hold
/// are left out.
void globalSet(const QString &key, const QString &value);

/// Settings of one model. `model` is the model's name, such as "RV2420".
QString deviceGet(const QString &model, const QString &key);
void deviceSet(const QString &model, const QString &key, const QString &value);

void analyzersClear();
/// Stores the analyzer of place `index`, from 0, in the element "item<index>".
void analyzerPut(int index, const QString &fileName, const QString &parameters, const QString &format);
/// The text of every child of every analyzer, in document order, each followed by ";".
QString analyzersAll();

/// Splits `value` at commas (empty parts are left out) and stores at most `capacity` integers (QString::toInt).
/// @return how many were stored; an empty `value` stores nothing
int intListGet(const QString &value, int *array, int capacity);
QString intListPut(const int *array, int count);
int boolListGet(const QString &value, bool *array, int capacity);
QString boolListPut(const bool *array, int count);

/// `flags` comes in sized to the model's channels and filled with the defaults; `analog` selects the analog key.
void chnEnableGet(const QString &model, QVector<bool> &flags, bool analog);
void chnEnablePut(const QString &model, const QVector<bool> &flags, bool analog);
/// `kinds` comes in sized to the model's channels; kinds above 4 and those not stored read as 0, negative
/// ones stay.
void chnTrigGet(const QString &model, QVector<int> &kinds, bool analog);
void chnTrigPut(const QString &model, const QVector<int> &kinds, bool analog);

/// The row of each of `count` digital channels: always a permutation of 0 to `count` - 1.
QVector<int> chnShowIndexGet(int count);
void chnShowIndexPut(const QVector<int> &order);
/// The height factor of each of `count` digital channels: 1, 2, 4 or 8.
QVector<int> chnShowMultipGet(int count);
void chnShowMultipPut(const QVector<int> &factors);
/// The user's name of a digital channel, or the default one: "Channel" translated, a blank, the index.
QString chnShowNameGet(int index);
/// At most `count` stored positions of the analog tags.
QVector<int> AChnHorLabelPosGet(int count);
