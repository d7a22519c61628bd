#pragma once

#include <QString>

#include <string>
#include <string_view>

/// What a search lets through: texts that hold another text, whatever the case of either. A plain value.
class RowFilter {
public:
    RowFilter() = default;
    /// @param searched  empty lets everything through
    explicit RowFilter(const QString &searched);

    [[nodiscard]] bool isEmpty() const { return m_searched.isEmpty(); }
    /// @param text  UTF-8
    /// Cost: one pass over a text of ASCII alone; others are folded by Unicode's rules, which takes some ten times as
    /// long.
    [[nodiscard]] bool matches(std::string_view text) const;

private:
    QString m_searched;
    std::string m_ascii; ///< the same in small letters; empty when it is not of ASCII alone
};
