#pragma once

#include <QLabel>

/// The tag in the ruler that tells the time and the sample under the pointer, both from the trigger.
///
/// Stands beside the pointer's column, on the other side near the right end; below the flags of markers. GUI thread,
/// owned by the ruler.
class PointerTag : public QLabel {
    Q_OBJECT
public:
    explicit PointerTag(QWidget *ruler);

    /// Shows `text` beside device column `x` of the ruler; an empty text hides the tag.
    void pointAt(int x, const QString &text);
};
