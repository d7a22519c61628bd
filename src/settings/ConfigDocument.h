#pragma once

#include <QByteArray>
#include <QDomDocument>
#include <QString>
#include <QStringList>

#include <optional>

/// A config document by itself, such as one that was read from a file and is not the program's yet. Config.h takes it
/// over, and makes a copy of its own as one.
///
/// A value: copies share their tree, which nothing changes. Reading adds no elements. One thread at a time for all
/// copies.
class ConfigDocument {
public:
    /// The document of a settings block. @return nothing if `bytes` are malformed, as Config.h tells it
    [[nodiscard]] static std::optional<ConfigDocument> parse(const QByteArray &bytes);
    /// The same for a whole file. @return nothing also if `path` is no plain file or cannot be read
    [[nodiscard]] static std::optional<ConfigDocument> load(const QString &path);

    /// The value of a global key; empty if it has none.
    [[nodiscard]] QString global(const QString &key) const;

    /// The settings block of a file, with "\n" as line ends: the document, indented by 4. If it is too long that way,
    /// all that means nothing to who opens it is left out (empty elements, values that are the default or that are not
    /// taken over, comments), then the indentation too. Cost: linear.
    /// @return nothing if it does not end within `configHeadLimit` bytes even so
    [[nodiscard]] std::optional<QByteArray> block() const;

    /// The settings that take the most room, the longest first: the keys, or "item0" and so on for analyzers.
    [[nodiscard]] QStringList longest(int count) const;

    /// A tree of its own, to be changed.
    [[nodiscard]] QDomDocument clone() const { return m_tree.cloneNode(true).toDocument(); }

private:
    friend ConfigDocument configCopy();

    explicit ConfigDocument(const QDomDocument &tree);
    /// Makes the declaration tell the encoding that is written, whatever the parsed text had.
    void setDeclaration();
    [[nodiscard]] static std::optional<ConfigDocument> ofParsed(const QDomDocument &tree);

    QDomDocument m_tree;
};
