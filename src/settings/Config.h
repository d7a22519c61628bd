#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

class ConfigDocument;

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

/// Writes the whole document to `path`: UTF-8, indented by 4, line ends of the system. The file appears whole, or the
/// one that was there stays, see FileReplacement. No limit of a settings block is looked at. Blocks as long as the disk
/// takes.
/// @return false if not all could be written
bool configSave(const QString &path);

/// A copy of the whole document, but for the list of the files that were opened last.
[[nodiscard]] ConfigDocument configCopy();

/// Replaces the document by a copy of another one, and reloads the view options. `version`, `userLang`, `lastPath`,
/// `lastUpdate`, the window's place and size (`windowPosition`, `windowMaximized`), the options of the history and the
/// files that were opened last (HistoryOptions.h) keep their running values.
void configTake(const ConfigDocument &other);

/// The same with a settings block. @return false if `bytes` do not parse; nothing has changed then
[[nodiscard]] bool configReplace(const QByteArray &bytes);

/// A settings block ends within so many bytes from the file's start, with the line ends behind it: readers look no
/// further.
inline constexpr int configHeadLimit = 32'768;

/// Extracts the settings block, with the line ends behind it, from the first 32,768 bytes of a data or settings file.
/// Its size is the offset of the binary part.
/// @return false if the file is no plain one, cannot be read or holds no whole block there; `block` is then empty
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
/// At most `count` stored numbers of the analog tags: each tag's place and the height that it refers to, in logical
/// pixels.
QVector<int> AChnHorLabelPosGet(int count);
void AChnHorLabelPosPut(const QVector<int> &positions);
