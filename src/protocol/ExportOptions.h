#pragma once

#include <QMetaType>
#include <QString>
#include <QVector>

#include <cstdint>

class Analyzer;

/// A kind of file that a decoder writes: which of its options, and the file's ending.
struct ExportChoice {
    std::uint32_t optionId = 0;
    QString extension; ///< without the dot
    QString text;      ///< translated, with the ending: "CSV file (*.csv)"
};
Q_DECLARE_METATYPE(ExportChoice)

/// One of a decoder's export options.
struct ExportOption {
    QString name; ///< translated
    QVector<ExportChoice> choices;
};

/// What an analyzer offers, in its order; nothing when it fails. An option of the same id as an earlier one keeps a
/// place of its own. Main thread.
[[nodiscard]] QVector<ExportOption> exportOptionsOf(const Analyzer &analyzer);
