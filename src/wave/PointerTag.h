#pragma once

#include <QLabel>
#include <QRect>

#include <span>

/// The tag in the ruler that tells the time and the sample under the pointer, both from the trigger.
///
/// Stands at the right of the pointer's column, or at its left where the right end or a marker's flag is in the way.
/// GUI thread, owned by the ruler.
class PointerTag : public QLabel {
    Q_OBJECT
public:
    explicit PointerTag(QWidget *ruler);

    /// Shows `text` beside device column `x` of the ruler; an empty text hides the tag.
    /// @param flags  of the markers, in the ruler
    void pointAt(int x, const QString &text, std::span<const QRect> flags);

private:
    [[nodiscard]] QRect placeBeside(int x, std::span<const QRect> flags) const;
};
