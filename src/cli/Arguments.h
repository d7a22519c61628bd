#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

/// The arguments of a command, taken apart: pure, without a word to anybody.
namespace Arguments {

/// One option that a command knows.
struct Option {
    QString name;  ///< such as "--format"
    QString brief; ///< a second name such as "-o"; may be empty
    bool hasValue = false;
};

/// What was given.
struct Parsed {
    QString error;                            ///< why the arguments are wrong, for the user; empty if they are not
    QStringList operands;                     ///< in their order
    QVector<QPair<QString, QString>> options; ///< by Option::name, each in its order; the value of one without is empty

    [[nodiscard]] bool has(const QString &name) const;
    /// The last one's value.
    [[nodiscard]] std::optional<QString> value(const QString &name) const;
    [[nodiscard]] QStringList values(const QString &name) const;
};

/// "--format csv" and "--format=csv" mean the same, and so do "-f csv" and "-fcsv". What follows "--" is an operand, as
/// is "-".
[[nodiscard]] Parsed parse(const QStringList &arguments, const QVector<Option> &known);

/// An analyzer with its settings as written: "UART:rx=3,baudrate=115200".
struct Request {
    QString name;
    QVector<QPair<QString, QString>> settings;
};

/// @return nothing when a setting is not of the form key=value
[[nodiscard]] std::optional<Request> request(const QString &text);

} // namespace Arguments
