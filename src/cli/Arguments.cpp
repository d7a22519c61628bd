#include "cli/Arguments.h"

#include <QCommandLineParser>

namespace Arguments {

namespace {

/// A sentence as a part of one: "Unknown option 'x'." as "unknown option 'x'".
QString withoutEnds(const QString &sentence)
{
    const QString text = sentence.endsWith(QLatin1Char('.')) ? sentence.chopped(1) : sentence;
    return text.left(1).toLower() + text.mid(1);
}

} // namespace

bool Parsed::has(const QString &name) const
{
    return value(name).has_value();
}

std::optional<QString> Parsed::value(const QString &name) const
{
    const QStringList all = values(name);
    return all.isEmpty() ? std::nullopt : std::optional(all.last());
}

QStringList Parsed::values(const QString &name) const
{
    QStringList found;
    for (const auto &[option, value] : options) {
        if (option == name) {
            found.append(value);
        }
    }
    return found;
}

Parsed parse(const QStringList &arguments, const QVector<Option> &known)
{
    QCommandLineParser parser;
    for (const Option &option : known) {
        QStringList names{option.name.mid(2)};
        if (!option.brief.isEmpty()) {
            names.append(option.brief.mid(1));
        }
        parser.addOption({names, QString(), option.hasValue ? QStringLiteral("value") : QString()});
    }
    Parsed parsed;
    if (!parser.parse(QStringList{QStringLiteral("luxcli")} + arguments)) {
        parsed.error = withoutEnds(parser.errorText());
        return parsed;
    }
    parsed.operands = parser.positionalArguments();
    for (const Option &option : known) {
        const QString name = option.name.mid(2);
        const QStringList set = parser.isSet(name) ? QStringList{QString()} : QStringList();
        for (const QString &value : option.hasValue ? parser.values(name) : set) {
            if (option.hasValue && value.isEmpty()) { // such as a variable of a script that is not set
                parsed.error = QStringLiteral("%1 needs a value").arg(option.name);
                return parsed;
            }
            parsed.options.append({option.name, value});
        }
    }
    return parsed;
}

std::optional<Request> request(const QString &text)
{
    Request result;
    const int colon = text.indexOf(QLatin1Char(':'));
    result.name = (colon < 0 ? text : text.left(colon)).trimmed();
    const QString settings = colon < 0 ? QString() : text.mid(colon + 1);
    for (const QString &part : settings.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const int equals = part.indexOf(QLatin1Char('='));
        if (equals < 1) {
            return std::nullopt;
        }
        result.settings.append({part.left(equals).trimmed(), part.mid(equals + 1).trimmed()});
    }
    return result.name.isEmpty() ? std::nullopt : std::optional(result);
}

} // namespace Arguments
