#include "cli/Arguments.h"

#include <algorithm>

namespace Arguments {

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
    Parsed parsed;
    for (int i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        if (argument == QLatin1String("--")) {
            parsed.operands += arguments.mid(i + 1);
            break;
        }
        if (!argument.startsWith(QLatin1Char('-')) || argument == QLatin1String("-")) {
            parsed.operands.append(argument);
            continue;
        }
        const bool isLong = argument.startsWith(QLatin1String("--"));
        const int equals = isLong ? argument.indexOf(QLatin1Char('=')) : -1;
        const QString name = equals < 0 ? argument : argument.left(equals);
        const auto named = [&name](const Option &option) { return option.name == name || option.brief == name; };
        const auto option = std::find_if(known.cbegin(), known.cend(), named);
        const bool lacksValue = option != known.cend() && option->hasValue && equals < 0 && i + 1 >= arguments.size();
        if (option == known.cend()) {
            parsed.error = QStringLiteral("unknown option %1").arg(name);
        } else if (lacksValue) {
            parsed.error = QStringLiteral("%1 needs a value").arg(name);
        } else if (!option->hasValue && equals >= 0) {
            parsed.error = QStringLiteral("%1 takes no value").arg(name);
        }
        if (!parsed.error.isEmpty()) {
            return parsed;
        }
        QString value;
        if (option->hasValue) {
            value = equals >= 0 ? argument.mid(equals + 1) : arguments.at(++i);
            if (value.isEmpty()) { // such as a variable of a script that is not set
                parsed.error = QStringLiteral("%1 needs a value").arg(name);
                return parsed;
            }
        }
        parsed.options.append({option->name, value});
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
