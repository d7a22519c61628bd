#pragma once

#include <QByteArray>
#include <QString>

#include <array>
#include <cstdint>
#include <optional>

/// A version as numbers: major, minor, patch. Compared in this order.
using VersionNumber = std::array<std::uint64_t, 3>;

/// The first three dotted parts of `text`; a part that is missing or no number counts as 0. Pure, any thread.
[[nodiscard]] VersionNumber versionNumber(const QString &text);

/// `text` if it is a version that can be shown and handed to another program, at most 32 letters, digits, dots and
/// signs; otherwise its three numbers. Pure, any thread.
[[nodiscard]] QString shownVersion(const QString &text);

/// What the update service answers: the root "lux" with a text in each of these children; a missing one is empty.
struct UpdateReply {
    QString last;    ///< the newest version
    QString support; ///< the lowest version that may update itself
    QString dnllink; ///< address for a download by hand
    QString updlink; ///< address for the updater

    /// @return nothing if `bytes` are not well-formed, hold a document type, pass a limit of settings/XmlText.h, or
    /// have
    ///         another root. Pure, any thread. Cost: linear.
    [[nodiscard]] static std::optional<UpdateReply> parse(const QByteArray &bytes);
};
