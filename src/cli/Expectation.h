#pragma once

#include <QString>

#include <array>
#include <cstdint>
#include <optional>

struct ChannelMeasures;

/// One quantity that is measured of a channel, with how it scatters. In Hz, s, or as a share of 1.
struct MeasuredSpread {
    enum class Unit { Hertz, Seconds, Share };

    const char *name = "";
    Unit unit = Unit::Seconds;
    std::int64_t count = 0; ///< values; the others are 0 without any
    double least = 0;
    double mean = 0;
    double most = 0;
    double deviation = 0;
};

/// Frequency, period, duty, high and low, in this order. The mean frequency is cycles by time, the mean duty high time
/// by time. Pure. @param rate  Hz
[[nodiscard]] std::array<MeasuredSpread, 5> spreadsOf(const ChannelMeasures &measures, std::int64_t rate);

/// What a user expects of a measured value, such as "frequency=1MHz+-1%"; docs/luxcli.md tells the grammar. A value.
class Expectation {
public:
    /// @param error  out, why there is none, for the user
    [[nodiscard]] static std::optional<Expectation> parse(const QString &text, QString &error);

    [[nodiscard]] const QString &text() const { return m_text; }
    /// The value that it is about. @return nothing where nothing could be measured
    [[nodiscard]] std::optional<double> valueIn(const ChannelMeasures &measures, std::int64_t rate) const;
    [[nodiscard]] bool holds(double value) const;
    /// `value` with its unit.
    [[nodiscard]] QString shown(double value) const;

private:
    enum class Relation { Equal, Less, LessOrEqual, Greater, GreaterOrEqual };
    enum class Kind { Count, Hertz, Seconds, Share };
    enum class Part { Mean, Least, Most, Deviation, Count };

    [[nodiscard]] bool takeName(const QString &name);
    [[nodiscard]] bool takeValue(const QString &text);
    [[nodiscard]] std::optional<double> number(const QString &text) const;

    QString m_text;
    QString m_name; ///< without the part
    Kind m_kind = Kind::Count;
    Part m_part = Part::Mean;
    Relation m_relation = Relation::Equal;
    double m_value = 0;
    double m_tolerance = 0;
};
