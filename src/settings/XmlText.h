#pragma once

#include <QByteArray>
#include <QDomDocument>
#include <QString>

/// What the config document and the language documents have in common: a careful parser, and the rules of XML for what
/// a text and a name may hold.
///
/// Of app/ only. Pure functions: any thread, no state.

/// Limits of a document. A settings file of the largest model has some 200 elements in 4 levels and 20 kB.
constexpr int xmlMaxBytes = 16 * 1024 * 1024;
constexpr int xmlMaxDepth = 64;
constexpr int xmlMaxElements = 200'000;
constexpr int xmlMaxAttributes = 256; ///< of one element: a reader compares each with all others

/// Parses `bytes` into `document`.
/// @return false if `bytes` are not well-formed, hold a document type (and so could define entities) or pass a limit
///         from above; `document` is then as it was, or undefined
/// Cost: linear. A tree that is too deep would overflow the stack when it is built, written or destroyed, so it is
/// refused before it is built.
[[nodiscard]] bool xmlParse(QDomDocument &document, const QByteArray &bytes);

/// The same for the contents of a file. @return false also if the file cannot be read
[[nodiscard]] bool xmlParseFile(QDomDocument &document, const QString &path);

/// `text` without the characters that no XML document can hold: control characters other than tab, line feed and
/// carriage return, unpaired surrogates, U+FFFE and U+FFFF.
[[nodiscard]] QString xmlAllowed(const QString &text);

/// True if an element may have the tag `name`.
[[nodiscard]] bool xmlIsName(const QString &name);
