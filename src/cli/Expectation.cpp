#include "cli/Expectation.h"

#include "analysis/ChannelMeasures.h"
#include "cli/Quantity.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr const char *countNames[] = {"edges", "rising", "falling", "pulses"};
constexpr const char *partNames[] = {"mean", "min", "max", "deviation", "count"}; // as Part

MeasuredSpread spreadOf(const char *name, const SampleStatistics &samples, std::int64_t rate)
{
    const auto hertz = double(rate);
    return {name,
            MeasuredSpread::Unit::Seconds,
            samples.count,
            double(samples.least) / hertz,
            samples.mean() / hertz,
            double(samples.most) / hertz,
            samples.deviation() / hertz};
}

std::int64_t countOf(const ChannelMeasures &measures, const QString &name)
{
    if (name == QLatin1String("rising")) {
        return measures.rising;
    }
    if (name == QLatin1String("falling")) {
        return measures.falling;
    }
    return name == QLatin1String("pulses") ? measures.high.count : measures.edges();
}

} // namespace

std::array<MeasuredSpread, 5> spreadsOf(const ChannelMeasures &measures, std::int64_t rate)
{
    using Unit = MeasuredSpread::Unit;
    const SampleStatistics &period = measures.period;
    MeasuredSpread frequency{"frequency", Unit::Hertz, period.count, 0, 0, 0, 0};
    MeasuredSpread duty{
        "duty", Unit::Share, period.count, measures.duty.least, 0, measures.duty.most, measures.duty.deviation()};
    if (period.count > 0) {
        const auto hertz = double(rate);
        frequency.least = hertz / double(period.most);
        frequency.mean = hertz * double(period.count) / double(period.sum);
        frequency.most = hertz / double(period.least);
        frequency.deviation = hertz * measures.inverse.deviation();
        duty.mean = double(measures.highPart.sum) / double(period.sum);
    }
    return {frequency, spreadOf("period", period, rate), duty, spreadOf("high", measures.high, rate),
            spreadOf("low", measures.low, rate)};
}

std::optional<Expectation> Expectation::parse(const QString &text, QString &error)
{
    struct Sign {
        const char *text;
        Relation relation;
    };
    static constexpr Sign signs[] = {{"<=", Relation::LessOrEqual},
                                     {">=", Relation::GreaterOrEqual},
                                     {"<", Relation::Less},
                                     {">", Relation::Greater},
                                     {"=", Relation::Equal}};
    Expectation expectation;
    expectation.m_text = text;
    error = QStringLiteral("\"%1\" is not of the form NAME=VALUE[+-TOLERANCE], NAME<VALUE or NAME>VALUE").arg(text);
    for (const Sign &sign : signs) {
        const QLatin1String word(sign.text);
        const int at = text.indexOf(word);
        if (at < 0) {
            continue;
        }
        expectation.m_relation = sign.relation;
        if (!expectation.takeName(text.left(at).trimmed())) {
            error = QStringLiteral("nothing measured has the name \"%1\"").arg(text.left(at).trimmed());
            return std::nullopt;
        }
        if (!expectation.takeValue(text.mid(at + word.size()))) {
            error = QStringLiteral("\"%1\" has no value, or one in another unit").arg(text);
            return std::nullopt;
        }
        error.clear();
        return expectation;
    }
    return std::nullopt;
}

bool Expectation::takeName(const QString &name)
{
    const int dot = name.indexOf(QLatin1Char('.'));
    m_name = dot < 0 ? name : name.left(dot);
    const auto isCount = [this](const char *known) { return m_name == QLatin1String(known); };
    if (std::any_of(std::begin(countNames), std::end(countNames), isCount)) {
        m_kind = Kind::Count;
        return dot < 0;
    }
    const auto spreads = spreadsOf({}, 1);
    const auto spread = std::find_if(spreads.begin(), spreads.end(),
                                     [this](const MeasuredSpread &s) { return m_name == QLatin1String(s.name); });
    if (spread == spreads.end()) {
        return false;
    }
    constexpr Kind kinds[] = {Kind::Hertz, Kind::Seconds, Kind::Share}; // as MeasuredSpread::Unit
    m_kind = kinds[int(spread->unit)];
    if (dot < 0) {
        return true;
    }
    const QString part = name.mid(dot + 1);
    const auto *const found = std::find_if(std::begin(partNames), std::end(partNames),
                                           [&part](const char *known) { return part == QLatin1String(known); });
    m_part = Part(found - std::begin(partNames));
    m_kind = m_part == Part::Count ? Kind::Count : m_kind;
    return found != std::end(partNames);
}

bool Expectation::takeValue(const QString &text)
{
    QString wanted = text;
    wanted.replace(QChar(0x00B1), QLatin1String("+-")); // the plus-minus sign
    const int sign = wanted.indexOf(QLatin1String("+-"));
    const std::optional<double> value = number(sign < 0 ? wanted : wanted.left(sign));
    if (!value || (sign >= 0 && m_relation != Relation::Equal)) {
        return false;
    }
    m_value = *value;
    constexpr double rounding = 1e-9;
    m_tolerance = m_kind == Kind::Count ? 0 : m_value * rounding;
    if (sign < 0) {
        return true;
    }
    const QString tolerance = wanted.mid(sign + 2).trimmed();
    // A duty's own unit is the percent: then the tolerance is in points.
    const bool isPart = tolerance.endsWith(QLatin1Char('%')) && m_kind != Kind::Share;
    if (isPart) {
        const auto percent = Quantity::decimal(tolerance.left(tolerance.size() - 1).trimmed());
        m_tolerance += percent ? m_value * percent->toDouble() / 100 : 0;
        return percent.has_value();
    }
    const std::optional<double> distance = number(tolerance);
    m_tolerance += distance.value_or(0);
    return distance.has_value();
}

std::optional<double> Expectation::number(const QString &text) const
{
    const QString trimmed = text.trimmed();
    std::optional<Quantity::Decimal> value;
    switch (m_kind) {
    case Kind::Seconds:
        value = Quantity::time(trimmed);
        break;
    case Kind::Share: {
        const bool isPercent = trimmed.endsWith(QLatin1Char('%'));
        value = Quantity::decimal((isPercent ? trimmed.chopped(1) : trimmed).trimmed());
        if (value && isPercent) {
            value->exponent -= 2;
        }
        break;
    }
    case Kind::Count:
    case Kind::Hertz: {
        // A frequency may have a part of a Hz, which a rate has not.
        QString digits = trimmed;
        if (m_kind == Kind::Hertz && digits.endsWith(QLatin1String("Hz"))) {
            digits.chop(2);
        }
        const int prefix = digits.isEmpty() ? -1 : QStringLiteral("kMG").indexOf(digits.back());
        value = Quantity::decimal(prefix < 0 ? digits.trimmed() : digits.chopped(1).trimmed());
        if (value && prefix >= 0) {
            value->exponent += 3 * (prefix + 1);
        }
        break;
    }
    }
    return value ? std::optional(value->toDouble()) : std::nullopt;
}

std::optional<double> Expectation::valueIn(const ChannelMeasures &measures, std::int64_t rate) const
{
    for (const MeasuredSpread &spread : spreadsOf(measures, rate)) {
        if (m_name != QLatin1String(spread.name)) {
            continue;
        }
        if (m_part == Part::Count) {
            return double(spread.count);
        }
        const double values[] = {spread.mean, spread.least, spread.most, spread.deviation}; // as Part
        return spread.count > 0 ? std::optional(values[int(m_part)]) : std::nullopt;
    }
    return double(countOf(measures, m_name));
}

bool Expectation::holds(double value) const
{
    switch (m_relation) {
    case Relation::Less:
        return value < m_value;
    case Relation::LessOrEqual:
        return value <= m_value;
    case Relation::Greater:
        return value > m_value;
    case Relation::GreaterOrEqual:
        return value >= m_value;
    case Relation::Equal:
        break;
    }
    return std::abs(value - m_value) <= m_tolerance;
}

QString Expectation::shown(double value) const
{
    constexpr int digits = 9;
    switch (m_kind) {
    case Kind::Hertz:
        return Quantity::text(value, QStringLiteral("Hz"));
    case Kind::Seconds:
        return Quantity::text(value, QStringLiteral("s"));
    case Kind::Share:
        return QString::number(value * 100, 'g', digits) + QStringLiteral(" %");
    case Kind::Count:
        break;
    }
    return QString::number(value, 'f', 0);
}
