#pragma once

#include <QLineEdit>

/// A field that shows a text that is too long for it with an ellipsis at its end, as long as nobody types there. Its
/// text is the whole one all the time. Main thread.
class ElidedEdit : public QLineEdit {
public:
    using QLineEdit::QLineEdit;

    /// What is seen of the text.
    [[nodiscard]] QString shownText() const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    [[nodiscard]] QRect textRoom() const;
};
